#include "pipeline/PacketSummary.h"

#include <cstdio>
#include <optional>

#include "pipeline/IpAddress.h"

namespace Pipeline {

namespace {

struct Name {
   unsigned value;
   const char* text;
};

const char* find( std::span<const Name> names, unsigned value ) {
   for ( const Name& name : names ) {
      if ( name.value == value ) {
         return name.text;
      }
   }
   return nullptr;
}

// The name, or "type N" for a value the table does not know.
std::string nameOr( std::span<const Name> names, unsigned value, const char* what ) {
   const char* text = find( names, value );
   return text ? text : std::string( what ) + " " + std::to_string( value );
}

// "0x88b5" for 16-bit values, "0x42" for bytes.
std::string hex( unsigned value, int digits ) {
   char text[12];
   std::snprintf( text, sizeof text, "0x%0*x", digits, value );
   return text;
}

constexpr uint8_t kTcp = 6, kUdp = 17, kVrrp = 112;

// Well-known ports; a packet takes the name of its destination port, else of
// its source port (a BGP speaker's replies come from 179).
struct PortName {
   uint8_t protocol;
   uint16_t port;
   const char* name;
};
constexpr PortName portNames[] = {
    { kTcp, 179, "BGP" },    { kUdp, 3784, "BFD" },   { kUdp, 3785, "BFD" },
    { kUdp, 4784, "BFD" },   { kUdp, 646, "LDP" },    { kTcp, 646, "LDP" },
    { kUdp, 520, "RIP" },    { kUdp, 67, "DHCP" },    { kUdp, 68, "DHCP" },
    { kUdp, 546, "DHCPv6" }, { kUdp, 547, "DHCPv6" }, { kUdp, 319, "PTP" },
    { kUdp, 320, "PTP" },    { kUdp, 4739, "IPFIX" }, { kTcp, 4739, "IPFIX" },
};

const char* portName( uint8_t protocol, uint16_t port ) {
   for ( const PortName& entry : portNames ) {
      if ( entry.protocol == protocol && entry.port == port ) {
         return entry.name;
      }
   }
   return nullptr;
}

constexpr Name ipProtocols[] = {
    { 1, "ICMP" },  { 2, "IGMP" },   { 6, "TCP" },     { 17, "UDP" },
    { 47, "GRE" },  { 50, "ESP" },   { 58, "ICMPv6" }, { 89, "OSPF" },
    { 103, "PIM" }, { 112, "VRRP" }, { 141, "WESP" },
};
constexpr Name etherTypes[] = {
    { 0x0800, "IPv4" },          { 0x0806, "ARP" },  { 0x86DD, "IPv6" },
    { 0x8809, "slow protocol" }, { 0x88CC, "LLDP" }, { 0x888E, "EAPoL" },
    { 0x88F7, "PTP" },
};
constexpr Name icmpTypes[] = {
    { 0, "echo reply" },
    { 3, "destination unreachable" },
    { 5, "redirect" },
    { 8, "echo request" },
    { 9, "router advertisement" },
    { 10, "router solicitation" },
    { 11, "time exceeded" },
    { 12, "parameter problem" },
};
constexpr Name icmpv6Types[] = {
    { 1, "destination unreachable" },
    { 2, "packet too big" },
    { 3, "time exceeded" },
    { 4, "parameter problem" },
    { 128, "echo request" },
    { 129, "echo reply" },
    { 130, "MLD query" },
    { 131, "MLD report" },
    { 132, "MLD done" },
    { 133, "router solicitation" },
    { 134, "router advertisement" },
    { 135, "neighbor solicitation" },
    { 136, "neighbor advertisement" },
    { 137, "redirect" },
    { 143, "MLDv2 report" },
};
constexpr Name ospfTypes[] = {
    { 1, "hello" },      { 2, "database description" },
    { 3, "LS request" }, { 4, "LS update" },
    { 5, "LS ack" },
};
constexpr Name pimTypes[] = {
    { 0, "hello" },
    { 1, "register" },
    { 2, "register-stop" },
    { 3, "join/prune" },
    { 4, "bootstrap" },
    { 5, "assert" },
    { 8, "candidate-RP advertisement" },
};
constexpr Name igmpTypes[] = {
    { 0x11, "query" }, { 0x12, "v1 report" }, { 0x16, "v2 report" },
    { 0x17, "leave" }, { 0x22, "v3 report" },
};
constexpr Name ptpTypes[] = {
    { 0x0, "sync" },
    { 0x1, "delay request" },
    { 0x2, "peer delay request" },
    { 0x3, "peer delay response" },
    { 0x8, "follow-up" },
    { 0x9, "delay response" },
    { 0xA, "peer delay response follow-up" },
    { 0xB, "announce" },
    { 0xC, "signaling" },
    { 0xD, "management" },
};
constexpr Name isisTypes[] = {
    { 15, "L1 LAN hello" }, { 16, "L2 LAN hello" }, { 17, "p2p hello" },
    { 18, "L1 LSP" },       { 20, "L2 LSP" },       { 24, "L1 CSNP" },
    { 25, "L2 CSNP" },      { 26, "L1 PSNP" },      { 27, "L2 PSNP" },
};
constexpr Name bpduTypes[] = {
    { 0x00, "STP BPDU" }, { 0x80, "STP TCN BPDU" }, { 0x02, "RSTP BPDU" } };
constexpr Name slowProtocols[] = {
    { 1, "LACP" }, { 2, "LACP marker" }, { 3, "Ethernet OAM" } };
constexpr Name eapolTypes[] = {
    { 0, "EAPoL EAP" }, { 1, "EAPoL start" }, { 2, "EAPoL logoff" }, { 3, "EAPoL key" } };

// The byte `index` past the last header the parser took apart: the message
// of a protocol it does not parse.
std::optional<uint8_t> payloadByte( const ParsedPacket& packet,
                                    std::span<const uint8_t> frame, size_t index ) {
   if ( packet.layers.empty() ) {
      return std::nullopt;
   }
   const LayerSpan& last = packet.layers.back();
   const size_t at = last.offset + last.length + index;
   return at < frame.size() ? std::optional<uint8_t>( frame[at] ) : std::nullopt;
}

// The message type of an IP protocol the parser leaves whole; "" when it has none.
std::string messageType( const ParsedPacket& packet, std::span<const uint8_t> frame ) {
   switch ( packet.fields.ipProtocol ) {
      case 2:
         if ( auto type = payloadByte( packet, frame, 0 ) ) {
            return nameOr( igmpTypes, *type, "type" );
         }
         break;
      case 89:
         if ( auto type = payloadByte( packet, frame, 1 ) ) {
            return nameOr( ospfTypes, *type, "type" );
         }
         break;
      case 103:
         if ( auto type = payloadByte( packet, frame, 0 ) ) {
            return nameOr( pimTypes, *type & 0x0F, "type" );
         }
         break;
   }
   return "";
}

struct Endpoints {
   std::string src;
   std::string dst;
   bool isV6;
};

Endpoints endpoints( const ParsedPacket& packet ) {
   if ( packet.srcIp ) {
      return { toString( IpAddress::ofV4( *packet.srcIp ) ),
               toString( IpAddress::ofV4( packet.fields.dstIp ) ), false };
   }
   return { toString( IpAddress::ofV6( *packet.srcIp6 ) ),
            toString( IpAddress::ofV6( packet.fields.dstIp6 ) ), true };
}

std::string withPort( const std::string& address, bool isV6, uint16_t port ) {
   return ( isV6 ? "[" + address + "]" : address ) + ":" + std::to_string( port );
}

std::string describeTransport( const ParsedPacket& packet, const Endpoints& ends ) {
   const uint8_t protocol = packet.fields.ipProtocol;
   const uint16_t srcPort = packet.fields.l4SrcPort;
   const uint16_t dstPort = packet.fields.l4DstPort;
   std::string name;
   if ( packet.ptp ) {
      name = "PTP " + nameOr( ptpTypes, packet.ptp->messageType, "type" );
   } else if ( const char* known = portName( protocol, dstPort ) ) {
      name = known;
   } else if ( const char* known = portName( protocol, srcPort ) ) {
      name = known;
   } else {
      name = protocol == kTcp ? "TCP" : "UDP";
   }
   return name + " " + withPort( ends.src, ends.isV6, srcPort ) + " > " +
          withPort( ends.dst, ends.isV6, dstPort );
}

std::string describeIp( const ParsedPacket& packet, std::span<const uint8_t> frame ) {
   const Endpoints ends = endpoints( packet );
   const std::string route = ends.src + " > " + ends.dst;
   const char* family = ends.isV6 ? "IPv6" : "IPv4";
   if ( packet.nonFirstFragment ) {
      return std::string( family ) + " fragment " + route;
   }
   if ( !packet.has( Field::IpProtocol ) ) {
      return std::string( family ) + " " + route;
   }
   if ( packet.hasLayer( Layer::Tcp ) || packet.hasLayer( Layer::Udp ) ) {
      return describeTransport( packet, ends );
   }
   if ( packet.icmp ) {
      const bool v6 = packet.hasLayer( Layer::Icmpv6 );
      const char* type = find( v6 ? std::span<const Name>( icmpv6Types ) : icmpTypes,
                               packet.icmp->type );
      const std::string typeText = type ? type
                                        : "type " + std::to_string( packet.icmp->type ) +
                                              " code " +
                                              std::to_string( packet.icmp->code );
      return std::string( v6 ? "ICMPv6 " : "ICMP " ) + typeText + " " + route;
   }
   const uint8_t protocol = packet.fields.ipProtocol;
   const char* name = find( ipProtocols, protocol );
   if ( !name ) {
      return std::string( family ) + " " + route + " proto " + std::to_string( protocol );
   }
   const std::string type = messageType( packet, frame );
   std::string text =
       std::string( name ) + ( type.empty() ? "" : " " + type ) + " " + route;
   if ( protocol == kVrrp && packet.has( Field::Ttl ) ) {
      text += " ttl " + std::to_string( packet.fields.ttl );
   }
   return text;
}

std::string describeArp( const ArpFacts& arp ) {
   if ( arp.opcode == 1 && arp.targetIp && arp.senderIp ) {
      return "ARP request who-has " + toString( IpAddress::ofV4( *arp.targetIp ) ) +
             " tell " + toString( IpAddress::ofV4( *arp.senderIp ) );
   }
   if ( arp.opcode == 2 && arp.senderIp && arp.senderMac ) {
      return "ARP reply " + toString( IpAddress::ofV4( *arp.senderIp ) ) + " is-at " +
             toString( *arp.senderMac );
   }
   return "ARP opcode " + std::to_string( arp.opcode );
}

std::string macs( const ParsedPacket& packet ) {
   return ( packet.srcMac ? toString( *packet.srcMac ) : "?" ) + " > " +
          toString( packet.fields.dstMac );
}

// Frames that are not IP, or whose IP header did not parse.
std::string describeLayer2( const ParsedPacket& packet ) {
   if ( packet.arp ) {
      return describeArp( *packet.arp );
   }
   if ( packet.bpduType ) {
      return nameOr( bpduTypes, *packet.bpduType, "STP BPDU type" );
   }
   if ( packet.slowProtocolSubtype ) {
      return nameOr( slowProtocols, *packet.slowProtocolSubtype,
                     "slow protocol subtype" );
   }
   if ( packet.hasLayer( Layer::Lldp ) ) {
      return "LLDP " + macs( packet );
   }
   if ( packet.eapolType ) {
      return nameOr( eapolTypes, *packet.eapolType, "EAPoL type" ) + " " + macs( packet );
   }
   if ( packet.isisPduType ) {
      return "IS-IS " + nameOr( isisTypes, *packet.isisPduType, "PDU type" );
   }
   if ( packet.ptp ) {
      return "PTP " + nameOr( ptpTypes, packet.ptp->messageType, "type" ) + " (L2)";
   }
   if ( packet.has( Field::EtherType ) ) {
      if ( const char* name = find( etherTypes, packet.fields.etherType ) ) {
         return name;
      }
      return "Ethernet " + macs( packet ) + " type " + hex( packet.fields.etherType, 4 );
   }
   if ( packet.llc ) {
      return "LLC " + macs( packet ) + " dsap " + hex( packet.llc->dsap, 2 ) + " ssap " +
             hex( packet.llc->ssap, 2 );
   }
   return "Ethernet";
}

}  // namespace

std::string summarizePacket( const ParsedPacket& packet,
                             std::span<const uint8_t> frame ) {
   std::string text = packet.srcIp || packet.srcIp6 ? describeIp( packet, frame )
                                                    : describeLayer2( packet );
   if ( packet.status.outcome != ParseOutcome::Complete ) {
      text += std::string( " [" ) + outcomeName( packet.status.outcome ) + ": " +
              packet.status.reason + "]";
   }
   return text;
}

}  // namespace Pipeline
