// IPv6: the fixed header and the walk over extension headers to the
// upper-layer protocol.
#include "pipeline/ParserContext.h"

namespace Pipeline::detail {

namespace {

constexpr size_t kIpv6Header = 40;

enum : uint8_t {
   kHopByHop = 0,
   kRouting = 43,
   kFragment = 44,
   kEsp = 50,
   kAh = 51,
   kDestinationOptions = 60,
   kMobility = 135,
   kHip = 139,
   kShim6 = 140,
   kWesp = 141,
};

// The extension headers the walk steps over, and the layer each one is.
std::optional<Layer> walkedExtension( uint8_t type ) {
   switch ( type ) {
      case kHopByHop:
         return Layer::Ipv6HopByHop;
      case kRouting:
         return Layer::Ipv6Routing;
      case kFragment:
         return Layer::Ipv6Fragment;
      case kDestinationOptions:
         return Layer::Ipv6DestinationOptions;
      case kAh:
         return Layer::Ah;
      case kMobility:
      case kHip:
      case kShim6:
         return Layer::Ipv6Mobility;
   }
   return std::nullopt;
}

bool isExtensionHeader( uint8_t type ) {
   return walkedExtension( type ) || type == kEsp || type == kWesp;
}

}  // namespace

void parseIpv6( ParserContext& p, size_t offset, size_t end ) {
   if ( !p.fits( Layer::Ipv6, "IPv6 header", offset, kIpv6Header, end ) ) {
      return;
   }
   uint8_t version = p.u8( offset ) >> 4;
   if ( version != 6 ) {
      p.malformed( Layer::Ipv6, "IPv6 header: version " + std::to_string( version ) );
      return;
   }
   auto& f = p.fields();
   f.ipType = Shim::FieldIpType::Ipv6;
   f.tos = uint8_t( p.u16( offset ) >> 4 );
   f.ttl = p.u8( offset + 7 );
   f.dstIp6 = p.bytes<16>( offset + 24 );
   p.out().srcIp6 = p.bytes<16>( offset + 8 );
   p.set( Field::Tos );
   p.set( Field::Ttl );
   p.set( Field::DstIp6 );
   p.found( Layer::Ipv6, offset, kIpv6Header );

   uint8_t next = p.u8( offset + 6 );
   // The chip's extension-header type is the first header after the fixed
   // one when that is an extension header (ESP and WESP included).
   if ( isExtensionHeader( next ) ) {
      f.extensionHeaderType = next;
      p.set( Field::ExtensionHeaderType );
   }

   size_t payloadEnd = offset + kIpv6Header + p.u16( offset + 4 );
   if ( payloadEnd > end ) {
      p.truncated( Layer::Ipv6, "IPv6 packet: payload length " +
                                   std::to_string( p.u16( offset + 4 ) ) + ", " +
                                   std::to_string( end - offset - kIpv6Header ) +
                                   " bytes in the frame" );
      payloadEnd = end;
   }

   size_t at = offset + kIpv6Header;
   for ( int index = 0;; ++index ) {
      std::optional<Layer> layer = walkedExtension( next );
      if ( !layer ) {
         break;
      }
      std::string name = "IPv6 extension header " + std::to_string( index );
      if ( next == kHopByHop && index != 0 ) {
         p.malformed( *layer, name + ": hop-by-hop is not the first" );
         return;
      }
      if ( !p.fits( *layer, name.c_str(), at, 2, payloadEnd ) ) {
         return;
      }
      // Lengths count 8-byte units past the first, AH's 4-byte units past the
      // first two; the fragment header is always 8 bytes.
      size_t length = next == kAh         ? ( size_t( p.u8( at + 1 ) ) + 2 ) * 4
                      : next == kFragment ? 8
                                          : ( size_t( p.u8( at + 1 ) ) + 1 ) * 8;
      if ( at + length > payloadEnd ) {
         p.truncated( *layer, name + ": length runs past the frame" );
         return;
      }
      p.found( *layer, at, length );
      if ( next == kHopByHop ) {
         p.out().ipv6HopByHop = true;
      }
      if ( next == kFragment && ( p.u16( at + 2 ) & 0xFFF8 ) != 0 ) {
         p.out().nonFirstFragment = true;
      }
      next = p.u8( at );
      at += length;
      if ( p.out().nonFirstFragment ) {
         break;
      }
   }
   f.ipProtocol = next;
   p.set( Field::IpProtocol );
   if ( !p.out().nonFirstFragment ) {
      parseIpPayload( p, next, at, payloadEnd );
   }
}

}  // namespace Pipeline::detail
