// Builds frames as bytes, inside out: each function wraps a payload in one
// header and fills in that header's lengths and next-protocol fields, so
//
//    ethernetFrame( { .dst = mac, .src = mac2 }, 0x0800,
//                   ipv4Packet( { .src = a, .dst = b, .protocol = 17 },
//                               udpDatagram( 49152, 3784, bfd ) ) )
//
// is a complete BFD packet. Checksums are left zero: the chip does not check them.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "pipeline/ParsedPacket.h"

namespace Pipeline {

using Bytes = std::vector<uint8_t>;

struct VlanTagHeader {
   uint16_t vid = 1;
   uint8_t pcp = 0;
   uint16_t tpid = 0x8100;
};

struct EthernetHeader {
   MacAddress dst{};
   MacAddress src{ 0x02, 0, 0, 0, 0, 0x01 };
   std::vector<VlanTagHeader> tags{};  // outermost first
};

// Ethernet II with the given ether type after the tags.
Bytes ethernetFrame( const EthernetHeader& eth, uint16_t etherType,
                     std::span<const uint8_t> payload );
// 802.3 with an LLC header (unnumbered, control 0x03); the length field covers
// LLC header and payload.
Bytes llcFrame( const EthernetHeader& eth, uint8_t dsap, uint8_t ssap,
                std::span<const uint8_t> payload );
// 802.3/LLC/SNAP (SAPs 0xAA) with the given OUI and protocol.
Bytes snapFrame( const EthernetHeader& eth, uint32_t oui, uint16_t protocol,
                 std::span<const uint8_t> payload );
// Pads a frame to the 60-byte Ethernet minimum (without FCS), as a sender does.
Bytes padToMinimum( Bytes frame );

struct Ipv4Header {
   Ipv4Address src = 0;
   Ipv4Address dst = 0;
   uint8_t protocol = 0;
   uint8_t ttl = 64;
   uint8_t tos = 0;
   uint16_t fragmentOffset = 0;  // in 8-byte units
   bool moreFragments = false;
   Bytes options{};  // padded to a multiple of 4 with end-of-options
};
Bytes ipv4Packet( const Ipv4Header& ip, std::span<const uint8_t> payload );

struct Ipv6ExtensionHeader {
   uint8_t type;  // 0, 43, 44, 51, 60, ...
   Bytes body{};  // after next-header and length; padded to the header's unit
};
struct Ipv6Header {
   Ipv6Address src{};
   Ipv6Address dst{};
   uint8_t nextHeader = 0;  // the upper-layer protocol after the extensions
   uint8_t hopLimit = 64;
   uint8_t trafficClass = 0;
   std::vector<Ipv6ExtensionHeader> extensions{};  // in packet order
};
Bytes ipv6Packet( const Ipv6Header& ip, std::span<const uint8_t> payload );
// A hop-by-hop header carrying the router-alert option (MLD value 0), as MLD
// and other router-alert traffic sends it.
Ipv6ExtensionHeader hopByHopRouterAlert();

namespace TcpFlag {
constexpr uint8_t Fin = 0x01, Syn = 0x02, Rst = 0x04, Psh = 0x08, Ack = 0x10;
}
Bytes tcpSegment( uint16_t srcPort, uint16_t dstPort, uint8_t flags,
                  std::span<const uint8_t> payload );
Bytes udpDatagram( uint16_t srcPort, uint16_t dstPort, std::span<const uint8_t> payload );
// ICMP and ICMPv6 share the layout: type, code, checksum, message body.
Bytes icmpMessage( uint8_t type, uint8_t code, std::span<const uint8_t> body );
Bytes grePacket( uint16_t protocol, std::span<const uint8_t> payload );
Bytes arpPacket( uint16_t opcode, const MacAddress& senderMac, Ipv4Address senderIp,
                 const MacAddress& targetMac, Ipv4Address targetIp );
// A PTP message of the given type: the 34-byte common header (version 2)
// followed by `body`.
Bytes ptpMessage( uint8_t messageType, std::span<const uint8_t> body );

// Addresses from text; an unparsable text is a programming error and aborts.
Ipv4Address ipv4( const char* text );
Ipv6Address ipv6( const char* text );
MacAddress mac( const char* text );  // "01:80:c2:00:00:0e"

}  // namespace Pipeline
