#include "platform/runtime/ActivityLock.h"

#include <gtest/gtest.h>

#include <chrono>
#include <future>
#include <optional>
#include <stdexcept>
#include <thread>
#include <vector>

using namespace Kel;
using namespace std::chrono_literals;

namespace {

class ActivityLockTest : public ::testing::Test {
  protected:
   // Another thread takes the lock once and reports the depth it saw there. It
   // is detached, so a lock never let go fails the case at the deadline instead
   // of hanging it; TearDown releases everything and waits for such stragglers.
   std::optional<int> otherThreadTakes( OwnedLock& lock, std::chrono::milliseconds within ) {
      std::promise<int> done;
      std::future<int> attempt = done.get_future();
      std::thread( [ &lock, done = std::move( done ) ]() mutable {
         lock.lock();
         const int depth = lock.depth();
         lock.unlock();
         done.set_value( depth );
      } ).detach();
      if ( attempt.wait_for( within ) != std::future_status::ready ) {
         pending_.push_back( std::move( attempt ) );
         return std::nullopt;
      }
      return attempt.get();
   }

   void TearDown() override {
      for ( OwnedLock* lock : { &activityLock(), &interpreterLock() } ) {
         while ( lock->heldByCurrentThread() ) {
            lock->unlock();
         }
      }
      for ( auto& attempt : pending_ ) {
         EXPECT_EQ( attempt.wait_for( 5s ), std::future_status::ready ) << "released yet taken";
      }
   }

   std::vector<std::future<int>> pending_;
};

}  // namespace

TEST_F( ActivityLockTest, UnlockAnchorReleasesEveryLevelAndRetakesThemOnReturnOrThrow ) {
   OwnedLock& lock = activityLock();
   lock.lock();
   lock.lock();
   lock.lock();
   {
      UnlockAnchor anchor( lock );
      EXPECT_FALSE( lock.heldByCurrentThread() );
      EXPECT_EQ( otherThreadTakes( lock, 5s ), 1 );
   }
   EXPECT_TRUE( lock.heldByCurrentThread() );
   EXPECT_EQ( otherThreadTakes( lock, 50ms ), std::nullopt ) << "the anchor did not take it back";
   lock.unlock();
   EXPECT_THROW(
      {
         UnlockAnchor anchor( lock );
         EXPECT_FALSE( lock.heldByCurrentThread() );
         throw std::runtime_error( "programming failed" );
      },
      std::runtime_error );
   EXPECT_TRUE( lock.heldByCurrentThread() );
   EXPECT_EQ( lock.depth(), 2 );
}

TEST_F( ActivityLockTest, MaybeGilUnlockAnchorActsOnlyWhenTheInterpreterLockIsHeld ) {
   OwnedLock& gil = interpreterLock();
   { MaybeGilUnlockAnchor anchor; }
   EXPECT_FALSE( gil.heldByCurrentThread() ) << "took a lock it never released";
   EXPECT_EQ( otherThreadTakes( gil, 5s ), 1 );

   gil.lock();
   gil.lock();
   {
      MaybeGilUnlockAnchor anchor;
      EXPECT_FALSE( gil.heldByCurrentThread() );
      EXPECT_EQ( otherThreadTakes( gil, 5s ), 1 );
   }
   EXPECT_TRUE( gil.heldByCurrentThread() );
   EXPECT_EQ( gil.depth(), 2 );
}
