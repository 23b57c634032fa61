// Headers holding impossible values stop the parse at that header, keep what
// the headers before it said, and say why.
#include <gtest/gtest.h>

#include "pipeline/PacketBuilder.h"
#include "pipeline/PacketParser.h"

namespace Pipeline {
namespace {

struct MalformedCase {
   const char* name;
   Bytes frame;
   ParseOutcome outcome;
   Layer layer;
   const char* reason;
};

Bytes withByte( Bytes frame, size_t at, uint8_t value ) {
   frame.at( at ) = value;
   return frame;
}

Bytes ipv4Udp( const Bytes& udp ) {
   return ethernetFrame( {}, 0x0800,
                         ipv4Packet( { .dst = ipv4( "10.0.0.1" ), .protocol = 17 }, udp ) );
}

std::vector<MalformedCase> malformedFrames() {
   const Bytes udp = udpDatagram( 1, 2, Bytes( 4, 0 ) );
   const Bytes v4 = ipv4Udp( udp );
   const Bytes tcp = ethernetFrame(
      {}, 0x0800,
      ipv4Packet( { .dst = ipv4( "10.0.0.1" ), .protocol = 6 }, tcpSegment( 1, 179, 0, {} ) ) );
   const Bytes hbhSecond = ethernetFrame(
      {}, 0x86DD,
      ipv6Packet( { .nextHeader = 58, .extensions = { { 60, {} }, hopByHopRouterAlert() } },
                  icmpMessage( 143, 0, {} ) ) );
   const Bytes gre = ethernetFrame(
      {}, 0x0800,
      ipv4Packet( { .protocol = 47 }, grePacket( 0x00FE, Bytes{ 0x83, 0, 0, 0, 16, 0, 0, 0 } ) ) );
   const Bytes ptp = ethernetFrame( {}, 0x88F7, ptpMessage( 0, {} ) );
   // The IPv6 header claims 16 payload bytes of which the frame has 12, and the
   // hop-by-hop header inside says it is 16 bytes long.
   Bytes shortExtension = ethernetFrame(
      {}, 0x86DD,
      ipv6Packet( { .nextHeader = 59, .extensions = { { 0, Bytes( 14, 0 ) } } }, {} ) );
   shortExtension.resize( shortExtension.size() - 4 );

   using O = ParseOutcome;
   return {
      { "Ipv4Version5", withByte( v4, 14, 0x55 ), O::Malformed, Layer::Ipv4,
        "IPv4 header: version 5" },
      { "Ipv4HeaderLength16", withByte( v4, 14, 0x44 ), O::Malformed, Layer::Ipv4,
        "IPv4 header: header length 16 is below 20 bytes" },
      { "Ipv4TotalBelowHeader", withByte( withByte( v4, 16, 0 ), 17, 19 ), O::Malformed,
        Layer::Ipv4, "IPv4 header: total length 19 is below the header length 20" },
      { "Ipv4HeaderCut", Bytes( v4.begin(), v4.begin() + 26 ), O::Truncated, Layer::Ipv4,
        "IPv4 header: 12 of 20 bytes" },
      { "UdpLength7", withByte( v4, 14 + 20 + 5, 7 ), O::Malformed, Layer::Udp,
        "UDP header: length 7 is below 8 bytes" },
      { "TcpDataOffset4", withByte( tcp, 14 + 20 + 12, 0x40 ), O::Malformed, Layer::Tcp,
        "TCP header: data offset 16 is below 20 bytes" },
      { "HopByHopNotFirst", hbhSecond, O::Malformed, Layer::Ipv6HopByHop,
        "IPv6 extension header 1: hop-by-hop is not the first" },
      { "ExtensionPastFrame", shortExtension, O::Truncated, Layer::Ipv6HopByHop,
        "IPv6 extension header 0: length runs past the frame" },
      { "GreVersion2", withByte( gre, 14 + 20 + 1, 2 ), O::Malformed, Layer::Gre,
        "GRE header: version 2" },
      { "IsisDiscriminator", withByte( gre, 14 + 20 + 4, 0x82 ), O::Malformed, Layer::Isis,
        "IS-IS header: discriminator 130 is not 131" },
      { "PtpMessageLength10", withByte( ptp, 14 + 3, 10 ), O::Malformed, Layer::Ptp,
        "PTP header: message length 10 is below 34 bytes" },
      { "TypeLength1536Minus1", withByte( withByte( v4, 12, 0x05 ), 13, 0xFF ), O::Malformed,
        Layer::Ethernet, "type/length 0x05FF is neither a length nor an ether type" },
   };
}

class MalformedFrameTest : public ::testing::TestWithParam<MalformedCase> {};

TEST_P( MalformedFrameTest, StopsAtTheHeaderAndSaysWhy ) {
   const MalformedCase& row = GetParam();
   ParsedPacket packet = parsePacket( row.frame );
   EXPECT_EQ( packet.status.outcome, row.outcome );
   EXPECT_EQ( packet.status.layer, row.layer ) << layerName( packet.status.layer );
   EXPECT_EQ( packet.status.reason, row.reason );
   EXPECT_FALSE( row.layer != Layer::Ethernet && packet.hasLayer( row.layer ) )
      << "a header that failed its checks is not listed as found";
   // The Ethernet header before it always parsed.
   EXPECT_TRUE( packet.has( Field::DstMac ) );
}

INSTANTIATE_TEST_SUITE_P( Frames, MalformedFrameTest, ::testing::ValuesIn( malformedFrames() ),
                          []( const auto& info ) { return std::string( info.param.name ); } );

}  // namespace
}  // namespace Pipeline
