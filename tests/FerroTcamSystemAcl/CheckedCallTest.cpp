// The checked SDK call as the library's operations make it: the error line, failure
// hook and assertion of a failed call, the trace lines of level 4, the silent
// unchecked form, and the locks given up for the SDK and taken back before the result
// is looked at.
#include <gtest/gtest.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "platform/runtime/ActivityLock.h"
#include "tests/FerroTcamSystemAcl/FrameFixture.h"

// Outside any namespace, so that the assertion names it as the agent's operations are
// named: by their plain signature.
constexpr int kCopyToCpuLine = __LINE__ + 2;
void programCopyToCpu( int unit, int entry ) {
   BCM_CHECK( bcm_field_action_add( unit, entry, bcmFieldActionCopyToCpu, 0, 0 ) );
}

namespace {

using namespace FrameTest;
using Lock = std::lock_guard<Kel::OwnedLock>;

constexpr const char* kThisFile = "tests/FerroTcamSystemAcl/CheckedCallTest.cpp";

std::string site( int line ) {
   return std::string( kThisFile ) + ":" + std::to_string( line );
}

bool agentLocksHeld() {
   return Kel::activityLock().heldByCurrentThread() &&
          Kel::interpreterLock().heldByCurrentThread();
}

// The agent's locks as it holds them while it runs an operation: the interpreter lock,
// then the recursive activity lock twice.
struct AgentLocks {
   Lock interpreter{ Kel::interpreterLock() };
   Lock activity{ Kel::activityLock() };
   Lock activityAgain{ Kel::activityLock() };
};

// Every level of both locks is held again, as AgentLocks took them.
void expectLocksAsTaken() {
   EXPECT_TRUE( agentLocksHeld() );
   EXPECT_EQ( Kel::activityLock().depth(), 2 );
   EXPECT_EQ( Kel::interpreterLock().depth(), 1 );
}

// Stands for bcmFieldActionCopyToCpu. The value is asked for inside the checked call,
// where the SDK call is made, so the probe sees the locks as the SDK sees them; a
// throwing probe is an SDK that throws there.
struct SdkSideProbe {
   operator bcm_field_action_t() const {
      locksHeld.push_back( Kel::activityLock().heldByCurrentThread() ||
                           Kel::interpreterLock().heldByCurrentThread() );
      if ( throws ) {
         throw std::runtime_error( "SDK exception" );
      }
      return Shim::sdk_->fieldAction( Shim::FieldAction::CopyToCpu );
   }
   bool throws = false;
   mutable std::vector<bool> locksHeld;
};

using CheckedCall = SwitchFixture;

TEST_F( CheckedCall, FailureWritesTheErrorLineCallsTheHookAndFailsAssertionZero ) {
   const std::pair<int, const char*> cases[] = {
      { BCM_E_PARAM, "Invalid parameter" },
      { BCM_E_PARTIAL, "Partial success" },  // the last code the SDK has a text for
      { -23, "Unknown error" },
   };
   chip().failureHookIs( [] {
      std::fprintf( stderr, "failure hook, locks held: %d\n", int( agentLocksHeld() ) );
   } );
   // With level 4 on and no sink, a trace line of the failure would reach stderr.
   apiFerro().levelIs( 4, true );
   const std::string where = site( kCopyToCpuLine );
   for ( const auto& [ rc, text ] : cases ) {
      const std::string expected =
         where + " bcm_field_action_add( unit, entry, bcmFieldActionCopyToCpu, 0, 0 ) " +
         "API ERROR:" + text + " (" + std::to_string( rc ) + ")\n" +
         "failure hook, locks held: 1\n" + program_invocation_short_name + ": " +
         where + ": void programCopyToCpu(int, int): Assertion `0' failed.\n";
      EXPECT_EXIT(
         {
            chip().injectFault(
               Sim::Fault{ "bcm_field_action_add", unit, entry, 1, rc } );
            AgentLocks locks;
            programCopyToCpu( unit, entry );
            std::exit( 0 );
         },
         testing::KilledBySignal( SIGABRT ), testing::Eq( expected ) )
         << "rc " << rc;
   }
}

TEST_F( CheckedCall, Level4TracesEachCallAndTheLocksAreGivenUpOnlyForTheSdk ) {
   std::vector<size_t> journalAtHook;
   chip().preCallHookIs( [ & ] {
      EXPECT_TRUE( agentLocksHeld() );
      journalAtHook.push_back( chip().journal().size() );
   } );
   // A positive return is a success; the unchecked call's failure is not looked at.
   chip().injectFault( Sim::Fault{ "bcm_field_action_add", unit, entry, 1, 5 } );
   chip().injectFault(
      Sim::Fault{ "bcm_field_action_remove", unit, entry, 1, BCM_E_FAIL } );
   std::vector<Lumo::TraceLine> lines;
   std::vector<bool> locksAtTrace;
   Lumo::traceSinkIs( [ & ]( const Lumo::TraceLine& line ) {
      lines.push_back( line );
      locksAtTrace.push_back( agentLocksHeld() );
   } );
   apiFerro().levelIs( 4, true );
   AgentLocks locks;
   SdkSideProbe probe;
   const int checkedLine = __LINE__ + 1;
   const int rc = BCM_CHECK( bcm_field_action_add( unit, entry, probe, 0, 0 ) );
   const int uncheckedLine = __LINE__ + 1;
   BCM_NO_RC_CHECK( bcm_field_action_remove( unit, entry, probe ) );

   EXPECT_EQ( rc, 5 );
   EXPECT_EQ( chip().failureHookCount(), 0 );
   EXPECT_EQ( journalAtHook, std::vector<size_t>{ 0 } );  // once, before the SDK call
   EXPECT_EQ( probe.locksHeld, std::vector<bool>( 2, false ) );
   EXPECT_EQ( locksAtTrace, std::vector<bool>( 2, true ) );
   expectLocksAsTaken();
   ASSERT_EQ( chip().journal().size(), 2u );
   EXPECT_EQ( chip().journal()[ 1 ].rc, BCM_E_FAIL );
   const std::pair<int, std::string> expected[] = {
      { checkedLine, " bcm_field_action_add( unit, entry, probe, 0, 0 ) (rc:5)" },
      { uncheckedLine, " bcm_field_action_remove( unit, entry, probe ) no rc check" },
   };
   ASSERT_EQ( lines.size(), 2u );
   for ( size_t i = 0; i < 2; ++i ) {
      EXPECT_EQ( lines[ i ].text, site( expected[ i ].first ) + expected[ i ].second );
      EXPECT_EQ( lines[ i ].handle, "ApiFerro" );
      EXPECT_EQ( lines[ i ].level, 4 );
      EXPECT_STREQ( lines[ i ].file, kThisFile );
      EXPECT_EQ( lines[ i ].line, expected[ i ].first );
      EXPECT_STREQ( lines[ i ].function, __func__ );
   }

   // An SDK that throws: the exception passes, untraced, with the locks taken again.
   probe.throws = true;
   EXPECT_THROW( BCM_CHECK( bcm_field_action_add( unit, entry, probe, 0, 0 ) ),
                 std::runtime_error );
   expectLocksAsTaken();
   EXPECT_THROW( BCM_NO_RC_CHECK( bcm_field_action_remove( unit, entry, probe ) ),
                 std::runtime_error );
   expectLocksAsTaken();
   EXPECT_EQ( probe.locksHeld, std::vector<bool>( 4, false ) );
   EXPECT_EQ( chip().journal().size(), 2u );
   EXPECT_EQ( lines.size(), 2u );
}

TEST_F( CheckedCall, NothingWrittenWithLevel4OffAndAnUncheckedFailureContinues ) {
   // Every other level on, so that looking at the wrong bit shows; and no sink, so that
   // any line would reach stderr.
   apiFerro().maskIs( uint16_t( ~( 1u << 4 ) ) );
   EXPECT_EXIT(
      {
         BCM_CHECK( bcm_field_action_add( unit, entry, bcmFieldActionCopyToCpu, 0, 0 ) );
         // Refused by the SDK: the entry has no drop action.
         BCM_NO_RC_CHECK( bcm_field_action_remove( unit, entry, bcmFieldActionDrop ) );
         std::fprintf( stderr, "continued after rc %d, failure hooks: %d\n",
                       chip().journal().back().rc, chip().failureHookCount() );
         std::exit( 0 );
      },
      testing::ExitedWithCode( 0 ),
      testing::Eq( "continued after rc " + std::to_string( BCM_E_NOT_FOUND ) +
                   ", failure hooks: 0\n" ) );
}

}  // namespace
