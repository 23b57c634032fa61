// The switch model's stages before the field processor, on a chip with no
// entries: the metadata each frame gets and the reasons the chip itself sends
// it to the CPU. The system ACL's effect on these packets is the copp tests'.
#include <gtest/gtest.h>

#include "pipeline/PacketBuilder.h"
#include "pipeline/SwitchModel.h"
#include "platform/agent/FerroCommon.h"

namespace Pipeline {
namespace {

using R = CpuReason;

const MacAddress routerMac = mac( "00:1c:73:00:00:01" );
const MacAddress peerMac = mac( "02:00:00:00:00:02" );

NetworkContext testNetwork() {
   NetworkContext n;
   n.routerMac = routerMac;
   n.defaultCpuQueue = 7;
   n.interfaces = {
       { "Vlan10", 10, { { 0, 1 }, { 0, 2 }, { 0, 3 }, { 0, 4 } },
         { *parseIpPrefix( "10.0.0.1/24" ), *parseIpPrefix( "2001:db8::1/64" ) } },
       { "Vlan30", 30, { { 0, 5 }, { 0, 6 }, { 0, 1 } }, {} },
   };
   n.neighbours = { { *parseIpAddress( "10.0.0.2" ), peerMac, { 0, 2 } } };
   n.multicastRoutes = { { *parseIpAddress( "239.1.1.1" ), true },
                         { *parseIpAddress( "239.1.1.2" ), false } };
   n.stpBlockedPorts = { { 0, 4 } };
   n.vxlanDecapPorts = { { 0, 6 } };
   return n;
}

Bytes ipv4To( const char* dst, uint8_t protocol, Bytes payload, MacAddress dstMac = routerMac,
              uint8_t ttl = 64, std::vector<VlanTagHeader> tags = {} ) {
   return ethernetFrame( { .dst = dstMac, .src = peerMac, .tags = tags }, 0x0800,
                         ipv4Packet( { .src = ipv4( "10.0.0.2" ), .dst = ipv4( dst ),
                                       .protocol = protocol, .ttl = ttl },
                                     payload ) );
}
Bytes bgpTo( const char* dst, std::vector<VlanTagHeader> tags = {} ) {
   return ipv4To( dst, 6, tcpSegment( 50000, 179, TcpFlag::Syn, {} ), routerMac, 64, tags );
}
Bytes ipv6To( const char* dst, const MacAddress& dstMac, uint8_t nextHeader, Bytes payload,
              std::vector<Ipv6ExtensionHeader> extensions = {} ) {
   return ethernetFrame( { .dst = dstMac, .src = peerMac }, 0x86DD,
                         ipv6Packet( { .src = ipv6( "fe80::2" ), .dst = ipv6( dst ),
                                       .nextHeader = nextHeader, .extensions = extensions },
                                     payload ) );
}
Bytes ptpL2() {
   return ethernetFrame( { .dst = mac( "01:1b:19:00:00:00" ), .src = peerMac }, 0x88F7,
                         ptpMessage( 0, Bytes( 10, 0 ) ) );
}

class SwitchModelTest : public ::testing::Test {
  protected:
   void SetUp() override {
      auto& chip = Sim::FieldProcessor::instance();
      chip.reset();
      ASSERT_EQ( chip.attachUnit( 0, Sim::UnitConfig{} ), BCM_E_NONE );
   }
   Classification run( const Bytes& frame, PortRef in = { 0, 1 },
                       UnitModel unit = { 0, 0, true, false } ) {
      return SwitchModel( network, { unit } ).classify( frame, in );
   }
   NetworkContext network = testNetwork();
};

struct ReasonCase {
   const char* name;
   std::function<Bytes()> frame;
   PortRef in;
   std::vector<CpuReason> reasons;
   CpuDelivery toCpu;
   bool forwarded;
   std::string dropReason;
};

// Each case is one of the reasons a real chip sends a packet to the CPU, or a
// near miss of one.
TEST_F( SwitchModelTest, ReasonsAndFateWithoutEntries ) {
   const ReasonCase cases[] = {
       { "self IP", [] { return bgpTo( "10.0.0.1" ); }, { 0, 1 }, { R::SelfIp },
         CpuDelivery::Trap, false, "" },
       { "glean", [] { return bgpTo( "10.0.0.9" ); }, { 0, 1 }, { R::Glean },
         CpuDelivery::Trap, false, "" },
       { "resolved neighbour", [] { return bgpTo( "10.0.0.2" ); }, { 0, 1 }, {},
         CpuDelivery::None, true, "" },
       { "no route", [] { return bgpTo( "192.0.2.1" ); }, { 0, 1 }, {}, CpuDelivery::None,
         false, "no route" },
       { "TTL 1 routed", [] { return ipv4To( "10.0.0.2", 17, udpDatagram( 1, 2, {} ), routerMac, 1 ); },
         { 0, 1 }, { R::TtlExpired }, CpuDelivery::Trap, false, "" },
       { "TTL 1 to self", [] { return ipv4To( "10.0.0.1", 17, udpDatagram( 1, 2, {} ), routerMac, 1 ); },
         { 0, 1 }, { R::SelfIp }, CpuDelivery::Trap, false, "" },
       { "OSPF hello", [] { return ipv4To( "224.0.0.5", 89, Bytes( 20, 0 ), mac( "01:00:5e:00:00:05" ), 1 ); },
         { 0, 1 }, { R::LinkLocalMulticast }, CpuDelivery::Copy, true, "" },
       { "OSPF hello, unrouted VLAN", [] { return ipv4To( "224.0.0.5", 89, Bytes( 20, 0 ), mac( "01:00:5e:00:00:05" ), 1 ); },
         { 0, 5 }, {}, CpuDelivery::None, true, "" },
       { "multicast CPU OIF", [] { return ipv4To( "239.1.1.1", 17, udpDatagram( 1, 2, {} ), mac( "01:00:5e:01:01:01" ) ); },
         { 0, 1 }, { R::MulticastCpuOif }, CpuDelivery::Copy, true, "" },
       { "multicast without CPU OIF", [] { return ipv4To( "239.1.1.2", 17, udpDatagram( 1, 2, {} ), mac( "01:00:5e:01:01:02" ) ); },
         { 0, 1 }, {}, CpuDelivery::None, true, "" },
       { "BPDU on a blocking port", [] { return llcFrame( { .dst = mac( "01:80:c2:00:00:00" ) }, 0x42, 0x42, Bytes( 35, 0 ) ); },
         { 0, 4 }, { R::ReservedMac }, CpuDelivery::Trap, false, "" },
       { "self IP on a blocking port", [] { return bgpTo( "10.0.0.1" ); }, { 0, 4 }, {},
         CpuDelivery::None, false, "STP blocking" },
       { "tagged into an unrouted VLAN", [] { return bgpTo( "10.0.0.1", { { .vid = 30 } } ); },
         { 0, 1 }, {}, CpuDelivery::None, true, "" },
       { "tagged into a VLAN the port lacks", [] { return bgpTo( "10.0.0.1", { { .vid = 99 } } ); },
         { 0, 1 }, {}, CpuDelivery::None, false, "VLAN 99 not allowed on the port" },
       { "ARP request", [] { return ethernetFrame( { .dst = mac( "ff:ff:ff:ff:ff:ff" ) }, 0x0806, arpPacket( 1, peerMac, ipv4( "10.0.0.2" ), {}, ipv4( "10.0.0.1" ) ) ); },
         { 0, 1 }, { R::Broadcast }, CpuDelivery::Copy, true, "" },
       { "ARP reply", [] { return ethernetFrame( { .dst = routerMac }, 0x0806, arpPacket( 2, peerMac, ipv4( "10.0.0.2" ), routerMac, ipv4( "10.0.0.1" ) ) ); },
         { 0, 1 }, { R::RouterMacNonIp }, CpuDelivery::Trap, false, "" },
       { "IGMP report", [] { return ipv4To( "239.1.1.2", 2, Bytes( 8, 0 ), mac( "01:00:5e:01:01:02" ), 1 ); },
         { 0, 5 }, { R::IgmpSnooping }, CpuDelivery::Trap, false, "" },
       { "MLD report", [] { return ipv6To( "ff02::16", mac( "33:33:00:00:00:16" ), 58, icmpMessage( 143, 0, Bytes( 4, 0 ) ), { hopByHopRouterAlert() } ); },
         { 0, 1 }, { R::LinkLocalMulticast, R::MldSnooping }, CpuDelivery::Trap, false, "" },
       { "ICMPv6 echo to all nodes", [] { return ipv6To( "ff02::1", mac( "33:33:00:00:00:01" ), 58, icmpMessage( 128, 0, Bytes( 4, 0 ) ) ); },
         { 0, 1 }, { R::LinkLocalMulticast }, CpuDelivery::Copy, true, "" },
       { "reserved bridge address", [] { return ethernetFrame( { .dst = mac( "01:80:c2:00:00:01" ) }, 0x8808, Bytes( 46, 0 ) ); },
         { 0, 1 }, {}, CpuDelivery::None, false, "reserved bridge address" },
       { "port the chip lacks", [] { return bgpTo( "10.0.0.1" ); }, { 0, 70 }, {},
         CpuDelivery::None, false, "no such port" },
   };
   for ( const ReasonCase& c : cases ) {
      SCOPED_TRACE( c.name );
      const Classification result = run( c.frame(), c.in );
      EXPECT_EQ( result.fate.reasons, c.reasons );
      EXPECT_EQ( result.fate.toCpu, c.toCpu );
      EXPECT_EQ( result.fate.cpuQueue,
                 c.toCpu == CpuDelivery::None ? std::nullopt : std::optional<uint32_t>( 7 ) );
      EXPECT_EQ( result.fate.forwarded, c.forwarded );
      EXPECT_EQ( result.fate.dropReason, c.dropReason );
      EXPECT_EQ( result.fate.dropped, !c.dropReason.empty() );
   }
}

// Self-IP and glean traffic reach the field processor in the form the chip's
// L3 lookup gives them: a class, a next-hop id, or the CPU next hop's module.
TEST_F( SwitchModelTest, L3LookupResultFollowsTheChip ) {
   struct Chip {
      UnitModel unit;
      uint32_t selfClass, selfNextHop, gleanClass, gleanNextHop;
      bcm_module_t gleanModule;
   };
   const Chip chips[] = {
       { { 0, 3, true, false }, FerroCommon::selfIpClassId_, 0, FerroCommon::gleanClassId_, 0, 3 },
       { { 0, 3, false, false }, 0, FerroCommon::selfIpNextHopTcamId_, 0,
         FerroCommon::gleanNextHopTcamId_, 3 },
       { { 0, 3, false, true }, 0, FerroCommon::selfIpNextHopTcamId_, 0, 0,
         FerroCommon::cpuNhInvalidModId_ },
   };
   for ( const Chip& chip : chips ) {
      SCOPED_TRACE( testing::Message() << "class ids " << chip.unit.dstClassL3Supported
                                       << ", glean via CPU next hop "
                                       << chip.unit.gleanViaNextHopToCpu );
      const Sim::PacketFields self = run( bgpTo( "10.0.0.1" ), { 0, 1 }, chip.unit ).fields;
      EXPECT_EQ( self.dstClassL3, chip.selfClass );
      EXPECT_EQ( self.dstL3EgressNextHop, chip.selfNextHop );
      EXPECT_EQ( self.dstModid, 3 );
      EXPECT_EQ( self.srcModid, 3 );
      EXPECT_TRUE( self.l3Routable );
      const Sim::PacketFields glean = run( bgpTo( "10.0.0.9" ), { 0, 1 }, chip.unit ).fields;
      EXPECT_EQ( glean.dstClassL3, chip.gleanClass );
      EXPECT_EQ( glean.dstL3EgressNextHop, chip.gleanNextHop );
      EXPECT_EQ( glean.dstModid, chip.gleanModule );
      EXPECT_EQ( glean.packetRes, Shim::PacketRes::L3UcUnknown );
   }
   const Sim::PacketFields oif =
       run( ipv4To( "239.1.1.1", 17, udpDatagram( 1, 2, {} ), mac( "01:00:5e:01:01:01" ) ) ).fields;
   EXPECT_EQ( oif.dstClassL3, FerroCommon::classMcastCpuOif_ );
}

TEST_F( SwitchModelTest, PortVlanAndL2Metadata ) {
   const Classification routed = run( bgpTo( "10.0.0.1" ) );
   EXPECT_EQ( routed.vlan, 10 );
   EXPECT_EQ( routed.fields.inPort, 1 );
   EXPECT_EQ( routed.fields.interfaceClassL2, FerroCommon::VlanClassIds::classSviConfigured_ );
   EXPECT_EQ( routed.fields.interfaceClassVPort, 1u );
   EXPECT_EQ( routed.fields.stpState, BCM_STG_STP_FORWARD );
   EXPECT_FALSE( routed.fields.drop );

   const Classification unrouted = run( bgpTo( "10.0.0.1" ), { 0, 6 } );
   EXPECT_EQ( unrouted.vlan, 30 );
   EXPECT_EQ( unrouted.fields.interfaceClassL2, 0u );
   EXPECT_EQ( unrouted.fields.interfaceClassVPort, 0u );  // VXLAN-decapsulated
   EXPECT_FALSE( unrouted.fields.l3Routable );

   const Classification blocked = run( bgpTo( "10.0.0.1" ), { 0, 4 } );
   EXPECT_EQ( blocked.fields.stpState, BCM_STG_STP_BLOCK );
   EXPECT_TRUE( blocked.fields.drop );

   const Classification lldp = run( ethernetFrame(
       { .dst = mac( "01:80:c2:00:00:0e" ) }, 0x88CC, Bytes( 46, 0 ) ) );
   EXPECT_EQ( lldp.reservedMac, "link-local" );
   EXPECT_EQ( lldp.fields.dstClassL2, FerroCommon::classLldp_ );
   EXPECT_TRUE( lldp.fields.l2CacheHit );
   const Classification microBfd = run( ipv4To(
       "10.0.0.1", 17, udpDatagram( 49152, 6784, {} ), mac( "01:00:5e:90:00:01" ), 255 ) );
   EXPECT_EQ( microBfd.fields.dstClassL2, FerroCommon::classMicroBfd_ );
   const Classification plain = run( bgpTo( "10.0.0.2" ) );
   EXPECT_EQ( plain.fields.dstClassL2, 0u );
   EXPECT_FALSE( plain.fields.l2CacheHit );
}

TEST_F( SwitchModelTest, Ieee1588IsTrappedOnlyWhilePtpIsEnabled ) {
   const Classification off = run( ptpL2() );
   EXPECT_EQ( off.fields.packetRes, Shim::PacketRes::Ieee1588 );
   EXPECT_EQ( off.fate.toCpu, CpuDelivery::None );
   network.ptpEnabled = true;
   const Classification on = run( ptpL2() );
   EXPECT_EQ( on.fate.reasons, std::vector<CpuReason>{ R::Ieee1588 } );
   EXPECT_EQ( on.fate.toCpu, CpuDelivery::Trap );
}

TEST_F( SwitchModelTest, AnyRouterMacRoutesEveryUnicastDestination ) {
   const Bytes frame = ipv4To( "10.0.0.1", 6, tcpSegment( 1, 179, 0, {} ), peerMac );
   EXPECT_EQ( run( frame ).fate.reasons, std::vector<CpuReason>{} );
   network.anyRouterMac = true;
   EXPECT_EQ( run( frame ).fate.reasons, std::vector<CpuReason>{ R::SelfIp } );
   network.addSelfIp( *parseIpAddress( "192.0.2.7" ), { 0, 1 } );
   EXPECT_EQ( run( ipv4To( "192.0.2.7", 6, {}, peerMac ) ).fate.reasons,
              std::vector<CpuReason>{ R::SelfIp } );
   EXPECT_EQ( run( ipv4To( "192.0.2.8", 6, {}, peerMac ) ).fate.reasons,
              std::vector<CpuReason>{ R::Glean } );
}

// How the field processor's actions combine with the chip's reasons.
TEST( FateTest, ActionsAgainstChipReasons ) {
   const ChipVerdict trap{ { R::SelfIp }, "" };
   Sim::LookupResult lookup;
   lookup.ingress.cpuQueue = 38;
   Fate fate = decideFate( trap, lookup, 1 );
   EXPECT_EQ( fate.toCpu, CpuDelivery::Trap );
   EXPECT_EQ( fate.cpuQueue, 38u );

   // A CPU queue alone sends nothing to the CPU.
   fate = decideFate( {}, lookup, 1 );
   EXPECT_EQ( fate.toCpu, CpuDelivery::None );
   EXPECT_EQ( fate.cpuQueue, std::nullopt );
   EXPECT_TRUE( fate.forwarded );

   // SwitchToCpuCancel takes the chip's trap back and the packet is forwarded;
   // an entry's own copy survives it.
   lookup.ingress.switchToCpuCancel = true;
   fate = decideFate( trap, lookup, 1 );
   EXPECT_EQ( fate.toCpu, CpuDelivery::None );
   EXPECT_EQ( fate.cancelled, std::vector<CpuReason>{ R::SelfIp } );
   EXPECT_TRUE( fate.forwarded );
   lookup.ingress.copyToCpu = true;
   fate = decideFate( trap, lookup, 1 );
   EXPECT_EQ( fate.toCpu, CpuDelivery::Copy );
   EXPECT_EQ( fate.reasons, std::vector<CpuReason>{ R::AclCopy } );

   // A drop keeps the packet off the ports, not away from the CPU.
   Sim::LookupResult dropping;
   dropping.ingress.drop = true;
   dropping.ingress.internalPriority = 13;
   dropping.ingress.newClassId = 25;
   dropping.vlan.classDest = 9;
   fate = decideFate( { { R::Ieee1588 }, "" }, dropping, 1 );
   EXPECT_EQ( fate.toCpu, CpuDelivery::Trap );
   EXPECT_EQ( fate.cpuQueue, 1u );
   EXPECT_TRUE( fate.dropped );
   EXPECT_EQ( fate.dropReason, "ACL drop" );
   EXPECT_EQ( fate.trafficClass, 13u );
   EXPECT_EQ( fate.newClassId, 25u );
   EXPECT_EQ( fate.classDest, 9u );
   EXPECT_EQ( fate.egressClassSelect, std::nullopt );
}

}  // namespace
}  // namespace Pipeline
