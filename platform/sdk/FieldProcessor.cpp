// The simulator object, its units and the bookkeeping of an entry copy.
#include "platform/sdk/SimState.h"

namespace Shim {
Sdk* sdk_ = &Sim::FieldProcessor::instance();
}  // namespace Shim

namespace Sim {

FieldProcessor& FieldProcessor::instance() {
   // Never destroyed: the agent and a dlopen-ed helper may still call through
   // sdk_ while static objects are torn down.
   static FieldProcessor* const processor = new FieldProcessor();
   return *processor;
}

FieldProcessor::FieldProcessor() : state_( new State() ) {}
FieldProcessor::~FieldProcessor() {
   delete state_;
}

void FieldProcessor::reset( SdkVersion version ) {
   std::lock_guard guard( state_->mutex );
   State& s = *state_;
   s.version = version;
   s.units.clear();
   s.faults.clear();
   s.activeFaults = 0;
   s.journal.clear();
   s.journalEnabled = true;
   s.checkActivityLock = false;
   s.lockViolations.clear();
   s.preCallHook = nullptr;
   s.failureHook = nullptr;
   s.preCallHookCount = 0;
   s.failureHookCount = 0;
}

SdkVersion FieldProcessor::version() const {
   return state_->version;
}

int FieldProcessor::attachUnit( int unit, const UnitConfig& config ) {
   std::lock_guard guard( state_->mutex );
   if ( state_->units.contains( unit ) ) {
      return BCM_E_EXISTS;
   }
   if ( config.portCount < 1 || config.portCount > BCM_PBMP_PORT_MAX ||
        config.cpuQueueCount < 1 || config.classIdBits < 1 || config.classIdBits > 32 ) {
      return BCM_E_PARAM;
   }
   Unit& u = state_->units[unit];
   u.config = config;
   for ( bcm_field_qualify_t q : config.unsupportedQualifiers ) {
      u.unsupportedQualifiers |= uint64_t{ 1 } << q;
   }
   for ( Shim::FieldAction a : config.unsupportedActions ) {
      u.unsupportedActions |= 1u << static_cast<int>( a );
   }
   u.classIdMax = config.classIdBits >= 32 ? ~0u : ( 1u << config.classIdBits ) - 1;
   u.portClass.assign( static_cast<size_t>( config.portCount ), 0 );
   for ( int port = 0; port < config.portCount; ++port ) {
      bcm_pbmp_port_add( u.validPorts, port );
   }
   return 0;
}

int FieldProcessor::portValidIs( int unit, bcm_port_t port, bool valid ) {
   std::lock_guard guard( state_->mutex );
   Unit* u = state_->findUnit( unit );
   if ( u == nullptr ) {
      return BCM_E_UNIT;
   }
   if ( port <= cpuPortNumber || port >= u->config.portCount ) {
      return BCM_E_PORT;
   }
   if ( valid ) {
      bcm_pbmp_port_add( u->validPorts, port );
   } else {
      bcm_pbmp_port_remove( u->validPorts, port );
      u->portClass[static_cast<size_t>( port )] = 0;
   }
   return 0;
}

bcm_pbmp_t FieldProcessor::portBitmapAll( int unit ) {
   std::lock_guard guard( state_->mutex );
   const Unit* u = state_->findUnit( unit );
   return u == nullptr ? bcm_pbmp_t{} : u->validPorts;
}

bcm_port_t FieldProcessor::cpuPort( int unit ) {
   std::lock_guard guard( state_->mutex );
   return state_->findUnit( unit ) == nullptr ? -1 : cpuPortNumber;
}

bool FieldProcessor::unitExists( int unit ) const {
   std::lock_guard guard( state_->mutex );
   return state_->units.contains( unit );
}

std::vector<int> FieldProcessor::units() const {
   std::lock_guard guard( state_->mutex );
   std::vector<int> result;
   for ( const auto& [id, unit] : state_->units ) {
      result.push_back( id );
   }
   return result;
}

void FieldProcessor::preCallHookIs( std::function<void()> hook ) {
   std::lock_guard guard( state_->mutex );
   state_->preCallHook = std::move( hook );
}
void FieldProcessor::failureHookIs( std::function<void()> hook ) {
   std::lock_guard guard( state_->mutex );
   state_->failureHook = std::move( hook );
}
int FieldProcessor::preCallHookCount() const {
   std::lock_guard guard( state_->mutex );
   return state_->preCallHookCount;
}
int FieldProcessor::failureHookCount() const {
   std::lock_guard guard( state_->mutex );
   return state_->failureHookCount;
}

// The hooks run outside the simulator's mutex: a hook may well call the SDK.
void FieldProcessor::preCallHook() {
   std::function<void()> hook;
   {
      std::lock_guard guard( state_->mutex );
      ++state_->preCallHookCount;
      if ( !state_->preCallHook ) {
         return;
      }
      hook = state_->preCallHook;
   }
   hook();
}
void FieldProcessor::failureHook() {
   std::function<void()> hook;
   {
      std::lock_guard guard( state_->mutex );
      ++state_->failureHookCount;
      if ( !state_->failureHook ) {
         return;
      }
      hook = state_->failureHook;
   }
   hook();
}

void CopyState::notePlain( bcm_field_qualify_t q ) {
   if ( qualifierRank[q] == 0 ) {
      qualifierRank[q] = nextRank++;
   }
   qualified |= uint64_t{ 1 } << q;
}

void CopyState::noteCompressed( bcm_field_qualify_t q ) {
   if ( qualifierRank[q] == 0 ) {
      qualifierRank[q] = nextRank++;
   }
}

void CopyState::dropRankIfAbsent( bcm_field_qualify_t q, Shim::CompressedField f ) {
   if ( !hasPlain( q ) && compressed[static_cast<size_t>( f )].empty() ) {
      qualifierRank[q] = 0;
   }
}

void CopyState::clearQualifiers() {
   qualified = 0;
   fields = {};
   bcm_pbmp_clear( inPortsData );
   bcm_pbmp_clear( inPortsMask );
   ip6Data = {};
   ip6Mask = {};
   for ( auto& values : compressed ) {
      values.clear();
   }
   qualifierRank = {};
}

void CopyState::clearActions() {
   actionsPresent = 0;
   actions = {};
   actionRank = {};
}

}  // namespace Sim
