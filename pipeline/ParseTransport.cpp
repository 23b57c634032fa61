// The upper-layer protocols of IP: TCP, UDP, ICMP and ICMPv6, and the dispatch
// to tunnels and IPsec.
#include "pipeline/ParserContext.h"

namespace Pipeline::detail {

namespace {

constexpr size_t kTcpHeader = 20;
constexpr size_t kUdpHeader = 8;
constexpr size_t kIcmpHeader = 4;  // type, code, checksum
constexpr uint16_t kPtpEventPort = 319;
constexpr uint16_t kPtpGeneralPort = 320;

void setPorts( ParserContext& p, size_t offset ) {
   p.fields().l4SrcPort = p.u16( offset );
   p.fields().l4DstPort = p.u16( offset + 2 );
   p.set( Field::L4SrcPort );
   p.set( Field::L4DstPort );
}

}  // namespace

void parseIpPayload( ParserContext& p, uint8_t protocol, size_t offset, size_t end ) {
   switch ( protocol ) {
      case 1:
         parseIcmp( p, Layer::Icmp, offset, end );
         return;
      case 6:
         parseTcp( p, offset, end );
         return;
      case 17:
         parseUdp( p, offset, end );
         return;
      case 47:
         parseGre( p, offset, end );
         return;
      case 50:
         parseEsp( p, false, offset, end );
         return;
      case 58:
         parseIcmp( p, Layer::Icmpv6, offset, end );
         return;
      case 141:
         parseEsp( p, true, offset, end );
         return;
   }
}

void parseTcp( ParserContext& p, size_t offset, size_t end ) {
   if ( !p.fits( Layer::Tcp, "TCP header", offset, kTcpHeader, end ) ) {
      return;
   }
   size_t headerLength = size_t( p.u8( offset + 12 ) >> 4 ) * 4;
   if ( headerLength < kTcpHeader ) {
      p.malformed( Layer::Tcp, "TCP header: data offset " + std::to_string( headerLength ) +
                                  " is below 20 bytes" );
      return;
   }
   setPorts( p, offset );
   p.out().tcpFlags = p.u8( offset + 13 );
   p.found( Layer::Tcp, offset, headerLength );
   p.fits( Layer::Tcp, "TCP options", offset + kTcpHeader, headerLength - kTcpHeader, end );
}

void parseUdp( ParserContext& p, size_t offset, size_t end ) {
   if ( !p.fits( Layer::Udp, "UDP header", offset, kUdpHeader, end ) ) {
      return;
   }
   size_t length = p.u16( offset + 4 );
   if ( length < kUdpHeader ) {
      p.malformed( Layer::Udp, "UDP header: length " + std::to_string( length ) +
                                  " is below 8 bytes" );
      return;
   }
   setPorts( p, offset );
   p.found( Layer::Udp, offset, kUdpHeader );
   size_t datagramEnd = offset + length;
   if ( datagramEnd > end ) {
      p.truncated( Layer::Udp, "UDP datagram: length " + std::to_string( length ) + ", " +
                                  std::to_string( end - offset ) + " bytes in the packet" );
      datagramEnd = end;
   }
   uint16_t dstPort = p.fields().l4DstPort;
   if ( dstPort == kPtpEventPort || dstPort == kPtpGeneralPort ) {
      parsePtp( p, PtpTransport::Udp, offset + kUdpHeader, datagramEnd );
   }
}

void parseIcmp( ParserContext& p, Layer layer, size_t offset, size_t end ) {
   const char* what = layer == Layer::Icmp ? "ICMP header" : "ICMPv6 header";
   if ( !p.fits( layer, what, offset, kIcmpHeader, end ) ) {
      return;
   }
   IcmpFacts icmp{ p.u8( offset ), p.u8( offset + 1 ) };
   p.out().icmp = icmp;
   // The chip matches ICMP type and code as the layer-4 source port.
   p.fields().l4SrcPort = uint16_t( icmp.type << 8 | icmp.code );
   p.set( Field::L4SrcPort );
   p.found( layer, offset, kIcmpHeader );
}

}  // namespace Pipeline::detail
