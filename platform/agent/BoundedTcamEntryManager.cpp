#include <algorithm>
#include <utility>

#include "platform/agent/TcamEntryManager.h"
#include "platform/sdk/Shim.h"

FerroBoundedTcamEntryManager::FerroBoundedTcamEntryManager(
   Lumo::String name, bcm_field_stage_t stage, bcm_field_group_t groupId,
   int groupPriority, bool supportsAclGroup, U32 baseEntryId, U32 size )
      : FerroTcamEntryManager( std::move( name ), stage, groupId, groupPriority,
                               supportsAclGroup ),
        baseEntryId_( baseEntryId ), size_( size ) {}

U32 FerroBoundedTcamEntryManager::nextEntryId( U32 unit ) const {
   auto it = next_.find( unit );
   return it == next_.end() ? baseEntryId_ : it->second;
}

int FerroBoundedTcamEntryManager::createEntry( U32 unit, U32 entry ) {
   int rc = Shim::sdk_->bcm_field_entry_create_id( unit, groupId(), entry );
   if ( BCM_FAILURE( rc ) ) {
      return rc;
   }
   // The chip lets the larger priority win, and the rules are laid out so
   // that an earlier (lower) id takes precedence over a later one.
   const int prio = int( size_ - ( entry - baseEntryId_ ) );
   rc = Shim::sdk_->bcm_field_entry_prio_set( unit, entry, prio );
   if ( BCM_FAILURE( rc ) ) {
      // An entry at the wrong place would silently shadow or be shadowed;
      // give it back so that a later request starts over.
      Shim::sdk_->bcm_field_entry_destroy( unit, entry );
   }
   return rc;
}

int FerroBoundedTcamEntryManager::unitIs( U32 unit, const FerroCentral::ChipAttributes& chip ) {
   int rc = FerroTcamEntryManager::unitIs( unit, chip );
   for ( U32 i = 0; preallocated_ && BCM_SUCCESS( rc ) && i < size_; ++i ) {
      rc = createEntry( unit, baseEntryId_ + i );
   }
   return rc;
}

U32 FerroBoundedTcamEntryManager::getEntry( U32 unit, U32 entry, const Lumo::String& name,
                                            const FerroTcam::RequestKey& key ) {
   // Written as a difference so that a pool ending at the top of the id range
   // does not overflow.
   if ( entry < baseEntryId_ || entry - baseEntryId_ >= size_ ) {
      return 0;
   }
   // A record stands for an entry that exists on the chip: records are made
   // only once the SDK has accepted the entry or a qualifier on it. A
   // pre-allocated pool's entries exist from the start.
   if ( !preallocated_ && record( unit, entry ) == nullptr &&
        BCM_FAILURE( createEntry( unit, entry ) ) ) {
      return 0;
   }
   TcamEntryRecord& r = recordIs( unit, entry );
   r.ruleName = name;
   r.key = key;
   if ( groupManager_ ) {
      groupManager_->entryManagerIs( entry, FerroTcamEntryManager::Ptr( this ) );
   }
   U32& next = next_.try_emplace( unit, baseEntryId_ ).first->second;
   next = std::max( next, entry + 1 );
   return entry;
}
