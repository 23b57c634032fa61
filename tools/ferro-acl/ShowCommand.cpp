// ferro-acl show: bring up, install, verify, print what the chips hold.
#include <iostream>

#include "tools/ferro-acl/ChipStateJson.h"
#include "tools/ferro-acl/ChipStateText.h"
#include "tools/ferro-acl/ExitStatus.h"
#include "tools/ferro-acl/RunOptions.h"
#include "tools/ferro-acl/Subcommands.h"

namespace FerroAcl {

int showCommand( int argc, char** argv ) {
   CLI::App app(
       "Brings up a simulated switch from a chip profile, installs the system ACL "
       "through libFerroTcamSystemAclHelper.so on every unit, verifies it and prints "
       "every field-processor entry: per unit, stage and group, by priority, with its "
       "match, actions and the helper's rule tables that record it.",
       "ferro-acl show" );
   RunOptions options;
   addRunOptions( app, options );
   app.footer(
       "Examples:\n"
       "  ferro-acl                                  the default two-unit switch\n"
       "  ferro-acl show --profile profiles/th3-vlan-class.json\n"
       "  ferro-acl show --json | jq '.units[0].entries[].name'\n"
       "  ferro-acl show --fail bcm_field_action_add@3=BCM_E_FULL\n"
       "                                             watch the library abort\n"
       "  ferro-acl show --trace ApiFerro/4          every SDK call on stderr\n"
       "Exit status: 0 shown; 1 the library aborted or the run failed; 2 bad "
       "options or profile." );
   if ( std::optional<int> status = parseCommandLine( app, argc, argv ) ) {
      return *status;
   }
   const std::optional<AgentSetup> setup = prepareRun( options );
   if ( !setup ) {
      return exitUsage;
   }
   const ChildOutcome outcome =
       runInstalled( *setup, [&]( SimulatedAgent& agent, const MessageChannel& channel ) {
          agent.verify( channel );
          const ChipState state = agent.state();
          if ( options.json ) {
             std::cout << chipStateJson( state ).dump( 2 ) << '\n';
          } else {
             printChipState( std::cout, state );
          }
          std::cout.flush();
          return agent.reportFaults();
       } );
   return finishRun( outcome, setup->plan );
}

}  // namespace FerroAcl
