// ferro-acl: brings up a simulated switch from a chip profile, loads
// libFerroTcamSystemAclHelper.so as the agent does, installs and verifies the
// system ACL on every unit and prints what the chips hold.
#include <CLI/CLI.hpp>

#include <fstream>
#include <iostream>
#include <sstream>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "platform/agent/SwitchBringup.h"
#include "platform/runtime/Trace.h"
#include "platform/sdk/Simulator.h"
#include "tools/ferro-acl/ApplyScenario.h"
#include "tools/ferro-acl/BringupSteps.h"
#include "tools/ferro-acl/ChipState.h"
#include "tools/ferro-acl/ChipStateJson.h"
#include "tools/ferro-acl/ChipStateText.h"
#include "tools/ferro-acl/DefaultProfile.h"
#include "tools/ferro-acl/FaultOption.h"
#include "tools/ferro-acl/HelperLoader.h"
#include "tools/ferro-acl/ProfileLoader.h"

namespace {

using namespace FerroAcl;

constexpr int exitFailure = 1;  // the run did not do what was asked
constexpr int exitUsage = 2;    // bad options or profile: nothing was run

struct Options {
   std::string profile;
   bool json = false;
   std::vector<std::string> traces;
   std::vector<std::string> faults;
   std::vector<std::string> skipSteps;
   std::string helperLibrary;
   std::string scenario;  // apply: the scenario file
};

std::string stepNames() {
   std::string names;
   for ( const BringupStep& step : bringupSteps() ) {
      names += ( names.empty() ? "" : ", " ) + std::string( step.name );
   }
   return names;
}

// The exit status when the options say not to run (help, or an error).
std::optional<int> parseOptions( int argc, char** argv, Options& options ) {
   CLI::App app(
       "Brings up a simulated switch from a chip profile, installs the system ACL "
       "through libFerroTcamSystemAclHelper.so, verifies it and prints the chips' "
       "field-processor entries.",
       "ferro-acl" );
   app.add_option(
          "--profile", options.profile,
          "chip profile (JSON); the embedded two-unit default switch when absent" )
       ->type_name( "FILE" );
   app.add_flag( "--json", options.json, "print the chip state in its stable JSON form" );
   app.add_option( "--trace", options.traces,
                   "enable trace levels, e.g. ApiFerro/4 or FerroTcamSystemAclHelper/0-8 "
                   "(repeatable)" )
       ->type_name( "HANDLE/LEVELS" )
       ->allow_extra_args( false );
   app.add_option(
          "--fail", options.faults,
          "make the simulated SDK fail the Nth call (default 1) of FUNCTION with RC "
          "(default BCM_E_PARAM) once, after bring-up (repeatable)" )
       ->type_name( "FUNCTION[@N][=RC]" )
       ->allow_extra_args( false );
   app.add_option( "--skip-step", options.skipSteps,
                   "do not run this bring-up step (repeatable): " + stepNames() )
       ->type_name( "NAME" )
       ->allow_extra_args( false );
   app.add_option(
          "--helper-lib", options.helperLibrary,
          "the helper library to load (default: " + defaultHelperLibraryPath() + ")" )
       ->type_name( "PATH" );
   CLI::App* apply = app.add_subcommand(
       "apply",
       "Brings the switch up and installs the system ACL as without a subcommand, then "
       "runs a scenario of configuration events on it and prints after each event what "
       "changed in the installed entries. Example scenarios are in examples/." );
   apply->add_option( "SCENARIO", options.scenario, "the scenario file" )
       ->required()
       ->type_name( "FILE" );
   apply->fallthrough();
   try {
      app.parse( argc, argv );
   } catch ( const CLI::CallForHelp& e ) {
      return app.exit( e );
   } catch ( const CLI::ParseError& e ) {
      std::cerr << "ferro-acl: " << e.what()
                << "\nRun with --help for more information.\n";
      return exitUsage;
   }
   return std::nullopt;
}

// Checks the options that CLI11 cannot; true when they are all usable.
bool checkOptions( const Options& options, std::vector<Sim::Fault>& faults ) {
   for ( const std::string& trace : options.traces ) {
      if ( !Lumo::traceConfigIs( trace ) ) {
         std::cerr << "ferro-acl: --trace \"" << trace
                   << "\": expected HANDLE/LEVELS, LEVELS being N, N-M or *\n";
         return false;
      }
   }
   for ( const std::string& text : options.faults ) {
      Result<Sim::Fault> fault = parseFaultOption( text );
      if ( !fault ) {
         std::cerr << "ferro-acl: " << fault.error() << '\n';
         return false;
      }
      faults.push_back( fault.value() );
   }
   for ( const std::string& name : options.skipSteps ) {
      if ( findBringupStep( name ) == nullptr ) {
         std::cerr << "ferro-acl: --skip-step \"" << name
                   << "\": no such step; expected one of " << stepNames() << '\n';
         return false;
      }
   }
   return true;
}

// A fault that never fired means the run did not show what was asked for. One
// that fired without stopping the process hit a call the library does not
// check, which is worth saying.
int reportFaults( const Options& options ) {
   int status = 0;
   const std::vector<Sim::FaultRecord> records = Sim::FieldProcessor::instance().faults();
   for ( size_t i = 0; i < records.size() && i < options.faults.size(); ++i ) {
      const Sim::FaultRecord& record = records[i];
      if ( record.fired == 0 ) {
         std::cerr << "ferro-acl: --fail " << options.faults[i]
                   << ": nothing failed; the "
                   << "library made " << record.matched << " matching call"
                   << ( record.matched == 1 ? "" : "s" ) << '\n';
         status = exitFailure;
      } else {
         std::cerr << "ferro-acl: --fail " << options.faults[i]
                   << ": the call failed and the library carried on\n";
      }
   }
   return status;
}

int run( const Options& options ) {
   std::vector<Sim::Fault> faults;
   if ( !checkOptions( options, faults ) ) {
      return exitUsage;
   }
   const bool embedded = options.profile.empty();
   const std::string source = embedded ? defaultProfileSource : options.profile;
   Result<Agent::SwitchConfig> config = embedded
                                            ? parseProfile( defaultProfileText, source )
                                            : loadProfile( options.profile );
   if ( !config ) {
      std::cerr << config.error() << '\n';
      return exitUsage;
   }
   // A scenario is read and checked whole before anything runs.
   std::vector<ScenarioEvent> events;
   if ( !options.scenario.empty() ) {
      std::ifstream in( options.scenario );
      if ( !in ) {
         std::cerr << "ferro-acl: " << options.scenario << ": cannot read the scenario file\n";
         return exitUsage;
      }
      std::ostringstream text;
      text << in.rdbuf();
      Result<std::vector<ScenarioEvent>> parsed = parseScenario( text.str(), options.scenario );
      if ( !parsed ) {
         std::cerr << parsed.error() << '\n';
         return exitUsage;
      }
      if ( std::optional<std::string> error =
               checkScenario( parsed.value(), config.value(), options.scenario ) ) {
         std::cerr << *error << '\n';
         return exitUsage;
      }
      events = std::move( parsed.value() );
   }

   // Declared before the switch so that it is destroyed after it: whatever the
   // switch still holds of the helper goes before the library's code does.
   std::unique_ptr<HelperLibrary> library;
   Agent::Switch::Ptr sw;
   try {
      sw = Agent::bringUp( config.value() );
   } catch ( const std::invalid_argument& e ) {
      std::cerr << source << ": " << e.what() << '\n';
      return exitUsage;
   } catch ( const std::runtime_error& e ) {
      std::cerr << "ferro-acl: " << source << ": bring-up failed: " << e.what() << '\n';
      return exitFailure;
   }
   const std::string libraryPath =
       options.helperLibrary.empty() ? defaultHelperLibraryPath() : options.helperLibrary;
   Result<std::unique_ptr<HelperLibrary>> loaded =
       HelperLibrary::open( libraryPath, "FerroTcamSystemAclHelper" );
   if ( !loaded ) {
      std::cerr << "ferro-acl: " << loaded.error() << '\n';
      return exitFailure;
   }
   library = std::move( loaded.value() );
   FerroTcamSystemAcl::HelperBase& helper = library->helper();
   sw->attach( helper );

   // Injected only now, so that only the library's own calls count.
   for ( const Sim::Fault& fault : faults ) {
      Sim::FieldProcessor::instance().injectFault( fault );
   }
   const BringupPlan plan = planBringup( config.value(), options.skipSteps );
   runBringup( plan, helper );

   if ( !options.scenario.empty() ) {
      applyScenario( events, sw, helper, plan, options.json, std::cout );
      std::cout.flush();
      return reportFaults( options );
   }
   const ChipState state = collectChipState( *sw, helper, plan );
   if ( options.json ) {
      std::cout << chipStateJson( state ).dump( 2 ) << '\n';
   } else {
      printChipState( std::cout, state );
   }
   std::cout.flush();
   return reportFaults( options );
}

}  // namespace

int main( int argc, char** argv ) {
   Options options;
   if ( std::optional<int> status = parseOptions( argc, argv, options ) ) {
      return *status;
   }
   return run( options );
}
