#include "tools/ferro-acl/SimulatedAgent.h"

#include <iostream>
#include <stdexcept>

#include "tools/ferro-acl/AgentProgress.h"
#include "tools/ferro-acl/ExitStatus.h"

namespace FerroAcl {

std::unique_ptr<SimulatedAgent> SimulatedAgent::start( const AgentSetup& setup,
                                                       int& status ) {
   std::unique_ptr<SimulatedAgent> agent( new SimulatedAgent( setup ) );
   try {
      agent->sw_ = Agent::bringUp( setup.config );
   } catch ( const std::invalid_argument& e ) {
      std::cerr << setup.source << ": " << e.what() << '\n';
      status = exitUsage;
      return nullptr;
   } catch ( const std::runtime_error& e ) {
      std::cerr << "ferro-acl: " << setup.source << ": bring-up failed: " << e.what()
                << '\n';
      status = exitFailure;
      return nullptr;
   }
   const std::string path =
       setup.helperLibrary.empty() ? defaultHelperLibraryPath() : setup.helperLibrary;
   Result<std::unique_ptr<HelperLibrary>> loaded =
       HelperLibrary::open( path, "FerroTcamSystemAclHelper" );
   if ( !loaded ) {
      std::cerr << "ferro-acl: " << loaded.error() << '\n';
      status = exitFailure;
      return nullptr;
   }
   agent->library_ = std::move( loaded.value() );
   agent->sw_->attach( agent->library_->helper() );
   // Injected only now, so that only the library's own calls count.
   for ( const Sim::Fault& fault : setup.faults ) {
      Sim::FieldProcessor::instance().injectFault( fault );
   }
   status = exitOk;
   return agent;
}

void SimulatedAgent::run( StepKind kind, const MessageChannel& channel ) {
   FerroTcamSystemAcl::HelperBase& helper = library_->helper();
   const std::vector<PlannedCall>& calls = setup_.plan.calls;
   for ( size_t i = 0; i < calls.size(); ++i ) {
      if ( calls[i].step->kind == kind ) {
         channel.send( AgentProgress::callMessage( i ) );
         ( helper.*calls[i].step->operation )( calls[i].unit );
         channel.send( AgentProgress::doneMessage( i ) );
      }
   }
}

void SimulatedAgent::install( const MessageChannel& channel ) {
   run( StepKind::install, channel );
}

void SimulatedAgent::verify( const MessageChannel& channel ) {
   // Entry names first: an assertion names no rule, the last SDK call its entry.
   for ( const UnitState& unit : state().units ) {
      for ( const EntryState& entry : unit.entries ) {
         channel.send( AgentProgress::entryMessage( unit.unit, entry.id, entry.name ) );
      }
   }
   run( StepKind::verify, channel );
}

ChipState SimulatedAgent::state() const {
   return collectChipState( *sw_, library_->helper(), setup_.plan );
}

int SimulatedAgent::reportFaults() const {
   // A fault that never fired means the run did not show what was asked for.
   // One that fired without stopping the process hit a call the library does
   // not check, which is worth saying.
   int status = exitOk;
   const std::vector<Sim::FaultRecord> records = Sim::FieldProcessor::instance().faults();
   for ( size_t i = 0; i < records.size() && i < setup_.faultTexts.size(); ++i ) {
      const Sim::FaultRecord& record = records[i];
      if ( record.fired == 0 ) {
         std::cerr << "ferro-acl: --fail " << setup_.faultTexts[i]
                   << ": nothing failed; the library made " << record.matched
                   << " matching call" << ( record.matched == 1 ? "" : "s" ) << '\n';
         status = exitFailure;
      } else {
         std::cerr << "ferro-acl: --fail " << setup_.faultTexts[i]
                   << ": the call failed and the library carried on\n";
      }
   }
   return status;
}

}  // namespace FerroAcl
