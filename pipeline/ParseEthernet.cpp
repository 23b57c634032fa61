// Ethernet II and 802.3 framing, VLAN tags, and the dispatch on the ether type.
#include <cstdio>

#include "pipeline/ParserContext.h"

namespace Pipeline::detail {

namespace {

constexpr size_t kEthernetHeader = 14;  // destination, source, type or length
constexpr size_t kVlanTag = 4;          // TCI and the next type

bool isVlanTpid( uint16_t type ) {
   return type == 0x8100 || type == 0x88A8 || type == 0x9100;
}

std::string hex16( uint16_t value ) {
   char text[ 8 ];
   std::snprintf( text, sizeof text, "0x%04X", value );
   return text;
}

}  // namespace

void parseEthernet( ParserContext& p ) {
   const size_t end = p.size();
   if ( !p.fits( Layer::Ethernet, "Ethernet header", 0, kEthernetHeader, end ) ) {
      return;
   }
   p.fields().dstMac = p.bytes<6>( 0 );
   p.set( Field::DstMac );
   p.out().srcMac = p.bytes<6>( 6 );
   p.found( Layer::Ethernet, 0, kEthernetHeader );

   uint16_t type = p.u16( 12 );
   size_t offset = kEthernetHeader;
   // The chip parses two tags; the type after them is the ether type even if
   // it is a third TPID.
   for ( int tags = 0; tags < 2 && isVlanTpid( type ); ++tags ) {
      if ( !p.fits( Layer::Vlan, "VLAN tag", offset, kVlanTag, end ) ) {
         return;
      }
      uint16_t tci = p.u16( offset );
      VlanTag tag{ type, uint8_t( tci >> 13 ), bool( tci & 0x1000 ), uint16_t( tci & 0x0FFF ) };
      if ( tags == 0 ) {
         p.out().outerVlan = tag;
         p.fields().outerVlanPri = tag.pcp;
         p.set( Field::OuterVlanPri );
      } else {
         p.out().innerVlan = tag;
      }
      p.found( Layer::Vlan, offset, kVlanTag );
      type = p.u16( offset + 2 );
      offset += kVlanTag;
   }

   if ( type <= 1500 ) {
      // 802.3: the field is the length of the LLC PDU; anything after it is padding.
      size_t llcEnd = offset + type;
      if ( llcEnd > end ) {
         p.truncated( Layer::Ethernet, "802.3 length " + std::to_string( type ) + ", " +
                                          std::to_string( end - offset ) +
                                          " bytes in the frame" );
         llcEnd = end;
      }
      parseLlc( p, offset, llcEnd );
      return;
   }
   if ( type < 0x0600 ) {
      p.malformed( Layer::Ethernet, "type/length " + hex16( type ) +
                                       " is neither a length nor an ether type" );
      return;
   }
   parseEtherTypePayload( p, type, offset, end );
}

void parseEtherTypePayload( ParserContext& p, uint16_t etherType, size_t offset,
                            size_t end ) {
   p.fields().etherType = etherType;
   p.set( Field::EtherType );
   // The IP type stays NonIp until a valid IP header is seen, as on the chip.
   p.fields().ipType = Shim::FieldIpType::NonIp;
   p.set( Field::IpType );
   switch ( etherType ) {
      case 0x0800:
         parseIpv4( p, offset, end );
         return;
      case 0x86DD:
         parseIpv6( p, offset, end );
         return;
      case 0x0806:
         parseArp( p, offset, end );
         return;
      case 0x88F7:
         parsePtp( p, PtpTransport::L2, offset, end );
         return;
      default:
         parseL2Control( p, etherType, offset, end );
         return;
   }
}

}  // namespace Pipeline::detail
