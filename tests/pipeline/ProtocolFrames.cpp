#include "tests/pipeline/ProtocolFrames.h"

#include <gtest/gtest.h>

namespace Pipeline::Test {

namespace {

using L = Layer;

const MacAddress routerMac = mac( "00:1c:73:00:00:99" );
const MacAddress hostMac = mac( "02:00:00:00:00:02" );
const EthernetHeader toRouter{ routerMac, hostMac, {} };

EthernetHeader toMac( const char* dst ) { return { mac( dst ), hostMac, {} }; }

Bytes zeros( size_t n ) { return Bytes( n, 0 ); }

Bytes v4( const EthernetHeader& eth, const Ipv4Header& ip, const Bytes& payload ) {
   return ethernetFrame( eth, 0x0800, ipv4Packet( ip, payload ) );
}

Bytes v6( const EthernetHeader& eth, const Ipv6Header& ip, const Bytes& payload ) {
   return ethernetFrame( eth, 0x86DD, ipv6Packet( ip, payload ) );
}

void expectL4( const ParsedPacket& p, uint8_t protocol, uint16_t src, uint16_t dst ) {
   EXPECT_TRUE( p.has( Field::IpProtocol ) && p.has( Field::L4SrcPort ) &&
                p.has( Field::L4DstPort ) );
   EXPECT_EQ( p.fields.ipProtocol, protocol );
   EXPECT_EQ( p.fields.l4SrcPort, src );
   EXPECT_EQ( p.fields.l4DstPort, dst );
}

void expectIpv4( const ParsedPacket& p, const char* dst, uint8_t ttl, uint8_t protocol ) {
   EXPECT_EQ( p.fields.etherType, 0x0800 );
   EXPECT_EQ( p.fields.ipType, Shim::FieldIpType::Ipv4Any );
   EXPECT_EQ( p.fields.dstIp, ipv4( dst ) );
   EXPECT_EQ( p.fields.ttl, ttl );
   EXPECT_EQ( p.fields.ipProtocol, protocol );
}

void expectIpv6( const ParsedPacket& p, const char* dst, uint8_t hopLimit, uint8_t protocol ) {
   EXPECT_EQ( p.fields.etherType, 0x86DD );
   EXPECT_EQ( p.fields.ipType, Shim::FieldIpType::Ipv6 );
   EXPECT_EQ( p.fields.dstIp6, ipv6( dst ) );
   EXPECT_EQ( p.fields.ttl, hopLimit );
   EXPECT_EQ( p.fields.ipProtocol, protocol );
}

// ICMP type and code in the layer-4 source port; no destination port.
void expectIcmp( const ParsedPacket& p, uint8_t type, uint8_t code ) {
   ASSERT_TRUE( p.icmp );
   EXPECT_EQ( p.icmp->type, type );
   EXPECT_EQ( p.icmp->code, code );
   EXPECT_EQ( p.fields.l4SrcPort, type << 8 | code );
   EXPECT_FALSE( p.has( Field::L4DstPort ) );
}

void addIpv4Cases( std::vector<FrameCase>& cases ) {
   const Ipv4Header peer{ .src = ipv4( "10.0.0.2" ), .dst = ipv4( "10.0.0.1" ), .protocol = 6,
                        .ttl = 1, .tos = 0xC0 };
   cases.push_back( { "BgpToPort179",
                      v4( toRouter, peer, tcpSegment( 52000, 179, TcpFlag::Syn, {} ) ),
                      { L::Ethernet, L::Ipv4, L::Tcp },
                      []( const ParsedPacket& p ) {
                         EXPECT_EQ( p.fields.dstMac, routerMac );
                         EXPECT_EQ( p.srcMac, hostMac );
                         expectIpv4( p, "10.0.0.1", 1, 6 );
                         EXPECT_EQ( p.fields.tos, 0xC0 );
                         EXPECT_EQ( p.srcIp, ipv4( "10.0.0.2" ) );
                         expectL4( p, 6, 52000, 179 );
                         EXPECT_EQ( p.tcpFlags, TcpFlag::Syn );
                         EXPECT_FALSE( p.has( Field::OuterVlanPri ) );
                         EXPECT_FALSE( p.ipv4Options );
                      } } );
   EthernetHeader tagged = toRouter;
   tagged.tags = { { .vid = 100, .pcp = 6 } };
   cases.push_back( { "BgpFromPort179Tagged",
                      v4( tagged, peer,
                          tcpSegment( 179, 52000, TcpFlag::Ack | TcpFlag::Psh, zeros( 19 ) ) ),
                      { L::Ethernet, L::Vlan, L::Ipv4, L::Tcp },
                      []( const ParsedPacket& p ) {
                         expectL4( p, 6, 179, 52000 );
                         EXPECT_EQ( p.fields.outerVlanPri, 6 );
                         ASSERT_TRUE( p.outerVlan );
                         EXPECT_EQ( p.outerVlan->vid, 100 );
                         EXPECT_FALSE( p.innerVlan );
                      } } );
   cases.push_back( { "OspfHelloTo224_0_0_5",
                      v4( toMac( "01:00:5e:00:00:05" ),
                          { .src = ipv4( "10.0.0.2" ), .dst = ipv4( "224.0.0.5" ), .protocol = 89,
                            .ttl = 1, .tos = 0xC0 },
                          zeros( 44 ) ),
                      { L::Ethernet, L::Ipv4 },
                      []( const ParsedPacket& p ) {
                         expectIpv4( p, "224.0.0.5", 1, 89 );
                         EXPECT_FALSE( p.has( Field::L4SrcPort ) );
                      } } );
   // IS-IS L2 LAN hello inside GRE, protocol type 0x00FE (OSI).
   Bytes isisHello{ 0x83, 27, 1, 0, 16, 1, 0, 0 };
   isisHello.resize( 40, 0 );
   cases.push_back( { "IsisOverGre",
                      v4( toRouter,
                          { .src = ipv4( "10.1.0.2" ), .dst = ipv4( "10.1.0.1" ), .protocol = 47 },
                          grePacket( 0x00FE, isisHello ) ),
                      { L::Ethernet, L::Ipv4, L::Gre, L::Isis },
                      []( const ParsedPacket& p ) {
                         expectIpv4( p, "10.1.0.1", 64, 47 );
                         EXPECT_EQ( p.greProtocol, 0x00FE );
                         EXPECT_TRUE( p.has( Field::L4DstPort ) );
                         EXPECT_EQ( p.fields.l4DstPort, 0x00FE );
                         EXPECT_EQ( p.isisPduType, 16 );
                      } } );
   for ( auto [ name, protocol, dst, ttl ] :
         { std::tuple{ "PimHello", 103, "224.0.0.13", 1 },
           std::tuple{ "VrrpTtl255", 112, "224.0.0.18", 255 },
           std::tuple{ "VrrpTtl254", 112, "224.0.0.18", 254 } } ) {
      cases.push_back( { name,
                         v4( toMac( "01:00:5e:00:00:12" ),
                             { .src = ipv4( "10.0.0.2" ), .dst = ipv4( dst ),
                               .protocol = uint8_t( protocol ), .ttl = uint8_t( ttl ) },
                             zeros( 20 ) ),
                         { L::Ethernet, L::Ipv4 },
                         [ = ]( const ParsedPacket& p ) { expectIpv4( p, dst, ttl, protocol ); } } );
   }
   for ( auto [ name, port ] : { std::pair{ "BfdControl", 3784 }, std::pair{ "BfdEcho", 3785 },
                                 std::pair{ "BfdMultihop", 4784 },
                                 std::pair{ "MicroBfd", 6784 } } ) {
      cases.push_back( { name,
                         v4( toRouter,
                             { .src = ipv4( "10.0.0.2" ), .dst = ipv4( "10.0.0.1" ),
                               .protocol = 17, .ttl = 255 },
                             udpDatagram( 49152, uint16_t( port ), zeros( 24 ) ) ),
                         { L::Ethernet, L::Ipv4, L::Udp },
                         [ port ]( const ParsedPacket& p ) {
                            expectIpv4( p, "10.0.0.1", 255, 17 );
                            expectL4( p, 17, 49152, uint16_t( port ) );
                         } } );
   }
   cases.push_back( { "PtpOverUdp319",
                      v4( toMac( "01:00:5e:00:01:81" ),
                          { .src = ipv4( "10.0.0.2" ), .dst = ipv4( "224.0.1.129" ),
                            .protocol = 17 },
                          udpDatagram( 319, 319, ptpMessage( 0x0, zeros( 10 ) ) ) ),
                      { L::Ethernet, L::Ipv4, L::Udp, L::Ptp },
                      []( const ParsedPacket& p ) {
                         expectL4( p, 17, 319, 319 );
                         ASSERT_TRUE( p.ptp );
                         EXPECT_EQ( p.ptp->transport, PtpTransport::Udp );
                         EXPECT_EQ( p.ptp->messageType, 0 );
                         EXPECT_EQ( p.ptp->version, 2 );
                      } } );
   cases.push_back( { "PtpAnnounceOverUdp320",
                      v4( toRouter,
                          { .src = ipv4( "10.0.0.2" ), .dst = ipv4( "10.0.0.1" ), .protocol = 17 },
                          udpDatagram( 320, 320, ptpMessage( 0xB, zeros( 30 ) ) ) ),
                      { L::Ethernet, L::Ipv4, L::Udp, L::Ptp },
                      []( const ParsedPacket& p ) { EXPECT_EQ( p.ptp->messageType, 0xB ); } } );
   cases.push_back( { "Dhcpv4Discover",
                      v4( toMac( "ff:ff:ff:ff:ff:ff" ),
                          { .src = 0, .dst = ipv4( "255.255.255.255" ), .protocol = 17 },
                          udpDatagram( 68, 67, zeros( 240 ) ) ),
                      { L::Ethernet, L::Ipv4, L::Udp },
                      []( const ParsedPacket& p ) {
                         expectIpv4( p, "255.255.255.255", 64, 17 );
                         expectL4( p, 17, 68, 67 );
                         EXPECT_EQ( p.srcIp, 0u );
                      } } );
   cases.push_back( { "IcmpEcho",
                      v4( toRouter,
                          { .src = ipv4( "10.0.0.2" ), .dst = ipv4( "10.0.0.1" ), .protocol = 1 },
                          icmpMessage( 8, 0, zeros( 4 ) ) ),
                      { L::Ethernet, L::Ipv4, L::Icmp },
                      []( const ParsedPacket& p ) { expectIcmp( p, 8, 0 ); } } );
   // IGMPv2 report with the router-alert option: a 24-byte header.
   cases.push_back( { "Ipv4WithOptions",
                      v4( toMac( "01:00:5e:00:00:16" ),
                          { .src = ipv4( "10.0.0.2" ), .dst = ipv4( "224.0.0.22" ), .protocol = 2,
                            .ttl = 1, .options = { 0x94, 0x04, 0x00, 0x00 } },
                          zeros( 8 ) ),
                      { L::Ethernet, L::Ipv4 },
                      []( const ParsedPacket& p ) {
                         expectIpv4( p, "224.0.0.22", 1, 2 );
                         EXPECT_TRUE( p.ipv4Options );
                         EXPECT_EQ( p.layers[ 1 ].length, 24u );
                      } } );
   EthernetHeader qinq = toRouter;
   qinq.tags = { { .vid = 100, .pcp = 5, .tpid = 0x88A8 }, { .vid = 200, .pcp = 1 } };
   cases.push_back( { "QinQ",
                      v4( qinq,
                          { .src = ipv4( "10.0.0.2" ), .dst = ipv4( "10.0.0.1" ), .protocol = 17 },
                          udpDatagram( 1000, 2000, zeros( 4 ) ) ),
                      { L::Ethernet, L::Vlan, L::Vlan, L::Ipv4, L::Udp },
                      []( const ParsedPacket& p ) {
                         EXPECT_EQ( p.fields.outerVlanPri, 5 );
                         ASSERT_TRUE( p.outerVlan && p.innerVlan );
                         EXPECT_EQ( p.outerVlan->tpid, 0x88A8 );
                         EXPECT_EQ( p.outerVlan->vid, 100 );
                         EXPECT_EQ( p.innerVlan->vid, 200 );
                         EXPECT_EQ( p.innerVlan->pcp, 1 );
                         expectL4( p, 17, 1000, 2000 );
                      } } );
   cases.push_back( { "Esp",
                      v4( toRouter,
                          { .src = ipv4( "10.0.0.2" ), .dst = ipv4( "10.0.0.1" ), .protocol = 50 },
                          zeros( 24 ) ),
                      { L::Ethernet, L::Ipv4, L::Esp },
                      []( const ParsedPacket& p ) { expectIpv4( p, "10.0.0.1", 64, 50 ); } } );
   cases.push_back( { "Ipv4OverSnap",
                      snapFrame( toRouter, 0, 0x0800,
                                 ipv4Packet( { .src = ipv4( "10.0.0.2" ),
                                               .dst = ipv4( "10.0.0.1" ), .protocol = 17 },
                                             udpDatagram( 5000, 3784, zeros( 24 ) ) ) ),
                      { L::Ethernet, L::Llc, L::Snap, L::Ipv4, L::Udp },
                      []( const ParsedPacket& p ) {
                         expectIpv4( p, "10.0.0.1", 64, 17 );
                         expectL4( p, 17, 5000, 3784 );
                      } } );
}

void addIpv6Cases( std::vector<FrameCase>& cases ) {
   const auto linkLocal = ipv6( "fe80::2" );
   cases.push_back( { "Ospfv3HelloToFf02_5",
                      v6( toMac( "33:33:00:00:00:05" ),
                          { .src = linkLocal, .dst = ipv6( "ff02::5" ), .nextHeader = 89,
                            .hopLimit = 1, .trafficClass = 0xC0 },
                          zeros( 36 ) ),
                      { L::Ethernet, L::Ipv6 },
                      [ = ]( const ParsedPacket& p ) {
                         expectIpv6( p, "ff02::5", 1, 89 );
                         EXPECT_EQ( p.fields.tos, 0xC0 );
                         EXPECT_EQ( p.srcIp6, linkLocal );
                         EXPECT_FALSE( p.has( Field::ExtensionHeaderType ) );
                         EXPECT_FALSE( p.ipv6HopByHop );
                      } } );
   cases.push_back( { "Dhcpv6Solicit",
                      v6( toMac( "33:33:00:01:00:02" ),
                          { .src = linkLocal, .dst = ipv6( "ff02::1:2" ), .nextHeader = 17,
                            .hopLimit = 1 },
                          udpDatagram( 546, 547, zeros( 40 ) ) ),
                      { L::Ethernet, L::Ipv6, L::Udp },
                      []( const ParsedPacket& p ) { expectL4( p, 17, 546, 547 ); } } );
   for ( uint8_t type : { 135, 136 } ) {
      cases.push_back( { type == 135 ? "NeighborSolicitation" : "NeighborAdvertisement",
                         v6( toMac( "33:33:ff:00:00:01" ),
                             { .src = linkLocal, .dst = ipv6( "ff02::1:ff00:1" ),
                               .nextHeader = 58, .hopLimit = 255 },
                             icmpMessage( type, 0, zeros( 20 ) ) ),
                         { L::Ethernet, L::Ipv6, L::Icmpv6 },
                         [ type ]( const ParsedPacket& p ) {
                            expectIpv6( p, "ff02::1:ff00:1", 255, 58 );
                            expectIcmp( p, type, 0 );
                         } } );
   }
   for ( uint8_t type : { 130, 131, 132, 143 } ) {
      cases.push_back( { "MldType" + std::to_string( type ) + "BehindHopByHop",
                         v6( toMac( "33:33:00:00:00:16" ),
                             { .src = linkLocal, .dst = ipv6( "ff02::16" ), .nextHeader = 58,
                               .hopLimit = 1, .extensions = { hopByHopRouterAlert() } },
                             icmpMessage( type, 0, zeros( 24 ) ) ),
                         { L::Ethernet, L::Ipv6, L::Ipv6HopByHop, L::Icmpv6 },
                         [ type ]( const ParsedPacket& p ) {
                            expectIpv6( p, "ff02::16", 1, 58 );
                            EXPECT_TRUE( p.ipv6HopByHop );
                            EXPECT_TRUE( p.has( Field::ExtensionHeaderType ) );
                            EXPECT_EQ( p.fields.extensionHeaderType, 0 );
                            expectIcmp( p, type, 0 );
                         } } );
   }
   cases.push_back( { "WespOverIpv6",
                      v6( toRouter,
                          { .src = linkLocal, .dst = ipv6( "2001:db8::1" ), .nextHeader = 141 },
                          Bytes{ 50, 12, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0 } ),
                      { L::Ethernet, L::Ipv6, L::Wesp, L::Esp },
                      []( const ParsedPacket& p ) {
                         expectIpv6( p, "2001:db8::1", 64, 141 );
                         EXPECT_EQ( p.fields.extensionHeaderType, 141 );
                      } } );
   // Routing (8 + 16 bytes), destination options, a first fragment, then UDP.
   cases.push_back( { "Ipv6ExtensionChain",
                      v6( toRouter,
                          { .src = linkLocal, .dst = ipv6( "2001:db8::1" ), .nextHeader = 17,
                            .extensions = { { 43, zeros( 22 ) }, { 60, {} }, { 44, {} } } },
                          udpDatagram( 7000, 3784, zeros( 8 ) ) ),
                      { L::Ethernet, L::Ipv6, L::Ipv6Routing, L::Ipv6DestinationOptions,
                        L::Ipv6Fragment, L::Udp },
                      []( const ParsedPacket& p ) {
                         EXPECT_EQ( p.fields.extensionHeaderType, 43 );
                         EXPECT_EQ( p.layers[ 2 ].length, 24u );
                         expectL4( p, 17, 7000, 3784 );
                         EXPECT_FALSE( p.nonFirstFragment );
                      } } );
   // AH counts its length in 4-byte units: 12 bytes of ICV make it 24 long.
   cases.push_back( { "Ipv6AhThenTcp",
                      v6( toRouter,
                          { .src = linkLocal, .dst = ipv6( "2001:db8::1" ), .nextHeader = 6,
                            .extensions = { { 51, zeros( 22 ) } } },
                          tcpSegment( 40000, 179, TcpFlag::Syn, {} ) ),
                      { L::Ethernet, L::Ipv6, L::Ah, L::Tcp },
                      []( const ParsedPacket& p ) {
                         EXPECT_EQ( p.layers[ 2 ].length, 24u );
                         expectL4( p, 6, 40000, 179 );
                      } } );
}

void addL2Cases( std::vector<FrameCase>& cases ) {
   Bytes lacpdu{ 1, 1 };
   lacpdu.resize( 110, 0 );
   for ( auto [ name, subtype ] : { std::pair{ "Lacp", 1 }, std::pair{ "Marker", 2 },
                                    std::pair{ "Oam", 3 } } ) {
      lacpdu[ 0 ] = uint8_t( subtype );
      cases.push_back( { name, ethernetFrame( toMac( "01:80:c2:00:00:02" ), 0x8809, lacpdu ),
                         { L::Ethernet, L::SlowProtocol },
                         [ subtype ]( const ParsedPacket& p ) {
                            EXPECT_EQ( p.fields.dstMac, mac( "01:80:c2:00:00:02" ) );
                            EXPECT_EQ( p.fields.etherType, 0x8809 );
                            EXPECT_EQ( p.fields.ipType, Shim::FieldIpType::NonIp );
                            EXPECT_EQ( p.slowProtocolSubtype, subtype );
                            EXPECT_FALSE( p.has( Field::Ttl ) || p.has( Field::IpProtocol ) );
                            EXPECT_EQ( p.fields.ttl, 0 );
                         },
                         false } );
   }
   cases.push_back( { "Lldp",
                      ethernetFrame( toMac( "01:80:c2:00:00:0e" ), 0x88CC,
                                     Bytes{ 0x02, 0x07, 0x04, 2, 0, 0, 0, 0, 2, 0, 0 } ),
                      { L::Ethernet, L::Lldp },
                      []( const ParsedPacket& p ) { EXPECT_EQ( p.fields.etherType, 0x88CC ); },
                      false } );
   Bytes configBpdu( 35, 0 );
   cases.push_back( { "StpBpduOverLlc", llcFrame( toMac( "01:80:c2:00:00:00" ), 0x42, 0x42, configBpdu ),
                      { L::Ethernet, L::Llc, L::Stp },
                      []( const ParsedPacket& p ) {
                         EXPECT_EQ( p.fields.dstMac, mac( "01:80:c2:00:00:00" ) );
                         EXPECT_FALSE( p.has( Field::EtherType ) );
                         ASSERT_TRUE( p.llc );
                         EXPECT_EQ( p.llc->dsap, 0x42 );
                         EXPECT_EQ( p.llc->control, 0x03 );
                         EXPECT_EQ( p.bpduType, 0x00 );
                      } } );
   Bytes rstp{ 0, 0, 2, 2 };
   rstp.resize( 36, 0 );
   cases.push_back( { "PvstOverSnap", snapFrame( toMac( "01:00:0c:cc:cc:cd" ), 0x00000C, 0x010B, rstp ),
                      { L::Ethernet, L::Llc, L::Snap },
                      []( const ParsedPacket& p ) {
                         ASSERT_TRUE( p.snap );
                         EXPECT_EQ( p.snap->oui, 0x00000Cu );
                         EXPECT_EQ( p.snap->protocol, 0x010B );
                         EXPECT_FALSE( p.has( Field::EtherType ) );
                      } } );
   Bytes isisL1Hello{ 0x83, 27, 1, 0, 15, 1, 0, 0 };
   isisL1Hello.resize( 50, 0 );
   cases.push_back( { "IsisOverLlc", llcFrame( toMac( "01:80:c2:00:00:14" ), 0xFE, 0xFE, isisL1Hello ),
                      { L::Ethernet, L::Llc, L::Isis },
                      []( const ParsedPacket& p ) { EXPECT_EQ( p.isisPduType, 15 ); } } );
   cases.push_back( { "PtpOverL2",
                      ethernetFrame( toMac( "01:1b:19:00:00:00" ), 0x88F7,
                                     ptpMessage( 0x2, zeros( 20 ) ) ),
                      { L::Ethernet, L::Ptp },
                      []( const ParsedPacket& p ) {
                         EXPECT_EQ( p.fields.etherType, 0x88F7 );
                         ASSERT_TRUE( p.ptp );
                         EXPECT_EQ( p.ptp->transport, PtpTransport::L2 );
                         EXPECT_EQ( p.ptp->messageType, 2 );
                      } } );
   cases.push_back( { "EapolStart",
                      ethernetFrame( toMac( "01:80:c2:00:00:03" ), 0x888E,
                                     Bytes{ 2, 1, 0, 4, 1, 2, 0, 4 } ),
                      { L::Ethernet, L::Eapol },
                      []( const ParsedPacket& p ) {
                         EXPECT_EQ( p.fields.etherType, 0x888E );
                         EXPECT_EQ( p.eapolType, 1 );
                      } } );
   EthernetHeader tagged9100 = toMac( "ff:ff:ff:ff:ff:ff" );
   tagged9100.tags = { { .vid = 4094, .pcp = 7, .tpid = 0x9100 } };
   cases.push_back( { "ArpRequestTagged9100",
                      ethernetFrame( tagged9100, 0x0806,
                                     arpPacket( 1, hostMac, ipv4( "10.0.0.2" ), {},
                                                ipv4( "10.0.0.1" ) ) ),
                      { L::Ethernet, L::Vlan, L::Arp },
                      []( const ParsedPacket& p ) {
                         EXPECT_EQ( p.fields.etherType, 0x0806 );
                         EXPECT_EQ( p.fields.ipType, Shim::FieldIpType::NonIp );
                         EXPECT_FALSE( p.has( Field::DstIp ) );
                         EXPECT_EQ( p.fields.outerVlanPri, 7 );
                         EXPECT_EQ( p.outerVlan->vid, 4094 );
                         ASSERT_TRUE( p.arp );
                         EXPECT_EQ( p.arp->opcode, 1 );
                         EXPECT_EQ( p.arp->senderMac, hostMac );
                         EXPECT_EQ( p.arp->senderIp, ipv4( "10.0.0.2" ) );
                         EXPECT_EQ( p.arp->targetIp, ipv4( "10.0.0.1" ) );
                      } } );
}

}  // namespace

std::vector<FrameCase> protocolFrames() {
   std::vector<FrameCase> cases;
   addIpv4Cases( cases );
   addIpv6Cases( cases );
   addL2Cases( cases );
   return cases;
}

}  // namespace Pipeline::Test
