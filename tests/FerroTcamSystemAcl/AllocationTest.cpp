// Allocation behaviour of the frame. The checked call is on the path of every rule the
// agent programs, so with tracing off it must not allocate; and a Helper whose creation
// fails for want of memory must leave neither memory nor an allocation record behind.
// This binary replaces the global allocation functions with counting ones that can
// also fail on demand, which is why it is a binary of its own.
#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <new>

#include "FerroTcamSystemAcl/Helper.h"
#include "tests/FerroTcamSystemAcl/FrameFixture.h"

namespace {
std::atomic<long> allocations{ 0 };
std::atomic<long> releases{ 0 };
// When positive, counts down with every allocation; the one that reaches zero fails.
std::atomic<int> failingAllocation{ 0 };
}  // namespace

void* operator new( std::size_t size ) {
   if ( failingAllocation.load() > 0 && failingAllocation.fetch_sub( 1 ) == 1 ) {
      throw std::bad_alloc();
   }
   void* p = std::malloc( size == 0 ? 1 : size );
   if ( p == nullptr ) {
      throw std::bad_alloc();
   }
   allocations.fetch_add( 1, std::memory_order_relaxed );
   return p;
}
void operator delete( void* p ) noexcept {
   if ( p != nullptr ) {
      releases.fetch_add( 1, std::memory_order_relaxed );
   }
   std::free( p );
}
void operator delete( void* p, std::size_t ) noexcept { ::operator delete( p ); }

namespace {

using namespace FrameTest;

class CheckedCallAllocation : public SwitchFixture {
  protected:
   void SetUp() override {
      SwitchFixture::SetUp();
      // The journal formats every call; the agent's chip has none.
      chip().journalEnabledIs( false );
      // Installed before counting: only the trace lines themselves should count.
      Lumo::traceSinkIs( []( const Lumo::TraceLine& ) {} );
   }

   long checkedCall() {
      const long before = allocations.load();
      BCM_CHECK( bcm_field_action_add( unit, entry, bcmFieldActionCopyToCpu, 0, 0 ) );
      return allocations.load() - before;
   }
   long checkedRemoval() {
      const long before = allocations.load();
      BCM_CHECK( bcm_field_action_remove( unit, entry, bcmFieldActionCopyToCpu ) );
      return allocations.load() - before;
   }
   long uncheckedCall() {
      const long before = allocations.load();
      BCM_NO_RC_CHECK( bcm_field_action_remove( unit, entry, bcmFieldActionDrop ) );
      return allocations.load() - before;
   }
};

TEST_F( CheckedCallAllocation, NoneWhileLevel4IsOff ) {
   apiFerro().maskIs( uint16_t( ~( 1u << 4 ) ) );
   EXPECT_EQ( checkedCall(), 0 );
   EXPECT_EQ( checkedRemoval(), 0 );
   EXPECT_EQ( uncheckedCall(), 0 );
   ASSERT_EQ( chip().entry( unit, entry )->software.actions.size(), 0u );

   // The counter does count: the same calls format their trace lines with level 4 on.
   apiFerro().levelIs( 4, true );
   EXPECT_GT( checkedCall(), 0 );
   EXPECT_GT( checkedRemoval(), 0 );
   EXPECT_GT( uncheckedCall(), 0 );
}

TEST( HelperCreation, OutOfMemoryLeavesNoRecordAndNoMemory ) {
   Lumo::TypeRegistry& registry = Lumo::TypeRegistry::instance();
   const Lumo::String type = "FerroTcamSystemAcl::Helper";
   // Longer than the small-string buffer, so constructing the Helper allocates.
   const Lumo::String name = "a helper whose name does not fit the small-string buffer";
   const Lumo::AllocationTracker& tracker = FerroTcamSystemAcl::Helper::memAllocationTracker_;
   // First the Helper's own memory fails, then an allocation of its construction.
   for ( int failing : { 1, 2 } ) {
      const int64_t live = tracker.live();
      const long outstanding = allocations.load() - releases.load();
      bool threw = false;
      failingAllocation = failing;
      try {
         registry.create( type, name );
      } catch ( const std::bad_alloc& ) {
         threw = true;
      }
      failingAllocation = 0;
      // Taken before any expectation, whose failure report would allocate.
      const long leaked = allocations.load() - releases.load() - outstanding;
      EXPECT_TRUE( threw ) << "failing " << failing;
      EXPECT_EQ( leaked, 0 ) << "failing " << failing;
      EXPECT_EQ( tracker.live(), live ) << "failing " << failing;
   }
   EXPECT_EQ( tracker.live(), 0 );
   // Neither failure spoiled the next creation.
   Lumo::Ptr<Lumo::Node> helper = registry.create( type, name );
   EXPECT_EQ( tracker.live(), 1 );
   helper.reset();
   EXPECT_EQ( tracker.live(), 0 );
}

}  // namespace
