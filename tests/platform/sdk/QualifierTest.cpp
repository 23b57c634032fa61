// What a qualifier keeps (canonical data, mask cut to the field) and what it
// matches in a packet; compressed fields with several values.
#include <gmock/gmock.h>

#include "tests/platform/sdk/SdkFixture.h"

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using namespace SdkTest;
using Sdk = Shim::Sdk;
using IpType = Shim::FieldIpType;

namespace {

constexpr bcm_field_entry_t kEntry = 100;
using DataMask = std::pair<uint64_t, uint64_t>;

template <typename T>
DataMask readBack( Sdk& s, int ( Sdk::*get )( int, bcm_field_entry_t, T*, T* ) ) {
   T data{}, mask{};
   EXPECT_EQ( 0, ( s.*get )( kUnit, kEntry, &data, &mask ) );
   return { data, mask };
}

struct ReadBackCase {
   const char* name;
   int ( *set )( Sdk& );
   DataMask ( *get )( Sdk& );
   DataMask expected;
};

// A word-sized qualifier set to DATA/MASK reads back the pair that follows.
// clang-format off
#define WORD( NAME, DATA, MASK, ... )                                                  \
   { #NAME,                                                                            \
     []( Sdk& s ) { return s.bcm_field_qualify_##NAME( kUnit, kEntry, DATA, MASK ); }, \
     []( Sdk& s ) { return readBack( s, &Sdk::bcm_field_qualify_##NAME##_get ); },     \
     __VA_ARGS__ }
// clang-format on
const ReadBackCase kReadBacks[] = {
    WORD( OuterVlanPri, 5, 0xff, { 5, 7 } ),              // mask cut to 3 bits
    WORD( InterfaceClassL2, 0x12, ~0u, { 0x12, 0xff } ),  // to the unit's class-id bits
    WORD( DstClassL3, 0x3ff, ~0u, { 0x3ff, 0x3ff } ),     // to 10 bits
    WORD( L4DstPort, 0x1234, 0xff00, { 0x1200, 0xff00 } ),
    WORD( DstIp, 0x0a010203, 0xffff0000, { 0x0a010000, 0xffff0000 } ),
    { "SrcPortPacksModuleAndPort",
      []( Sdk& s ) {
         return s.bcm_field_qualify_SrcPort( kUnit, kEntry, 3, ~0, 9, 0xf0 );
      },
      []( Sdk& s ) {
         bcm_module_t dm = 0, mm = 0;
         bcm_port_t dp = 0, mp = 0;
         EXPECT_EQ(
             0, s.bcm_field_qualify_SrcPort_get( kUnit, kEntry, &dm, &mm, &dp, &mp ) );
         return DataMask( dm << 8 | dp, mm << 8 | mp );
      },
      { 0x0300, 0xfff0 } },
    { "RequalifyReplaces",
      []( Sdk& s ) {
         EXPECT_EQ( 0, s.bcm_field_qualify_EtherType( kUnit, kEntry, 0x0800, 0xffff ) );
         return s.bcm_field_qualify_EtherType( kUnit, kEntry, 0x86dd, 0xfff0 );
      },
      []( Sdk& s ) { return readBack( s, &Sdk::bcm_field_qualify_EtherType_get ); },
      { 0x86d0, 0xfff0 } },
    { "UnqualifiedIsDontCare",
      []( Sdk& ) { return 0; },
      []( Sdk& s ) { return readBack( s, &Sdk::bcm_field_qualify_Ttl_get ); },
      { 0, 0 } },
};
#undef WORD

class ReadBackTest : public SdkFixture,
                     public ::testing::WithParamInterface<ReadBackCase> {};

TEST_P( ReadBackTest, ReturnsCanonicalValueWithinFieldWidth ) {
   createEntry( kEntry );
   ASSERT_EQ( 0, GetParam().set( sdk ) );
   EXPECT_EQ( GetParam().expected, GetParam().get( sdk ) );
}

INSTANTIATE_TEST_SUITE_P( Sdk, ReadBackTest, ::testing::ValuesIn( kReadBacks ),
                          RowName() );

// Not 0: that is another IP type's value.
TEST_F( SdkFixture, UnqualifiedIpTypeReadsBackAny ) {
   createEntry( kEntry );
   bcm_field_IpType_t type = -1;
   ASSERT_EQ( 0, sdk.bcm_field_qualify_IpType_get( kUnit, kEntry, &type ) );
   EXPECT_EQ( bcm_field_IpType_t( bcmFieldIpTypeAny ), type );
}

// ---------------------------------------------------------------------------
// Matching: per qualifier meaning, a packet it hits and one it misses.

struct MatchCase {
   const char* name;
   int ( *program )( Sdk& );
   void ( *hit )( Sim::PacketFields& );
   void ( *miss )( Sim::PacketFields& );  // null: nothing misses
};

constexpr bcm_mac_t kMulticastBit = { 0x01, 0, 0, 0, 0, 0 };
// fe81:: under a /10 mask: kept as fe80::, so it matches the whole prefix.
constexpr bcm_ip6_t kLinkLocal = { 0xfe, 0x81 };
constexpr bcm_ip6_t kPrefix10 = { 0xff, 0xc0 };

int portClass3OnPort7( Sdk& s ) {
   EXPECT_EQ( 0, s.bcm_port_class_set( kUnit, 7, bcmPortClassFieldIngress, 3 ) );
   return s.bcm_field_qualify_InterfaceClassPort( kUnit, kEntry, 3, 0xff );
}

#define Q( NAME, ... )                                                 \
   []( Sdk& s ) -> int {                                               \
      return s.bcm_field_qualify_##NAME( kUnit, kEntry, __VA_ARGS__ ); \
   }
#define P( ... ) []( Sim::PacketFields& p ) { __VA_ARGS__; }
const MatchCase kMatches[] = {
    { "InPortsMember", Q( InPorts, portsOf( { 1, 2 } ), portRange( 0, 64 ) ),
      P( p.inPort = 2 ), P( p.inPort = 3 ) },
    { "InPortsOutsideMaskDontCare", Q( InPorts, portsOf( { 1 } ), portsOf( { 1, 5 } ) ),
      P( p.inPort = 7 ), P( p.inPort = 5 ) },
    { "SrcPort", Q( SrcPort, 0, 0xff, 5, 0xff ), P( p.inPort = 5 ),
      P( p.inPort = 5, p.srcModid = 1 ) },
    { "DstPortModule", Q( DstPort, 250, 0xff, 0, 0 ),
      P( p.dstModid = 250, p.dstPort = 17 ), P( p.dstModid = 251 ) },
    { "IpTypeAny", Q( IpType, bcmFieldIpTypeAny ), P( p.ipType = IpType::NonIp ),
      nullptr },
    { "IpTypeNonIp", Q( IpType, bcmFieldIpTypeNonIp ), P( p.ipType = IpType::NonIp ),
      P( p.ipType = IpType::Ipv4Any ) },
    { "IpTypeIp", Q( IpType, bcmFieldIpTypeIp ), P( p.ipType = IpType::Ipv6 ),
      P( p.ipType = IpType::NonIp ) },
    { "IpTypeIpv4", Q( IpType, bcmFieldIpTypeIpv4Any ), P( p.ipType = IpType::Ipv4Any ),
      P( p.ipType = IpType::Ipv6 ) },
    { "IpTypeIpv6", Q( IpType, bcmFieldIpTypeIpv6 ), P( p.ipType = IpType::Ipv6 ),
      P( p.ipType = IpType::Ipv4Any ) },
    { "PacketRes", Q( PacketRes, BCM_FIELD_PKT_RES_L2UC, ~0u ),
      P( p.packetRes = Shim::PacketRes::L2Uc ),
      P( p.packetRes = Shim::PacketRes::L2Bc ) },
    { "PortClassOfInPort", portClass3OnPort7, P( p.inPort = 7 ), P( p.inPort = 8 ) },
    { "DscpIgnoresEcn", Q( DSCP, 0xb8, 0xfc ), P( p.tos = 0xbb ), P( p.tos = 0 ) },
    { "DstMacMulticast", Q( DstMac, kMulticastBit, kMulticastBit ),
      P( p.dstMac = { 0x01, 0x80, 0xc2, 0, 0, 0x0e } ),
      P( p.dstMac = { 0, 0x1c, 0x73 } ) },
    { "DstIp6Prefix", Q( DstIp6, kLinkLocal, kPrefix10 ), P( p.dstIp6 = { 0xfe, 0xbf } ),
      P( p.dstIp6 = { 0x20, 0x01 } ) },
    { "StpState", Q( IngressStpState, BCM_STG_STP_FORWARD, 0xff ),
      P( p.stpState = BCM_STG_STP_FORWARD ), P( p.stpState = BCM_STG_STP_BLOCK ) },
    { "Ttl", Q( Ttl, 1, 0xff ), P( p.ttl = 1 ), P( p.ttl = 64 ) },
    { "HiGig", Q( HiGig, 1, 1 ), P( p.higig = true ), P( p.higig = false ) },
};
#undef Q
#undef P

class MatchTest : public SdkFixture, public ::testing::WithParamInterface<MatchCase> {};

TEST_P( MatchTest, InstalledQualifierDecidesTheHit ) {
   createEntry( kEntry );
   ASSERT_EQ( 0, GetParam().program( sdk ) );
   ASSERT_EQ( 0, addAction( kEntry, bcmFieldActionDrop ) );
   ASSERT_EQ( 0, sdk.bcm_field_entry_install( kUnit, kEntry ) );
   Sim::PacketFields hit, miss;
   GetParam().hit( hit );
   EXPECT_TRUE( ingress( hit ).drop );
   if ( GetParam().miss ) {
      GetParam().miss( miss );
      EXPECT_FALSE( ingress( miss ).drop );
   }
}

INSTANTIATE_TEST_SUITE_P( Sdk, MatchTest, ::testing::ValuesIn( kMatches ), RowName() );

// ---------------------------------------------------------------------------
// Compressed fields.

class CompressedTest : public SdkFixture {
 protected:
   void SetUp() override {
      SdkFixture::SetUp();
      createEntry( kEntry );
      ASSERT_EQ( 0, addAction( kEntry, bcmFieldActionCosQCpuNew, 30 ) );
   }
   int add( uint16_t value, uint16_t mask = 0xffff, uint32 classId = 1 ) {
      return sdk.bcm_field_qualify_compressed_add(
          kUnit, kEntry, Shim::CompressedField::L4DstPort, be16( value ), be16( mask ),
          classId, 0xf );
   }
   std::vector<bcm_field_entry_t> hits( uint16_t port ) {
      return ingressHits( udpTo( port ) );
   }
};

TEST_F( CompressedTest, EveryValueMatchesOnceInstalledAndClearReleasesThemAll ) {
   ASSERT_EQ( 0, add( 179 ) );
   ASSERT_EQ( 0, add( 646 ) );
   ASSERT_EQ( 0, sdk.bcm_field_entry_install( kUnit, kEntry ) );
   EXPECT_THAT( hits( 179 ), ElementsAre( kEntry ) );
   EXPECT_THAT( hits( 646 ), ElementsAre( kEntry ) );
   EXPECT_THAT( hits( 647 ), IsEmpty() );
   ASSERT_EQ( 0, add( 647 ) );
   EXPECT_THAT( hits( 647 ), IsEmpty() );  // in the software copy only
   ASSERT_EQ( 0, sdk.bcm_field_entry_reinstall( kUnit, kEntry ) );
   EXPECT_THAT( hits( 647 ), ElementsAre( kEntry ) );

   ASSERT_EQ( 0, sdk.bcm_field_qualify_compressed_clear(
                     kUnit, kEntry, Shim::CompressedField::L4DstPort ) );
   ASSERT_EQ( 0, sdk.bcm_field_entry_reinstall( kUnit, kEntry ) );
   EXPECT_THAT( hits( 1 ), ElementsAre( kEntry ) );
   EXPECT_THAT( fp.entry( kUnit, kEntry )->hardware.qualifiers, IsEmpty() );
}

TEST_F( CompressedTest, CanonicalDuplicateIsListedOnceAndGetStopsAtMax ) {
   ASSERT_EQ( 0, add( 179 ) );
   ASSERT_EQ( 0, add( 179, 0xffff, 2 ) );
   ASSERT_EQ( 0, add( 0x1234, 0xff00 ) );  // kept as 0x1200/0xff00
   ASSERT_EQ( 0, add( 0x12ff, 0xff00 ) );  // the same in canonical form
   ASSERT_EQ( 0, add( 646 ) );
   Shim::CompressedValue values[3];
   int count = 0;
   ASSERT_EQ( 0,
              sdk.bcm_field_qualify_compressed_get(
                  kUnit, kEntry, Shim::CompressedField::L4DstPort, values, 2, &count ) );
   EXPECT_EQ( 3, count );
   EXPECT_EQ( be16( 179 ), values[0].data );
   EXPECT_EQ( 1u, values[0].classId );
   EXPECT_EQ( be16( 0x1200 ), values[1].data );
   EXPECT_EQ( be16( 0xff00 ), values[1].mask );
   EXPECT_EQ( Shim::FieldBytes{}, values[2].data );  // beyond max: untouched
}

TEST_F( CompressedTest, PlainValueAndCompressedValuesMustBothMatch ) {
   ASSERT_EQ( 0,
              sdk.bcm_field_qualify_L4DstPort( kUnit, kEntry, 0, 0xff00 ) );  // below 256
   ASSERT_EQ( 0, add( 179 ) );
   ASSERT_EQ( 0, add( 1000 ) );
   ASSERT_EQ( 0, sdk.bcm_field_entry_install( kUnit, kEntry ) );
   EXPECT_THAT( hits( 179 ), ElementsAre( kEntry ) );
   EXPECT_THAT( hits( 1000 ), IsEmpty() );
   EXPECT_THAT( hits( 180 ), IsEmpty() );
}

TEST_F( CompressedTest, AddressMatchesByPrefixInNetworkOrder ) {
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
