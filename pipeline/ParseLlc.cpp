// 802.2 LLC, SNAP and what rides directly on LLC: spanning-tree BPDUs and IS-IS.
#include "pipeline/ParserContext.h"

namespace Pipeline::detail {

namespace {

constexpr uint8_t kSapStp = 0x42;
constexpr uint8_t kSapSnap = 0xAA;
constexpr uint8_t kSapOsi = 0xFE;
constexpr size_t kSnapHeader = 5;  // OUI and protocol
constexpr size_t kBpduHeader = 4;  // protocol id, version, type

void parseStp( ParserContext& p, size_t offset, size_t end ) {
   if ( !p.fits( Layer::Stp, "BPDU header", offset, kBpduHeader, end ) ) {
      return;
   }
   if ( p.u16( offset ) != 0 ) {
      p.malformed( Layer::Stp, "BPDU protocol id " + std::to_string( p.u16( offset ) ) +
                                  " is not 0" );
      return;
   }
   p.out().bpduType = p.u8( offset + 3 );
   p.found( Layer::Stp, offset, kBpduHeader );
}

}  // namespace

void parseLlc( ParserContext& p, size_t offset, size_t end ) {
   if ( !p.fits( Layer::Llc, "LLC header", offset, 3, end ) ) {
      return;
   }
   uint8_t dsap = p.u8( offset );
   uint8_t ssap = p.u8( offset + 1 );
   uint16_t control = p.u8( offset + 2 );
   size_t length = 3;
   // Information and supervisory frames carry a two-byte control field.
   if ( ( control & 0x03 ) != 0x03 ) {
      if ( !p.fits( Layer::Llc, "LLC header", offset, 4, end ) ) {
         return;
      }
      control = p.u16( offset + 2 );
      length = 4;
   }
   p.out().llc = LlcHeader{ dsap, ssap, control };
   p.found( Layer::Llc, offset, length );
   offset += length;

   if ( dsap == kSapStp && ssap == kSapStp ) {
      parseStp( p, offset, end );
   } else if ( dsap == kSapOsi && ssap == kSapOsi ) {
      parseIsis( p, offset, end );
   } else if ( dsap == kSapSnap && ssap == kSapSnap ) {
      if ( !p.fits( Layer::Snap, "SNAP header", offset, kSnapHeader, end ) ) {
         return;
      }
      uint32_t oui = uint32_t( p.u8( offset ) ) << 16 | p.u16( offset + 1 );
      uint16_t protocol = p.u16( offset + 3 );
      p.out().snap = SnapHeader{ oui, protocol };
      p.found( Layer::Snap, offset, kSnapHeader );
      // OUI 0 encapsulates an ether type (RFC 1042); the chip treats the
      // packet as that ether type. Other OUIs are vendor protocols.
      if ( oui == 0 ) {
         parseEtherTypePayload( p, protocol, offset + kSnapHeader, end );
      }
   }
}

}  // namespace Pipeline::detail
