#include "AgentTestSupport.h"
#include "platform/agent/TcamHelpers.h"

using namespace AgentTest;

namespace {

class TcamHelpersTest : public SwitchTest {
  protected:
   // An installed L3 entry holding just what `program` put on it.
   template <typename Program>
   U32 installed( Program program, U32 entry = l3Base ) {
      EXPECT_EQ( sw_->l3Manager->getEntry( 0, entry, "helper", {} ), entry );
      program( entry );
      EXPECT_EQ( sw_->l3Manager->installEntry( 0, entry ), 0 );
      return entry;
   }
   bool hits( const Sim::PacketFields& packet, U32 entry ) {
      return hit( 0, packet, l3Group ) == bcm_field_entry_t( entry );
   }
   Sim::PacketFields l4Packet( uint16_t src, uint16_t dst ) {
      Sim::PacketFields p = tcpPacket( 1, dst );
      p.l4SrcPort = src;
      return p;
   }
   const Ferro::GroupManager& gm() { return sw_->groupManager; }
};

// Either kind of chip, told apart by whether IPv6 destinations have a class.
class DstIpv6ClassTest : public TcamHelpersTest,
                         public ::testing::WithParamInterface<bool> {
  protected:
   void SetUp() override {
      Agent::SwitchConfig config = Agent::defaultSwitchConfig();
      config.chips[ 0 ].attributes.dstIpv6ClassSupported = GetParam();
      bringUp( config );
   }
};

constexpr bcm_ip6_t ip6 = { 0xff, 0x02, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0x05 };
constexpr bcm_ip6_t ip6Mask = { 0xff, 0x0f };
constexpr bcm_mac_t mac = { 0x33, 0x33, 0, 0, 0, 0x05 };
constexpr bcm_mac_t macMask = { 0xff, 0xff, 0xff, 0xff, 0xff, 0xff };

}  // namespace

TEST_F( TcamHelpersTest, EveryAddedValueMatchesAndOnlyThose ) {
   const U16 types[] = { 0x8200, 0x8300, 0x8400, 0x8F00 };
   const U32 entry = installed( [ & ]( U32 e ) {
      for ( U16 type : types ) {
         ASSERT_EQ( Ferro::setL4SrcPort( 0, gm(), e, type, 0xffff, 10, 0xf ), 0 );
      }
      ASSERT_EQ( Ferro::setL4SrcPort( 0, gm(), e, 0x8300, 0xffff, 10, 0xf ), 0 );
   } );
   for ( U16 type : types ) {
      EXPECT_TRUE( hits( l4Packet( type, 0 ), entry ) ) << type;
   }
   EXPECT_FALSE( hits( l4Packet( 0x8800, 0 ), entry ) );
   ASSERT_EQ( chip().entry( 0, entry )->hardware.qualifiers.size(), 1u );
   EXPECT_EQ( chip().entry( 0, entry )->hardware.qualifiers[ 0 ].compressed.size(), 4u );
   EXPECT_FALSE( Ferro::verifyL4SrcPort( 0, gm(), entry, 0x8200, 0xffff ) );
}

TEST_F( TcamHelpersTest, ReleaseOldAndSetReplacesTheField ) {
   const U32 entry = installed( [ & ]( U32 e ) {
      ASSERT_EQ( Ferro::setL4DstPort( 0, gm(), e, 179, 0xffff, 3, 0xf ), 0 );
      ASSERT_EQ( Ferro::setL4DstPort( 0, gm(), e, 180, 0xffff, 3, 0xf ), 0 );
      ASSERT_EQ( Ferro::releaseOldAndSetL4DstPort( 0, gm(), e, 4739, 0xffff, 14, 0xf ),
                 0 );
   } );
   EXPECT_TRUE( hits( l4Packet( 0, 4739 ), entry ) );
   EXPECT_FALSE( hits( l4Packet( 0, 179 ), entry ) );
   EXPECT_FALSE( hits( l4Packet( 0, 180 ), entry ) );
   EXPECT_TRUE( Ferro::verifyL4DstPort( 0, gm(), entry, 4739, 0xffff ) );
   EXPECT_FALSE( Ferro::verifyL4DstPort( 0, gm(), entry, 179, 0xffff ) );
}

TEST_F( TcamHelpersTest, VerifyWantsExactlyTheOneValue ) {
   const U32 entry = installed( [ & ]( U32 e ) {
      ASSERT_EQ( Ferro::setIpProtocol( 0, gm(), e, 6, 0xff, 1, 0xf ), 0 );
      ASSERT_EQ( Ferro::setDstIPv4( 0, gm(), e, 0xE0000004, 0xFFFFFFFC, 4, 0xf ), 0 );
      ASSERT_EQ( Ferro::setEtherType( 0, gm(), e, 0, 0x0800, 0xffff, 2, 0xf ), 0 );
   } );
   const struct {
      const char* what;
      bool got, expected;
   } rows[] = {
      { "protocol", Ferro::verifyIpProtocol( 0, gm(), entry, 6, 0xff ), true },
      { "other protocol", Ferro::verifyIpProtocol( 0, gm(), entry, 17, 0xff ), false },
      { "other mask", Ferro::verifyIpProtocol( 0, gm(), entry, 6, 0x0f ), false },
      { "address", Ferro::verifyDstIPv4( 0, gm(), entry, 0xE0000004, 0xFFFFFFFC ), true },
      // Bits outside the mask are don't-care, in programming and read-back.
      { "address, host bits",
        Ferro::verifyDstIPv4( 0, gm(), entry, 0xE0000007, 0xFFFFFFFC ), true },
      { "exact address", Ferro::verifyDstIPv4( 0, gm(), entry, 0xE0000004, ~0u ), false },
      { "unset field", Ferro::verifyL4SrcPort( 0, gm(), entry, 0, 0 ), false },
   };
   for ( const auto& row : rows ) {
      EXPECT_EQ( row.got, row.expected ) << row.what;
   }
   Sim::PacketFields packet = tcpPacket();
   packet.etherType = 0x0800;
   packet.dstIp = 0xE0000006;
   EXPECT_TRUE( hits( packet, entry ) );
   packet.dstIp = 0xE0000008;
   EXPECT_FALSE( hits( packet, entry ) );
}

TEST_P( DstIpv6ClassTest, MatchesTheIpv6AddressOrTheMac ) {
   const bool byClass = GetParam();
   const U32 entry = installed( [ & ]( U32 e ) {
      ASSERT_EQ( Ferro::setDstIPv6ClassOrDstMac( 0, gm(), e, ip6, ip6Mask, 6, 0xf, mac,
                                                 macMask ),
                 0 );
   } );
   const auto view = chip().entry( 0, entry );
   const auto& qualifiers = view->hardware.qualifiers;
   ASSERT_EQ( qualifiers.size(), 1u );
   EXPECT_EQ( qualifiers[ 0 ].name, byClass ? "DstIp6" : "DstMac" );

   Sim::PacketFields byAddress = tcpPacket();
   byAddress.dstIp6 = { 0xff, 0x12, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0x99 };
   Sim::PacketFields byMac = tcpPacket();
   std::copy( std::begin( mac ), std::end( mac ), byMac.dstMac.begin() );
   EXPECT_EQ( hits( byAddress, entry ), byClass );
   EXPECT_EQ( hits( byMac, entry ), !byClass );
   EXPECT_TRUE(
      Ferro::verifyDstIPv6ClassOrDstMac( 0, gm(), entry, ip6, ip6Mask, mac, macMask ) );
}

INSTANTIATE_TEST_SUITE_P( Chips, DstIpv6ClassTest, ::testing::Bool() );

TEST_F( TcamHelpersTest, PortHelpersAnswerForKnownUnitsOnly ) {
   const FerroCommonSmData& sm = *sw_->smData;
   EXPECT_TRUE( BCM_PBMP_IS_NULL( FerroTcam::getPbmpAll( sm, 9 ) ) );
   EXPECT_TRUE( BCM_PBMP_IS_NULL( FerroTcam::getActivePorts( sm, 9 ) ) );
   EXPECT_EQ( FerroTcam::intfToPort( sm, Wirex::IntfId::ethernet( 1065 ) ),
              FerroTypes::FerroPort::invalid() );
   EXPECT_EQ( FerroTcam::intfToPort( sm, Wirex::IntfId::ethernet( 1064 ) ),
              FerroTypes::FerroPort( 1, 1, 64 ) );

   FerroCommonSmData shifted;
   shifted.ipClassIdShift = 4;
   U32 data = 0, mask = 0;
   FerroTcam::getTranslatedIpClassId( shifted, 6, 15, &data, &mask );
   EXPECT_EQ( data, 0x60u );
   EXPECT_EQ( mask, 0xF0u );
}
