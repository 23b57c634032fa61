// Frame construction, header by header, with every length field filled in.
#include "pipeline/PacketBuilder.h"

#include <arpa/inet.h>

#include <algorithm>
#include <cassert>
#include <cstdio>

namespace Pipeline {

namespace {

void put16( Bytes& out, uint16_t value ) {
   out.push_back( uint8_t( value >> 8 ) );
   out.push_back( uint8_t( value ) );
}

void put32( Bytes& out, uint32_t value ) {
   put16( out, uint16_t( value >> 16 ) );
   put16( out, uint16_t( value ) );
}

void append( Bytes& out, std::span<const uint8_t> bytes ) {
   out.insert( out.end(), bytes.begin(), bytes.end() );
}

Bytes ethernetHeader( const EthernetHeader& eth ) {
   Bytes out;
   append( out, eth.dst );
   append( out, eth.src );
   for ( const VlanTagHeader& tag : eth.tags ) {
      put16( out, tag.tpid );
      put16( out, uint16_t( tag.pcp << 13 | ( tag.vid & 0x0FFF ) ) );
   }
   return out;
}

Bytes llcPdu( uint8_t dsap, uint8_t ssap, std::span<const uint8_t> payload ) {
   Bytes out{ dsap, ssap, 0x03 };
   append( out, payload );
   return out;
}

Bytes frameOf802_3( const EthernetHeader& eth, const Bytes& llc ) {
   assert( llc.size() <= 1500 );
   Bytes out = ethernetHeader( eth );
   put16( out, uint16_t( llc.size() ) );
   append( out, llc );
   return out;
}

}  // namespace

Bytes ethernetFrame( const EthernetHeader& eth, uint16_t etherType,
                     std::span<const uint8_t> payload ) {
   Bytes out = ethernetHeader( eth );
   put16( out, etherType );
   append( out, payload );
   return out;
}

Bytes llcFrame( const EthernetHeader& eth, uint8_t dsap, uint8_t ssap,
                std::span<const uint8_t> payload ) {
   return frameOf802_3( eth, llcPdu( dsap, ssap, payload ) );
}

Bytes snapFrame( const EthernetHeader& eth, uint32_t oui, uint16_t protocol,
                 std::span<const uint8_t> payload ) {
   Bytes snap{ uint8_t( oui >> 16 ), uint8_t( oui >> 8 ), uint8_t( oui ) };
   put16( snap, protocol );
   append( snap, payload );
   return frameOf802_3( eth, llcPdu( 0xAA, 0xAA, snap ) );
}

Bytes padToMinimum( Bytes frame ) {
   if ( frame.size() < 60 ) {
      frame.resize( 60, 0 );
   }
   return frame;
}

Bytes ipv4Packet( const Ipv4Header& ip, std::span<const uint8_t> payload ) {
   Bytes options = ip.options;
   options.resize( ( options.size() + 3 ) / 4 * 4, 0 );
   size_t headerLength = 20 + options.size();
   assert( headerLength <= 60 && headerLength + payload.size() <= 0xFFFF );
   Bytes out{ uint8_t( 0x40 | headerLength / 4 ), ip.tos };
   put16( out, uint16_t( headerLength + payload.size() ) );
   put16( out, 0 );  // identification
   put16( out, uint16_t( ( ip.moreFragments ? 0x2000 : 0 ) | ( ip.fragmentOffset & 0x1FFF ) ) );
   out.push_back( ip.ttl );
   out.push_back( ip.protocol );
   put16( out, 0 );  // checksum
   put32( out, ip.src );
   put32( out, ip.dst );
   append( out, options );
   append( out, payload );
   return out;
}

Bytes ipv6Packet( const Ipv6Header& ip, std::span<const uint8_t> payload ) {
   Bytes extensions;
   for ( size_t i = 0; i < ip.extensions.size(); ++i ) {
      const Ipv6ExtensionHeader& ext = ip.extensions[ i ];
      uint8_t next = i + 1 < ip.extensions.size() ? ip.extensions[ i + 1 ].type : ip.nextHeader;
      Bytes body = ext.body;
      uint8_t lengthField = 0;
      if ( ext.type == 44 ) {
         body.resize( 6, 0 );  // fragment header: fixed 8 bytes, reserved length
      } else if ( ext.type == 51 ) {
         body.resize( ( body.size() + 2 + 3 ) / 4 * 4 - 2, 0 );
         lengthField = uint8_t( ( body.size() + 2 ) / 4 - 2 );
      } else {
         body.resize( std::max<size_t>( 8, ( body.size() + 2 + 7 ) / 8 * 8 ) - 2, 0 );
         lengthField = uint8_t( ( body.size() + 2 ) / 8 - 1 );
      }
      extensions.push_back( next );
      extensions.push_back( lengthField );
      append( extensions, body );
   }
   Bytes out;
   put32( out, 0x60000000u | uint32_t( ip.trafficClass ) << 20 );
   put16( out, uint16_t( extensions.size() + payload.size() ) );
   out.push_back( ip.extensions.empty() ? ip.nextHeader : ip.extensions.front().type );
   out.push_back( ip.hopLimit );
   append( out, ip.src );
   append( out, ip.dst );
   append( out, extensions );
   append( out, payload );
   return out;
}

Ipv6ExtensionHeader hopByHopRouterAlert() {
   // Router alert (type 5, length 2, value 0), then PadN to fill 8 bytes.
   return { 0, { 0x05, 0x02, 0x00, 0x00, 0x01, 0x00 } };
}

Bytes tcpSegment( uint16_t srcPort, uint16_t dstPort, uint8_t flags,
                  std::span<const uint8_t> payload ) {
   Bytes out;
   put16( out, srcPort );
   put16( out, dstPort );
   put32( out, 1 );       // sequence number
   put32( out, 0 );       // acknowledgement number
   out.push_back( 0x50 );  // data offset: 5 words
   out.push_back( flags );
   put16( out, 65535 );  // window
   put16( out, 0 );      // checksum
   put16( out, 0 );      // urgent pointer
   append( out, payload );
   return out;
}

Bytes udpDatagram( uint16_t srcPort, uint16_t dstPort, std::span<const uint8_t> payload ) {
   assert( payload.size() + 8 <= 0xFFFF );
   Bytes out;
   put16( out, srcPort );
   put16( out, dstPort );
   put16( out, uint16_t( payload.size() + 8 ) );
   put16( out, 0 );
   append( out, payload );
   return out;
}

Bytes icmpMessage( uint8_t type, uint8_t code, std::span<const uint8_t> body ) {
   Bytes out{ type, code, 0, 0 };
   append( out, body );
   return out;
}

Bytes grePacket( uint16_t protocol, std::span<const uint8_t> payload ) {
   Bytes out{ 0, 0 };
   put16( out, protocol );
   append( out, payload );
   return out;
}

Bytes arpPacket( uint16_t opcode, const MacAddress& senderMac, Ipv4Address senderIp,
                 const MacAddress& targetMac, Ipv4Address targetIp ) {
   Bytes out;
   put16( out, 1 );       // Ethernet
   put16( out, 0x0800 );  // IPv4
   out.push_back( 6 );
   out.push_back( 4 );
   put16( out, opcode );
   append( out, senderMac );
   put32( out, senderIp );
   append( out, targetMac );
   put32( out, targetIp );
   return out;
}

Bytes ptpMessage( uint8_t messageType, std::span<const uint8_t> body ) {
   Bytes out{ uint8_t( messageType & 0x0F ), 2 };
   put16( out, uint16_t( 34 + body.size() ) );
   out.resize( 34, 0 );  // domain, flags, correction, port identity, sequence, ...
   append( out, body );
   return out;
}

Ipv4Address ipv4( const char* text ) {
   in_addr address{};
   [[maybe_unused]] int ok = inet_pton( AF_INET, text, &address );
   assert( ok == 1 );
   return ntohl( address.s_addr );
}

Ipv6Address ipv6( const char* text ) {
   Ipv6Address address{};
   [[maybe_unused]] int ok = inet_pton( AF_INET6, text, address.data() );
   assert( ok == 1 );
   return address;
}

MacAddress mac( const char* text ) {
   unsigned int b[ 6 ];
   [[maybe_unused]] int n = std::sscanf( text, "%x:%x:%x:%x:%x:%x", &b[ 0 ], &b[ 1 ], &b[ 2 ],
                                         &b[ 3 ], &b[ 4 ], &b[ 5 ] );
   assert( n == 6 );
   MacAddress address{};
   for ( int i = 0; i < 6; ++i ) {
      address[ i ] = uint8_t( b[ i ] );
   }
   return address;
}

}  // namespace Pipeline
