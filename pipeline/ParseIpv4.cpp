// IPv4: the fixed header, options, fragments and the total length.
#include "pipeline/ParserContext.h"

namespace Pipeline::detail {

namespace {

constexpr size_t kIpv4Header = 20;

}  // namespace

void parseIpv4( ParserContext& p, size_t offset, size_t end ) {
   if ( !p.fits( Layer::Ipv4, "IPv4 header", offset, kIpv4Header, end ) ) {
      return;
   }
   uint8_t version = p.u8( offset ) >> 4;
   size_t headerLength = size_t( p.u8( offset ) & 0x0F ) * 4;
   if ( version != 4 ) {
      p.malformed( Layer::Ipv4, "IPv4 header: version " + std::to_string( version ) );
      return;
   }
   if ( headerLength < kIpv4Header ) {
      p.malformed( Layer::Ipv4, "IPv4 header: header length " +
                                   std::to_string( headerLength ) + " is below 20 bytes" );
      return;
   }
   size_t totalLength = p.u16( offset + 2 );
   if ( totalLength < headerLength ) {
      p.malformed( Layer::Ipv4, "IPv4 header: total length " + std::to_string( totalLength ) +
                                   " is below the header length " +
                                   std::to_string( headerLength ) );
      return;
   }

   auto& f = p.fields();
   f.ipType = Shim::FieldIpType::Ipv4Any;
   f.tos = p.u8( offset + 1 );
   f.ttl = p.u8( offset + 8 );
   f.ipProtocol = p.u8( offset + 9 );
   f.dstIp = p.u32( offset + 16 );
   p.set( Field::Tos );
   p.set( Field::Ttl );
   p.set( Field::IpProtocol );
   p.set( Field::DstIp );
   p.out().srcIp = p.u32( offset + 12 );
   p.out().ipv4Options = headerLength > kIpv4Header;
   uint16_t fragmentOffset = p.u16( offset + 6 ) & 0x1FFF;
   p.out().nonFirstFragment = fragmentOffset != 0;
   p.found( Layer::Ipv4, offset, headerLength );

   if ( !p.fits( Layer::Ipv4, "IPv4 options", offset + kIpv4Header,
                 headerLength - kIpv4Header, end ) ) {
      return;
   }
   // Bytes past the total length are Ethernet padding, not payload.
   size_t packetEnd = offset + totalLength;
   if ( packetEnd > end ) {
      p.truncated( Layer::Ipv4, "IPv4 packet: total length " + std::to_string( totalLength ) +
                                   ", " + std::to_string( end - offset ) +
                                   " bytes in the frame" );
      packetEnd = end;
   }
   if ( !p.out().nonFirstFragment ) {
      parseIpPayload( p, f.ipProtocol, offset + headerLength, packetEnd );
   }
}

}  // namespace Pipeline::detail
