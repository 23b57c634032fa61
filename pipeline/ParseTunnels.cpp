// GRE (with IS-IS as the one payload parsed inside it), ESP and WESP, IS-IS
// and IEEE 1588 PTP.
#include "pipeline/ParserContext.h"

namespace Pipeline::detail {

namespace {

constexpr size_t kGreBase = 4;      // flags/version, protocol type
constexpr size_t kEspHeader = 8;    // SPI, sequence number
constexpr size_t kWespHeader = 4;   // next header, header length, trailer length, flags
constexpr size_t kIsisHeader = 8;   // common header of every IS-IS PDU
constexpr size_t kPtpHeader = 34;   // common header of every PTP message
constexpr uint8_t kIsisDiscriminator = 0x83;
constexpr uint16_t kGreOsi = 0x00FE;

}  // namespace

void parseGre( ParserContext& p, size_t offset, size_t end ) {
   if ( !p.fits( Layer::Gre, "GRE header", offset, kGreBase, end ) ) {
      return;
   }
   uint16_t flags = p.u16( offset );
   uint8_t version = flags & 0x7;
   if ( version > 1 ) {
      p.malformed( Layer::Gre, "GRE header: version " + std::to_string( version ) );
      return;
   }
   if ( flags & 0x4000 ) {
      // Source routing (RFC 1701) is obsolete; no router parses past it.
      p.malformed( Layer::Gre, "GRE header: routing present" );
      return;
   }
   // Checksum+reserved, key, sequence number; version 1 (PPTP) adds an
   // acknowledgement number.
   size_t length = kGreBase + ( flags & 0x8000 ? 4 : 0 ) + ( flags & 0x2000 ? 4 : 0 ) +
                   ( flags & 0x1000 ? 4 : 0 ) + ( version == 1 && flags & 0x0080 ? 4 : 0 );
   if ( !p.fits( Layer::Gre, "GRE header", offset, length, end ) ) {
      return;
   }
   uint16_t protocol = p.u16( offset + 2 );
   p.out().greProtocol = protocol;
   // The chip keys a GRE packet's payload type where a transport header's
   // destination port would be.
   p.out().fields.l4DstPort = protocol;
   p.set( Field::L4DstPort );
   p.found( Layer::Gre, offset, length );
   if ( protocol == kGreOsi ) {
      parseIsis( p, offset + length, end );
   }
}

void parseEsp( ParserContext& p, bool wrapped, size_t offset, size_t end ) {
   if ( wrapped ) {
      if ( !p.fits( Layer::Wesp, "WESP header", offset, kWespHeader, end ) ) {
         return;
      }
      size_t headerLength = p.u8( offset + 1 );
      if ( headerLength < kWespHeader + kEspHeader ) {
         p.malformed( Layer::Wesp, "WESP header: header length " +
                                      std::to_string( headerLength ) + " is below 12 bytes" );
         return;
      }
      p.found( Layer::Wesp, offset, kWespHeader );
      offset += kWespHeader;
   }
   if ( !p.fits( Layer::Esp, "ESP header", offset, kEspHeader, end ) ) {
      return;
   }
   p.found( Layer::Esp, offset, kEspHeader );
}

void parseIsis( ParserContext& p, size_t offset, size_t end ) {
   if ( !p.fits( Layer::Isis, "IS-IS header", offset, kIsisHeader, end ) ) {
      return;
   }
   if ( p.u8( offset ) != kIsisDiscriminator ) {
      p.malformed( Layer::Isis, "IS-IS header: discriminator " +
                                   std::to_string( p.u8( offset ) ) + " is not 131" );
      return;
   }
   p.out().isisPduType = p.u8( offset + 4 ) & 0x1F;
   p.found( Layer::Isis, offset, kIsisHeader );
}

void parsePtp( ParserContext& p, PtpTransport transport, size_t offset, size_t end ) {
   if ( !p.fits( Layer::Ptp, "PTP header", offset, kPtpHeader, end ) ) {
      return;
   }
   uint8_t messageType = p.u8( offset ) & 0x0F;
   uint8_t version = p.u8( offset + 1 ) & 0x0F;
   size_t messageLength = p.u16( offset + 2 );
   if ( messageLength < kPtpHeader ) {
      p.malformed( Layer::Ptp, "PTP header: message length " +
                                  std::to_string( messageLength ) + " is below 34 bytes" );
      return;
   }
   p.out().ptp = PtpFacts{ transport, messageType, version };
   p.found( Layer::Ptp, offset, kPtpHeader );
   p.fits( Layer::Ptp, "PTP message", offset, messageLength, end );
}

}  // namespace Pipeline::detail
