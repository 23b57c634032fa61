#include <gtest/gtest.h>

#include <latch>
#include <thread>

#include "platform/runtime/TypeRegistry.h"

using namespace Lumo;

namespace {

AllocationTracker widgets;
const TypeData widgetType{ "RuntimeTest", 7 };

struct Widget : Node {
   Widget() { widgets.allocationIs(); }
   ~Widget() override { widgets.deallocationIs(); }
};

// Takes nothing beyond its name. It builds before it checks, so a refusal is
// clean only if the half-made object is released on the way out.
Ptr<Node> makeWidget( const String&, Directory*, const CreationArgs& extra ) {
   Ptr<Widget> widget = makePtr<Widget>();
   if ( !extra.empty() ) {
      throw WrongCreationArguments( widgetType, extra.size() );
   }
   return widget;
}

}  // namespace

// Copies and conversions racing on one node: a lost update leaves the count
// off, so the node is deleted early (the sanitizer build sees it) or never.
TEST( Ptr, ThreadSafeCountStaysExactUnderTwoThreads ) {
   threadSafeIs( true );
   const int64_t live = widgets.live();
   Ptr<Widget> shared = makePtr<Widget>();
   std::latch start( 2 );
   auto churn = [ & ] {
      start.arrive_and_wait();
      for ( int i = 0; i < 500000; ++i ) {
         Ptr<Widget> copy = shared;
         Ptr<Node> base = copy;
      }
   };
   std::thread one( churn ), two( churn );
   one.join();
   two.join();
   threadSafeIs( false );
   EXPECT_EQ( shared->refCount(), 1u );
   shared.reset();
   EXPECT_EQ( widgets.live(), live );
}

TEST( TypeRegistry, SurplusCreationArgumentsLeaveNothingAlive ) {
   TypeRegistry& registry = TypeRegistry::instance();
   registry.typeIs( "RtWidget", widgetType, makeWidget );
   Ptr<Directory> dir = makePtr<Directory>( "sys" );
   const int64_t live = widgets.live();
   const uint64_t total = widgets.total();
   try {
      registry.create( "RtWidget", "w", dir.get(), CreationArgs{ std::any( 5 ) } );
      ADD_FAILURE() << "creation with a surplus argument succeeded";
   } catch ( const WrongCreationArguments& e ) {
      EXPECT_EQ( e.type(), widgetType );
   }
   EXPECT_EQ( widgets.total(), total + 1 ) << "the factory did not run";
   EXPECT_EQ( widgets.live(), live );
   EXPECT_EQ( dir->entries(), 0u );
   registry.typeDel( "RtWidget" );
}
