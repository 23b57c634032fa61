#include "tools/ferro-acl/RunOptions.h"

#include <csignal>
#include <iostream>

#include "platform/runtime/Trace.h"
#include "tools/ferro-acl/AbortReport.h"
#include "tools/ferro-acl/AbortWatch.h"
#include "tools/ferro-acl/DefaultProfile.h"
#include "tools/ferro-acl/ExitStatus.h"
#include "tools/ferro-acl/FaultOption.h"
#include "tools/ferro-acl/NetworkProfile.h"
#include "tools/ferro-acl/ProfileLoader.h"

namespace FerroAcl {

namespace {

std::string stepNames() {
   std::string names;
   for ( const BringupStep& step : bringupSteps() ) {
      names += ( names.empty() ? "" : ", " ) + std::string( step.name );
   }
   return names;
}

}  // namespace

void addRunOptions( CLI::App& app, RunOptions& options ) {
   app.add_option(
          "--profile", options.profile,
          "chip profile (JSON); the embedded two-unit default switch when absent" )
       ->type_name( "FILE" );
   app.add_flag( "--json", options.json, "print the stable JSON form" );
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
}

std::optional<int> parseCommandLine( CLI::App& app, int argc, char** argv ) {
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

Result<AgentSetup> loadSetup( const std::string& path ) {
   AgentSetup setup;
   setup.source = path.empty() ? defaultProfileSource : path;
   Result<std::string> text =
       path.empty() ? Result<std::string>( std::string( defaultProfileText ) )
                    : readProfileText( path );
   if ( !text ) {
      return Error{ text.error() };
   }
   Result<Agent::SwitchConfig> config = parseProfile( text.value(), setup.source );
   if ( !config ) {
      return Error{ config.error() };
   }
   setup.config = config.value();
   Result<Pipeline::NetworkContext> network =
       parseNetwork( text.value(), setup.source, setup.config );
   if ( !network ) {
      return Error{ network.error() };
   }
   setup.network = network.value();
   return setup;
}

std::optional<AgentSetup> prepareRun( const RunOptions& options ) {
   for ( const std::string& trace : options.traces ) {
      if ( !Lumo::traceConfigIs( trace ) ) {
         std::cerr << "ferro-acl: --trace \"" << trace
                   << "\": expected HANDLE/LEVELS, LEVELS being N, N-M or *\n";
         return std::nullopt;
      }
   }
   std::vector<Sim::Fault> faults;
   for ( const std::string& text : options.faults ) {
      Result<Sim::Fault> fault = parseFaultOption( text );
      if ( !fault ) {
         std::cerr << "ferro-acl: " << fault.error() << '\n';
         return std::nullopt;
      }
      faults.push_back( fault.value() );
   }
   for ( const std::string& name : options.skipSteps ) {
      if ( findBringupStep( name ) == nullptr ) {
         std::cerr << "ferro-acl: --skip-step \"" << name
                   << "\": no such step; expected one of " << stepNames() << '\n';
         return std::nullopt;
      }
   }
   Result<AgentSetup> setup = loadSetup( options.profile );
   if ( !setup ) {
      std::cerr << setup.error() << '\n';
      return std::nullopt;
   }
   setup.value().faults = faults;
   setup.value().faultTexts = options.faults;
   setup.value().helperLibrary = options.helperLibrary;
   setup.value().plan = planBringup( setup.value().config, options.skipSteps );
   return setup.value();
}

ChildOutcome runInstalled(
    const AgentSetup& setup,
    const std::function<int( SimulatedAgent& agent, const MessageChannel& channel )>& body ) {
   return runInChild( [&]( const MessageChannel& channel ) {
      watchAborts( channel );
      int status = exitOk;
      std::unique_ptr<SimulatedAgent> agent = SimulatedAgent::start( setup, status );
      if ( !agent ) {
         return status;
      }
      agent->install( channel );
      return body( *agent, channel );
   } );
}

int finishRun( const ChildOutcome& outcome, const BringupPlan& plan ) {
   // Whoever read the output stopped reading (ferro-acl | head): not an abort.
   if ( outcome.signal == SIGPIPE ) {
      std::cerr << outcome.err;
      return exitFailure;
   }
   const std::optional<AbortReport> abort = explainAbort( outcome, plan );
   if ( !abort ) {
      std::cerr << outcome.err;
      return outcome.exitCode;
   }
   std::cerr << abort->otherErr << abort->message();
   return exitFailure;
}

}  // namespace FerroAcl
