#include "tools/ferro-acl/AbortReport.h"

#include <cstdlib>
#include <cstring>
#include <sstream>

namespace FerroAcl {

namespace {

// glibc's form: "PROGRAM: FILE:LINE: FUNCTION: Assertion `EXPRESSION' failed."
bool parseAssertion( const std::string& line, AbortReport& report ) {
   const std::string marker = ": Assertion `";
   const size_t at = line.find( marker );
   const size_t end = line.rfind( "' failed." );
   if ( at == std::string::npos || end == std::string::npos || end < at ) {
      return false;
   }
   report.assertion = line.substr( at + marker.size(), end - at - marker.size() );
   const size_t program = line.find( ": " );
   const size_t location = program == std::string::npos ? program : line.find( ": ", program + 2 );
   if ( location != std::string::npos && location < at ) {
      report.function = line.substr( location + 2, at - location - 2 );
   }
   return true;
}

// The entry a call named: the second argument of entry-level calls.
std::optional<std::pair<int, int>> entryOfCall( const std::string& call ) {
   const bool entryCall = ( call.starts_with( "bcm_field_qualify_" ) ||
                            call.starts_with( "bcm_field_action_" ) ||
                            call.starts_with( "bcm_field_entry_" ) ) &&
                          !call.starts_with( "bcm_field_entry_create_id" );
   const size_t open = call.find( '(' );
   if ( !entryCall || open == std::string::npos ) {
      return std::nullopt;
   }
   char* end = nullptr;
   const int unit = int( std::strtol( call.c_str() + open + 1, &end, 10 ) );
   if ( *end != ',' ) {
      return std::nullopt;
   }
   return std::pair{ unit, int( std::strtol( end + 1, nullptr, 10 ) ) };
}

}  // namespace

std::string AbortReport::summary() const {
   const std::string onRule =
       rule.empty() ? "" : " on rule \"" + rule + "\" (entry " + std::to_string( entry ) + ")";
   if ( !sdkError.empty() ) {
      return sdkError + onRule;
   }
   if ( !assertion.empty() ) {
      return assertion + onRule;
   }
   return "killed by signal " + std::to_string( signal ) + " (" + strsignal( signal ) + ")";
}

std::string AbortReport::message() const {
   std::ostringstream text;
   text << "ferro-acl: the helper library aborted";
   if ( !operation.empty() ) {
      text << " in " << operation << " on unit " << unit;
   }
   text << '\n';
   if ( !sdkError.empty() ) {
      text << "  " << sdkError << '\n';
   }
   if ( !assertion.empty() ) {
      text << "  assertion \"" << assertion << "\" failed"
           << ( function.empty() ? "" : " in " + function ) << '\n';
   } else {
      text << "  " << summary() << '\n';
   }
   if ( !rule.empty() ) {
      text << "  rule \"" << rule << "\" (entry " << entry << ")\n";
   }
   return text.str();
}

std::optional<AbortReport> explainAbort( const ChildOutcome& outcome,
                                         const BringupPlan& plan ) {
   if ( outcome.signal == 0 ) {
      return std::nullopt;
   }
   AbortReport report;
   report.signal = outcome.signal;
   std::istringstream err( outcome.err );
   for ( std::string line; std::getline( err, line ); ) {
      if ( line.find( " API ERROR:" ) != std::string::npos ) {
         report.sdkError = line;
      } else if ( !parseAssertion( line, report ) ) {
         report.otherErr += line + '\n';
      }
   }
   const AgentProgress progress = AgentProgress::read( outcome.messages );
   if ( progress.running && *progress.running < plan.calls.size() ) {
      const PlannedCall& call = plan.calls[*progress.running];
      report.operation = call.step->name;
      report.unit = call.unit;
      report.verifying = call.step->kind == StepKind::verify;
   }
   // The last call read the entry under check, or failed on it. A presence
   // check fails before any read-back of its rule, when the last call belongs
   // to the rule checked before it.
   const bool presenceCheck = report.assertion.find( "RuleHas(" ) != std::string::npos;
   if ( report.verifying && !presenceCheck ) {
      if ( auto entry = entryOfCall( progress.lastCall ) ) {
         auto name = progress.entryNames.find( *entry );
         if ( name != progress.entryNames.end() && !name->second.empty() ) {
            report.rule = name->second;
            report.entry = entry->second;
         }
      }
   }
   return report;
}

}  // namespace FerroAcl
