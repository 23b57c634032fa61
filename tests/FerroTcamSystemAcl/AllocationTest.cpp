// The checked call is on the path of every rule the agent programs, so with tracing off
// it must not allocate. This binary replaces the global allocation functions with
// counting ones, which is why it is a binary of its own.
#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <functional>
#include <new>

#include "tests/FerroTcamSystemAcl/FrameFixture.h"

namespace {
std::atomic<long> allocations{ 0 };
}  // namespace

void* operator new( std::size_t size ) {
   ++allocations;
   if ( void* p = std::malloc( size == 0 ? 1 : size ) ) {
      return p;
   }
   throw std::bad_alloc();
}
void operator delete( void* p ) noexcept { std::free( p ); }
void operator delete( void* p, std::size_t ) noexcept { std::free( p ); }

namespace {

using namespace FrameTest;
using CheckedCallAllocation = SwitchFixture;

TEST_F( CheckedCallAllocation, NoneWhileLevel4IsOffSomeWhileItIsOn ) {
   // The journal formats every call; the agent's chip has none.
   chip().journalEnabledIs( false );
   // Installed before counting: only the trace lines themselves should count.
   Lumo::traceSinkIs( []( const Lumo::TraceLine& ) {} );
   // A checked add and removal, and a removal the SDK refuses.
   const int u = unit, e = entry;
   const std::function<void()> calls[] = {
      [ & ] { BCM_CHECK( bcm_field_action_add( u, e, bcmFieldActionCopyToCpu, 0, 0 ) ); },
      [ & ] { BCM_CHECK( bcm_field_action_remove( u, e, bcmFieldActionCopyToCpu ) ); },
      [ & ] { BCM_NO_RC_CHECK( bcm_field_action_remove( u, e, bcmFieldActionDrop ) ); },
   };
   // Every other level on; then level 4 as well, to show that the counter does count.
   for ( const bool level4 : { false, true } ) {
      apiFerro().maskIs( uint16_t( level4 ? ~0u : ~( 1u << 4 ) ) );
      for ( size_t i = 0; i < 3; ++i ) {
         const long before = allocations;
         calls[ i ]();
         const long counted = allocations - before;
         EXPECT_EQ( counted > 0, level4 ) << "call " << i << ": " << counted;
      }
   }
}

}  // namespace
