// What surrounds every SDK call: fault injection, the journal, lock checking
// and the hooks.
#include <gmock/gmock.h>

#include <algorithm>
#include <future>
#include <thread>

#include "platform/runtime/ActivityLock.h"
#include "tests/platform/sdk/SdkFixture.h"

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::SizeIs;
using namespace SdkTest;

namespace {

// A fault against the same script: priority calls on entries 100 and 101 of unit
// 0 and entry 100 of unit 1, then a port call on unit 1 that names no entry; all
// twice. '.' is a call that succeeded, 'F' one failed with the fault's code.
struct FaultCase {
   const char* name;
   const char* outcomes;
   int matched;
   Sim::Fault fault;
};

constexpr const char* kPrioSet = "bcm_field_entry_prio_set";
// clang-format off
const FaultCase kFaults[] = {
    { "NthCallOnce", ".F......", 2,
      { .function = kPrioSet, .nth = 2, .rc = BCM_E_FULL } },
    { "NthCallAndEveryLater", ".FF.FFF.", 6,
      { .function = kPrioSet, .nth = 2, .rc = BCM_E_INTERNAL, .once = false } },
    { "FunctionOnUnit", "....FF..", 4,
      { .function = kPrioSet, .unit = 0, .nth = 3, .rc = BCM_E_BUSY, .once = false } },
    { "EveryCallOfUnit", "..FF..FF", 4,
      { .unit = 1, .nth = 0, .rc = BCM_E_TIMEOUT, .once = false } },
    { "EntryOnce", ".F......", 1, { .entry = 101, .nth = 0, .rc = BCM_E_RESOURCE } },
    { "EveryCallOfEntryOnAnyUnit", "F.F.F.F.", 4,
      { .entry = 100, .nth = 0, .once = false } },
    { "EveryCall", "FFFFFFFF", 8, { .nth = 0, .rc = BCM_E_FAIL, .once = false } },
};
// clang-format on

class FaultTest : public SdkFixture, public ::testing::WithParamInterface<FaultCase> {};

TEST_P( FaultTest, FailsTheMatchingCallsWithItsCode ) {
   ASSERT_EQ( 0, fp.attachUnit( 1, Sim::UnitConfig{} ) );
   ASSERT_EQ( 0, sdk.bcm_field_group_create_id( 1, ingressQset(), 1, kIngress ) );
   ASSERT_EQ( 0, sdk.bcm_field_entry_create_id( 1, kIngress, 100 ) );
   createEntry( 100 );
   createEntry( 101 );
   const Sim::Fault& fault = GetParam().fault;
   fp.injectFault( fault );
   std::string outcomes;
   for ( int round = 0; round < 2; ++round ) {
      bcm_port_config_t config;
      for ( int rc : { sdk.bcm_field_entry_prio_set( kUnit, 100, 1 ),
                       sdk.bcm_field_entry_prio_set( kUnit, 101, 1 ),
                       sdk.bcm_field_entry_prio_set( 1, 100, 1 ),
                       sdk.bcm_port_config_get( 1, &config ) } ) {
         EXPECT_TRUE( rc == 0 || rc == fault.rc ) << rc;
         outcomes += rc == 0 ? '.' : 'F';
      }
      // Accessors are no SDK calls: a fault never sees them.
      sdk.bcm_errmsg( 0 );
      sdk.fieldAction( Shim::FieldAction::Drop );
   }
   EXPECT_EQ( GetParam().outcomes, outcomes );
   const Sim::FaultRecord record = fp.faults().at( 0 );
   EXPECT_EQ( GetParam().matched, record.matched );
   EXPECT_EQ( std::count( outcomes.begin(), outcomes.end(), 'F' ), record.fired );
   EXPECT_EQ( fault.once, record.retired );
}

INSTANTIATE_TEST_SUITE_P( Sdk, FaultTest, ::testing::ValuesIn( kFaults ), RowName() );

TEST_F( SdkFixture, FaultedCallChangesNothingAndClearedFaultsStopFiring ) {
   installTrap( 100, 179, 38 );
   ASSERT_EQ( 0, sdk.bcm_field_qualify_L4DstPort( kUnit, 100, 646, 0xffff ) );
   fp.injectFault(
       { .function = "bcm_field_entry_reinstall", .entry = 100, .once = false } );
   EXPECT_EQ( BCM_E_PARAM, sdk.bcm_field_entry_reinstall( kUnit, 100 ) );
   EXPECT_THAT( ingressHits( udpTo( 179 ) ), ElementsAre( 100 ) );
   fp.clearFaults();
   EXPECT_EQ( 0, sdk.bcm_field_entry_reinstall( kUnit, 100 ) );
   EXPECT_THAT( ingressHits( udpTo( 646 ) ), ElementsAre( 100 ) );
}

// Under 6.6, whose enumeration values differ from 6.5's.
TEST_F( SdkFixture, JournalRecordsCallsAsMadeWithNamesAndResults ) {
   bringUp( Sim::SdkVersion::V6_6 );
   createEntry( 1000 );
   fp.clearJournal();
   fp.journalEnabledIs( false );
   sdk.bcm_field_entry_install( kUnit, 1000 );
   fp.journalEnabledIs( true );
   addAction( 1000, bcmFieldActionCosQCpuNew, 38 );
   sdk.bcm_field_qualify_InPorts( kUnit, 1000, portRange( 1, 64 ),
                                  portsOf( { 0, 2, 3, 4 } ) );
   sdk.bcm_field_qualify_PacketRes( kUnit, 1000, BCM_FIELD_PKT_RES_BPDU, ~0u );
   sdk.bcm_field_action_remove( kUnit, 1000, bcmFieldActionDrop );
   int prio;
   sdk.bcm_field_entry_prio_get( kUnit, 1000, &prio );
   fp.injectFault( { .function = "bcm_field_entry_install", .rc = BCM_E_FULL } );
   sdk.bcm_field_entry_install( kUnit, 1000 );

   std::vector<std::string> lines;
   for ( const Sim::JournalEntry& e : fp.journal() ) {
      lines.push_back( e.toString() );
   }
   EXPECT_THAT( lines,
                ElementsAre( "bcm_field_action_add(0, 1000, CosQCpuNew, 38, 0) = 0",
                             "bcm_field_qualify_InPorts(0, 1000, {1-64}, {0,2-4}) = 0",
                             "bcm_field_qualify_PacketRes(0, 1000, BPDU, 0xffffffff) = 0",
                             "bcm_field_action_remove(0, 1000, Drop) = -7",
                             "bcm_field_entry_prio_get(0, 1000, &prio) = 0",
                             "bcm_field_entry_install(0, 1000) = -6" ) );
}

// A call is a violation only while the calling thread itself holds the lock.
TEST_F( SdkFixture, LockCheckFlagsCallsUnderTheCallersActivityLock ) {
   Kel::OwnedLock& lock = Kel::activityLock();
   fp.checkActivityLockIs( true );
   sdk.bcm_field_entry_install( kUnit, 100 );
   {
      std::lock_guard held( lock );
      sdk.bcm_field_entry_install( kUnit, 100 );
      Kel::UnlockAnchor released( lock );  // as the library's checked call does
      sdk.bcm_field_entry_reinstall( kUnit, 100 );
   }
   ASSERT_THAT( fp.lockViolations(), SizeIs( 1 ) );
   EXPECT_THAT( fp.lockViolations()[0], HasSubstr( "bcm_field_entry_install" ) );

   std::promise<void> locked, release;
   std::future<void> lockedSeen = locked.get_future(), mayRelease = release.get_future();
   std::thread other( [&] {
      std::lock_guard held( lock );
      locked.set_value();
      mayRelease.wait();
   } );
   lockedSeen.wait();
   sdk.bcm_field_entry_install( kUnit, 100 );
   release.set_value();
   other.join();
   fp.checkActivityLockIs( false );
   std::lock_guard held( lock );
   sdk.bcm_field_entry_install( kUnit, 100 );
   EXPECT_THAT( fp.lockViolations(), SizeIs( 1 ) );
}

TEST_F( SdkFixture, HooksRunAreCountedAndResetDropsThem ) {
   int calls = 0;
   fp.failureHookIs( [&calls] { ++calls; } );
   sdk.preCallHook();
   sdk.failureHook();
   sdk.failureHook();
   EXPECT_EQ( 1, fp.preCallHookCount() );
   EXPECT_EQ( 2, fp.failureHookCount() );
   EXPECT_EQ( 2, calls );
   fp.reset();
   sdk.failureHook();
   EXPECT_EQ( 1, fp.failureHookCount() );
   EXPECT_EQ( 2, calls );
}

}  // namespace
