// Capture files written byte by byte, in the two formats libpcap reads: the
// classic pcap (global header, then a record header per packet) and pcapng
// (section header, interface description, an enhanced packet block per
// packet). Both little-endian, as the machines that write them mostly are.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace FerroAclTest {

using Frame = std::vector<uint8_t>;

constexpr uint32_t linkTypeEthernet = 1;    // DLT_EN10MB
constexpr uint32_t linkTypeLinuxSll = 113;  // DLT_LINUX_SLL, "Linux cooked"

inline void put16( std::string& out, uint16_t value ) {
   out += char( value & 0xFF );
   out += char( value >> 8 );
}

inline void put32( std::string& out, uint32_t value ) {
   put16( out, uint16_t( value & 0xFFFF ) );
   put16( out, uint16_t( value >> 16 ) );
}

inline void putBytes( std::string& out, const Frame& bytes ) {
   out.append( bytes.begin(), bytes.end() );
}

// `snapped` bytes of each packet were on the wire but not captured.
inline std::string pcapCapture( const std::vector<Frame>& frames,
                                uint32_t linkType = linkTypeEthernet,
                                uint32_t snapped = 0 ) {
   std::string out;
   put32( out, 0xA1B2C3D4 );  // microsecond timestamps
   put16( out, 2 );
   put16( out, 4 );
   put32( out, 0 );  // time zone
   put32( out, 0 );  // accuracy
   put32( out, 65535 );
   put32( out, linkType );
   uint32_t seconds = 1700000000;
   for ( const Frame& frame : frames ) {
      put32( out, seconds++ );
      put32( out, 0 );
      put32( out, uint32_t( frame.size() ) );
      put32( out, uint32_t( frame.size() ) + snapped );
      putBytes( out, frame );
   }
   return out;
}

// A pcapng block: type, total length, body padded to 4 bytes, total length.
inline void putBlock( std::string& out, uint32_t type, std::string body ) {
   body.resize( ( body.size() + 3 ) / 4 * 4, '\0' );
   const uint32_t length = uint32_t( body.size() ) + 12;
   put32( out, type );
   put32( out, length );
   out += body;
   put32( out, length );
}

inline std::string pcapngCapture( const std::vector<Frame>& frames,
                                  uint32_t linkType = linkTypeEthernet ) {
   std::string out;
   std::string section;
   put32( section, 0x1A2B3C4D );  // byte-order magic
   put16( section, 1 );
   put16( section, 0 );
   put32( section, 0xFFFFFFFF );  // section length unknown
   put32( section, 0xFFFFFFFF );
   putBlock( out, 0x0A0D0D0A, section );
   std::string interface;
   put16( interface, uint16_t( linkType ) );
   put16( interface, 0 );
   put32( interface, 65535 );
   putBlock( out, 1, interface );
   uint32_t microseconds = 0;
   for ( const Frame& frame : frames ) {
      std::string packet;
      put32( packet, 0 );  // interface 0
      put32( packet, 0 );
      put32( packet, microseconds += 1000 );
      put32( packet, uint32_t( frame.size() ) );
      put32( packet, uint32_t( frame.size() ) );
      putBytes( packet, frame );
      putBlock( out, 6, packet );
   }
   return out;
}

}  // namespace FerroAclTest
