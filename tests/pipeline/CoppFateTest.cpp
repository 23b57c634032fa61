// The fate of every canonical control-plane packet, sent as bytes through the
// switch model into a switch with the whole system ACL installed: the rules
// it hits, trap or copy, CPU queue, traffic class, forwarded or dropped. One
// suite per family of rules, over the chip families that match differently:
// destination class ids (default), next-hop ids with glean via the CPU next
// hop (nexthop-glean-aclgroup), the ESP workaround (espwar-wesp-protocol) and
// VLAN-stage class ids (th3-vlan-class).
#include "tests/pipeline/CoppTestSupport.h"

#include "FerroTcamSystemAcl/TcamFields.h"

namespace CoppTest {
namespace {

using D = Pipeline::CpuDelivery;
using Strings = std::vector<std::string>;

class CoppFate : public testing::TestWithParam<std::string> {
  protected:
   bool is( const char* profile ) const { return GetParam() == profile; }
   bool vlanClasses() const { return is( "th3-vlan-class" ); }
   // Prepends the VLAN stage's class rule on the chip that has them.
   Strings withVlanRule( const char* vlanRule, Strings rules ) const {
      if ( vlanClasses() ) {
         rules.insert( rules.begin(), vlanRule );
      }
      return rules;
   }
   std::optional<uint32_t> vlanClass( uint32_t classId ) const {
      return vlanClasses() ? std::optional<uint32_t>( classId ) : std::nullopt;
   }
   CoppSwitch s_{ GetParam() };
};

using RoutingProtocols = CoppFate;
using Bfd = CoppFate;
using L2Control = CoppFate;
using Ptp = CoppFate;
using SelfIpElevators = CoppFate;
using Glean = CoppFate;
using Ipv6Neighbours = CoppFate;
using HostProtocols = CoppFate;

TEST_P( RoutingProtocols, TrappedToTheirQueues ) {
   const bool pimV6 = !is( "nexthop-glean-aclgroup" );  // chip type 22 has no IPv6 PIM
   expectFates( s_, {
      { "BGP - dst port 179", { "BGP - Dst Port" }, D::Trap, 38 },
      { "BGP - src port 179", withVlanRule( "BGP L4 Source Port", { "BGP - Src Port" } ),
        D::Trap, 38, {}, false, false, vlanClass( 9 ) },
      { "OSPFv2 - unicast to self", { "OSPF - unicast" }, D::Trap, 37 },
      { "IS-IS over GRE - to self", { "IP packets with GRE type and ISIS protocol" }, D::Trap, 37 },
      { "PIM register - to self", { "PIM Register" }, D::Trap, 27 },
      // DSCP 48 and up: the null register's own entry, above the register's.
      { "PIM null-register - DSCP 48", { "PIM Null Register" }, D::Trap, 36 },
      { "LDP session - TCP 646 to self", { "RouterL3 DSCP 48-63 Elevator" }, D::Trap, 43 },
      // IS-IS hellos are copied, not trapped: the frame still floods the VLAN.
      { "IS-IS L1 hello - 01:80:c2:00:00:14", { "ISIS IS-L1L2 Entry Fp Ports" }, D::Copy, 37, 6,
        true },
      { "IS-IS L2 hello - 01:80:c2:00:00:15", { "ISIS IS-L1L2 Entry Fp Ports" }, D::Copy, 37, 6,
        true },
      { "IS-IS ALL-IS - 09:00:2b:00:00:05", { "ISIS ALL-IS Entry Fp Ports" }, D::Copy, 37, 6,
        true },
      { "VRRP - TTL 255", withVlanRule( "IGMP Flood Link Local", { "VRRP" } ), D::Copy, 40, {},
        true, false, vlanClass( 4 ) },
      { "PIMv6 hello - ff02::d", pimV6 ? Strings{ "PIMV6" } : Strings{}, D::Copy,
        pimV6 ? 36u : 1u, {}, true },
      { "RIP - UDP 520 to 224.0.0.9", withVlanRule( "IGMP Flood Link Local", {} ), D::Copy, 1,
        {}, true, false, vlanClass( 4 ) },
   } );
}

// On the VLAN-stage chips the hellos also get a VLAN class, which is
// written beside and does not change what the ingress stage does.
TEST_P( RoutingProtocols, MulticastHellosAreCopiedToTheirQueues ) {
   expectFates( s_, {
      { "OSPFv2 hello - 224.0.0.5", withVlanRule( "PIM Multicast IP", { "OSPFv2 - Multicast" } ),
        D::Copy, 37, {}, true, false, vlanClass( 3 ) },
      { "OSPFv3 hello - ff02::5", withVlanRule( "OSPF Multicast MAC", { "OSPFv3 - Multicast" } ),
        D::Copy, 37, {}, true, false, vlanClass( 1 ) },
      { "PIM hello - 224.0.0.13", withVlanRule( "PIM Multicast IP", { "PIM" } ), D::Copy, 36,
        {}, true, false, vlanClass( 2 ) },
   } );
}

TEST_P( RoutingProtocols, VrrpBelowTtl255IsNotTrapped ) {
   expectFate( s_.send( "VRRP - TTL 254" ),
               { "VRRP - TTL 254", withVlanRule( "IGMP Flood Link Local", {} ), D::Copy, 1, {},
                 true, false, vlanClass( 4 ) } );
}

TEST_P( RoutingProtocols, IsisOnAVlanWithoutRoutedInterfaceIsNotTrapped ) {
   const std::optional<Pipeline::PortRef> bridged = s_.bridgedPort();
   ASSERT_TRUE( bridged ) << "the profile's network has no bridged port on unit 0";
   Pipeline::EthernetHeader eth{ Pipeline::mac( "01:80:c2:00:00:14" ),
                                 s_.addresses().neighbourMac, {} };
   Pipeline::Bytes hello{ 0x83, 27, 1, 0, 15, 1, 0, 0 };
   hello.resize( 40, 0 );
   expectFate( s_.send( Pipeline::llcFrame( eth, 0xfe, 0xfe, hello ), *bridged ),
               { "IS-IS L1 hello on a bridged VLAN", {}, D::None, {}, {}, true } );
}

TEST_P( Bfd, TrappedOnTheBfdQueue ) {
   expectFates( s_, {
      { "BFD control - UDP 3784 TTL 255", { "BFD" }, D::Trap, 45 },
      // The BFD entry's port mask (3784/0xfffe) takes the echo port too, ahead
      // of the echo's own entry where the chip has one.
      { "BFD echo - UDP 3785", { "BFD" }, D::Trap, 45 },
      { "BFD multihop - UDP 4784", { "BFD Multihop" }, D::Trap, 45 },
      { "Micro-BFD - UDP 6784 to 01:00:5e:90:00:01", { "MicroBfdPdu Priority Elevator" },
        D::Trap, 45, 9 },
   } );
}

TEST_P( L2Control, TrappedWithTheirTrafficClass ) {
   expectFates( s_, {
      { "STP BPDU - 01:80:c2:00:00:00", { "BPDU Priority Elevator" }, D::Trap, 47, 15 },
      { "LACP - 01:80:c2:00:00:02", { "LACPDU Priority Elevator" }, D::Trap, 46, 14 },
      { "LLDP - 01:80:c2:00:00:0e", { "LLDPDU Priority Elevator" }, D::Trap, 39, 13 },
      // The MACsec forward entry is installed disabled: EAPoL is a link-local
      // frame like LLDP until MACsec is configured.
      { "EAPoL start - 01:80:c2:00:00:03", { "LLDPDU Priority Elevator" }, D::Trap, 39, 13 },
   } );
}

TEST_P( Ptp, TrappedOnThePtpQueueWhenEnabled ) {
   if ( !s_.network().ptpEnabled ) {
      // Nothing sends the packets to the CPU; the entries' queue alone does not.
      expectFates( s_, {
         { "PTP - L2 multicast 01:1b:19:00:00:00", { "L2 Mcast PTP" }, D::None, {}, {}, true },
         { "PTP - IPv4 multicast 224.0.1.129 UDP 319", { "IPV4 MCAST PTP" }, D::None, {}, {},
           false, true },
      } );
      return;
   }
   expectFates( s_, {
      { "PTP - L2 multicast 01:1b:19:00:00:00", { "L2 Mcast PTP" }, D::Trap, 35 },
      { "PTP - L2 unicast to router MAC", { "L2 Unicast PTP" }, D::Trap, 35 },
      // Dropped from the front panel, trapped all the same.
      { "PTP - IPv4 multicast 224.0.1.129 UDP 319",
        withVlanRule( "IGMP Multicast MAC", { "IPV4 MCAST PTP" } ), D::Trap, 35, {}, false,
        true, vlanClass( 5 ) },
   } );
}

TEST_P( Ptp, L2PtpToAnAddressWithTheGroupBitInTheSecondBitIsNotMulticastPtp ) {
   Pipeline::EthernetHeader eth{ Pipeline::mac( "03:1b:19:00:00:00" ),
                                 s_.addresses().neighbourMac, {} };
   const FerroAcl::CoppRow row =
       s_.send( Pipeline::padToMinimum( Pipeline::ethernetFrame(
                    eth, 0x88f7, Pipeline::ptpMessage( 0, Pipeline::Bytes( 10, 0 ) ) ) ),
                s_.ingress() );
   // Still IEEE 1588 to the chip, so it reaches the CPU while PTP is on, but
   // by no entry: on the default queue, not PTP's 35.
   const bool ptp = s_.network().ptpEnabled;
   expectFate( row, { "L2 PTP to 03:1b:19:00:00:00", {}, ptp ? D::Trap : D::None,
                      ptp ? std::optional<uint32_t>( 1 ) : std::nullopt, {}, !ptp } );
}

TEST_P( SelfIpElevators, PickTheQueueByDscpAndVlanPriority ) {
   expectFates( s_, {
      { "Self IP - DSCP 46", { "RouterL3 Priority Elevator" }, D::Trap, 42 },
      { "Self IP - DSCP 48", { "RouterL3 DSCP 48-63 Elevator" }, D::Trap, 43 },
      { "Self IP - VLAN priority 7", { "RouterL3 Vlan Priority 6,7 Elevator" }, D::Trap, 43 },
      { "MLAG - TCP from peer port " + std::to_string( Pipeline::mlagPort ),
        withVlanRule( "MLAG L4 Source Port", { "RouterL3 Priority Elevator" } ), D::Trap, 42, {},
        false, false, vlanClass( 10 ) },
      { "MLAG - UDP heartbeat port " + std::to_string( Pipeline::mlagPort ),
        withVlanRule( "MLAG L4 Source Port", { "RouterL3 Priority Elevator" } ), D::Trap, 42, {},
        false, false, vlanClass( 10 ) },
   } );
}

TEST_P( SelfIpElevators, IpfixFromItsInPortOnly ) {
   if ( !is( "default" ) ) {
      expectFate( s_.send( "IPFIX - UDP 4739 to self" ),
                  { "IPFIX on a chip without it", { "RouterL3 Priority Elevator" }, D::Trap, 42 } );
      return;
   }
   const FerroAcl::CoppRow fromInPort = s_.send( "IPFIX - UDP 4739 to self" );
   EXPECT_EQ( fromInPort.ingress, ( Pipeline::PortRef{ 0, 1 } ) );
   expectFate( fromInPort, { "IPFIX from port 1", { "Ipfix Dst Port" }, D::Trap, 3 } );
   Pipeline::Bytes frame = Pipeline::ethernetFrame(
       { s_.network().routerMac, s_.addresses().neighbourMac, {} }, 0x0800,
       Pipeline::ipv4Packet( { .src = s_.addresses().neighbourV4.v4,
                               .dst = s_.addresses().selfV4.v4, .protocol = 17 },
                             Pipeline::udpDatagram( 50000, 4739, Pipeline::Bytes( 16, 0 ) ) ) );
   expectFate( s_.send( frame, { 0, 2 } ),
               { "IPFIX from port 2", { "RouterL3 Priority Elevator" }, D::Trap, 42 } );
}

// WESP (IP protocol 141) to the switch itself takes the workaround's elevator,
// with the egress class that keeps it from being parsed as ESP; transit ESP
// gets its class from the protocol match and is forwarded.
TEST_P( SelfIpElevators, EspWorkaroundClassesWespAndEsp ) {
   const Pipeline::CanonicalAddresses& a = s_.addresses();
   const auto frame = [&]( Pipeline::Ipv4Address dst, uint8_t protocol ) {
      return Pipeline::ethernetFrame(
          { s_.network().routerMac, a.neighbourMac, {} }, 0x0800,
          Pipeline::ipv4Packet(
              { .src = a.neighbourV4.v4, .dst = dst, .protocol = protocol, .tos = 48 << 2 },
              Pipeline::Bytes( 24, 0 ) ) );
   };
   const Pipeline::Ipv4Address transit = Pipeline::ipv4( "10.0.0.2" );  // a neighbour
   const FerroAcl::CoppRow wesp = s_.send( frame( a.selfV4.v4, 141 ), s_.ingress() );
   const FerroAcl::CoppRow esp = s_.send( frame( transit, 50 ), s_.ingress() );
   if ( !is( "espwar-wesp-protocol" ) ) {
      EXPECT_EQ( ruleNames( wesp ), Strings{ "RouterL3 DSCP 48-63 Elevator" } );
      EXPECT_EQ( wesp.fate.newClassId, std::nullopt );
      EXPECT_EQ( ruleNames( esp ), Strings{} );
      EXPECT_TRUE( esp.fate.forwarded );
      return;
   }
   expectFate( wesp, { "WESP to self", { "RouterL3 DSCP 48-63 Elevator WESP WAR" }, D::Trap, 43 } );
   EXPECT_EQ( wesp.fate.newClassId, 24u );
   EXPECT_EQ( wesp.fate.egressClassSelect, 11u );
   expectFate( esp, { "ESP in transit", { "ESP Protocol Match" }, D::None, {}, {}, true } );
   EXPECT_EQ( esp.fate.newClassId, 25u );
   EXPECT_EQ( esp.fate.egressClassSelect, 11u );
}

TEST_P( Glean, TrappedOnTheGleanQueue ) {
   // Tomahawk (unit 0 of espwar) gleans by the CPU next hop, which the shared
   // state disables: glean reaches the CPU on the default queue, by no entry.
   const Strings rule = is( "nexthop-glean-aclgroup" ) ? Strings{ "NextHopToCpu, Glean" }
                        : is( "espwar-wesp-protocol" ) ? Strings{}
                                                       : Strings{ "Glean packets to CPU" };
   const uint32_t queue = is( "espwar-wesp-protocol" ) ? 1 : 31;
   expectFate( s_.send( "Glean - IPv4 to an unresolved host" ),
               { "Glean - IPv4 to an unresolved host", rule, D::Trap, queue } );
}

// Only chips that glean by the CPU next hop exclude ICMPv6. The exclude entry
// sets no queue: the packet keeps the default one.
TEST( NextHopGlean, Icmpv6GleanExcludeWinsOverGlean ) {
   const CoppSwitch s( "nexthop-glean-aclgroup" );
   expectFate( s.send( "Glean - ICMPv6 echo to an unresolved host" ),
               { "Glean - ICMPv6 echo to an unresolved host",
                 { "ICMPv6 NextHopToCpu, Glean exclude" }, D::Trap, 1 } );
}

TEST_P( Ipv6Neighbours, MldIsTrappedAndNdIsCopiedOrElevated ) {
   const Strings mld = is( "default" ) || vlanClasses() ? Strings{ "ICMPv6 MLD Messages" }
                                                        : Strings{};
   expectFates( s_, {
      // The MLD entry marks MLD and sets no queue.
      { "MLD query - ff02::1", withVlanRule( "MLD Listener Query", mld ), D::Trap, 1, {},
        false, false, vlanClass( 16 ) },
      { "MLDv2 report - ff02::16", withVlanRule( "MLD V2 Report", mld ), D::Trap, 1, {}, false,
        false, vlanClass( 16 ) },
      { "ICMPv6 ND - neighbour solicitation", withVlanRule( "ICMPv6 ND Solicit", {} ), D::Copy,
        1, {}, true, false, vlanClass( 14 ) },
      { "IPv6 link-local multicast - ff02::1", {}, D::Copy, 1, {}, true },
   } );
   expectFate( s_.send( "ICMPv6 ND - neighbour advertisement" ),
               { "ICMPv6 ND - neighbour advertisement",
                 withVlanRule( "ICMPv6 ND Advertisement", { "RouterL3 Priority Elevator" } ),
                 D::Trap, 42, {}, false, false, vlanClass( 17 ) } );
}

TEST_P( Ipv6Neighbours, Icmpv6EchoIsNotMld ) {
   const Pipeline::CanonicalAddresses& a = s_.addresses();
   const Pipeline::Bytes echo = Pipeline::ethernetFrame(
       { s_.network().routerMac, a.neighbourMac, {} }, 0x86DD,
       Pipeline::ipv6Packet( { .src = a.neighbourV6.v6, .dst = a.selfV6.v6, .nextHeader = 58 },
                             Pipeline::icmpMessage( 128, 0, Pipeline::Bytes( 8, 0 ) ) ) );
   expectFate( s_.send( echo, s_.ingress() ),
               { "ICMPv6 echo to self", { "RouterL3 Priority Elevator" }, D::Trap, 42 } );
}

TEST_P( HostProtocols, ReachTheCpuByTheSwitchItself ) {
   expectFates( s_, {
      { "DHCPv4 discover - broadcast", withVlanRule( "DHCPv4 Client L4 Source Port", {} ),
        D::Copy, 1, {}, true, false, vlanClass( 15 ) },
      { "DHCPv6 solicit - ff02::1:2", {}, D::Copy, 1, {}, true },
      { "IGMP query - 224.0.0.1", withVlanRule( "IGMP Flood Link Local", {} ), D::Trap, 1, {},
        false, false, vlanClass( 4 ) },
      { "IGMPv3 report - 224.0.0.22", withVlanRule( "IGMP Flood Link Local", {} ), D::Trap, 1,
        {}, false, false, vlanClass( 4 ) },
      { "ARP request - broadcast", {}, D::Copy, 1, {}, true },
      { "ARP reply - to router MAC", {}, D::Trap, 1 },
      { "LDP hello - UDP 646 to 224.0.0.2", withVlanRule( "IGMP Flood Link Local", {} ),
        D::Copy, 1, {}, true, false, vlanClass( 4 ) },
   } );
}

// The canonical MLAG packets use the port the VLAN-stage class rule matches.
static_assert( Pipeline::mlagPort == FerroTcamSystemAcl::MLAG_L4_PORT );

INSTANTIATE_TEST_SUITE_P( Profiles, RoutingProtocols, testing::ValuesIn( fateProfiles() ) );
INSTANTIATE_TEST_SUITE_P( Profiles, Bfd, testing::ValuesIn( fateProfiles() ) );
INSTANTIATE_TEST_SUITE_P( Profiles, L2Control, testing::ValuesIn( fateProfiles() ) );
INSTANTIATE_TEST_SUITE_P( Profiles, Ptp, testing::ValuesIn( fateProfiles() ) );
INSTANTIATE_TEST_SUITE_P( Profiles, SelfIpElevators, testing::ValuesIn( fateProfiles() ) );
INSTANTIATE_TEST_SUITE_P( Profiles, Glean, testing::ValuesIn( fateProfiles() ) );
INSTANTIATE_TEST_SUITE_P( Profiles, Ipv6Neighbours, testing::ValuesIn( fateProfiles() ) );
INSTANTIATE_TEST_SUITE_P( Profiles, HostProtocols, testing::ValuesIn( fateProfiles() ) );

}  // namespace
}  // namespace CoppTest
