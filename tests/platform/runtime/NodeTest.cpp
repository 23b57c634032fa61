#include "platform/runtime/Ptr.h"

#include <gtest/gtest.h>

#include <latch>
#include <thread>
#include <type_traits>

using namespace Lumo;

namespace {

struct Probe : Node {
   explicit Probe( int& destroyed ) : destroyed_( destroyed ) {}
   ~Probe() override {
      ++destroyed_;
      flaggedInDestructor = beingDestroyed();
   }
   int& destroyed_;
   static inline bool flaggedInDestructor = false;
};

// A node kept for reuse: its last user going away is counted, not deleted.
struct Recycled : Node {
   int gone = 0;

  protected:
   void lastUserGone() override { ++gone; }
};

}  // namespace

TEST( Ptr, CountFollowsCopiesConversionsAndMoves ) {
   int destroyed = 0;
   Ptr<Probe> p = makePtr<Probe>( destroyed );
   {
      Ptr<Probe> copy = p;
      Ptr<Node> base = p;
      Ptr<Node> assigned;
      assigned = copy;
      EXPECT_EQ( p->refCount(), 4u );
   }
   EXPECT_EQ( p->refCount(), 1u );
   EXPECT_FALSE( p->beingDestroyed() );

   PtrConst<Probe> reader = p;
   static_assert( std::is_same_v<decltype( reader.operator->() ), const Probe*> );
   Ptr<Probe> moved = std::move( p );
   EXPECT_FALSE( p );
   EXPECT_EQ( moved->refCount(), 2u );
   moved.reset();
   EXPECT_EQ( destroyed, 0 ) << "a const pointer must keep the node alive";
   reader = nullptr;
   EXPECT_EQ( destroyed, 1 );
   EXPECT_TRUE( Probe::flaggedInDestructor ) << "not flagged while torn down";
}

TEST( Ptr, LastUserGoneOverrideKeepsTheNode ) {
   Recycled node;  // on the stack: a delete would crash the test
   Ptr<Recycled> first( &node );
   Ptr<Recycled> second = first;
   first.reset();
   EXPECT_EQ( node.gone, 0 );
   second.reset();
   EXPECT_EQ( node.gone, 1 );
   Ptr<Recycled> again( &node );
   EXPECT_EQ( node.refCount(), 1u ) << "a recycled node starts counting afresh";
}

TEST( Ptr, ThreadSafeCountStaysExactUnderTwoThreads ) {
   threadSafeIs( true );
   int destroyed = 0;
   Ptr<Probe> shared = makePtr<Probe>( destroyed );
   std::latch start( 2 );
   auto churn = [ & ] {
      start.arrive_and_wait();
      for ( int i = 0; i < 500000; ++i ) {
         Ptr<Probe> copy = shared;
         Ptr<Node> base = copy;
      }
   };
   std::thread one( churn ), two( churn );
   one.join();
   two.join();
   threadSafeIs( false );
   EXPECT_EQ( shared->refCount(), 1u );
   shared.reset();
   EXPECT_EQ( destroyed, 1 );
}
