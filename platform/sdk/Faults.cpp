// Fault injection and activity-lock checking around every SDK call.
#include <cstring>

#include "platform/runtime/ActivityLock.h"
#include "platform/sdk/SimState.h"

namespace Sim {

void FieldProcessor::injectFault( const Fault& fault ) {
   std::lock_guard guard( state_->mutex );
   state_->faults.push_back( FaultRecord{ fault } );
   ++state_->activeFaults;
}

void FieldProcessor::clearFaults() {
   std::lock_guard guard( state_->mutex );
   state_->faults.clear();
   state_->activeFaults = 0;
}

std::vector<FaultRecord> FieldProcessor::faults() const {
   std::lock_guard guard( state_->mutex );
   return state_->faults;
}

bool FieldProcessor::State::faultFires( const char* function, int unit, const int* entry,
                                        int& rc ) {
   bool fires = false;
   for ( FaultRecord& record : faults ) {
      const Fault& f = record.fault;
      if ( record.retired ) {
         continue;
      }
      if ( !f.function.empty() && std::strcmp( f.function.c_str(), function ) != 0 ) {
         continue;
      }
      if ( f.unit && *f.unit != unit ) {
         continue;
      }
      if ( f.entry && ( entry == nullptr || *f.entry != *entry ) ) {
         continue;
      }
      ++record.matched;
      if ( record.matched < f.nth ) {
         continue;
      }
      ++record.fired;
      if ( !fires ) {
         rc = f.rc;
         fires = true;
      }
      if ( f.once ) {
         record.retired = true;
         --activeFaults;
      }
   }
   return fires;
}

bool FieldProcessor::State::activityLockHeld() {
   return Kel::activityLock().heldByCurrentThread();
}

void FieldProcessor::State::noteLockViolation( const char* function ) {
   lockViolations.push_back( std::string( function ) + " called with the " +
                             Kel::activityLock().name() + " lock held" );
}

void FieldProcessor::checkActivityLockIs( bool check ) {
   std::lock_guard guard( state_->mutex );
   state_->checkActivityLock = check;
}

const std::vector<std::string>& FieldProcessor::lockViolations() const {
   return state_->lockViolations;
}

}  // namespace Sim
