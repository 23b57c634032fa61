// The one-line summary of a packet: one row per protocol family, built as
// bytes, with the exact line a person reads.
#include <gtest/gtest.h>

#include "pipeline/PacketBuilder.h"
#include "pipeline/PacketParser.h"
#include "pipeline/PacketSummary.h"

namespace Pipeline {
namespace {

const MacAddress hostMac = mac( "02:00:00:00:00:02" );
const MacAddress routerMac = mac( "00:1c:73:00:00:01" );
const EthernetHeader toRouter{ routerMac, hostMac, {} };

EthernetHeader toMac( const char* dst ) {
   return { mac( dst ), hostMac, {} };
}

Bytes v4( const EthernetHeader& eth, const char* src, const char* dst, uint8_t protocol,
          const Bytes& payload, uint8_t ttl = 64 ) {
   return ethernetFrame(
       eth, 0x0800,
       ipv4Packet(
           { .src = ipv4( src ), .dst = ipv4( dst ), .protocol = protocol, .ttl = ttl },
           payload ) );
}

Bytes v6( const EthernetHeader& eth, const char* src, const char* dst, uint8_t nextHeader,
          const Bytes& payload ) {
   return ethernetFrame(
       eth, 0x86DD,
       ipv6Packet( { .src = ipv6( src ), .dst = ipv6( dst ), .nextHeader = nextHeader },
                   payload ) );
}

Bytes prefix( Bytes frame, size_t length ) {
   frame.resize( length );
   return frame;
}

struct SummaryCase {
   const char* name;
   Bytes frame;
   const char* summary;
};

std::vector<SummaryCase> summaryCases() {
   const Bytes nothing;
   const Bytes ospfHello{ 2, 1, 0, 44 };  // version 2, type 1
   const Bytes ospfUpdate{ 2, 4, 0, 44 };
   const Bytes pimJoin{ 0x23, 0, 0, 0 };  // version 2, type 3
   const Bytes igmpLeave{ 0x17, 0, 0, 0, 224, 1, 1, 1 };
   const Bytes vrrp{ 0x31, 1, 100, 1, 0, 1, 0, 0, 10, 0, 0, 254 };
   const Bytes bpdu( 35, 0 );
   const Bytes lacp( 109, 0 );
   const Bytes lldp( 20, 0 );
   return {
       { "BgpFromThePeer",
         v4( toRouter, "10.0.0.2", "10.0.0.1", 6,
             tcpSegment( 179, 52000, TcpFlag::Ack, nothing ) ),
         "BGP 10.0.0.2:179 > 10.0.0.1:52000" },
       { "BgpToThePeer",
         v4( toRouter, "10.0.0.2", "10.0.0.1", 6,
             tcpSegment( 52000, 179, TcpFlag::Syn, nothing ) ),
         "BGP 10.0.0.2:52000 > 10.0.0.1:179" },
       { "BgpOverIpv6",
         v6( toRouter, "fe80::2", "fe80::1", 6,
             tcpSegment( 52000, 179, TcpFlag::Syn, nothing ) ),
         "BGP [fe80::2]:52000 > [fe80::1]:179" },
       { "BfdMultihop",
         v4( toRouter, "10.0.0.2", "10.0.0.1", 17, udpDatagram( 49152, 4784, nothing ) ),
         "BFD 10.0.0.2:49152 > 10.0.0.1:4784" },
       { "DhcpDiscover",
         v4( toMac( "ff:ff:ff:ff:ff:ff" ), "0.0.0.0", "255.255.255.255", 17,
             udpDatagram( 68, 67, nothing ) ),
         "DHCP 0.0.0.0:68 > 255.255.255.255:67" },
       { "Dhcpv6Solicit",
         v6( toMac( "33:33:00:01:00:02" ), "fe80::2", "ff02::1:2", 17,
             udpDatagram( 546, 547, nothing ) ),
         "DHCPv6 [fe80::2]:546 > [ff02::1:2]:547" },
       { "LdpHello",
         v4( toMac( "01:00:5e:00:00:02" ), "10.0.0.2", "224.0.0.2", 17,
             udpDatagram( 646, 646, nothing ) ),
         "LDP 10.0.0.2:646 > 224.0.0.2:646" },
       { "IpfixOverTcp",
         v4( toRouter, "10.0.0.1", "10.9.9.9", 6, tcpSegment( 40000, 4739, 0, nothing ) ),
         "IPFIX 10.0.0.1:40000 > 10.9.9.9:4739" },
       { "UnknownTcpPorts",
         v4( toRouter, "10.0.0.2", "10.0.0.1", 6, tcpSegment( 40000, 22, 0, nothing ) ),
         "TCP 10.0.0.2:40000 > 10.0.0.1:22" },
       { "UnknownUdpPorts",
         v4( toRouter, "10.0.0.2", "10.0.0.1", 17, udpDatagram( 40000, 53, nothing ) ),
         "UDP 10.0.0.2:40000 > 10.0.0.1:53" },
       { "OspfHello",
         v4( toMac( "01:00:5e:00:00:05" ), "10.0.0.2", "224.0.0.5", 89, ospfHello, 1 ),
         "OSPF hello 10.0.0.2 > 224.0.0.5" },
       { "OspfLsUpdate",
         v4( toMac( "01:00:5e:00:00:06" ), "10.0.0.2", "224.0.0.6", 89, ospfUpdate, 1 ),
         "OSPF LS update 10.0.0.2 > 224.0.0.6" },
       { "OspfWithoutItsHeader",
         v4( toMac( "01:00:5e:00:00:05" ), "10.0.0.2", "224.0.0.5", 89, Bytes{ 2 }, 1 ),
         "OSPF 10.0.0.2 > 224.0.0.5" },
       { "PimJoin",
         v4( toMac( "01:00:5e:00:00:0d" ), "10.0.0.2", "224.0.0.13", 103, pimJoin, 1 ),
         "PIM join/prune 10.0.0.2 > 224.0.0.13" },
       { "IgmpLeave",
         v4( toMac( "01:00:5e:00:00:02" ), "10.0.0.2", "224.0.0.2", 2, igmpLeave, 1 ),
         "IGMP leave 10.0.0.2 > 224.0.0.2" },
       { "Vrrp",
         v4( toMac( "01:00:5e:00:00:12" ), "10.0.0.2", "224.0.0.18", 112, vrrp, 255 ),
         "VRRP 10.0.0.2 > 224.0.0.18 ttl 255" },
       { "Gre", v4( toRouter, "10.0.0.2", "10.0.0.1", 47, grePacket( 0x0800, nothing ) ),
         "GRE 10.0.0.2 > 10.0.0.1" },
       { "UnnamedProtocol", v4( toRouter, "10.0.0.2", "10.0.0.1", 200, nothing ),
         "IPv4 10.0.0.2 > 10.0.0.1 proto 200" },
       { "IcmpEcho",
         v4( toRouter, "10.0.0.2", "10.0.0.1", 1, icmpMessage( 8, 0, Bytes( 4, 0 ) ) ),
         "ICMP echo request 10.0.0.2 > 10.0.0.1" },
       { "IcmpUnnamedType",
         v4( toRouter, "10.0.0.2", "10.0.0.1", 1, icmpMessage( 42, 7, nothing ) ),
         "ICMP type 42 code 7 10.0.0.2 > 10.0.0.1" },
       { "NeighborSolicitation",
         v6( toMac( "33:33:ff:00:00:01" ), "fe80::2", "ff02::1:ff00:1", 58,
             icmpMessage( 135, 0, Bytes( 20, 0 ) ) ),
         "ICMPv6 neighbor solicitation fe80::2 > ff02::1:ff00:1" },
       { "NonFirstFragment",
         ethernetFrame( toRouter, 0x0800,
                        ipv4Packet( { .src = ipv4( "10.0.0.2" ),
                                      .dst = ipv4( "10.0.0.1" ),
                                      .protocol = 17,
                                      .fragmentOffset = 185 },
                                    Bytes( 8, 0 ) ) ),
         "IPv4 fragment 10.0.0.2 > 10.0.0.1" },
       { "ArpRequest",
         ethernetFrame( toMac( "ff:ff:ff:ff:ff:ff" ), 0x0806,
                        arpPacket( 1, hostMac, ipv4( "10.0.0.2" ), MacAddress{},
                                   ipv4( "10.0.0.1" ) ) ),
         "ARP request who-has 10.0.0.1 tell 10.0.0.2" },
       { "ArpReply",
         ethernetFrame(
             toRouter, 0x0806,
             arpPacket( 2, hostMac, ipv4( "10.0.0.2" ), routerMac, ipv4( "10.0.0.1" ) ) ),
         "ARP reply 10.0.0.2 is-at 02:00:00:00:00:02" },
       { "Lldp", ethernetFrame( toMac( "01:80:c2:00:00:0e" ), 0x88CC, lldp ),
         "LLDP 02:00:00:00:00:02 > 01:80:c2:00:00:0e" },
       { "StpBpdu", llcFrame( toMac( "01:80:c2:00:00:00" ), 0x42, 0x42, bpdu ),
         "STP BPDU" },
       { "Lacp",
         ethernetFrame( toMac( "01:80:c2:00:00:02" ), 0x8809,
                        [&] {
                           Bytes body = lacp;
                           body[0] = 1;
                           return body;
                        }() ),
         "LACP" },
       { "PtpSyncOverEthernet",
         ethernetFrame( toMac( "01:1b:19:00:00:00" ), 0x88F7,
                        ptpMessage( 0, Bytes( 10, 0 ) ) ),
         "PTP sync (L2)" },
       { "PtpDelayRequestOverUdp",
         v4( toMac( "01:00:5e:00:01:81" ), "10.0.0.2", "224.0.1.129", 17,
             udpDatagram( 319, 319, ptpMessage( 1, Bytes( 10, 0 ) ) ) ),
         "PTP delay request 10.0.0.2:319 > 224.0.1.129:319" },
       { "IsisHello",
         llcFrame( toMac( "01:80:c2:00:00:14" ), 0xFE, 0xFE,
                   Bytes{ 0x83, 27, 1, 0, 15, 1, 0, 0 } ),
         "IS-IS L1 LAN hello" },
       { "UnnamedEtherType", ethernetFrame( toRouter, 0x88B5, Bytes( 46, 0 ) ),
         "Ethernet 02:00:00:00:00:02 > 00:1c:73:00:00:01 type 0x88b5" },
       { "UnnamedLlc", llcFrame( toRouter, 0xE0, 0xE0, Bytes( 40, 0 ) ),
         "LLC 02:00:00:00:00:02 > 00:1c:73:00:00:01 dsap 0xe0 ssap 0xe0" },
       { "TruncatedIpv4Header",
         prefix( v4( toRouter, "10.0.0.2", "10.0.0.1", 17, nothing ), 14 + 12 ),
         "IPv4 [truncated: IPv4 header: 12 of 20 bytes]" },
       { "TruncatedUdpHeader",
         prefix( v4( toRouter, "10.0.0.2", "10.0.0.1", 17, udpDatagram( 1, 2, nothing ) ),
                 14 + 20 + 4 ),
         "UDP 10.0.0.2 > 10.0.0.1 [truncated: UDP header: 4 of 8 bytes]" },
       { "WrongIpVersion",
         [&] {
            Bytes frame = v4( toRouter, "10.0.0.2", "10.0.0.1", 17, nothing );
            frame[14] = 0x65;
            return frame;
         }(),
         "IPv4 [malformed: IPv4 header: version 6]" },
       { "TruncatedEthernet", Bytes( 10, 0xFF ),
         "Ethernet [truncated: Ethernet header: 10 of 14 bytes]" },
   };
}

class PacketSummaryRow : public testing::TestWithParam<SummaryCase> {};

TEST_P( PacketSummaryRow, ReadsAsExpected ) {
   const SummaryCase& row = GetParam();
   EXPECT_EQ( summarizePacket( parsePacket( row.frame ), row.frame ), row.summary );
}

INSTANTIATE_TEST_SUITE_P( Protocols, PacketSummaryRow,
                          testing::ValuesIn( summaryCases() ),
                          []( const testing::TestParamInfo<SummaryCase>& info ) {
                             return std::string( info.param.name );
                          } );

}  // namespace
}  // namespace Pipeline
