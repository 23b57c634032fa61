#include "platform/runtime/Ptr.h"

namespace Lumo {

namespace {
std::atomic<bool> threadSafe_{ false };
}

void threadSafeIs( bool threadSafe ) { threadSafe_.store( threadSafe ); }
bool threadSafe() { return threadSafe_.load( std::memory_order_relaxed ); }

void Node::ref() const {
   if ( threadSafe() ) {
      refs_.fetch_add( 1, std::memory_order_relaxed );
   } else {
      refs_.store( refs_.load( std::memory_order_relaxed ) + 1, std::memory_order_relaxed );
   }
}

void Node::unref() const {
   uint32_t left;
   if ( threadSafe() ) {
      left = refs_.fetch_sub( 1, std::memory_order_acq_rel ) - 1;
   } else {
      left = refs_.load( std::memory_order_relaxed ) - 1;
      refs_.store( left, std::memory_order_relaxed );
   }
   if ( left == 0 ) {
      const_cast<Node*>( this )->lastUserGone();
   }
}

// Flagged first, so that a notification reaching the node from its own members'
// teardown can see that it is on its way out.
void Node::lastUserGone() {
   beingDestroyed_ = true;
   delete this;
}

}  // namespace Lumo
