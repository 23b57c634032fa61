// The state of one parse, shared by the parser's per-protocol sources. Each
// parse step receives the offset of its header and the end of the bytes its
// enclosing header grants it (never beyond the frame), and reads only through
// the bounded accessors below.
#pragma once

#include <cassert>
#include <span>
#include <string>

#include "pipeline/ParsedPacket.h"

namespace Pipeline::detail {

class ParserContext {
 public:
   ParserContext( std::span<const uint8_t> frame, ParsedPacket& out )
      : frame_( frame ), out_( out ) {}

   size_t size() const { return frame_.size(); }
   // Out-of-range reads are parser bugs, so they abort rather than read on.
   uint8_t u8( size_t at ) const {
      assert( at < frame_.size() );
      return frame_[ at ];
   }
   uint16_t u16( size_t at ) const { return uint16_t( u8( at ) << 8 | u8( at + 1 ) ); }
   uint32_t u32( size_t at ) const { return uint32_t( u16( at ) ) << 16 | u16( at + 2 ); }
   template <size_t N>
   std::array<uint8_t, N> bytes( size_t at ) const {
      std::array<uint8_t, N> result{};
      for ( size_t i = 0; i < N; ++i ) {
         result[ i ] = u8( at + i );
      }
      return result;
   }

   // True when `length` bytes of `what` fit between offset and end; otherwise
   // reports "what: N of length bytes" as a truncation of `layer`.
   bool fits( Layer layer, const char* what, size_t offset, size_t length, size_t end );
   void truncated( Layer layer, std::string reason );
   void malformed( Layer layer, std::string reason );
   void found( Layer layer, size_t offset, size_t length );
   void set( Field field ) { out_.known |= static_cast<uint16_t>( field ); }

   ParsedPacket& out() { return out_; }
   Sim::PacketFields& fields() { return out_.fields; }

 private:
   std::span<const uint8_t> frame_;
   ParsedPacket& out_;
};

// Per-family entry points. `end` bounds the header and its payload.
void parseEthernet( ParserContext& p );
void parseEtherTypePayload( ParserContext& p, uint16_t etherType, size_t offset, size_t end );
void parseLlc( ParserContext& p, size_t offset, size_t end );
void parseL2Control( ParserContext& p, uint16_t etherType, size_t offset, size_t end );
void parseArp( ParserContext& p, size_t offset, size_t end );
void parseIpv4( ParserContext& p, size_t offset, size_t end );
void parseIpv6( ParserContext& p, size_t offset, size_t end );
// The upper-layer protocol of an IPv4 or IPv6 packet (not a first fragment: skip).
void parseIpPayload( ParserContext& p, uint8_t protocol, size_t offset, size_t end );
void parseTcp( ParserContext& p, size_t offset, size_t end );
void parseUdp( ParserContext& p, size_t offset, size_t end );
void parseIcmp( ParserContext& p, Layer layer, size_t offset, size_t end );
void parseGre( ParserContext& p, size_t offset, size_t end );
void parseEsp( ParserContext& p, bool wrapped, size_t offset, size_t end );
void parseIsis( ParserContext& p, size_t offset, size_t end );
void parsePtp( ParserContext& p, PtpTransport transport, size_t offset, size_t end );

}  // namespace Pipeline::detail
