#include "platform/runtime/ActivityLock.h"

namespace Kel {

void OwnedLock::lock() {
   mutex_.lock();
   owner_.store( std::this_thread::get_id(), std::memory_order_relaxed );
   ++depth_;
}

void OwnedLock::unlock() {
   if ( --depth_ == 0 ) {
      owner_.store( std::thread::id{}, std::memory_order_relaxed );
   }
   mutex_.unlock();
}

bool OwnedLock::heldByCurrentThread() const {
   return owner_.load( std::memory_order_relaxed ) == std::this_thread::get_id();
}

OwnedLock& activityLock() {
   static OwnedLock lock( "activity" );
   return lock;
}

OwnedLock& interpreterLock() {
   static OwnedLock lock( "interpreter" );
   return lock;
}

// A recursive holder must give up every level, or the other thread still waits.
UnlockAnchor::UnlockAnchor( OwnedLock& lock ) : lock_( lock ), released_( 0 ) {
   if ( !lock_.heldByCurrentThread() ) {
      return;
   }
   released_ = lock_.depth();
   for ( int i = 0; i < released_; ++i ) {
      lock_.unlock();
   }
}

UnlockAnchor::~UnlockAnchor() {
   for ( int i = 0; i < released_; ++i ) {
      lock_.lock();
   }
}

}  // namespace Kel
