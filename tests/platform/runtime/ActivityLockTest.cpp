#include "platform/runtime/ActivityLock.h"

#include <gtest/gtest.h>

#include <chrono>
#include <future>
#include <memory>
#include <mutex>
#include <optional>
#include <stdexcept>
#include <thread>

using namespace Kel;

namespace {

// Another thread takes `lock` and reports the depth it then held, or nothing
// when it cannot within 5 s: detached, it waits on without hanging the case.
std::optional<int> otherThreadTakes( OwnedLock& lock ) {
   auto done = std::make_shared<std::promise<int>>();
   std::future<int> attempt = done->get_future();
   std::thread( [ &lock, done ] {
      std::lock_guard<OwnedLock> hold( lock );
      done->set_value( lock.depth() );
   } ).detach();
   return attempt.wait_for( std::chrono::seconds( 5 ) ) == std::future_status::ready
             ? std::optional<int>( attempt.get() )
             : std::nullopt;
}

}  // namespace

// Held three levels deep, the lock is free to another thread inside the anchor
// and held as deep again after it, whether the body returns or throws.
TEST( ActivityLock, UnlockAnchorReleasesEveryLevelAndRetakesThemOnReturnOrThrow ) {
   OwnedLock& lock = activityLock();
   for ( bool throws : { false, true } ) {
      SCOPED_TRACE( throws ? "throw" : "return" );
      for ( int level = 0; level < 3; ++level ) {
         lock.lock();
      }
      try {
         UnlockAnchor anchor( lock );
         EXPECT_FALSE( lock.heldByCurrentThread() );
         EXPECT_EQ( otherThreadTakes( lock ), 1 );
         if ( throws ) {
            throw std::runtime_error( "programming failed" );
         }
      } catch ( const std::runtime_error& ) {
      }
      EXPECT_TRUE( lock.heldByCurrentThread() );
      EXPECT_EQ( lock.depth(), 3 );
      while ( lock.heldByCurrentThread() ) {
         lock.unlock();
      }
   }
}
