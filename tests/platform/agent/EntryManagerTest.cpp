#include <algorithm>

#include "AgentTestSupport.h"
#include "platform/agent/TcamEntryManager.h"

using namespace AgentTest;

namespace {

class EntryManagerTest : public SwitchTest {};

}  // namespace

// The position in the pool sets the priority, not the order of installation;
// ids outside the pool are refused.
TEST_F( EntryManagerTest, PoolPositionSetsPriorityAndBounds ) {
   const U32 late = tcpEntry( l3Base + 7, 38 );
   const U32 early = tcpEntry( l3Base + 3, 40 );
   ASSERT_EQ( sw_->l3Manager->installEntry( 0, late ), 0 );
   ASSERT_EQ( sw_->l3Manager->installEntry( 0, early ), 0 );
   const auto view = chip().entry( 0, bcm_field_entry_t( early ) );
   ASSERT_TRUE( view );
   EXPECT_EQ( view->group, l3Group );
   EXPECT_GT( view->priority, chip().entry( 0, bcm_field_entry_t( late ) )->priority );
   EXPECT_EQ( hit( 0, tcpPacket(), l3Group ), bcm_field_entry_t( early ) );
   EXPECT_EQ( cpuQueue(), 40u );
   EXPECT_EQ( sw_->l3Manager->nextEntryId( 0 ), l3Base + 8 );
   EXPECT_EQ( sw_->l3Manager->nextEntryId( 1 ), l3Base );

   const U32 size = Agent::ManagerLayout::l3Size;
   for ( U32 id : { 0u, l3Base - 1, l3Base + size, Agent::ManagerLayout::l2Base, ~0u } ) {
      EXPECT_EQ( sw_->l3Manager->getEntry( 0, id, "outside", {} ), 0u ) << id;
      const auto view = chip().entry( 0, bcm_field_entry_t( id ) );
      EXPECT_TRUE( !view || view->group != l3Group ) << id;
   }
   const U32 last = l3Base + size - 1;
   EXPECT_EQ( sw_->l3Manager->getEntry( 0, last, "last", {} ), last );
   EXPECT_EQ( sw_->l3Manager->nextEntryId( 0 ), l3Base + size );
}

TEST_F( EntryManagerTest, RebindingKeepsOneEntryAndRenamesIt ) {
   const FerroTcam::RequestKey key( "PBMP_E_ALL for l3 ctrl group", false );
   ASSERT_EQ( sw_->l3Manager->getEntry( 0, l3Base, "first", {} ), l3Base );
   ASSERT_EQ( sw_->l3Manager->getEntry( 0, l3Base, "second", key ), l3Base );
   const std::vector<Sim::EntryView> entries = chip().entries( 0 );
   EXPECT_EQ( std::count_if( entries.begin(), entries.end(),
                             []( const Sim::EntryView& v ) { return v.group == l3Group; } ),
              1 );
   const TcamEntryRecord* record = sw_->l3Manager->record( 0, l3Base );
   ASSERT_NE( record, nullptr );
   EXPECT_EQ( record->ruleName, "second" );
   EXPECT_TRUE( record->key.isEq( key ) );

   // Marking an entry that was never handed out must not pass it off as created.
   sw_->l3Manager->setTcamEntryBcmPbmpPermanent( 0, l3Base + 1, true );
   ASSERT_EQ( sw_->l3Manager->getEntry( 0, l3Base + 1, "third", key ), l3Base + 1 );
   EXPECT_TRUE( chip().entry( 0, bcm_field_entry_t( l3Base + 1 ) ) );
}

// The L2 block exists whole from bring-up, at its priorities, so that a rule
// can be qualified in place before it is requested; requesting it creates
// nothing more.
TEST_F( EntryManagerTest, PreallocatedPoolExistsBeforeItsRules ) {
   const U32 base = Agent::ManagerLayout::l2Base;
   const U32 size = Agent::ManagerLayout::l2Size;
   const auto first = chip().entry( 0, bcm_field_entry_t( base ) );
   const auto last = chip().entry( 0, bcm_field_entry_t( base + size - 1 ) );
   ASSERT_TRUE( first && last );
   EXPECT_GT( first->priority, last->priority );
   EXPECT_FALSE( chip().entry( 0, bcm_field_entry_t( base + size ) ) );
   const size_t before = chip().entries( 0 ).size();
   EXPECT_EQ( Shim::sdk_->bcm_field_qualify_InterfaceClassVPort( 0, base + 4, 1, 1 ), 0 );
   EXPECT_EQ( sw_->l2Manager->getEntry( 0, base + 4, "rule", {} ), base + 4 );
   EXPECT_EQ( chip().entries( 0 ).size(), before );
   EXPECT_EQ( chip().entry( 0, bcm_field_entry_t( base + 4 ) )->software.qualifiers.size(), 1u );
}

// A refused step leaves neither an entry on the chip nor a record behind, so
// that the id can be requested again.
TEST_F( EntryManagerTest, RefusedCreationLeavesNothingBehind ) {
   for ( const char* call : { "bcm_field_entry_create_id", "bcm_field_entry_prio_set" } ) {
      SCOPED_TRACE( call );
      chip().injectFault( Sim::Fault{ call, 0, std::nullopt, 1, BCM_E_RESOURCE, true } );
      EXPECT_EQ( sw_->l3Manager->getEntry( 0, l3Base, "refused", {} ), 0u );
      EXPECT_FALSE( chip().entry( 0, bcm_field_entry_t( l3Base ) ) );
      EXPECT_EQ( sw_->l3Manager->record( 0, l3Base ), nullptr );
      EXPECT_FALSE( sw_->groupManager->managerForEntry( l3Base ) );
   }
   EXPECT_EQ( sw_->l3Manager->getEntry( 0, l3Base, "retried", {} ), l3Base );
   EXPECT_EQ( sw_->groupManager->managerForEntry( l3Base ), sw_->l3Manager );
}

// The chip looks packets up in the hardware copy only: a changed action shows
// after a reinstall, and enable/remove switch the hardware copy.
TEST_F( EntryManagerTest, HardwareFollowsInstallEnableAndRemove ) {
   auto& m = *sw_->l3Manager;
   const U32 entry = tcpEntry( l3Base, 38 );
   EXPECT_EQ( cpuQueue(), std::nullopt );
   ASSERT_EQ( m.installEntry( 0, entry ), 0 );
   EXPECT_EQ( cpuQueue(), 38u );

   ASSERT_EQ( Shim::sdk_->bcm_field_action_remove( 0, entry, bcmFieldActionCosQCpuNew ), 0 );
   ASSERT_EQ( Shim::sdk_->bcm_field_action_add( 0, entry, bcmFieldActionCosQCpuNew, 45, 0 ),
              0 );
   EXPECT_EQ( cpuQueue(), 38u );
   ASSERT_EQ( m.reinstallEntry( 0, entry ), 0 );
   EXPECT_EQ( cpuQueue(), 45u );

   const int status = BCM_FIELD_ENTRY_ENABLE_STATUS;
   EXPECT_EQ( m.enableEntry( 0, entry, false, status + 1 ), BCM_E_PARAM );
   EXPECT_EQ( cpuQueue(), 45u );
   ASSERT_EQ( m.enableEntry( 0, entry, false, status ), 0 );
   EXPECT_EQ( cpuQueue(), std::nullopt );
   ASSERT_EQ( m.enableEntry( 0, entry, true, status ), 0 );
   EXPECT_EQ( cpuQueue(), 45u );

   ASSERT_EQ( m.removeEntry( 0, entry ), 0 );
   EXPECT_EQ( cpuQueue(), std::nullopt );
   EXPECT_EQ( m.reinstallEntry( 0, entry ), BCM_E_PARAM );  // the SDK's code, unchanged
   EXPECT_EQ( m.installEntry( 0, entry ), 0 );
   EXPECT_EQ( cpuQueue(), 45u );
}
