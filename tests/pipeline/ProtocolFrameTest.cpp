// Each protocol frame parses completely, finds its headers in order, and
// yields the fields the chip's lookup reads.
#include <gtest/gtest.h>

#include "tests/pipeline/ProtocolFrames.h"

namespace Pipeline::Test {
namespace {

std::vector<Layer> layersOf( const ParsedPacket& packet ) {
   std::vector<Layer> layers;
   for ( const LayerSpan& span : packet.layers ) {
      layers.push_back( span.layer );
   }
   return layers;
}

class ProtocolFrameTest : public ::testing::TestWithParam<FrameCase> {};

TEST_P( ProtocolFrameTest, ParsesCompletelyIntoTheChipFields ) {
   const FrameCase& row = GetParam();
   ParsedPacket packet = parsePacket( row.frame );
   EXPECT_EQ( packet.status.outcome, ParseOutcome::Complete ) << packet.status.reason;
   EXPECT_EQ( layersOf( packet ), row.layers );
   row.expect( packet );
}

INSTANTIATE_TEST_SUITE_P( Frames, ProtocolFrameTest, ::testing::ValuesIn( protocolFrames() ),
                          []( const auto& info ) { return info.param.name; } );

Bytes udpToBfd( size_t payload ) {
   return ethernetFrame( { mac( "00:1c:73:00:00:99" ) }, 0x0800,
                         ipv4Packet( { .src = ipv4( "10.0.0.2" ), .dst = ipv4( "10.0.0.1" ),
                                       .protocol = 17 },
                                     udpDatagram( 49152, 3784, Bytes( payload, 0 ) ) ) );
}

TEST( PacketParserTest, EthernetPaddingIsNotPayload ) {
   Bytes frame = padToMinimum( udpToBfd( 2 ) );
   ASSERT_EQ( frame.size(), 60u );
   // Make the padding look like a longer UDP payload would: it must be ignored.
   frame.back() = 0xFF;
   ParsedPacket packet = parsePacket( frame );
   EXPECT_EQ( packet.status.outcome, ParseOutcome::Complete ) << packet.status.reason;
   EXPECT_EQ( packet.fields.l4DstPort, 3784 );
}

TEST( PacketParserTest, NonFirstFragmentHasNoLayer4 ) {
   for ( uint8_t version : { 4, 6 } ) {
      SCOPED_TRACE( version );
      Bytes udp = udpDatagram( 49152, 3784, Bytes( 8, 0 ) );
      Bytes frame =
         version == 4
            ? ethernetFrame( {}, 0x0800,
                             ipv4Packet( { .dst = ipv4( "10.0.0.1" ), .protocol = 17,
                                           .fragmentOffset = 185 },
                                         udp ) )
            : ethernetFrame( {}, 0x86DD,
                             ipv6Packet( { .nextHeader = 17,
                                           .extensions = { { 44, { 0x05, 0xC8 } } } },
                                         udp ) );
      ParsedPacket packet = parsePacket( frame );
      EXPECT_EQ( packet.status.outcome, ParseOutcome::Complete );
      EXPECT_TRUE( packet.nonFirstFragment );
      EXPECT_EQ( packet.fields.ipProtocol, 17 );
      EXPECT_FALSE( packet.has( Field::L4SrcPort ) || packet.has( Field::L4DstPort ) );
      EXPECT_FALSE( packet.hasLayer( Layer::Udp ) );
   }
}

// The chip parses two tags: a third TPID is the packet's ether type.
TEST( PacketParserTest, ThirdVlanTagIsTheEtherType ) {
   EthernetHeader eth{ .tags = { { .vid = 1 }, { .vid = 2 }, { .vid = 3 } } };
   ParsedPacket packet = parsePacket( ethernetFrame( eth, 0x0800, Bytes( 20, 0 ) ) );
   EXPECT_EQ( packet.fields.etherType, 0x8100 );
   EXPECT_EQ( packet.innerVlan->vid, 2 );
   EXPECT_FALSE( packet.hasLayer( Layer::Ipv4 ) );
}

}  // namespace
}  // namespace Pipeline::Test
