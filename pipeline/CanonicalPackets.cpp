// Each packet is what the protocol's speaker really sends: its addresses,
// TTL or hop limit, DSCP and the start of its message, padded to the
// Ethernet minimum.
#include "pipeline/CanonicalPackets.h"

#include "pipeline/CanonicalAddresses.h"

namespace Pipeline {

namespace {

constexpr uint8_t tcp = 6, udp = 17, gre = 47, icmpv6 = 58, ospf = 89, pim = 103,
                  vrrp = 112, igmp = 2;
constexpr uint8_t dscp46 = 46 << 2, dscp48 = 48 << 2;
constexpr uint16_t ephemeral = 50000;
const Bytes routerAlert{ 0x94, 0x04, 0x00, 0x00 };

MacAddress multicastMac( Ipv4Address group ) {
   return { 0x01,
            0x00,
            0x5e,
            uint8_t( ( group >> 16 ) & 0x7f ),
            uint8_t( group >> 8 ),
            uint8_t( group ) };
}

MacAddress multicastMac( const Ipv6Address& group ) {
   return { 0x33, 0x33, group[12], group[13], group[14], group[15] };
}

Bytes append( Bytes head, std::span<const uint8_t> tail ) {
   head.insert( head.end(), tail.begin(), tail.end() );
   return head;
}

Bytes bytesOf( const Ipv6Address& address ) {
   return Bytes( address.begin(), address.end() );
}

// An IS-IS PDU's common header (discriminator, length, version, ID length,
// PDU type, version, reserved, max areas) and a hello's body.
Bytes isisPdu( uint8_t pduType ) {
   Bytes pdu{ 0x83, 27, 1, 0, pduType, 1, 0, 0 };
   pdu.resize( 40, 0 );
   return pdu;
}

// PIM version 2 with the given type, then `body`.
Bytes pimMessage( uint8_t type, std::span<const uint8_t> body ) {
   return append( { uint8_t( 0x20 | type ), 0, 0, 0 }, body );
}

// Builds the packets of one ingress port and collects them.
class Packets {
 public:
   Packets( const CanonicalAddresses& a, const PortRef& ingress, uint16_t nativeVlan )
       : a_( a ), ingress_( ingress ), nativeVlan_( nativeVlan ) {}

   std::vector<CanonicalPacket> take() { return std::move( out_ ); }

   void add( std::string name, Bytes bytes, std::optional<PortRef> from = std::nullopt ) {
      out_.push_back( { std::move( name ), padToMinimum( std::move( bytes ) ),
                        from.value_or( ingress_ ) } );
   }

   EthernetHeader toRouter() const { return { a_.routerMac, a_.neighbourMac, {} }; }
   EthernetHeader to( const MacAddress& dst ) const {
      return { dst, a_.neighbourMac, {} };
   }
   EthernetHeader to( const char* dst ) const { return to( mac( dst ) ); }

   // From the neighbour to the switch's own IPv4 address.
   Bytes toSelf( const EthernetHeader& eth, Ipv4Header ip,
                 std::span<const uint8_t> payload ) const {
      ip.src = a_.neighbourV4.v4;
      ip.dst = a_.selfV4.v4;
      return ethernetFrame( eth, 0x0800, ipv4Packet( ip, payload ) );
   }
   Bytes toSelf( const Ipv4Header& ip, std::span<const uint8_t> payload ) const {
      return toSelf( toRouter(), ip, payload );
   }
   Bytes toSelfV6( Ipv6Header ip, std::span<const uint8_t> payload ) const {
      ip.src = a_.neighbourV6.v6;
      ip.dst = a_.selfV6.v6;
      return ethernetFrame( toRouter(), 0x86DD, ipv6Packet( ip, payload ) );
   }
   // From the neighbour to an IPv4 group on the link.
   Bytes toGroup( const char* group, Ipv4Header ip,
                  std::span<const uint8_t> payload ) const {
      ip.src = a_.neighbourV4.v4;
      ip.dst = ipv4( group );
      return ethernetFrame( to( multicastMac( ip.dst ) ), 0x0800,
                            ipv4Packet( ip, payload ) );
   }
   // From the neighbour's link-local address to an IPv6 group.
   Bytes toGroupV6( const Ipv6Address& group, Ipv6Header ip,
                    std::span<const uint8_t> payload ) const {
      ip.src = a_.neighbourLinkLocal;
      ip.dst = group;
      return ethernetFrame( to( multicastMac( group ) ), 0x86DD,
                            ipv6Packet( ip, payload ) );
   }

   void routingProtocols();
   void isis();
   void pimAndVrrp();
   void bfd();
   void l2Control();
   void ptp();
   void selfIpElevators( std::optional<PortRef> ipfixInPort );
   void glean();
   void ipv6Neighbours();
   void hostProtocols();

 private:
   const CanonicalAddresses a_;
   PortRef ingress_;
   uint16_t nativeVlan_;
   std::vector<CanonicalPacket> out_;
};

void Packets::routingProtocols() {
   add( "BGP - dst port 179", toSelf( { .protocol = tcp, .ttl = 1, .tos = dscp48 },
                                      tcpSegment( ephemeral, 179, TcpFlag::Syn, {} ) ) );
   add( "BGP - src port 179",
        toSelf( { .protocol = tcp, .ttl = 1, .tos = dscp48 },
                tcpSegment( 179, ephemeral, TcpFlag::Ack | TcpFlag::Psh,
                            Bytes( 19, 0xff ) ) ) );
   const Bytes ospfHello( 44, 0 );
   add(
       "OSPFv2 hello - 224.0.0.5",
       toGroup( "224.0.0.5", { .protocol = ospf, .ttl = 1, .tos = dscp48 }, ospfHello ) );
   add( "OSPFv2 - unicast to self",
        toSelf( { .protocol = ospf, .ttl = 1, .tos = dscp48 }, ospfHello ) );
   add( "OSPFv3 hello - ff02::5",
        toGroupV6( ipv6( "ff02::5" ),
                   { .nextHeader = ospf, .hopLimit = 1, .trafficClass = dscp48 },
                   ospfHello ) );
   add( "LDP hello - UDP 646 to 224.0.0.2",
        toGroup( "224.0.0.2", { .protocol = udp, .ttl = 1, .tos = dscp48 },
                 udpDatagram( 646, 646, Bytes( 20, 0 ) ) ) );
   add( "LDP session - TCP 646 to self",
        toSelf(
            { .protocol = tcp, .tos = dscp48 },
            tcpSegment( ephemeral, 646, TcpFlag::Ack | TcpFlag::Psh, Bytes( 18, 0 ) ) ) );
   add( "RIP - UDP 520 to 224.0.0.9",
        toGroup( "224.0.0.9", { .protocol = udp, .ttl = 1, .tos = dscp48 },
                 udpDatagram( 520, 520, Bytes{ 2, 2, 0, 0 } ) ) );
}

void Packets::isis() {
   add( "IS-IS L1 hello - 01:80:c2:00:00:14",
        llcFrame( to( "01:80:c2:00:00:14" ), 0xfe, 0xfe, isisPdu( 15 ) ) );
   add( "IS-IS L2 hello - 01:80:c2:00:00:15",
        llcFrame( to( "01:80:c2:00:00:15" ), 0xfe, 0xfe, isisPdu( 16 ) ) );
   add( "IS-IS ALL-IS - 09:00:2b:00:00:05",
        llcFrame( to( "09:00:2b:00:00:05" ), 0xfe, 0xfe, isisPdu( 17 ) ) );
   add( "IS-IS over GRE - to self",
        toSelf( { .protocol = gre }, grePacket( 0x00fe, isisPdu( 16 ) ) ) );
}

void Packets::pimAndVrrp() {
   const Bytes helloOptions{ 0, 1, 0, 2, 0, 105 };  // hold time 105 s
   add( "PIM hello - 224.0.0.13",
        toGroup( "224.0.0.13", { .protocol = pim, .ttl = 1, .tos = dscp48 },
                 pimMessage( 0, helloOptions ) ) );
   // A register carries the source's packet; a null register only its IP
   // header, with the N bit set, and is sent with DSCP 48.
   const Bytes data = ipv4Packet(
       { .src = a_.neighbourV4.v4, .dst = ipv4( "239.1.1.1" ), .protocol = udp },
       udpDatagram( ephemeral, 5000, Bytes( 32, 0 ) ) );
   add( "PIM register - to self",
        toSelf( { .protocol = pim }, pimMessage( 1, append( { 0, 0, 0, 0 }, data ) ) ) );
   const Bytes nullInner = ipv4Packet(
       { .src = a_.neighbourV4.v4, .dst = ipv4( "239.1.1.1" ), .protocol = udp }, {} );
   add( "PIM null-register - DSCP 48",
        toSelf( { .protocol = pim, .tos = dscp48 },
                pimMessage( 1, append( { 0x40, 0, 0, 0 }, nullInner ) ) ) );
   add( "PIMv6 hello - ff02::d",
        toGroupV6( ipv6( "ff02::d" ),
                   { .nextHeader = pim, .hopLimit = 1, .trafficClass = dscp48 },
                   pimMessage( 0, helloOptions ) ) );
   // VRRPv3 advertisement: version and type, VRID 1, priority 100, one
   // address, the advertisement interval, the checksum, the address.
   const Ipv4Address virtualIp = a_.selfV4.v4;
   const Bytes advertisement{ 0x31,
                              1,
                              100,
                              1,
                              0,
                              100,
                              0,
                              0,
                              uint8_t( virtualIp >> 24 ),
                              uint8_t( virtualIp >> 16 ),
                              uint8_t( virtualIp >> 8 ),
                              uint8_t( virtualIp ) };
   for ( uint8_t ttl : { 255, 254 } ) {
      add( "VRRP - TTL " + std::to_string( ttl ),
           toGroup( "224.0.0.18", { .protocol = vrrp, .ttl = ttl, .tos = dscp48 },
                    advertisement ) );
   }
}

void Packets::bfd() {
   // Version 1, state Up, detect multiplier 3, length 24.
   Bytes control{ 0x20, 0xc0, 3, 24 };
   control.resize( 24, 0 );
   add( "BFD control - UDP 3784 TTL 255",
        toSelf( { .protocol = udp, .ttl = 255, .tos = dscp48 },
                udpDatagram( 49152, 3784, control ) ) );
   add( "BFD echo - UDP 3785", toSelf( { .protocol = udp, .ttl = 255, .tos = dscp48 },
                                       udpDatagram( 3785, 3785, Bytes( 16, 0 ) ) ) );
   add( "BFD multihop - UDP 4784", toSelf( { .protocol = udp, .ttl = 250, .tos = dscp48 },
                                           udpDatagram( 49152, 4784, control ) ) );
   add( "Micro-BFD - UDP 6784 to 01:00:5e:90:00:01",
        toSelf( to( "01:00:5e:90:00:01" ), { .protocol = udp, .ttl = 255, .tos = dscp48 },
                udpDatagram( 49152, 6784, control ) ) );
}

void Packets::l2Control() {
   Bytes lacpdu{ 1, 1 };
   lacpdu.resize( 110, 0 );
   add( "LACP - 01:80:c2:00:00:02",
        ethernetFrame( to( "01:80:c2:00:00:02" ), 0x8809, lacpdu ) );
   // Chassis ID, port ID and TTL TLVs.
   const Bytes lldpdu{ 0x02, 0x07, 0x04, 0x02, 0,    0,    0, 0,   0x02, 0x04, 0x03,
                       0x05, 'e',  't',  'h',  0x06, 0x02, 0, 120, 0,    0 };
   add( "LLDP - 01:80:c2:00:00:0e",
        ethernetFrame( to( "01:80:c2:00:00:0e" ), 0x88cc, lldpdu ) );
   add( "STP BPDU - 01:80:c2:00:00:00",
        llcFrame( to( "01:80:c2:00:00:00" ), 0x42, 0x42, Bytes( 35, 0 ) ) );
   add( "EAPoL start - 01:80:c2:00:00:03",
        ethernetFrame( to( "01:80:c2:00:00:03" ), 0x888e, Bytes{ 2, 1, 0, 0 } ) );
}

void Packets::ptp() {
   const Bytes timestamp( 10, 0 );
   add(
       "PTP - L2 multicast 01:1b:19:00:00:00",
       ethernetFrame( to( "01:1b:19:00:00:00" ), 0x88f7, ptpMessage( 0x0, timestamp ) ) );
   add( "PTP - L2 unicast to router MAC",
        ethernetFrame( toRouter(), 0x88f7, ptpMessage( 0x1, timestamp ) ) );
   add( "PTP - link-local 01:80:c2:00:00:0e",
        ethernetFrame( to( "01:80:c2:00:00:0e" ), 0x88f7,
                       ptpMessage( 0x2, Bytes( 20, 0 ) ) ) );
   add( "PTP - IPv4 multicast 224.0.1.129 UDP 319",
        toGroup( "224.0.1.129", { .protocol = udp, .ttl = 1 },
                 udpDatagram( 319, 319, ptpMessage( 0x0, timestamp ) ) ) );
   add( "PTP - IPv4 unicast to self UDP 319",
        toSelf( { .protocol = udp },
                udpDatagram( 319, 319, ptpMessage( 0x1, timestamp ) ) ) );
}

void Packets::selfIpElevators( std::optional<PortRef> ipfixInPort ) {
   const Bytes ssh =
       tcpSegment( ephemeral, 22, TcpFlag::Ack | TcpFlag::Psh, Bytes( 32, 0 ) );
   add( "Self IP - DSCP 46", toSelf( { .protocol = tcp, .tos = dscp46 }, ssh ) );
   add( "Self IP - DSCP 48", toSelf( { .protocol = tcp, .tos = dscp48 }, ssh ) );
   EthernetHeader tagged = toRouter();
   tagged.tags = { { .vid = nativeVlan_, .pcp = 7 } };
   add( "Self IP - VLAN priority 7", toSelf( tagged, { .protocol = tcp }, ssh ) );
   add( "IPFIX - UDP 4739 to self",
        toSelf( { .protocol = udp }, udpDatagram( ephemeral, 4739, Bytes( 16, 0 ) ) ),
        ipfixInPort );
}

void Packets::glean() {
   if ( a_.gleanV4 ) {
      add( "Glean - IPv4 to an unresolved host",
           ethernetFrame(
               toRouter(), 0x0800,
               ipv4Packet(
                   { .src = a_.neighbourV4.v4, .dst = a_.gleanV4->v4, .protocol = tcp },
                   tcpSegment( ephemeral, 443, TcpFlag::Syn, {} ) ) ) );
   }
   if ( a_.gleanV6 ) {
      add( "Glean - ICMPv6 echo to an unresolved host",
           ethernetFrame( toRouter(), 0x86DD,
                          ipv6Packet( { .src = a_.neighbourV6.v6,
                                        .dst = a_.gleanV6->v6,
                                        .nextHeader = icmpv6 },
                                      icmpMessage( 128, 0, Bytes( 8, 0 ) ) ) ) );
   }
}

void Packets::ipv6Neighbours() {
   const Ipv6Address& self = a_.selfV6.v6;
   Ipv6Address solicited = ipv6( "ff02::1:ff00:0" );
   std::copy( self.begin() + 13, self.end(), solicited.begin() + 13 );
   const Bytes sourceLinkLayer{ 1,
                                1,
                                a_.neighbourMac[0],
                                a_.neighbourMac[1],
                                a_.neighbourMac[2],
                                a_.neighbourMac[3],
                                a_.neighbourMac[4],
                                a_.neighbourMac[5] };
   add( "ICMPv6 ND - neighbour solicitation",
        toGroupV6( solicited, { .nextHeader = icmpv6, .hopLimit = 255 },
                   icmpMessage( 135, 0,
                                append( append( { 0, 0, 0, 0 }, bytesOf( self ) ),
                                        sourceLinkLayer ) ) ) );
   Bytes targetLinkLayer = sourceLinkLayer;
   targetLinkLayer[0] = 2;
   add( "ICMPv6 ND - neighbour advertisement",
        toSelfV6( { .nextHeader = icmpv6, .hopLimit = 255 },
                  icmpMessage(
                      136, 0,
                      append( append( { 0x60, 0, 0, 0 }, bytesOf( a_.neighbourV6.v6 ) ),
                              targetLinkLayer ) ) ) );
   // MLD goes from a link-local source, hop limit 1, behind router alert.
   const Ipv6Header mld{
       .nextHeader = icmpv6, .hopLimit = 1, .extensions = { hopByHopRouterAlert() } };
   add( "MLD query - ff02::1",
        toGroupV6( ipv6( "ff02::1" ), mld, icmpMessage( 130, 0, Bytes( 24, 0 ) ) ) );
   add( "MLDv2 report - ff02::16",
        toGroupV6( ipv6( "ff02::16" ), mld, icmpMessage( 143, 0, Bytes( 4, 0 ) ) ) );
   add( "IPv6 link-local multicast - ff02::1",
        toGroupV6( ipv6( "ff02::1" ), { .nextHeader = udp, .hopLimit = 1 },
                   udpDatagram( ephemeral, 9, Bytes( 8, 0 ) ) ) );
}

void Packets::hostProtocols() {
   // BOOTREQUEST, Ethernet, the client's MAC, then the magic cookie.
   Bytes discover{ 1, 1, 6, 0 };
   discover.resize( 236, 0 );
   std::copy( a_.neighbourMac.begin(), a_.neighbourMac.end(), discover.begin() + 28 );
   discover = append( discover, Bytes{ 99, 130, 83, 99, 53, 1, 1, 255 } );
   add( "DHCPv4 discover - broadcast",
        ethernetFrame(
            to( "ff:ff:ff:ff:ff:ff" ), 0x0800,
            ipv4Packet( { .src = 0, .dst = ipv4( "255.255.255.255" ), .protocol = udp },
                        udpDatagram( 68, 67, discover ) ) ) );
   add( "DHCPv6 solicit - ff02::1:2",
        toGroupV6( ipv6( "ff02::1:2" ), { .nextHeader = udp, .hopLimit = 1 },
                   udpDatagram( 546, 547, Bytes{ 1, 0x12, 0x34, 0x56 } ) ) );
   add( "MLAG - TCP from peer port " + std::to_string( mlagPort ),
        toSelf( { .protocol = tcp },
                tcpSegment( mlagPort, ephemeral, TcpFlag::Ack | TcpFlag::Psh,
                            Bytes( 24, 0 ) ) ) );
   add(
       "MLAG - UDP heartbeat port " + std::to_string( mlagPort ),
       toSelf( { .protocol = udp }, udpDatagram( mlagPort, mlagPort, Bytes( 24, 0 ) ) ) );
   add( "IGMP query - 224.0.0.1",
        toGroup( "224.0.0.1",
                 { .protocol = igmp, .ttl = 1, .tos = dscp48, .options = routerAlert },
                 Bytes{ 0x11, 100, 0, 0, 0, 0, 0, 0 } ) );
   add( "IGMPv3 report - 224.0.0.22",
        toGroup( "224.0.0.22",
                 { .protocol = igmp, .ttl = 1, .tos = dscp48, .options = routerAlert },
                 Bytes{ 0x22, 0, 0, 0, 0, 0, 0, 0 } ) );
   add( "ARP request - broadcast",
        ethernetFrame(
            to( "ff:ff:ff:ff:ff:ff" ), 0x0806,
            arpPacket( 1, a_.neighbourMac, a_.neighbourV4.v4, {}, a_.selfV4.v4 ) ) );
   add( "ARP reply - to router MAC",
        ethernetFrame( toRouter(), 0x0806,
                       arpPacket( 2, a_.neighbourMac, a_.neighbourV4.v4, a_.routerMac,
                                  a_.selfV4.v4 ) ) );
}

}  // namespace

std::vector<CanonicalPacket> canonicalPackets( const NetworkContext& network,
                                               const PortRef& ingress,
                                               std::optional<PortRef> ipfixInPort ) {
   const Interface* native = network.nativeInterface( ingress );
   Packets packets( canonicalAddresses( network, ingress ), ingress,
                    native ? native->vlan : uint16_t( 1 ) );
   packets.routingProtocols();
   packets.isis();
   packets.pimAndVrrp();
   packets.bfd();
   packets.l2Control();
   packets.ptp();
   packets.selfIpElevators( ipfixInPort );
   packets.glean();
   packets.ipv6Neighbours();
   packets.hostProtocols();
   return packets.take();
}

}  // namespace Pipeline
