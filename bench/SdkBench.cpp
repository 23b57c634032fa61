// Cost of programming and looking up the simulated field processor, journal off
// and no fault installed, as the library's tests and the tool run it. The
// s/... counters are seconds per item (printed with SI prefixes: 250n = 250 ns).
#include <benchmark/benchmark.h>

#include <cstdlib>

#include "platform/sdk/Simulator.h"

namespace {

constexpr int kUnit = 0;
constexpr bcm_field_group_t kLowGroup = 1;
constexpr bcm_field_group_t kHighGroup = 2;
constexpr int kCallsPerEntry = 15;  // create, 12 qualifiers, one action, install

void check( int rc ) {
   if ( rc != 0 ) {
      std::abort();  // a benchmark of failing calls would measure nothing useful
   }
}

void freshUnit() {
   Sim::FieldProcessor& fp = Sim::FieldProcessor::instance();
   fp.reset();
   fp.journalEnabledIs( false );
   check( fp.attachUnit( kUnit, Sim::UnitConfig{} ) );
   bcm_field_qset_t qset;
   BCM_FIELD_QSET_INIT( qset );
   BCM_FIELD_QSET_ADD( qset, bcmFieldQualifyStageIngress );
   for ( int q = bcmFieldQualifyInPorts; q < bcmFieldQualifyCount; ++q ) {
      BCM_FIELD_QSET_ADD( qset, q );
   }
   check( Shim::sdk_->bcm_field_group_create_id( kUnit, qset, 10, kLowGroup ) );
   check( Shim::sdk_->bcm_field_group_create_id( kUnit, qset, 20, kHighGroup ) );
}

// A system-ACL-like rule: twelve qualifiers, a CPU queue, installed.
void programEntry( bcm_field_entry_t entry, bcm_field_group_t group, uint16_t l4Port ) {
   Shim::Sdk& sdk = *Shim::sdk_;
   bcm_pbmp_t data, mask;
   BCM_PBMP_CLEAR( data );
   BCM_PBMP_CLEAR( mask );
   for ( int port = 0; port < 65; ++port ) {
      BCM_PBMP_PORT_ADD( mask, port );
      if ( port != 0 ) {
         BCM_PBMP_PORT_ADD( data, port );
      }
   }
   const bcm_mac_t mac = { 0x00, 0x1c, 0x73, 0x00, 0x00, 0x01 };
   const bcm_mac_t exact = { 0xff, 0xff, 0xff, 0xff, 0xff, 0xff };
   check( sdk.bcm_field_entry_create_id( kUnit, group, entry ) );
   check( sdk.bcm_field_qualify_InPorts( kUnit, entry, data, mask ) );
   check( sdk.bcm_field_qualify_EtherType( kUnit, entry, 0x0800, 0xffff ) );
   check( sdk.bcm_field_qualify_IpType( kUnit, entry, bcmFieldIpTypeIpv4Any ) );
   check( sdk.bcm_field_qualify_IpProtocol( kUnit, entry, 17, 0xff ) );
   check( sdk.bcm_field_qualify_L4SrcPort( kUnit, entry, 0, 0 ) );
   check( sdk.bcm_field_qualify_L4DstPort( kUnit, entry, l4Port, 0xffff ) );
   check( sdk.bcm_field_qualify_DstIp( kUnit, entry, 0x0a000001, 0xffffffff ) );
   check( sdk.bcm_field_qualify_DstMac( kUnit, entry, mac, exact ) );
   check( sdk.bcm_field_qualify_Ttl( kUnit, entry, 0, 0 ) );
   check( sdk.bcm_field_qualify_DSCP( kUnit, entry, 0, 0 ) );
   check( sdk.bcm_field_qualify_OuterVlanPri( kUnit, entry, 0, 0 ) );
   check( sdk.bcm_field_qualify_SrcPort( kUnit, entry, 0, 0, 0, 0 ) );
   check( sdk.bcm_field_action_add( kUnit, entry, bcmFieldActionCosQCpuNew, 30, 0 ) );
   check( sdk.bcm_field_entry_install( kUnit, entry ) );
}

void BM_InstallThousandEntries( benchmark::State& state ) {
   constexpr int kEntries = 1000;
   for ( auto _ : state ) {
      state.PauseTiming();
      freshUnit();
      state.ResumeTiming();
      for ( int i = 0; i < kEntries; ++i ) {
         programEntry( 1000 + i, kLowGroup, static_cast<uint16_t>( 1000 + i ) );
      }
   }
   const double entries = static_cast<double>( state.iterations() ) * kEntries;
   state.SetItemsProcessed( static_cast<int64_t>( entries ) );
   state.counters["s/entry"] = benchmark::Counter(
       entries, benchmark::Counter::kIsRate | benchmark::Counter::kInvert );
   state.counters["s/call"] =
       benchmark::Counter( entries * kCallsPerEntry,
                           benchmark::Counter::kIsRate | benchmark::Counter::kInvert );
}
BENCHMARK( BM_InstallThousandEntries )->Unit( benchmark::kMillisecond );

void BM_LookupOverHundredEntries( benchmark::State& state ) {
   freshUnit();
   for ( int i = 0; i < 100; ++i ) {
      programEntry( 1000 + i, i % 2 ? kHighGroup : kLowGroup,
                    static_cast<uint16_t>( 1000 + i ) );
   }
   Sim::PacketFields packet;
   packet.inPort = 3;
   packet.dstMac = { 0x00, 0x1c, 0x73, 0x00, 0x00, 0x01 };
   packet.etherType = 0x0800;
   packet.ipType = Shim::FieldIpType::Ipv4Any;
   packet.dstIp = 0x0a000001;
   packet.ipProtocol = 17;
   const Sim::FieldProcessor& fp = Sim::FieldProcessor::instance();
   uint16_t port = 0;
   for ( auto _ : state ) {
      // Every other packet misses: ports 1000..1099 hit, 1100..1199 do not.
      packet.l4DstPort = static_cast<uint16_t>( 1000 + port );
      port = static_cast<uint16_t>( ( port + 1 ) % 200 );
      benchmark::DoNotOptimize( fp.lookup( kUnit, packet ) );
   }
   state.SetItemsProcessed( state.iterations() );
   state.counters["s/lookup"] =
       benchmark::Counter( static_cast<double>( state.iterations() ),
                           benchmark::Counter::kIsRate | benchmark::Counter::kInvert );
}
BENCHMARK( BM_LookupOverHundredEntries );

// One qualifier call on the hot path: no journal, no fault, no allocation.
void BM_QualifyCall( benchmark::State& state ) {
   freshUnit();
   programEntry( 1, kLowGroup, 179 );
   uint16_t port = 0;
   for ( auto _ : state ) {
      benchmark::DoNotOptimize(
          Shim::sdk_->bcm_field_qualify_L4DstPort( kUnit, 1, port++, 0xffff ) );
   }
   state.SetItemsProcessed( state.iterations() );
}
BENCHMARK( BM_QualifyCall );

// The audit's cost: a witness for every entry of a group of N entries, each
// looked at behind all those before it. The witness search is quadratic in
// the entries of a group (it misses every earlier entry on some field), so
// s/witness grows about linearly with N.
void BM_WitnessEveryEntryOfAGroup( benchmark::State& state ) {
   const int entries = static_cast<int>( state.range( 0 ) );
   freshUnit();
   for ( int i = 0; i < entries; ++i ) {
      programEntry( 1000 + i, kLowGroup, static_cast<uint16_t>( 1000 + i ) );
      check( Shim::sdk_->bcm_field_entry_prio_set( kUnit, 1000 + i, entries - i ) );
   }
   const Sim::FieldProcessor& fp = Sim::FieldProcessor::instance();
   for ( auto _ : state ) {
      for ( int i = 0; i < entries; ++i ) {
         benchmark::DoNotOptimize( fp.witness( kUnit, 1000 + i ) );
      }
   }
   state.counters["s/witness"] =
       benchmark::Counter( static_cast<double>( state.iterations() ) * entries,
                           benchmark::Counter::kIsRate | benchmark::Counter::kInvert );
}
BENCHMARK( BM_WitnessEveryEntryOfAGroup )->Arg( 16 )->Arg( 64 )->Arg( 256 )->Unit(
    benchmark::kMillisecond );

}  // namespace

BENCHMARK_MAIN();
