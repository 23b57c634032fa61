#include "tools/ferro-acl/ApplyScenario.h"

#include <nlohmann/json.hpp>

#include "tools/ferro-acl/ChipStateDiff.h"
#include "tools/ferro-acl/ScenarioRun.h"

namespace FerroAcl {

namespace {

using Json = nlohmann::ordered_json;

Json valueJson( const std::string& value ) {
   return value.empty() ? Json( nullptr ) : Json( value );
}

Json changesJson( const std::vector<EntryChange>& changes ) {
   Json list = Json::array();
   for ( const EntryChange& change : changes ) {
      Json fields = Json::array();
      for ( const FieldChange& field : change.fields ) {
         fields.push_back( Json{ { "kind", field.kind },
                                 { "field", field.field },
                                 { "before", valueJson( field.before ) },
                                 { "after", valueJson( field.after ) } } );
      }
      list.push_back( Json{ { "unit", change.unit },
                            { "id", change.id },
                            { "name", change.name },
                            { "change", change.change },
                            { "fields", fields } } );
   }
   return list;
}

void printChanges( const std::vector<EntryChange>& changes, std::ostream& out ) {
   if ( changes.empty() ) {
      out << "  no entry changed\n";
   }
   for ( const EntryChange& change : changes ) {
      out << "  unit " << change.unit << " " << change.id << " \"" << change.name << "\" "
          << change.change << "\n";
      for ( const FieldChange& field : change.fields ) {
         out << "    " << field.field << ": " << ( field.before.empty() ? "-" : field.before )
             << " -> " << ( field.after.empty() ? "-" : field.after ) << "\n";
      }
   }
}

}  // namespace

void applyScenario( const std::vector<ScenarioEvent>& events, const Agent::Switch::Ptr& sw,
                    FerroTcamSystemAcl::HelperBase& helper, const BringupPlan& plan,
                    bool json, std::ostream& out ) {
   ScenarioRun run( sw, helper );
   Json report = Json::array();
   ChipState before = collectChipState( *sw, helper, plan );
   for ( const ScenarioEvent& event : events ) {
      if ( !json ) {
         out << event.line << ": " << event.text << "\n" << std::flush;
      }
      run.apply( event );
      ChipState after = collectChipState( *sw, helper, plan );
      const std::vector<EntryChange> changes = diffChipStates( before, after );
      if ( json ) {
         report.push_back( Json{ { "line", event.line },
                                 { "event", event.text },
                                 { "changes", changesJson( changes ) } } );
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
