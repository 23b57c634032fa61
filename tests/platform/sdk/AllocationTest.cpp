// The programming path must not allocate once an entry exists and the journal is
// off: the library programs thousands of entries per unit.
#include <atomic>
#include <cstdlib>
#include <new>

#include "tests/platform/sdk/SdkFixture.h"

namespace {
std::atomic<long> allocations{ 0 };
}  // namespace

// Counting replacements for the whole test binary; they only count. The array
// and nothrow forms are replaced too, so that every new/delete pair meets the
// same heap (the sanitizers check that).
namespace {
void* counted( std::size_t size ) {
   allocations.fetch_add( 1, std::memory_order_relaxed );
   if ( void* p = std::malloc( size ? size : 1 ) ) {
      return p;
   }
   throw std::bad_alloc();
}
}  // namespace
void* operator new( std::size_t size ) {
   return counted( size );
}
void* operator new[]( std::size_t size ) {
   return counted( size );
}
void* operator new( std::size_t size, const std::nothrow_t& ) noexcept {
   allocations.fetch_add( 1, std::memory_order_relaxed );
   return std::malloc( size ? size : 1 );
}
void* operator new[]( std::size_t size, const std::nothrow_t& tag ) noexcept {
   return operator new( size, tag );
}
void operator delete( void* p ) noexcept {
   std::free( p );
}
void operator delete( void* p, std::size_t ) noexcept {
   std::free( p );
}
void operator delete[]( void* p ) noexcept {
   std::free( p );
}
void operator delete[]( void* p, std::size_t ) noexcept {
   std::free( p );
}

using namespace SdkTest;

namespace {

constexpr bcm_field_entry_t kEntry = 100;

// Every kind of per-entry call once: plain, bitmap, MAC, IPv6 and enumerated
// qualifiers, read-backs, actions (one refused), the moves into hardware.
void programAndReadBack( Shim::Sdk& sdk ) {
   const bcm_mac_t mac = { 1, 2, 3, 4, 5, 6 };
   const bcm_ip6_t ip6 = { 0xfe, 0x80 };
   const bcm_pbmp_t ports = portRange( 1, 64 );
   sdk.bcm_field_qualify_InPorts( kUnit, kEntry, ports, ports );
   sdk.bcm_field_qualify_DstMac( kUnit, kEntry, mac, mac );
   sdk.bcm_field_qualify_DstIp6( kUnit, kEntry, ip6, ip6 );
   sdk.bcm_field_qualify_IpType( kUnit, kEntry, bcmFieldIpTypeIpv6 );
   sdk.bcm_field_qualify_PacketRes( kUnit, kEntry, BCM_FIELD_PKT_RES_L2UC, ~0u );
   sdk.bcm_field_qualify_SrcPort( kUnit, kEntry, 1, 0xff, 2, 0xff );
   sdk.bcm_field_qualify_L4DstPort( kUnit, kEntry, 179, 0xffff );
   sdk.bcm_field_action_add( kUnit, kEntry, bcmFieldActionCosQCpuNew, 3, 0 );
   sdk.bcm_field_action_add( kUnit, kEntry, bcmFieldActionCosQCpuNew, 3, 0 );
   uint32 p0, p1;
   sdk.bcm_field_action_get( kUnit, kEntry, bcmFieldActionCosQCpuNew, &p0, &p1 );
   bcm_l4_port_t d, m;
   sdk.bcm_field_qualify_L4DstPort_get( kUnit, kEntry, &d, &m );
   bcm_pbmp_t pd, pm;
   sdk.bcm_field_qualify_InPorts_get( kUnit, kEntry, &pd, &pm );
   sdk.bcm_field_entry_install( kUnit, kEntry );
   sdk.bcm_field_entry_reinstall( kUnit, kEntry );
   sdk.bcm_field_entry_enable_set( kUnit, kEntry, 0 );
   sdk.bcm_field_action_remove( kUnit, kEntry, bcmFieldActionCosQCpuNew );
   sdk.bcm_field_qualify_clear( kUnit, kEntry );
}

TEST_F( SdkFixture, ProgrammingAnEntryAllocatesOnlyForTheJournal ) {
   createEntry( kEntry );
   const auto allocationsOf = [this] {
      const long before = allocations.load();
      programAndReadBack( sdk );
      return allocations.load() - before;
   };
   EXPECT_LT( 0, allocationsOf() );  // the journal's lines, counted
   fp.journalEnabledIs( false );
   fp.checkActivityLockIs( true );
   // A fault that never matches costs a name comparison per call, no allocation.
   fp.injectFault( { .function = "bcm_field_entry_remove", .rc = BCM_E_FAIL } );
   EXPECT_EQ( 0, allocationsOf() );
}

}  // namespace
