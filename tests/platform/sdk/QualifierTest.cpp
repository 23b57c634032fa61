// Qualifier widths and read-backs, and what each qualifier matches in a packet.
#include <gmock/gmock.h>

#include <functional>

#include "tests/platform/sdk/SdkFixture.h"

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using namespace SdkTest;

namespace {

constexpr bcm_field_entry_t kEntry = 100;
using Sdk = Shim::Sdk;
using DataMask = std::pair<uint64_t, uint64_t>;

// ---------------------------------------------------------------------------
// Read-back: canonical data, masks cut to the field.

struct ReadBackCase {
   const char* name;
   std::function<int( Sdk& )> set;
   std::function<DataMask( Sdk& )> get;
   DataMask expected;
};

template <typename T>
DataMask readBack( int ( Sdk::*get )( int, bcm_field_entry_t, T*, T* ), Sdk& s ) {
   T data{}, mask{};
   EXPECT_EQ( 0, ( s.*get )( kUnit, kEntry, &data, &mask ) );
   return { data, mask };
}

DataMask modulePort( int ( Sdk::*get )( int, bcm_field_entry_t, bcm_module_t*,
                                        bcm_module_t*, bcm_port_t*, bcm_port_t* ),
                     Sdk& s ) {
   bcm_module_t dm = 0, mm = 0;
   bcm_port_t dp = 0, mp = 0;
   EXPECT_EQ( 0, ( s.*get )( kUnit, kEntry, &dm, &mm, &dp, &mp ) );
   return { uint64_t( dm ) << 8 | uint64_t( dp ), uint64_t( mm ) << 8 | uint64_t( mp ) };
}

const ReadBackCase kReadBacks[] = {
    { "VlanPriMaskCutTo3Bits",
      []( Sdk& s ) { return s.bcm_field_qualify_OuterVlanPri( kUnit, kEntry, 5, 0xff ); },
      []( Sdk& s ) { return readBack( &Sdk::bcm_field_qualify_OuterVlanPri_get, s ); },
      { 5, 7 } },
    { "DropMaskCutTo1Bit",
      []( Sdk& s ) { return s.bcm_field_qualify_Drop( kUnit, kEntry, 1, 0xff ); },
      []( Sdk& s ) { return readBack( &Sdk::bcm_field_qualify_Drop_get, s ); },
      { 1, 1 } },
    { "L2CacheHitMaskCut",
      []( Sdk& s ) { return s.bcm_field_qualify_L2CacheHit( kUnit, kEntry, 0, 0xf ); },
      []( Sdk& s ) { return readBack( &Sdk::bcm_field_qualify_L2CacheHit_get, s ); },
      { 0, 1 } },
    { "ClassL2MaskCutToClassBits",
      []( Sdk& s ) {
         return s.bcm_field_qualify_InterfaceClassL2( kUnit, kEntry, 0x12, ~0u );
      },
      []( Sdk& s ) {
         return readBack( &Sdk::bcm_field_qualify_InterfaceClassL2_get, s );
      },
      { 0x12, 0xff } },
    { "DstClassL2Canonical",
      []( Sdk& s ) {
         return s.bcm_field_qualify_DstClassL2( kUnit, kEntry, 0x0f, 0x3c );
      },
      []( Sdk& s ) { return readBack( &Sdk::bcm_field_qualify_DstClassL2_get, s ); },
      { 0x0c, 0x3c } },
    { "DstClassL3MaskCutTo10Bits",
      []( Sdk& s ) {
         return s.bcm_field_qualify_DstClassL3( kUnit, kEntry, 0x3ff, ~0u );
      },
      []( Sdk& s ) { return readBack( &Sdk::bcm_field_qualify_DstClassL3_get, s ); },
      { 0x3ff, 0x3ff } },
    { "NextHopFull32Bits",
      []( Sdk& s ) {
         return s.bcm_field_qualify_DstL3EgressNextHops( kUnit, kEntry, 100005, ~0u );
      },
      []( Sdk& s ) {
         return readBack( &Sdk::bcm_field_qualify_DstL3EgressNextHops_get, s );
      },
      { 100005, 0xffffffff } },
    { "L4PortCanonical",
      []( Sdk& s ) {
         return s.bcm_field_qualify_L4DstPort( kUnit, kEntry, 0x1234, 0xff00 );
      },
      []( Sdk& s ) { return readBack( &Sdk::bcm_field_qualify_L4DstPort_get, s ); },
      { 0x1200, 0xff00 } },
    { "DscpWholeTosByte",
      []( Sdk& s ) { return s.bcm_field_qualify_DSCP( kUnit, kEntry, 0xb9, 0xfc ); },
      []( Sdk& s ) { return readBack( &Sdk::bcm_field_qualify_DSCP_get, s ); },
      { 0xb8, 0xfc } },
    { "StpStateForward",
      []( Sdk& s ) {
         return s.bcm_field_qualify_IngressStpState( kUnit, kEntry, 4, 0xff );
      },
      []( Sdk& s ) { return readBack( &Sdk::bcm_field_qualify_IngressStpState_get, s ); },
      { 4, 0xff } },
    { "SrcPortMasksCutTo8Bits",
      []( Sdk& s ) { return s.bcm_field_qualify_SrcPort( kUnit, kEntry, 3, ~0, 5, ~0 ); },
      []( Sdk& s ) { return modulePort( &Sdk::bcm_field_qualify_SrcPort_get, s ); },
      { 0x0305, 0xffff } },
    { "DstPortModuleOnly",
      []( Sdk& s ) {
         return s.bcm_field_qualify_DstPort( kUnit, kEntry, 250, 0xff, 9, 0 );
      },
      []( Sdk& s ) { return modulePort( &Sdk::bcm_field_qualify_DstPort_get, s ); },
      { 0xfa00, 0xff00 } },
    { "DstIpCanonical",
      []( Sdk& s ) {
         return s.bcm_field_qualify_DstIp( kUnit, kEntry, 0x0a010203, 0xffff0000 );
      },
      []( Sdk& s ) { return readBack( &Sdk::bcm_field_qualify_DstIp_get, s ); },
      { 0x0a010000, 0xffff0000 } },
    { "RequalifyReplaces",
      []( Sdk& s ) {
         EXPECT_EQ( 0, s.bcm_field_qualify_EtherType( kUnit, kEntry, 0x0800, 0xffff ) );
         return s.bcm_field_qualify_EtherType( kUnit, kEntry, 0x86dd, 0xfff0 );
      },
      []( Sdk& s ) { return readBack( &Sdk::bcm_field_qualify_EtherType_get, s ); },
      { 0x86d0, 0xfff0 } },
    { "UnqualifiedReadsDontCare",
      []( Sdk& ) { return 0; },
      []( Sdk& s ) { return readBack( &Sdk::bcm_field_qualify_Ttl_get, s ); },
      { 0, 0 } },
};

class ReadBackTest : public SdkFixture,
                     public ::testing::WithParamInterface<ReadBackCase> {};

TEST_P( ReadBackTest, ReturnsCanonicalValueWithinFieldWidth ) {
   createEntry( kEntry );
   ASSERT_EQ( 0, GetParam().set( sdk ) );
   EXPECT_EQ( GetParam().expected, GetParam().get( sdk ) );
}

INSTANTIATE_TEST_SUITE_P( Sdk, ReadBackTest, ::testing::ValuesIn( kReadBacks ),
                          []( const auto& info ) {
                             return std::string( info.param.name );
                          } );

TEST_F( SdkFixture, EnumeratedQualifiersReadBackTheirSdkValues ) {
   createEntry( kEntry );
   ASSERT_EQ( 0, sdk.bcm_field_qualify_IpType( kUnit, kEntry, bcmFieldIpTypeIpv6 ) );
   ASSERT_EQ(
       0, sdk.bcm_field_qualify_PacketRes( kUnit, kEntry, BCM_FIELD_PKT_RES_L2UC, ~0u ) );
   bcm_field_IpType_t type = -1;
   ASSERT_EQ( 0, sdk.bcm_field_qualify_IpType_get( kUnit, kEntry, &type ) );
   EXPECT_EQ( bcm_field_IpType_t( bcmFieldIpTypeIpv6 ), type );
   uint32 res = 0, mask = 0;
   ASSERT_EQ( 0, sdk.bcm_field_qualify_PacketRes_get( kUnit, kEntry, &res, &mask ) );
   EXPECT_EQ( uint32_t( BCM_FIELD_PKT_RES_L2UC ), res );
   EXPECT_EQ( 0xffffffffu, mask );
}

// ---------------------------------------------------------------------------
// Matching: one row per qualifier meaning, a hit and a miss for each.

struct MatchCase {
   const char* name;
   std::function<int( Sdk& )> program;
   std::function<void( Sim::PacketFields& )> packet;
   bool hits;
};

constexpr bcm_mac_t kMcastBit = { 0x01, 0, 0, 0, 0, 0 };
constexpr bcm_ip6_t kLinkLocal = { 0xfe, 0x80 };
constexpr bcm_ip6_t kPrefix10 = { 0xff, 0xc0 };

int inPorts( Sdk& s, bcm_pbmp_t data, bcm_pbmp_t mask ) {
   return s.bcm_field_qualify_InPorts( kUnit, kEntry, data, mask );
}
int ipType( Sdk& s, bcm_field_IpType_t type ) {
   return s.bcm_field_qualify_IpType( kUnit, kEntry, type );
}
void v4( Sim::PacketFields& p ) {
   p.ipType = Shim::FieldIpType::Ipv4Any;
}
void v6( Sim::PacketFields& p ) {
   p.ipType = Shim::FieldIpType::Ipv6;
}
void nonIp( Sim::PacketFields& p ) {
   p.ipType = Shim::FieldIpType::NonIp;
}
int portClass3OnPort7( Sdk& s ) {
   EXPECT_EQ( 0, s.bcm_port_class_set( kUnit, 7, bcmPortClassFieldIngress, 3 ) );
   return s.bcm_field_qualify_InterfaceClassPort( kUnit, kEntry, 3, 0xff );
}

const MatchCase kMatches[] = {
    { "InPortsMember",
      []( Sdk& s ) {
         return inPorts( s, portsOf( { 1, 2 } ), portRange( 0, 64 ) );
      },
      []( auto& p ) { p.inPort = 2; }, true },
    { "InPortsNonMember",
      []( Sdk& s ) {
         return inPorts( s, portsOf( { 1, 2 } ), portRange( 0, 64 ) );
      },
      []( auto& p ) { p.inPort = 3; }, false },
    { "InPortsOutsideMask",
      []( Sdk& s ) { return inPorts( s, portsOf( { 1 } ), portsOf( { 1 } ) ); },
      []( auto& p ) { p.inPort = 5; }, true },
    { "SrcPortMatch",
      []( Sdk& s ) {
         return s.bcm_field_qualify_SrcPort( kUnit, kEntry, 0, 0xff, 5, 0xff );
      },
      []( auto& p ) { p.inPort = 5; }, true },
    { "SrcPortOtherModule",
      []( Sdk& s ) {
         return s.bcm_field_qualify_SrcPort( kUnit, kEntry, 0, 0xff, 5, 0xff );
      },
      []( auto& p ) {
         p.inPort = 5;
         p.srcModid = 1;
      },
      false },
    { "SrcPortAnyModule",
      []( Sdk& s ) {
         return s.bcm_field_qualify_SrcPort( kUnit, kEntry, 0, 0, 5, 0xff );
      },
      []( auto& p ) {
         p.inPort = 5;
         p.srcModid = 3;
      },
      true },
    { "DstPortModule",
      []( Sdk& s ) {
         return s.bcm_field_qualify_DstPort( kUnit, kEntry, 250, 0xff, 0, 0 );
      },
      []( auto& p ) {
         p.dstModid = 250;
         p.dstPort = 17;
      },
      true },
    { "DstPortOtherModule",
      []( Sdk& s ) {
         return s.bcm_field_qualify_DstPort( kUnit, kEntry, 250, 0xff, 0, 0 );
      },
      []( auto& p ) { p.dstModid = 251; }, false },
    { "IpTypeAnyOnNonIp", []( Sdk& s ) { return ipType( s, bcmFieldIpTypeAny ); }, nonIp,
      true },
    { "IpTypeNonIpOnV4", []( Sdk& s ) { return ipType( s, bcmFieldIpTypeNonIp ); }, v4,
      false },
    { "IpTypeNonIpOnNonIp", []( Sdk& s ) { return ipType( s, bcmFieldIpTypeNonIp ); },
      nonIp, true },
    { "IpTypeIpOnV6", []( Sdk& s ) { return ipType( s, bcmFieldIpTypeIp ); }, v6, true },
    { "IpTypeIpOnNonIp", []( Sdk& s ) { return ipType( s, bcmFieldIpTypeIp ); }, nonIp,
      false },
    { "IpTypeV4OnV4", []( Sdk& s ) { return ipType( s, bcmFieldIpTypeIpv4Any ); }, v4,
      true },
    { "IpTypeV4OnV6", []( Sdk& s ) { return ipType( s, bcmFieldIpTypeIpv4Any ); }, v6,
      false },
    { "IpTypeV6OnV6", []( Sdk& s ) { return ipType( s, bcmFieldIpTypeIpv6 ); }, v6,
      true },
    { "IpTypeV6OnV4", []( Sdk& s ) { return ipType( s, bcmFieldIpTypeIpv6 ); }, v4,
      false },
    { "PacketResSame",
      []( Sdk& s ) {
         return s.bcm_field_qualify_PacketRes( kUnit, kEntry, BCM_FIELD_PKT_RES_L2UC,
                                               ~0u );
      },
      []( auto& p ) { p.packetRes = Shim::PacketRes::L2Uc; }, true },
    { "PacketResOther",
      []( Sdk& s ) {
         return s.bcm_field_qualify_PacketRes( kUnit, kEntry, BCM_FIELD_PKT_RES_L2UC,
                                               ~0u );
      },
      []( auto& p ) { p.packetRes = Shim::PacketRes::L2Bc; }, false },
    { "PortClassOfInPort", portClass3OnPort7, []( auto& p ) { p.inPort = 7; }, true },
    { "PortClassOfOtherPort", portClass3OnPort7, []( auto& p ) { p.inPort = 8; }, false },
    { "DscpIgnoresEcn",
      []( Sdk& s ) { return s.bcm_field_qualify_DSCP( kUnit, kEntry, 0xb8, 0xfc ); },
      []( auto& p ) { p.tos = 0xbb; }, true },
    { "DscpOther",
      []( Sdk& s ) { return s.bcm_field_qualify_DSCP( kUnit, kEntry, 0xb8, 0xfc ); },
      []( auto& p ) { p.tos = 0x00; }, false },
    { "DstMacMulticast",
      []( Sdk& s ) {
         return s.bcm_field_qualify_DstMac( kUnit, kEntry, kMcastBit, kMcastBit );
      },
      []( auto& p ) { p.dstMac = { 0x01, 0x80, 0xc2, 0, 0, 0x0e }; }, true },
    { "DstMacUnicast",
      []( Sdk& s ) {
         return s.bcm_field_qualify_DstMac( kUnit, kEntry, kMcastBit, kMcastBit );
      },
      []( auto& p ) { p.dstMac = { 0x00, 0x1c, 0x73, 0, 0, 1 }; }, false },
    { "DstIp6InPrefix",
      []( Sdk& s ) {
         return s.bcm_field_qualify_DstIp6( kUnit, kEntry, kLinkLocal, kPrefix10 );
      },
      []( auto& p ) {
         p.dstIp6 = { 0xfe, 0x80, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1 };
      },
      true },
    { "DstIp6OutOfPrefix",
      []( Sdk& s ) {
         return s.bcm_field_qualify_DstIp6( kUnit, kEntry, kLinkLocal, kPrefix10 );
      },
      []( auto& p ) {
         p.dstIp6 = { 0x20, 0x01 };
      },
      false },
    { "StpForward",
      []( Sdk& s ) {
         return s.bcm_field_qualify_IngressStpState( kUnit, kEntry, 4, 0xff );
      },
      []( auto& p ) { p.stpState = BCM_STG_STP_FORWARD; }, true },
    { "StpBlocked",
      []( Sdk& s ) {
         return s.bcm_field_qualify_IngressStpState( kUnit, kEntry, 4, 0xff );
      },
      []( auto& p ) { p.stpState = BCM_STG_STP_BLOCK; }, false },
    { "TtlOne",
      []( Sdk& s ) { return s.bcm_field_qualify_Ttl( kUnit, kEntry, 1, 0xff ); },
      []( auto& p ) { p.ttl = 1; }, true },
    { "TtlSixtyFour",
      []( Sdk& s ) { return s.bcm_field_qualify_Ttl( kUnit, kEntry, 1, 0xff ); },
      []( auto& p ) { p.ttl = 64; }, false },
    { "HiGigSet",
      []( Sdk& s ) { return s.bcm_field_qualify_HiGig( kUnit, kEntry, 1, 1 ); },
      []( auto& p ) { p.higig = true; }, true },
    { "HiGigClear",
      []( Sdk& s ) { return s.bcm_field_qualify_HiGig( kUnit, kEntry, 1, 1 ); },
      []( auto& ) {}, false },
};

class MatchTest : public SdkFixture, public ::testing::WithParamInterface<MatchCase> {};

TEST_P( MatchTest, InstalledQualifierDecidesTheHit ) {
   createEntry( kEntry );
   ASSERT_EQ( 0, GetParam().program( sdk ) );
   ASSERT_EQ( 0, sdk.bcm_field_action_add( kUnit, kEntry, bcmFieldActionDrop, 0, 0 ) );
   ASSERT_EQ( 0, sdk.bcm_field_entry_install( kUnit, kEntry ) );
   Sim::PacketFields packet;
   GetParam().packet( packet );
   EXPECT_EQ( GetParam().hits, ingress( packet ).drop );
}

INSTANTIATE_TEST_SUITE_P( Sdk, MatchTest, ::testing::ValuesIn( kMatches ),
                          []( const auto& info ) {
                             return std::string( info.param.name );
                          } );

// ---------------------------------------------------------------------------
// Compressed fields.

Shim::FieldBytes port( uint16_t value ) {
   Shim::FieldBytes b;
   b.bytes[0] = static_cast<uint8_t>( value >> 8 );
   b.bytes[1] = static_cast<uint8_t>( value );
   return b;
}

class CompressedTest : public SdkFixture {
 protected:
   int add( uint16_t value, uint16_t mask = 0xffff, uint32 classId = 1 ) {
      return sdk.bcm_field_qualify_compressed_add(
          kUnit, kEntry, Shim::CompressedField::L4DstPort, port( value ), port( mask ),
          classId, 0xf );
   }
   std::vector<Shim::CompressedValue> values( int max = 8 ) {
      std::vector<Shim::CompressedValue> out( static_cast<size_t>( max ) );
      int count = -1;
      EXPECT_EQ( 0, sdk.bcm_field_qualify_compressed_get(
                        kUnit, kEntry, Shim::CompressedField::L4DstPort, out.data(), max,
                        &count ) );
      out.resize( static_cast<size_t>( std::min( count, max ) ) );
      lastCount = count;
      return out;
   }
   void SetUp() override {
      SdkFixture::SetUp();
      createEntry( kEntry );
      ASSERT_EQ(
          0, sdk.bcm_field_action_add( kUnit, kEntry, bcmFieldActionCosQCpuNew, 30, 0 ) );
   }
   int lastCount = 0;
};

TEST_F( CompressedTest, EntryMatchesAnyListedValueOnceInstalled ) {
   ASSERT_EQ( 0, add( 179 ) );
   ASSERT_EQ( 0, add( 646 ) );
   ASSERT_EQ( 0, sdk.bcm_field_entry_install( kUnit, kEntry ) );
   EXPECT_THAT( ingressHits( udpTo( 179 ) ), ElementsAre( kEntry ) );
   EXPECT_THAT( ingressHits( udpTo( 646 ) ), ElementsAre( kEntry ) );
   EXPECT_THAT( ingressHits( udpTo( 647 ) ), IsEmpty() );

   ASSERT_EQ( 0, add( 647 ) );
   EXPECT_THAT( ingressHits( udpTo( 647 ) ), IsEmpty() );  // software only
   ASSERT_EQ( 0, sdk.bcm_field_entry_reinstall( kUnit, kEntry ) );
   EXPECT_THAT( ingressHits( udpTo( 647 ) ), ElementsAre( kEntry ) );
}

TEST_F( CompressedTest, SameValueTwiceIsListedOnceAndGetStopsAtMax ) {
   ASSERT_EQ( 0, add( 179 ) );
   ASSERT_EQ( 0, add( 179, 0xffff, 2 ) );
   ASSERT_EQ( 0, add( 0x1234, 0xff00 ) );  // kept as 0x1200/0xff00
   ASSERT_EQ( 0, add( 0x12ff, 0xff00 ) );  // the same value in canonical form
   ASSERT_EQ( 0, add( 646 ) );
   const auto first = values( 2 );
   EXPECT_EQ( 3, lastCount );
   ASSERT_EQ( 2u, first.size() );
   EXPECT_EQ( port( 179 ), first[0].data );
   EXPECT_EQ( 1u, first[0].classId );
   EXPECT_EQ( port( 0x1200 ), first[1].data );
   EXPECT_EQ( port( 0xff00 ), first[1].mask );
}

TEST_F( CompressedTest, ClearRemovesEveryValue ) {
   ASSERT_EQ( 0, add( 179 ) );
   ASSERT_EQ( 0, add( 646 ) );
   ASSERT_EQ( 0, sdk.bcm_field_entry_install( kUnit, kEntry ) );
   ASSERT_EQ( 0, sdk.bcm_field_qualify_compressed_clear(
                     kUnit, kEntry, Shim::CompressedField::L4DstPort ) );
   EXPECT_THAT( values(), IsEmpty() );
   ASSERT_EQ( 0, sdk.bcm_field_entry_reinstall( kUnit, kEntry ) );
   EXPECT_THAT( ingressHits( udpTo( 1 ) ), ElementsAre( kEntry ) );
   EXPECT_THAT( fp.entry( kUnit, kEntry )->hardware.qualifiers, IsEmpty() );
}

TEST_F( CompressedTest, PlainValueAndCompressedValuesMustBothMatch ) {
   ASSERT_EQ( 0,
              sdk.bcm_field_qualify_L4DstPort( kUnit, kEntry, 0, 0xff00 ) );  // below 256
   ASSERT_EQ( 0, add( 179 ) );
   ASSERT_EQ( 0, add( 1000 ) );
   ASSERT_EQ( 0, sdk.bcm_field_entry_install( kUnit, kEntry ) );
   EXPECT_THAT( ingressHits( udpTo( 179 ) ), ElementsAre( kEntry ) );
   EXPECT_THAT( ingressHits( udpTo( 1000 ) ), IsEmpty() );
   EXPECT_THAT( ingressHits( udpTo( 180 ) ), IsEmpty() );

   const auto view = fp.entry( kUnit, kEntry );
   ASSERT_EQ( 1u, view->hardware.qualifiers.size() );
   const Sim::QualifierView& q = view->hardware.qualifiers[0];
   EXPECT_EQ( "L4DstPort", q.name );
   EXPECT_TRUE( q.isCompressed );
   EXPECT_EQ( 2u, q.compressed.size() );
   EXPECT_EQ( ( std::vector<uint8_t>{ 0xff, 0x00 } ), q.mask );
}

TEST_F( CompressedTest, AddressFieldsMatchByPrefix ) {
   Shim::FieldBytes net, mask;
   net.bytes = { 10, 1 };
   mask.bytes = { 255, 255 };
   ASSERT_EQ( 0, sdk.bcm_field_qualify_compressed_add(
                     kUnit, kEntry, Shim::CompressedField::DstIp, net, mask, 4, 0xf ) );
   ASSERT_EQ( 0, sdk.bcm_field_entry_install( kUnit, kEntry ) );
   Sim::PacketFields packet = udpTo( 1 );
   packet.dstIp = 0x0a010203;
   EXPECT_THAT( ingressHits( packet ), ElementsAre( kEntry ) );
   packet.dstIp = 0x0a020203;
   EXPECT_THAT( ingressHits( packet ), IsEmpty() );
}

}  // namespace
