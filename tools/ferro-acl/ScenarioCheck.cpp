#include <fstream>
#include <iostream>
#include <set>
#include <sstream>

#include "platform/agent/SwitchBringup.h"
#include "tools/ferro-acl/Scenario.h"

namespace FerroAcl {

namespace {

const Agent::ChipProfile* chipOf( const Agent::SwitchConfig& config, U16 unit ) {
   for ( const Agent::UnitSpec& spec : config.units ) {
      if ( spec.unit != unit ) {
         continue;
      }
      for ( const Agent::ChipProfile& chip : config.chips ) {
         if ( chip.family == spec.chip ) {
            return &chip;
         }
      }
   }
   return nullptr;
}

std::string unitList( const Agent::SwitchConfig& config ) {
   std::string list;
   for ( const Agent::UnitSpec& spec : config.units ) {
      list += ( list.empty() ? "" : ", " ) + std::to_string( spec.unit );
   }
   return list;
}

}  // namespace

std::optional<std::string> checkScenario( const std::vector<ScenarioEvent>& events,
                                          const Agent::SwitchConfig& config,
                                          const std::string& file ) {
   std::set<std::pair<U16, U16>> removed;
   for ( const ScenarioEvent& event : events ) {
      const std::string where = file + ":" + std::to_string( event.line ) + ": ";
      if ( event.unit && !chipOf( config, *event.unit ) ) {
         return where + "unexpected '" + std::to_string( *event.unit ) +
                "', expected a unit of the switch (" + unitList( config ) + ")";
      }
      if ( event.kind != EventKind::port && event.kind != EventKind::l2pf ) {
         continue;
      }
      const std::string target =
         std::to_string( event.targetUnit ) + ":" + std::to_string( event.targetPort );
      const Agent::ChipProfile* chip = chipOf( config, event.targetUnit );
      if ( !chip ) {
         return where + "unexpected '" + target + "', expected UNIT:PORT on a unit of the switch (" +
                unitList( config ) + ")";
      }
      const int ports = chip->attributes.portCount;
      if ( event.targetPort < 1 || event.targetPort >= ports ) {
         return where + "unexpected '" + target + "', expected a front-panel port 1.." +
                std::to_string( ports - 1 ) + " of unit " + std::to_string( event.targetUnit );
      }
      if ( event.kind != EventKind::port ) {
         continue;
      }
      // Switches whose entry managers bind rules by port class have no Mesa
      // fabric interfaces; the library refuses one on them by assertion.
      if ( event.mesa && config.aclGroupManagers ) {
         return where + "unexpected 'mesa', expected none: this switch's entry managers " +
                "use ACL groups, which take no Mesa fabric interfaces";
      }
      const auto key = std::make_pair( event.targetUnit, event.targetPort );
      if ( event.on && !removed.erase( key ) ) {
         return where + "unexpected '" + target + "', expected a port removed earlier " +
                "(every front-panel port is present at bring-up)";
      }
      if ( !event.on && !removed.insert( key ).second ) {
         return where + "unexpected '" + target + "', expected a present port (it was removed " +
                "earlier)";
      }
   }
   return std::nullopt;
}

std::optional<std::vector<ScenarioEvent>> loadScenario( const std::string& path,
                                                        const Agent::SwitchConfig& config ) {
   std::ifstream in( path );
   if ( !in ) {
      std::cerr << "ferro-acl: " << path << ": cannot read the scenario file\n";
      return std::nullopt;
   }
   std::ostringstream text;
   text << in.rdbuf();
   Result<std::vector<ScenarioEvent>> parsed = parseScenario( text.str(), path );
   if ( !parsed ) {
      std::cerr << parsed.error() << '\n';
      return std::nullopt;
   }
   if ( std::optional<std::string> error = checkScenario( parsed.value(), config, path ) ) {
      std::cerr << *error << '\n';
      return std::nullopt;
   }
   return std::move( parsed.value() );
}

}  // namespace FerroAcl
