#include "tools/ferro-acl/ChipStateJson.h"

namespace FerroAcl {

namespace {

using Json = nlohmann::ordered_json;

Json fieldJson( const FieldText& text ) {
   return std::visit( []( const auto& value ) { return Json( value ); }, text );
}

Json qualifierJson( const QualifierState& qualifier ) {
   Json values = Json::array();
   for ( const FieldValue& value : qualifier.values ) {
      values.push_back( Json{ { "data", fieldJson( value.data ) },
                              { "mask", fieldJson( value.mask ) } } );
   }
   return values.size() == 1 ? values[0] : values;
}

Json entryJson( const EntryState& entry ) {
   Json qualifiers = Json::object();
   for ( const QualifierState& qualifier : entry.qualifiers ) {
      qualifiers[qualifier.name] = qualifierJson( qualifier );
   }
   Json actions = Json::object();
   for ( const ActionState& action : entry.actions ) {
      actions[action.name] = Json::array( { action.param0, action.param1 } );
   }
   return Json{ { "id", entry.id },
                { "name", entry.name },
                { "stage", entry.stage },
                { "group", entry.group },
                { "priority", entry.priority },
                { "installed", entry.installed },
                { "enabled", entry.enabled },
                { "qualifiers", qualifiers },
                { "actions", actions },
                { "recordedAs", entry.recordedAs } };
}

}  // namespace

Json chipStateJson( const ChipState& state ) {
   Json units = Json::array();
   for ( const UnitState& unit : state.units ) {
      Json entries = Json::array();
      for ( const EntryState& entry : unit.entries ) {
         entries.push_back( entryJson( entry ) );
      }
      units.push_back( Json{ { "unit", unit.unit },
                             { "chip", unit.chip },
                             { "model", unit.model },
                             { "verified", unit.verified },
                             { "entries", entries } } );
   }
   Json skipped = Json::array();
   for ( const SkippedState& step : state.skipped ) {
      skipped.push_back( step.name );
   }
   return Json{ { "units", units }, { "skipped", skipped } };
}

}  // namespace FerroAcl
