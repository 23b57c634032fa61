// ferro-acl apply: bring up and install, then run a scenario of configuration
// events and print what each changed.
#include <iostream>

#include "tools/ferro-acl/ApplyScenario.h"
#include "tools/ferro-acl/ExitStatus.h"
#include "tools/ferro-acl/RunOptions.h"
#include "tools/ferro-acl/Subcommands.h"

namespace FerroAcl {

int applyCommand( int argc, char** argv ) {
   CLI::App app(
       "Brings up a simulated switch and installs the system ACL as show does, then runs "
       "a scenario of configuration events on it, one a line, and prints after each "
       "event "
       "what changed in the installed entries. The scenario is read and checked whole "
       "before the switch comes up.",
       "ferro-acl apply" );
   RunOptions options;
   std::string scenario;
   app.add_option( "SCENARIO", scenario,
                   "the scenario file (grammar: tools/ferro-acl/README.md)" )
       ->required()
       ->type_name( "FILE" );
   addRunOptions( app, options );
   app.footer(
       "Examples:\n"
       "  ferro-acl apply examples/pim-copy.scenario\n"
       "  ferro-acl apply examples/ports-and-forwarding.scenario --json\n"
       "  ferro-acl apply examples/ipfix.scenario --profile profiles/vxlan-core-l2.json\n"
       "Exit status: 0 applied; 1 the library aborted (its SDK error line and "
       "assertion are shown) or the run failed; 2 bad options, profile or scenario "
       "(FILE:LINE: unexpected 'TOKEN', expected ...)." );
   if ( std::optional<int> status = parseCommandLine( app, argc, argv ) ) {
      return *status;
   }
   const std::optional<AgentSetup> setup = prepareRun( options );
   if ( !setup ) {
      return exitUsage;
   }
   const std::optional<std::vector<ScenarioEvent>> events =
       loadScenario( scenario, setup->config );
   if ( !events ) {
      return exitUsage;
   }
   const ChildOutcome outcome =
       runInstalled( *setup, [&]( SimulatedAgent& agent, const MessageChannel& ) {
          applyScenario( *events, agent.switchPtr(), agent.helper(), setup->plan,
                         options.json, std::cout );
          std::cout.flush();
          return agent.reportFaults();
       } );
   return finishRun( outcome, setup->plan );
}

}  // namespace FerroAcl
