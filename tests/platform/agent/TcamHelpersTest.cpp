#include <algorithm>
#include <string_view>

#include "AgentTestSupport.h"
#include "platform/agent/TcamHelpers.h"

using namespace AgentTest;

namespace {

// One L3 entry, programmed by the helpers under test, then installed.
class TcamHelpersTest : public SwitchTest {
  protected:
   void SetUp() override {
      Agent::SwitchConfig config = Agent::defaultSwitchConfig();
      config.chips[ 0 ].attributes.dstIpv6ClassSupported = dstIpv6Class();
      bringUp( config );
      ASSERT_EQ( sw_->l3Manager->getEntry( 0, entry, "helper", {} ), entry );
   }
   virtual bool dstIpv6Class() { return false; }
   void install() { ASSERT_EQ( sw_->l3Manager->installEntry( 0, entry ), 0 ); }
   bool hits( const Sim::PacketFields& packet ) {
      return hit( 0, packet, l3Group ) == bcm_field_entry_t( entry );
   }
   static Sim::PacketFields l4Packet( uint16_t src, uint16_t dst ) {
      Sim::PacketFields p = tcpPacket( 1, dst );
      p.l4SrcPort = src;
      return p;
   }
   const Ferro::GroupManager& gm() { return sw_->groupManager; }
   static constexpr U32 entry = l3Base;
};

// Either kind of chip, told apart by whether IPv6 destinations have a class.
class DstIpv6ClassTest : public TcamHelpersTest, public ::testing::WithParamInterface<bool> {
   bool dstIpv6Class() override { return GetParam(); }
};

constexpr bcm_ip6_t ip6 = { 0xff, 0x02, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0x05 };
constexpr bcm_ip6_t ip6Mask = { 0xff, 0x0f };
constexpr bcm_mac_t mac = { 0x33, 0x33, 0, 0, 0, 0x05 };
constexpr bcm_mac_t macMask = { 0xff, 0xff, 0xff, 0xff, 0xff, 0xff };

}  // namespace

// Values added to one field all match, and releaseOldAndSet replaces them. A
// value already matched is not sent again: on a chip it would use up a class.
TEST_F( TcamHelpersTest, AddedValuesAllMatchAndReleaseOldReplacesThem ) {
   chip().clearJournal();
   const U16 types[] = { 0x8200, 0x8300, 0x8400, 0x8F00, 0x8300 };
   for ( U16 type : types ) {
      ASSERT_EQ( Ferro::setL4SrcPort( 0, gm(), entry, type, 0xffff, 10, 0xf ), 0 );
      ASSERT_EQ( Ferro::setL4DstPort( 0, gm(), entry, type, 0xffff, 3, 0xf ), 0 );
   }
   ASSERT_EQ( Ferro::releaseOldAndSetL4DstPort( 0, gm(), entry, 4739, 0xffff, 14, 0xf ), 0 );
   install();
   for ( U16 type : types ) {
      EXPECT_TRUE( hits( l4Packet( type, 4739 ) ) ) << type;
      EXPECT_FALSE( hits( l4Packet( type, type ) ) ) << type;
   }
   EXPECT_FALSE( hits( l4Packet( 0x8800, 4739 ) ) );
   const auto& calls = chip().journal();
   EXPECT_EQ( std::count_if( calls.begin(), calls.end(), []( const Sim::JournalEntry& c ) {
                 return std::string_view( c.function ) == "bcm_field_qualify_compressed_add";
              } ),
              4 + 4 + 1 );
   EXPECT_FALSE( Ferro::verifyL4SrcPort( 0, gm(), entry, 0x8200, 0xffff ) );
   EXPECT_TRUE( Ferro::verifyL4DstPort( 0, gm(), entry, 4739, 0xffff ) );
   EXPECT_FALSE( Ferro::verifyL4DstPort( 0, gm(), entry, 0x8200, 0xffff ) );
}

TEST_F( TcamHelpersTest, VerifyWantsExactlyTheOneValue ) {
   ASSERT_EQ( Ferro::setIpProtocol( 0, gm(), entry, 6, 0xff, 1, 0xf ), 0 );
   ASSERT_EQ( Ferro::setDstIPv4( 0, gm(), entry, 0xE0000004, 0xFFFFFFFC, 4, 0xf ), 0 );
   ASSERT_EQ( Ferro::setEtherType( 0, gm(), entry, 0, 0x0800, 0xffff, 2, 0xf ), 0 );
   install();
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
   EXPECT_TRUE( hits( packet ) );
   packet.dstIp = 0xE0000008;
   EXPECT_FALSE( hits( packet ) );
}

TEST_P( DstIpv6ClassTest, MatchesTheIpv6AddressOrTheMac ) {
   const bool byClass = GetParam();
   ASSERT_EQ(
      Ferro::setDstIPv6ClassOrDstMac( 0, gm(), entry, ip6, ip6Mask, 6, 0xf, mac, macMask ),
      0 );
   install();
   const auto view = chip().entry( 0, entry );
   ASSERT_EQ( view->hardware.qualifiers.size(), 1u );
   EXPECT_EQ( view->hardware.qualifiers[ 0 ].name, byClass ? "DstIp6" : "DstMac" );

   Sim::PacketFields byAddress = tcpPacket();
   byAddress.dstIp6 = { 0xff, 0x12, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0x99 };
   Sim::PacketFields byMac = tcpPacket();
   std::copy( std::begin( mac ), std::end( mac ), byMac.dstMac.begin() );
   EXPECT_EQ( hits( byAddress ), byClass );
   EXPECT_EQ( hits( byMac ), !byClass );
   EXPECT_TRUE(
      Ferro::verifyDstIPv6ClassOrDstMac( 0, gm(), entry, ip6, ip6Mask, mac, macMask ) );
}

INSTANTIATE_TEST_SUITE_P( Chips, DstIpv6ClassTest, ::testing::Bool() );
