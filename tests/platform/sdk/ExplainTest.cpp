// explain(): lookup step by step. It must agree with lookup() on the winner
// and say, for each entry looked at before it, which qualifier failed and
// what the packet had there.
#include <gmock/gmock.h>

#include <random>

#include "tests/platform/sdk/SdkFixture.h"

namespace SdkTest {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

std::vector<uint8_t> bytes( std::initializer_list<uint8_t> list ) { return list; }

class ExplainTest : public SdkFixture {
  protected:
   void SetUp() override {
      SdkFixture::SetUp();
      // Looked at first: matches the port, not the protocol.
      createEntry( 10, kIngress, 30 );
      ASSERT_EQ( 0, sdk.bcm_field_qualify_L4DstPort( kUnit, 10, 179, 0xffff ) );
      ASSERT_EQ( 0, sdk.bcm_field_qualify_IpProtocol( kUnit, 10, 6, 0xff ) );
      ASSERT_EQ( 0, sdk.bcm_field_entry_install( kUnit, 10 ) );
      // The winner.
      createEntry( 11, kIngress, 20 );
      ASSERT_EQ( 0, sdk.bcm_field_qualify_InPorts( kUnit, 11, portsOf( { 1, 2 } ),
                                                    portRange( 0, 64 ) ) );
      ASSERT_EQ( 0, sdk.bcm_field_qualify_L4DstPort( kUnit, 11, 179, 0xffff ) );
      ASSERT_EQ( 0, sdk.bcm_field_entry_install( kUnit, 11 ) );
      // Below the winner, and one that would win but is disabled.
      installTrap( 12, 179, 5, kIngress, 10 );
      installTrap( 13, 179, 5, kIngress, 40 );
      ASSERT_EQ( 0, sdk.bcm_field_entry_enable_set( kUnit, 13, 0 ) );
      // Another group: compressed values that miss.
      createEntry( 20, kIngressHigh, 5 );
      for ( uint16_t port : { 22, 23 } ) {
         ASSERT_EQ( 0, sdk.bcm_field_qualify_compressed_add(
                           kUnit, 20, Shim::CompressedField::L4DstPort, be16( port ),
                           be16( 0xffff ), 1, 0xf ) );
      }
      ASSERT_EQ( 0, sdk.bcm_field_entry_install( kUnit, 20 ) );
   }
};

TEST_F( ExplainTest, MissesUpToTheWinnerWithTheirFirstFailingQualifier ) {
   Sim::PacketFields packet = udpTo( 179 );
   packet.inPort = 1;
   const Sim::Explanation why = fp.explain( kUnit, packet );
   ASSERT_EQ( why.ingress.groups.size(), 3u );  // by group priority: 2, 1, then the narrow one
   const Sim::GroupCheck& high = why.ingress.groups[0];
   EXPECT_EQ( high.group, kIngressHigh );
   ASSERT_EQ( high.entries.size(), 1u );
   EXPECT_FALSE( high.entries[0].hit );
   ASSERT_EQ( high.entries[0].qualifiers.size(), 1u );
   const Sim::QualifierCheck& compressed = high.entries[0].qualifiers[0];
   EXPECT_EQ( compressed.entry.compressed.size(), 2u );
   ASSERT_EQ( compressed.packet.compressed.size(), 1u );
   EXPECT_EQ( compressed.packet.compressed[0].data, be16( 179 ) );

   const Sim::GroupCheck& group = why.ingress.groups[1];
   EXPECT_EQ( group.group, kIngress );
   ASSERT_EQ( group.entries.size(), 2u );
   const Sim::EntryCheck& miss = group.entries[0];
   EXPECT_EQ( miss.entry, 10 );
   EXPECT_FALSE( miss.hit );
   ASSERT_EQ( miss.qualifiers.size(), 2u );  // qualified order, stopping at the failure
   EXPECT_EQ( miss.qualifiers[0].entry.name, "L4DstPort" );
   EXPECT_TRUE( miss.qualifiers[0].matched );
   EXPECT_EQ( miss.qualifiers[1].entry.name, "IpProtocol" );
   EXPECT_FALSE( miss.qualifiers[1].matched );
   EXPECT_EQ( miss.qualifiers[1].entry.data, bytes( { 6 } ) );
   EXPECT_EQ( miss.qualifiers[1].packet.data, bytes( { 17 } ) );
   EXPECT_EQ( miss.qualifiers[1].packet.mask, bytes( { 0xff } ) );

   const Sim::EntryCheck& winner = group.entries[1];
   EXPECT_EQ( winner.entry, 11 );
   EXPECT_EQ( winner.priority, 20 );
   EXPECT_TRUE( winner.hit );
   ASSERT_EQ( winner.qualifiers.size(), 2u );
   EXPECT_EQ( winner.qualifiers[0].entry.name, "InPorts" );
   EXPECT_TRUE( winner.qualifiers[0].matched );
   // The packet's in-port as a bitmap of the one port, in the entry's layout.
   EXPECT_EQ( winner.qualifiers[0].packet.data.back(), 0x02 );
   EXPECT_TRUE( winner.qualifiers[1].matched );
}

TEST_F( ExplainTest, AgreesWithLookupOnEveryWinner ) {
   std::mt19937 random( 7 );
   for ( int i = 0; i < 200; ++i ) {
      Sim::PacketFields packet = udpTo( uint16_t( random() % 2 ? 179 : 22 + random() % 3 ) );
      packet.inPort = int( random() % 4 );
      packet.ipProtocol = random() % 2 ? 6 : 17;
      std::vector<bcm_field_entry_t> winners;
      for ( const Sim::GroupCheck& g : fp.explain( kUnit, packet ).ingress.groups ) {
         if ( !g.entries.empty() && g.entries.back().hit ) {
            winners.push_back( g.entries.back().entry );
         }
      }
      EXPECT_EQ( winners, ingressHits( packet ) );
   }
}

TEST_F( ExplainTest, NothingFromAPortTheUnitLacks ) {
   ASSERT_EQ( 0, fp.portValidIs( kUnit, 2, false ) );
   Sim::PacketFields packet = udpTo( 179 );
   packet.inPort = 2;
   const Sim::Explanation why = fp.explain( kUnit, packet );
   EXPECT_THAT( why.ingress.groups, IsEmpty() );
   EXPECT_THAT( why.vlan.groups, IsEmpty() );
}

}  // namespace
}  // namespace SdkTest
