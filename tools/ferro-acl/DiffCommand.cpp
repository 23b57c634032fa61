// ferro-acl diff: bring up and install two switches, one after the other
// (the simulated SDK is one per process, so each runs in its own child), and
// print how their system ACLs differ unit by unit.
#include <iostream>

#include "tools/ferro-acl/AgentProgress.h"
#include "tools/ferro-acl/ChipStateDiff.h"
#include "tools/ferro-acl/ChipStateJson.h"
#include "tools/ferro-acl/ExitStatus.h"
#include "tools/ferro-acl/RunOptions.h"
#include "tools/ferro-acl/Subcommands.h"

namespace FerroAcl {

namespace {

// The switch's chip state after install, or the exit status that ends the run.
std::optional<nlohmann::ordered_json> installedState( AgentSetup& setup,
                                                      const std::string& helperLibrary,
                                                      int& status ) {
   setup.helperLibrary = helperLibrary;
   setup.plan = planBringup( setup.config, {} );
   const ChildOutcome outcome =
       runInstalled( setup, [&]( SimulatedAgent& agent, const MessageChannel& channel ) {
          channel.send(
              AgentProgress::stateMessage( chipStateJson( agent.state() ).dump() ) );
          return exitOk;
       } );
   const AgentProgress progress = AgentProgress::read( outcome.messages );
   status = finishRun( outcome, setup.plan );
   if ( status != exitOk || !progress.state ) {
      status = status == exitOk ? exitFailure : status;
      return std::nullopt;
   }
   return nlohmann::ordered_json::parse( *progress.state );
}

}  // namespace

int diffCommand( int argc, char** argv ) {
   CLI::App app(
       "Brings up two simulated switches from two chip profiles, installs the system "
       "ACL on each and prints, for every unit number, the entries only one of them has "
       "(by rule name) and, for the entries both have, each qualifier, action, priority "
       "or state that differs.",
       "ferro-acl diff" );
   std::vector<std::string> profiles;
   bool json = false;
   std::string helperLibrary;
   app.add_option( "--profile", profiles, "chip profile A, then chip profile B" )
       ->type_name( "FILE" )
       ->allow_extra_args( false )
       ->required();
   app.add_flag( "--json", json, "print the difference as JSON" );
   app.add_option(
          "--helper-lib", helperLibrary,
          "the helper library to load (default: " + defaultHelperLibraryPath() + ")" )
       ->type_name( "PATH" );
   app.footer(
       "Examples:\n"
       "  ferro-acl diff --profile profiles/default.json "
       "--profile profiles/th3-vlan-class.json\n"
       "  ferro-acl diff --profile profiles/default.json "
       "--profile profiles/vxlan-core-l2.json --json\n"
       "Exit status: 0 identical; 1 different, or the library aborted; 2 bad "
       "options or profile." );
   if ( std::optional<int> status = parseCommandLine( app, argc, argv ) ) {
      return *status;
   }
   if ( profiles.size() != 2 ) {
      std::cerr << "ferro-acl: diff: --profile given " << profiles.size() << " time"
                << ( profiles.size() == 1 ? "" : "s" )
                << "; expected it twice, --profile A --profile B\n";
      return exitUsage;
   }
   std::vector<AgentSetup> setups;
   for ( const std::string& profile : profiles ) {
      Result<AgentSetup> setup = loadSetup( profile );
      if ( !setup ) {
         std::cerr << setup.error() << '\n';
         return exitUsage;
      }
      setups.push_back( setup.value() );
   }
   std::vector<nlohmann::ordered_json> states;
   for ( AgentSetup& setup : setups ) {
      int status = exitOk;
      std::optional<nlohmann::ordered_json> state =
          installedState( setup, helperLibrary, status );
      if ( !state ) {
         return status;
      }
      states.push_back( *state );
   }
   const ChipStateDiff diff = diffChipStates( states[0], states[1] );
   if ( json ) {
      std::cout << diffJson( diff ).dump( 2 ) << '\n';
   } else {
      std::cout << "A: " << profiles[0] << "\nB: " << profiles[1] << '\n';
      printDiff( std::cout, diff );
   }
   return diff.identical() ? exitOk : exitFailure;
}

}  // namespace FerroAcl
