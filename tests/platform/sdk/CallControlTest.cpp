// What surrounds every SDK call: fault injection, the journal, lock checking
// and the hooks.
#include <gmock/gmock.h>

#include <future>
#include <thread>

#include "platform/runtime/ActivityLock.h"
#include "tests/platform/sdk/SdkFixture.h"

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using namespace SdkTest;

namespace {

constexpr bcm_field_entry_t kEntry = 100;

class FaultTest : public SdkFixture {
 protected:
   int addDrop( bcm_field_entry_t entry, int unit = kUnit ) {
      return sdk.bcm_field_action_add( unit, entry, bcmFieldActionDrop, 0, 0 );
   }
   int removeDrop( bcm_field_entry_t entry ) {
      return sdk.bcm_field_action_remove( kUnit, entry, bcmFieldActionDrop );
   }
};

TEST_F( FaultTest, NthCallFailsOnceWithoutChangingState ) {
   createEntry( kEntry );
   fp.injectFault( { .function = "bcm_field_action_add", .nth = 2, .rc = BCM_E_FULL } );
   EXPECT_EQ( 0,
              sdk.bcm_field_action_add( kUnit, kEntry, bcmFieldActionCosQCpuNew, 1, 0 ) );
   EXPECT_EQ( BCM_E_FULL, addDrop( kEntry ) );
   uint32 p0, p1;
   EXPECT_EQ( BCM_E_NOT_FOUND,
              sdk.bcm_field_action_get( kUnit, kEntry, bcmFieldActionDrop, &p0, &p1 ) );
   EXPECT_EQ( 0, addDrop( kEntry ) );

   const auto faults = fp.faults();
   ASSERT_EQ( 1u, faults.size() );
   EXPECT_EQ( 2, faults[0].matched );
   EXPECT_EQ( 1, faults[0].fired );
   EXPECT_TRUE( faults[0].retired );
}

TEST_F( FaultTest, AlwaysFaultFailsFromNthCallOn ) {
   createEntry( kEntry );
   fp.injectFault( { .function = "bcm_field_action_remove",
                     .nth = 2,
                     .rc = BCM_E_INTERNAL,
                     .once = false } );
   ASSERT_EQ( 0, addDrop( kEntry ) );
   EXPECT_EQ( 0, removeDrop( kEntry ) );
   ASSERT_EQ( 0, addDrop( kEntry ) );
   EXPECT_EQ( BCM_E_INTERNAL, removeDrop( kEntry ) );
   EXPECT_EQ( BCM_E_INTERNAL, removeDrop( kEntry ) );
   EXPECT_EQ( 3, fp.faults()[0].matched );
   EXPECT_EQ( 2, fp.faults()[0].fired );
   fp.clearFaults();
   EXPECT_EQ( 0, removeDrop( kEntry ) );
}

TEST_F( FaultTest, FaultOnUnitOrEntrySparesTheOthers ) {
   ASSERT_EQ( 0, fp.attachUnit( 1, Sim::UnitConfig{} ) );
   ASSERT_EQ( 0, sdk.bcm_field_group_create_id( 1, ingressQset(), 1, kIngress ) );
   ASSERT_EQ( 0, sdk.bcm_field_entry_create_id( 1, kIngress, kEntry ) );
   createEntry( kEntry );
   createEntry( kEntry + 1 );
   fp.injectFault( { .unit = 1, .nth = 0, .rc = BCM_E_TIMEOUT, .once = false } );
   fp.injectFault(
       { .entry = kEntry + 1, .nth = 0, .rc = BCM_E_RESOURCE, .once = false } );

   EXPECT_EQ( BCM_E_TIMEOUT, addDrop( kEntry, 1 ) );
   EXPECT_EQ( BCM_E_TIMEOUT, sdk.bcm_field_group_destroy( 1, kIngress ) );
   EXPECT_EQ( 0, addDrop( kEntry ) );
   EXPECT_EQ( BCM_E_RESOURCE, addDrop( kEntry + 1 ) );
   EXPECT_EQ( BCM_E_RESOURCE, sdk.bcm_field_entry_install( kUnit, kEntry + 1 ) );
   // A call that names no entry never matches an entry fault.
   EXPECT_EQ( 0, sdk.bcm_field_group_create_id( kUnit, ingressQset(), 3, 9 ) );
   // Nor are the accessors SDK calls.
   EXPECT_EQ( fp.fieldAction( Shim::FieldAction::Drop ),
              bcm_field_action_t( bcmFieldActionDrop ) );
   EXPECT_STREQ( "Ok", sdk.bcm_errmsg( 0 ) );
   EXPECT_EQ( 2, fp.faults()[0].matched );
   EXPECT_EQ( 2, fp.faults()[1].matched );
}

TEST_F( FaultTest, FaultedInstallLeavesHardwareAsItWas ) {
   installTrap( kEntry, 179, 38 );
   ASSERT_EQ( 0, sdk.bcm_field_qualify_L4DstPort( kUnit, kEntry, 646, 0xffff ) );
   fp.injectFault(
       { .function = "bcm_field_entry_reinstall", .entry = kEntry, .rc = BCM_E_FAIL } );
   EXPECT_EQ( BCM_E_FAIL, sdk.bcm_field_entry_reinstall( kUnit, kEntry ) );
   EXPECT_THAT( ingressHits( udpTo( 179 ) ), ElementsAre( kEntry ) );
   EXPECT_EQ( 0, sdk.bcm_field_entry_reinstall( kUnit, kEntry ) );
   EXPECT_THAT( ingressHits( udpTo( 646 ) ), ElementsAre( kEntry ) );
}

class JournalTest : public SdkFixture {
 protected:
   std::vector<std::string> lines() const {
      std::vector<std::string> out;
      for ( const Sim::JournalEntry& e : fp.journal() ) {
         out.push_back( e.toString() );
      }
      return out;
   }
};

TEST_F( JournalTest, RecordsCallsAsMadeWithNamesAndResults ) {
   createEntry( 1000 );
   fp.clearJournal();
   const bcm_mac_t mac = { 0x01, 0x80, 0xc2, 0x00, 0x00, 0x0e };
   const bcm_mac_t exact = { 0xff, 0xff, 0xff, 0xff, 0xff, 0xff };
   sdk.bcm_field_action_add( kUnit, 1000, bcmFieldActionCosQCpuNew, 38, 0 );
   sdk.bcm_field_qualify_DstMac( kUnit, 1000, mac, exact );
   sdk.bcm_field_qualify_InPorts( kUnit, 1000, portRange( 1, 64 ), portRange( 0, 64 ) );
   sdk.bcm_field_qualify_IpType( kUnit, 1000, bcmFieldIpTypeIpv4Any );
   sdk.bcm_field_qualify_EtherType( kUnit, 1000, 0x88cc, 0xffff );
   sdk.bcm_field_qualify_PacketRes( kUnit, 1000, BCM_FIELD_PKT_RES_BPDU, ~0u );
   sdk.bcm_field_qualify_DstIp( kUnit, 1000, 0xe0000005, 0xffffffff );
   sdk.bcm_field_action_remove( kUnit, 1000, bcmFieldActionDrop );
   int prio;
   sdk.bcm_field_entry_prio_get( kUnit, 1000, &prio );

   EXPECT_THAT(
       lines(),
       ElementsAre(
           "bcm_field_action_add(0, 1000, CosQCpuNew, 38, 0) = 0",
           "bcm_field_qualify_DstMac(0, 1000, 01:80:c2:00:00:0e, ff:ff:ff:ff:ff:ff) = 0",
           "bcm_field_qualify_InPorts(0, 1000, {1-64}, {0-64}) = 0",
           "bcm_field_qualify_IpType(0, 1000, Ipv4Any) = 0",
           "bcm_field_qualify_EtherType(0, 1000, 0x88cc, 0xffff) = 0",
           "bcm_field_qualify_PacketRes(0, 1000, BPDU, 0xffffffff) = 0",
           "bcm_field_qualify_DstIp(0, 1000, 224.0.0.5, 255.255.255.255) = 0",
           "bcm_field_action_remove(0, 1000, Drop) = -7",
           "bcm_field_entry_prio_get(0, 1000, &prio) = 0" ) );
}

TEST_F( JournalTest, FaultedCallIsRecordedWithFaultCode ) {
   fp.clearJournal();
   fp.injectFault( { .function = "bcm_field_entry_install", .rc = BCM_E_FULL } );
   sdk.bcm_field_entry_install( kUnit, 5 );
   EXPECT_THAT( lines(), ElementsAre( "bcm_field_entry_install(0, 5) = -6" ) );
}

TEST_F( JournalTest, DisabledJournalRecordsNothing ) {
   fp.clearJournal();
   fp.journalEnabledIs( false );
   installTrap( kEntry, 179, 38 );
   EXPECT_THAT( fp.journal(), IsEmpty() );
   fp.journalEnabledIs( true );
   sdk.bcm_field_entry_remove( kUnit, kEntry );
   EXPECT_EQ( 1u, fp.journal().size() );
}

class LockCheckTest : public SdkFixture {
 protected:
   void TearDown() override {
      while ( Kel::activityLock().heldByCurrentThread() ) {
         Kel::activityLock().unlock();
      }
   }
};

TEST_F( LockCheckTest, CallUnderActivityLockIsAViolation ) {
   fp.checkActivityLockIs( true );
   createEntry( kEntry );
   EXPECT_THAT( fp.lockViolations(), IsEmpty() );
   {
      std::lock_guard held( Kel::activityLock() );
      sdk.bcm_field_entry_install( kUnit, kEntry );
   }
   ASSERT_EQ( 1u, fp.lockViolations().size() );
   EXPECT_THAT( fp.lockViolations()[0], HasSubstr( "bcm_field_entry_install" ) );

   // Released around the call, as the library's checked call does.
   std::lock_guard held( Kel::activityLock() );
   {
      Kel::UnlockAnchor released( Kel::activityLock() );
      sdk.bcm_field_entry_reinstall( kUnit, kEntry );
   }
   EXPECT_EQ( 1u, fp.lockViolations().size() );
}

TEST_F( LockCheckTest, LockHeldByAnotherThreadOrCheckOffIsNoViolation ) {
   fp.checkActivityLockIs( true );
   std::promise<void> locked, finished;
   std::future<void> lockedSeen = locked.get_future();
   std::future<void> mayRelease = finished.get_future();
   std::thread other( [&] {
      std::lock_guard held( Kel::activityLock() );
      locked.set_value();
      mayRelease.wait();
   } );
   lockedSeen.wait();
   sdk.bcm_field_entry_install( kUnit, kEntry );
   finished.set_value();
   other.join();
   EXPECT_THAT( fp.lockViolations(), IsEmpty() );

   fp.checkActivityLockIs( false );
   std::lock_guard held( Kel::activityLock() );
   sdk.bcm_field_entry_install( kUnit, kEntry );
   EXPECT_THAT( fp.lockViolations(), IsEmpty() );
}

TEST_F( SdkFixture, HooksRunAndAreCounted ) {
   int calls = 0;
   sdk.preCallHook();
   fp.failureHookIs( [&calls] { ++calls; } );
   sdk.failureHook();
   sdk.failureHook();
   EXPECT_EQ( 1, fp.preCallHookCount() );
   EXPECT_EQ( 2, fp.failureHookCount() );
   EXPECT_EQ( 2, calls );
   fp.reset();
   EXPECT_EQ( 0, fp.failureHookCount() );
   sdk.failureHook();
   EXPECT_EQ( 2, calls );  // reset dropped the hook
}

}  // namespace
