// The checked SDK call as the library's operations make it: the error line, failure
// hook and assertion of a failed call, the trace line of a successful one, the silent
// unchecked form, and the locks given up for the SDK and taken back before the result
// is looked at.
#include <gtest/gtest.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <stdexcept>
#include <string>
#include <vector>

#include "tests/FerroTcamSystemAcl/FrameFixture.h"

// Outside any namespace, so that the assertion names it as the agent's operations are
// named: by their plain signature.
constexpr int kCopyToCpuLine = __LINE__ + 2;
void programCopyToCpu( int unit, int entry ) {
   BCM_CHECK( bcm_field_action_add( unit, entry, bcmFieldActionCopyToCpu, 0, 0 ) );
}

namespace {

using namespace FrameTest;

constexpr const char* kThisFile = "tests/FerroTcamSystemAcl/CheckedCallTest.cpp";

std::string site( int line ) {
   return std::string( kThisFile ) + ":" + std::to_string( line );
}

// The POSIX extended expression that matches `text` literally.
std::string literally( const std::string& text ) {
   std::string expression;
   for ( char c : text ) {
      if ( std::strchr( "\\^$.|?*+()[]{}", c ) != nullptr ) {
         expression += '\\';
      }
      expression += c;
   }
   return expression;
}

bool agentLocksHeld() {
   return Kel::activityLock().heldByCurrentThread() &&
          Kel::interpreterLock().heldByCurrentThread();
}

// Captures the trace lines, noting whether the agent's locks were held when each was
// written.
struct CapturedTrace {
   CapturedTrace() {
      Lumo::traceSinkIs( [ this ]( const Lumo::TraceLine& line ) {
         lines.push_back( line );
         locksHeld.push_back( agentLocksHeld() );
      } );
   }
   ~CapturedTrace() { Lumo::traceSinkIs( nullptr ); }
   std::vector<Lumo::TraceLine> lines;
   std::vector<bool> locksHeld;
};

// Stands for bcmFieldActionCopyToCpu. The value is asked of the SDK inside the checked
// call, where the SDK call is made, so the probe sees the locks as the SDK sees them; a
// throwing probe is an SDK that throws there.
struct SdkSideProbe {
   operator bcm_field_action_t() const {
      activityHeld.push_back( Kel::activityLock().heldByCurrentThread() );
      interpreterHeld.push_back( Kel::interpreterLock().heldByCurrentThread() );
      const bcm_field_action_t value =
         Shim::sdk_->fieldAction( Shim::FieldAction::CopyToCpu );
      if ( throws ) {
         throw std::runtime_error( "SDK exception" );
      }
      return value;
   }
   bool throws = false;
   mutable std::vector<bool> activityHeld;
   mutable std::vector<bool> interpreterHeld;
};

// As AgentLocks( 2 ) took them: every level of both locks is held again.
void expectLocksAsTaken() {
   EXPECT_TRUE( agentLocksHeld() );
   EXPECT_EQ( Kel::activityLock().depth(), 2 );
   EXPECT_EQ( Kel::interpreterLock().depth(), 1 );
}

using CheckedCallFailure = SwitchFixture;
using CheckedCall = SwitchFixture;
using CheckedCallTrace = SwitchFixture;
using CheckedCallLocks = SwitchFixture;

TEST_F( CheckedCallFailure, OneErrorLineThenTheFailureHookThenTheAssertion ) {
   struct Case {
      int rc;
      const char* text;
   };
   const Case cases[] = {
      { BCM_E_PARAM, "Invalid parameter" },
      { BCM_E_NOT_FOUND, "Entry not found" },
      { BCM_E_CONFIG, "Invalid configuration" },
      { -23, "Unknown error" },
      { -1000, "Unknown error" },
   };
   const std::string where = site( kCopyToCpuLine );
   for ( const Case& c : cases ) {
      const std::string expected =
         "^" +
         literally( where +
                    " bcm_field_action_add( unit, entry, bcmFieldActionCopyToCpu, 0, 0 ) "
                    "API ERROR:" +
                    c.text + " (" + std::to_string( c.rc ) + ")\n" +
                    "failure hook, agent locks held: 1\n" ) +
         "[^\n]*" +
         literally( where +
                    ": void programCopyToCpu(int, int): Assertion `0' failed.\n" ) +
         "$";
      chip().injectFault( Sim::Fault{ "bcm_field_action_add", unit, entry, 1, c.rc } );
      chip().failureHookIs( [] {
         std::fprintf( stderr, "failure hook, agent locks held: %d\n",
                       int( agentLocksHeld() ) );
      } );
      // A failure must not be traced: with level 4 on and no sink, a trace line would
      // reach standard error.
      apiFerro().levelIs( 4, true );
      EXPECT_EXIT(
         {
            AgentLocks locks;
            programCopyToCpu( unit, entry );
            std::fputs( "the call returned\n", stderr );
            std::exit( 0 );
         },
         testing::KilledBySignal( SIGABRT ), expected )
         << "rc " << c.rc;
      chip().clearFaults();
   }
}

TEST_F( CheckedCall, PositiveReturnIsSuccessHookedBeforeTheCall ) {
   std::vector<size_t> journalAtHook;
   std::vector<bool> locksAtHook;
   chip().preCallHookIs( [ & ] {
      journalAtHook.push_back( chip().journal().size() );
      locksAtHook.push_back( agentLocksHeld() );
   } );
   chip().injectFault( Sim::Fault{ "bcm_field_entry_install", unit, entry, 1, 5 } );
   CapturedTrace trace;
   apiFerro().levelIs( 4, true );
   AgentLocks locks;
   int rc = -1;
   const int line = __LINE__ + 1;
   rc = BCM_CHECK( bcm_field_entry_install( unit, entry ) );

   EXPECT_EQ( rc, 5 );
   EXPECT_EQ( chip().failureHookCount(), 0 );
   // Once, before the SDK saw the call, and while the locks were still held.
   EXPECT_EQ( journalAtHook, std::vector<size_t>{ 0 } );
   EXPECT_EQ( locksAtHook, std::vector<bool>{ true } );
   ASSERT_EQ( chip().journal().size(), 1u );
   EXPECT_EQ( chip().journal()[ 0 ].rc, 5 );
   ASSERT_EQ( trace.lines.size(), 1u );
   EXPECT_EQ( trace.lines[ 0 ].text,
              site( line ) + " bcm_field_entry_install( unit, entry ) (rc:5)" );
}

TEST_F( CheckedCall, UncheckedFailureWritesNothingAndContinues ) {
   BCM_NO_RC_CHECK( bcm_field_action_remove( unit, entry, bcmFieldActionDrop ) );
   // The SDK did refuse the removal of an action the entry does not have.
   ASSERT_EQ( chip().journal().size(), 1u );
   EXPECT_STREQ( chip().journal()[ 0 ].function, "bcm_field_action_remove" );
   EXPECT_EQ( chip().journal()[ 0 ].rc, BCM_E_NOT_FOUND );
   EXPECT_EQ( chip().preCallHookCount(), 0 );
   EXPECT_EQ( chip().failureHookCount(), 0 );
   EXPECT_EXIT(
      {
         BCM_NO_RC_CHECK( bcm_field_action_remove( unit, entry, bcmFieldActionDrop ) );
         std::fputs( "continued\n", stderr );
         std::exit( 0 );
      },
      testing::ExitedWithCode( 0 ), "^continued\n$" );
}

TEST_F( CheckedCallTrace, Level4TracesEachCallAtItsCallSite ) {
   CapturedTrace trace;
   apiFerro().maskIs( 1u << 4 );
   const int checkedLine = __LINE__ + 1;
   BCM_CHECK( bcm_field_action_add( unit, entry, bcmFieldActionCopyToCpu, 0, 0 ) );
   const int uncheckedLine = __LINE__ + 1;
   BCM_NO_RC_CHECK( bcm_field_action_remove( unit, entry, bcmFieldActionDrop ) );

   const std::string expected[] = {
      site( checkedLine ) +
         " bcm_field_action_add( unit, entry, bcmFieldActionCopyToCpu, 0, 0 ) (rc:0)",
      site( uncheckedLine ) +
         " bcm_field_action_remove( unit, entry, bcmFieldActionDrop ) no rc check",
   };
   const int lines[] = { checkedLine, uncheckedLine };
   ASSERT_EQ( trace.lines.size(), 2u );
   for ( size_t i = 0; i < 2; ++i ) {
      const Lumo::TraceLine& line = trace.lines[ i ];
      EXPECT_EQ( line.handle, "ApiFerro" );
      EXPECT_EQ( line.level, 4 );
      EXPECT_STREQ( line.file, kThisFile );
      EXPECT_EQ( line.line, lines[ i ] );
      EXPECT_STREQ( line.function, __func__ );
      EXPECT_EQ( line.text, expected[ i ] );
   }
   // The traced success is on the chip.
   const auto view = chip().entry( unit, entry );
   ASSERT_TRUE( view );
   ASSERT_EQ( view->software.actions.size(), 1u );
   EXPECT_EQ( view->software.actions[ 0 ].action, Shim::FieldAction::CopyToCpu );
}

void copyToCpuAndRemoveDrop( int unit, int entry ) {
   BCM_CHECK( bcm_field_action_add( unit, entry, bcmFieldActionCopyToCpu, 0, 0 ) );
   BCM_NO_RC_CHECK( bcm_field_action_remove( unit, entry, bcmFieldActionDrop ) );
}

TEST_F( CheckedCallTrace, NothingAtAllWithLevel4Off ) {
   // Every other level on, so that looking at the wrong bit shows; and no sink, so that
   // any line would reach standard error.
   apiFerro().maskIs( uint16_t( ~( 1u << 4 ) ) );
   EXPECT_EXIT(
      {
         copyToCpuAndRemoveDrop( unit, entry );
         std::fputs( "done\n", stderr );
         std::exit( 0 );
      },
      testing::ExitedWithCode( 0 ), "^done\n$" );
}

TEST_F( CheckedCallLocks, GivenUpForTheSdkAndHeldAgainForTheResult ) {
   chip().checkActivityLockIs( true );
   AgentLocks locks( 2 );
   // The chip does notice a call made with the activity lock held.
   int priority = 0;
   Shim::sdk_->bcm_field_entry_prio_get( unit, entry, &priority );
   const size_t violations = chip().lockViolations().size();
   ASSERT_EQ( violations, 1u );

   CapturedTrace trace;
   apiFerro().levelIs( 4, true );
   SdkSideProbe probe;
   BCM_CHECK( bcm_field_action_add( unit, entry, probe, 0, 0 ) );
   BCM_NO_RC_CHECK( bcm_field_action_remove( unit, entry, probe ) );

   EXPECT_EQ( chip().lockViolations().size(), violations );
   EXPECT_EQ( probe.activityHeld, std::vector<bool>( 2, false ) );
   EXPECT_EQ( probe.interpreterHeld, std::vector<bool>( 2, false ) );
   // Held again, at every level, by the time the result is traced.
   EXPECT_EQ( trace.locksHeld, std::vector<bool>( 2, true ) );
   expectLocksAsTaken();
   // The add and the removal both reached the chip.
   ASSERT_EQ( chip().journal().size(), 3u );
   EXPECT_EQ( chip().journal()[ 1 ].rc, 0 );
   EXPECT_EQ( chip().journal()[ 2 ].rc, 0 );
}

TEST_F( CheckedCallLocks, AnSdkExceptionPropagatesWithTheLocksTakenAgain ) {
   AgentLocks locks( 2 );
   SdkSideProbe probe;
   probe.throws = true;
   EXPECT_THROW( BCM_CHECK( bcm_field_action_add( unit, entry, probe, 0, 0 ) ),
                 std::runtime_error );
   expectLocksAsTaken();
   EXPECT_THROW( BCM_NO_RC_CHECK( bcm_field_action_remove( unit, entry, probe ) ),
                 std::runtime_error );
   expectLocksAsTaken();
   // Thrown while unlocked, before the operation reached the chip.
   EXPECT_EQ( probe.activityHeld, std::vector<bool>( 2, false ) );
   EXPECT_TRUE( chip().journal().empty() );
}

}  // namespace
