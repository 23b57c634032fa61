// ferro-acl verify: bring up, install, optionally tamper with installed
// entries behind the library's back, then run both verifications on every
// unit and say per unit whether it held.
#include <algorithm>
#include <iostream>

#include <nlohmann/json.hpp>

#include "tools/ferro-acl/AbortReport.h"
#include "tools/ferro-acl/ExitStatus.h"
#include "tools/ferro-acl/RunOptions.h"
#include "tools/ferro-acl/Subcommands.h"
#include "tools/ferro-acl/Tamper.h"

namespace FerroAcl {

namespace {

struct UnitVerdict {
   int unit = 0;
   bool verified = false;
   std::string reason;                  // why not verified, when it was not
   std::optional<AbortReport> failure;  // the verification that aborted on it
};

std::vector<UnitVerdict> verdicts( const BringupPlan& plan, const AgentProgress& progress,
                                   const std::optional<AbortReport>& abort ) {
   std::vector<UnitVerdict> result;
   for ( U16 unit : plan.units ) {
      UnitVerdict verdict;
      verdict.unit = unit;
      bool ran = true;
      for ( size_t i = 0; i < plan.calls.size(); ++i ) {
         const PlannedCall& call = plan.calls[i];
         if ( call.unit == unit && call.step->kind == StepKind::verify ) {
            ran = ran && std::count( progress.done.begin(), progress.done.end(), i ) > 0;
         }
      }
      if ( abort && abort->verifying && abort->unit == unit ) {
         verdict.failure = abort;
         verdict.reason = "verification failed";
      } else if ( !ran ) {
         verdict.reason = "the run stopped before its verification";
      } else {
         verdict.reason = plan.unverifiedReason( unit );
         verdict.verified = verdict.reason.empty();
      }
      result.push_back( verdict );
   }
   return result;
}

void printText( const BringupPlan& plan, const std::vector<UnitVerdict>& units ) {
   for ( const SkippedStep& skipped : plan.skipped ) {
      std::cout << "skipped: " << skipped.step->name << " (" << skipped.reason << ")\n";
   }
   for ( const UnitVerdict& unit : units ) {
      std::cout << "unit " << unit.unit << ": ";
      if ( unit.verified ) {
         std::cout << "verified\n";
      } else if ( unit.failure ) {
         std::cout << "verification failed in " << unit.failure->operation << ": "
                   << unit.failure->summary() << '\n';
      } else {
         std::cout << "not verified (" << unit.reason << ")\n";
      }
   }
}

void printJson( const BringupPlan& plan, const std::vector<UnitVerdict>& units ) {
   using Json = nlohmann::ordered_json;
   Json list = Json::array();
   for ( const UnitVerdict& unit : units ) {
      Json item{ { "unit", unit.unit }, { "verified", unit.verified } };
      if ( !unit.verified ) {
         item["reason"] = unit.reason;
      }
      if ( const std::optional<AbortReport>& f = unit.failure ) {
         item["failure"] = Json{ { "operation", f->operation },
                                 { "assertion", f->assertion },
                                 { "rule", f->rule },
                                 { "entry", f->entry },
                                 { "sdkError", f->sdkError } };
      }
      list.push_back( item );
   }
   Json skipped = Json::array();
   for ( const SkippedStep& step : plan.skipped ) {
      skipped.push_back( step.step->name );
   }
   std::cout << Json{ { "units", list }, { "skipped", skipped } }.dump( 2 ) << '\n';
}

}  // namespace

int verifyCommand( int argc, char** argv ) {
   CLI::App app(
       "Brings up a simulated switch, installs the system ACL on every unit, then runs "
       "verifyInstalledAclRules and verifyInstalledL2TrapRules on every unit and prints "
       "\"unit N: verified\", or the assertion that failed with its rule. --tamper "
       "changes an installed entry behind the library's back first, to watch "
       "verification catch it.",
       "ferro-acl verify" );
   RunOptions options;
   std::vector<std::string> tamperTexts;
   addRunOptions( app, options );
   app.add_option( "--tamper", tamperTexts,
                   "after install, change one entry through the simulated SDK: FIELD a "
                   "qualifier or action as --json spells it, -ACTION removes it; RULE on "
                   "UNIT, else on the lowest unit that has it (repeatable)" )
       ->type_name( "'[UNIT/]RULE:FIELD=VALUE'" )
       ->allow_extra_args( false );
   app.footer(
       "Examples:\n"
       "  ferro-acl verify\n"
       "  ferro-acl verify --profile profiles/vxlan-core-l2.json --json\n"
       "  ferro-acl verify --tamper 'BGP - Dst Port:CosQCpuNew=5'\n"
       "  ferro-acl verify --tamper 'VRRP:Ttl=254'\n"
       "  ferro-acl verify --tamper '1/PIM:-CosQCpuNew'\n"
       "  ferro-acl verify --tamper 'ISIS IS-L1L2 Entry Fp Ports:InPorts=1-4,6-64'\n"
       "Exit status: 0 every unit verified or not verifiable by design; 1 a "
       "verification failed or the library aborted; 2 bad options or profile." );
   if ( std::optional<int> status = parseCommandLine( app, argc, argv ) ) {
      return *status;
   }
   std::vector<Tamper> tampers;
   for ( const std::string& text : tamperTexts ) {
      Result<Tamper> tamper = parseTamper( text );
      if ( !tamper ) {
         std::cerr << "ferro-acl: " << tamper.error() << '\n';
         return exitUsage;
      }
      tampers.push_back( tamper.value() );
   }
   const std::optional<AgentSetup> setup = prepareRun( options );
   if ( !setup ) {
      return exitUsage;
   }
   const ChildOutcome outcome =
       runInstalled( *setup, [&]( SimulatedAgent& agent, const MessageChannel& channel ) {
          for ( const Tamper& tamper : tampers ) {
             Result<int> applied = applyTamper( tamper, agent.state() );
             if ( !applied ) {
                std::cerr << "ferro-acl: " << applied.error() << '\n';
                return exitUsage;
             }
          }
          agent.verify( channel );
          return agent.reportFaults();
       } );
   const std::optional<AbortReport> abort = explainAbort( outcome, setup->plan );
   if ( !abort && outcome.exitCode == exitUsage ) {
      std::cerr << outcome.err;
      return exitUsage;
   }
   const std::vector<UnitVerdict> units =
       verdicts( setup->plan, AgentProgress::read( outcome.messages ), abort );
   if ( options.json ) {
      printJson( setup->plan, units );
   } else {
      printText( setup->plan, units );
   }
   std::cout.flush();
   return finishRun( outcome, setup->plan );
}

}  // namespace FerroAcl
