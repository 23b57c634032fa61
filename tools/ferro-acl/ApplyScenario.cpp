#include "tools/ferro-acl/ApplyScenario.h"

#include <nlohmann/json.hpp>

#include "tools/ferro-acl/ChipStateDiff.h"
#include "tools/ferro-acl/ChipStateJson.h"
#include "tools/ferro-acl/ScenarioRun.h"

namespace FerroAcl {

namespace {

using Json = nlohmann::ordered_json;

Json changesJson( const ChipStateDiff& diff ) {
   Json list = Json::array();
   auto entry = [ & ]( int unit, const std::string& rule, const char* change ) -> Json& {
      list.push_back( Json{ { "unit", unit }, { "rule", rule }, { "change", change },
                            { "fields", Json::array() } } );
      return list.back();
   };
   for ( const UnitDifference& unit : diff.units ) {
      for ( const std::string& rule : unit.onlyInB ) {
         entry( unit.unit, rule, "added" );
      }
      for ( const std::string& rule : unit.onlyInA ) {
         entry( unit.unit, rule, "removed" );
      }
      for ( const EntryDifference& changed : unit.changed ) {
         Json& fields = entry( unit.unit, changed.rule, "changed" )[ "fields" ];
         for ( const FieldDifference& field : changed.fields ) {
            fields.push_back(
               Json{ { "field", field.field }, { "before", field.a }, { "after", field.b } } );
         }
      }
   }
   return list;
}

void printChanges( const Json& changes, std::ostream& out ) {
   if ( changes.empty() ) {
      out << "  no entry changed\n";
   }
   for ( const Json& change : changes ) {
      out << "  unit " << change[ "unit" ].get<int>() << " \""
          << change[ "rule" ].get<std::string>() << "\" " << change[ "change" ].get<std::string>()
          << "\n";
      for ( const Json& field : change[ "fields" ] ) {
         const std::string name = field[ "field" ].get<std::string>();
         out << "    " << name << ": " << differenceText( name, field[ "before" ] ) << " -> "
             << differenceText( name, field[ "after" ] ) << "\n";
      }
   }
}

}  // namespace

void applyScenario( const std::vector<ScenarioEvent>& events, const Agent::Switch::Ptr& sw,
                    FerroTcamSystemAcl::HelperBase& helper, const BringupPlan& plan,
                    bool json, std::ostream& out ) {
   ScenarioRun run( sw, helper );
   Json report = Json::array();
   Json before = chipStateJson( collectChipState( *sw, helper, plan ) );
   for ( const ScenarioEvent& event : events ) {
      if ( !json ) {
         out << event.line << ": " << event.text << "\n" << std::flush;
      }
      run.apply( event );
      Json after = chipStateJson( collectChipState( *sw, helper, plan ) );
      const Json changes = changesJson( diffChipStates( before, after ) );
      if ( json ) {
         report.push_back(
            Json{ { "line", event.line }, { "event", event.text }, { "changes", changes } } );
      } else {
         printChanges( changes, out );
      }
      before = std::move( after );
   }
   if ( json ) {
      out << Json{ { "events", report } }.dump( 2 ) << "\n";
   }
}

}  // namespace FerroAcl
