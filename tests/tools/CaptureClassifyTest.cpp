// ferro-acl classify on captures of real protocol daemons (tests/data/README.md
// says how each was made). The captures were taken on the wire between the
// switch side (10.0.0.1, 00:1c:73:00:00:01) and its neighbour (10.0.0.2), the
// addresses of the default profile's VLAN 10, so every packet enters the
// default switch on its first routed port: those the neighbour sent are
// control traffic for the switch, those the switch side sent come back to it
// addressed to the neighbour and are forwarded.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "tests/tools/ToolProcess.h"

namespace FerroAclTest {
namespace {

using Json = nlohmann::json;

std::string capture( const std::string& name ) {
   return std::string( FERRO_TEST_DATA_DIR ) + "/" + name;
}

Json classify( const std::string& file, std::vector<std::string> extra = {} ) {
   std::vector<std::string> arguments{ "classify", "--pcap", capture( file ), "--json" };
   arguments.insert( arguments.end(), extra.begin(), extra.end() );
   const ToolRun run = runTool( arguments );
   EXPECT_EQ( run.exitCode, 0 ) << run.err;
   return Json::parse( run.out );
}

// What every packet whose summary holds `marker` must come to.
struct Expectation {
   const char* file;
   const char* marker;
   const char* rule;  // the ingress entry hit; "" for none
   const char* toCpu;
   int cpuQueue;  // -1: null
   bool dropped = false;
   int trafficClass = -1;
};

std::string ingressRule( const Json& packet ) {
   for ( const Json& hit : packet["hits"] ) {
      if ( hit["stage"] == "ingress" ) {
         return hit["name"];
      }
   }
   return "";
}

TEST( CaptureClassify, DaemonTrafficTakesTheQueueOfItsRule ) {
   const Expectation expectations[] = {
       // Sessions and hellos the neighbour sends the switch.
       { "bgp.pcap", "> 10.0.0.1:179", "BGP - Dst Port", "trap", 38 },
       { "bgp.pcap", "10.0.0.1:179 >", "", "none", -1 },
       { "ospf.pcap", "OSPF hello 10.0.0.2 > 224.0.0.5", "OSPFv2 - Multicast", "copy", 37 },
       { "ospf.pcap", "10.0.0.2 > 10.0.0.1", "OSPF - unicast", "trap", 37 },
       { "ospfv3.pcap", "fe80::2 > ff02::5", "OSPFv3 - Multicast", "copy", 37 },
       { "isis.pcap", "IS-IS", "ISIS IS-L1L2 Entry Fp Ports", "copy", 37, false, 6 },
       { "bfd.pcap", "10.0.0.2:49152 > 10.0.0.1:3784", "BFD", "trap", 45 },
       // Echo packets the neighbour loops back to itself through the switch.
       { "bfd.pcap", "10.0.0.2:3785 > 10.0.0.2:3785", "", "none", -1 },
       { "pim.pcap", "PIM hello 10.0.0.2", "PIM", "copy", 36 },
       { "pim.pcap", "IGMP", "", "trap", 1 },
       { "vrrp.pcap", "VRRP 10.0.0.1 > 224.0.0.18 ttl 255", "VRRP", "copy", 40 },
       { "vrrp.pcap", "VRRP fe80::21c:73ff:fe00:1 > ff02::12 ttl 255", "VRRP", "copy", 40 },
       // Reserved MACs: trapped by the L2 table, queued by the L2 elevators.
       { "lldp.pcap", "LLDP", "LLDPDU Priority Elevator", "trap", 39, false, 13 },
       { "lacp.pcap", "LACP", "LACPDU Priority Elevator", "trap", 46, false, 14 },
       { "stp.pcap", "STP", "BPDU Priority Elevator", "trap", 47, false, 15 },
       // PTP is enabled on the default switch; multicast over UDP is dropped
       // from forwarding while the CPU gets it.
       { "ptp-udp.pcap", "224.0.1.129", "IPV4 MCAST PTP", "trap", 35, true },
       { "ptp-l2.pcap", "PTP", "L2 Mcast PTP", "trap", 35 },
       // Host protocols: the chip's own reasons, no entry of the system ACL.
       { "nd-arp.pcap", "MLDv2 report fe80::2 > ff02::16", "ICMPv6 MLD Messages", "trap", 1 },
       { "nd-arp.pcap", "ICMP echo request 10.0.0.2 > 10.0.0.1", "RouterL3 Priority Elevator",
         "trap", 42 },
       { "nd-arp.pcap", "ICMPv6 echo request 2001:db8:0:10::2 > 2001:db8:0:10::1",
         "RouterL3 Priority Elevator", "trap", 42 },
       { "nd-arp.pcap", "ARP request who-has 10.0.0.1 tell 10.0.0.2", "", "copy", 1 },
       { "nd-arp.pcap", "neighbor solicitation 2001:db8:0:10::2 > ff02::1:ff00:1", "", "copy", 1 },
       { "dhcp.pcap", "DHCP 0.0.0.0:68 > 255.255.255.255:67", "", "copy", 1 },
       { "dhcpv6.pcap", "> [ff02::1:2]:547", "", "copy", 1 },
       { "igmp.pcap", "IGMP", "", "trap", 1 },
   };
   std::map<std::string, Json> results;
   for ( const Expectation& e : expectations ) {
      SCOPED_TRACE( std::string( e.file ) + ": " + e.marker );
      if ( !results.count( e.file ) ) {
         results[e.file] = classify( e.file );
      }
      int seen = 0;
      for ( const Json& packet : results[e.file]["packets"] ) {
         const std::string summary = packet["summary"];
         if ( summary.find( e.marker ) == std::string::npos ) {
            continue;
         }
         ++seen;
         SCOPED_TRACE( "packet " + std::to_string( int( packet["index"] ) ) + ": " + summary );
         const Json& fate = packet["fate"];
         EXPECT_EQ( ingressRule( packet ), e.rule );
         EXPECT_EQ( fate["toCpu"], e.toCpu );
         EXPECT_EQ( fate["cpuQueue"], e.cpuQueue < 0 ? Json() : Json( e.cpuQueue ) );
         EXPECT_EQ( fate["dropped"], e.dropped );
         EXPECT_EQ( fate["trafficClass"], e.trafficClass < 0 ? Json() : Json( e.trafficClass ) );
      }
      EXPECT_GT( seen, 0 ) << "no packet of " << e.file << " holds \"" << e.marker << "\"";
   }
}

// The same capture taken on a host: on a port of a VLAN without a routed
// interface nothing is the switch's; --self-ip and --router-mac any make it so.
TEST( CaptureClassify, OverridesMakeAHostCaptureTheSwitchsOwn ) {
   const Json plain = classify( "bgp.pcap", { "--in-port", "0:17" } );
   EXPECT_EQ( plain["summary"]["byRule"].size(), 0u );
   EXPECT_EQ( plain["summary"]["byQueue"]["none"], 24 );
   const Json owned = classify(
       "bgp.pcap", { "--in-port", "0:17", "--self-ip", "10.0.0.1", "--router-mac", "any" } );
   for ( const Json& packet : owned["packets"] ) {
      const std::string summary = packet["summary"];
      SCOPED_TRACE( summary );
      const bool toSwitch = summary.find( "> 10.0.0.1:179" ) != std::string::npos;
      EXPECT_EQ( ingressRule( packet ), toSwitch ? "BGP - Dst Port" : "" );
   }
   EXPECT_EQ( owned["summary"]["byRule"]["BGP - Dst Port"], 12 );
}

// PTP mode 0 switches the chip's PTP trap off and disables the PTP entries:
// 224.0.1.129 is not link-local, so the packets are only forwarded.
TEST( CaptureClassify, ApplyRunsAScenarioBeforeThePackets ) {
   const std::string scenario = writeTempFile( "ptp-off.scenario", "ptp mode 0\n" );
   const Json off = classify( "ptp-udp.pcap", { "--apply", scenario } );
   ASSERT_EQ( off["packets"].size(), 40u );
   for ( const Json& packet : off["packets"] ) {
      SCOPED_TRACE( packet["summary"].get<std::string>() );
      EXPECT_EQ( ingressRule( packet ), "" );
      EXPECT_EQ( packet["fate"]["toCpu"], "none" );
      EXPECT_EQ( packet["fate"]["dropped"], false );
   }
}

TEST( CaptureClassify, CapturesThatCannotBeReadEndInExitTwo ) {
   const ToolRun cut = runTool( { "classify", "--pcap", capture( "truncated.pcap" ), "--json" } );
   EXPECT_EQ( cut.exitCode, 2 );
   EXPECT_EQ( Json::parse( cut.out )["packets"].size(), 2u );
   EXPECT_EQ( cut.err, "ferro-acl: " + capture( "truncated.pcap" ) +
                           ": truncated capture: packet record 3 cut short\n" );
   const ToolRun cooked = runTool( { "classify", "--pcap", capture( "linux-cooked.pcap" ) } );
   EXPECT_EQ( cooked.exitCode, 2 );
   EXPECT_NE( cooked.err.find( "link type LINUX_SLL" ), std::string::npos ) << cooked.err;
   const ToolRun text = runTool( { "classify", "--pcap", capture( "not-a-capture.pcap" ) } );
   EXPECT_EQ( text.exitCode, 2 );
   EXPECT_EQ( text.out, "" );
}

TEST( CaptureClassify, PcapngClassifiesLikeItsSources ) {
   const Json mixed = classify( "mixed.pcapng" );
   std::map<std::string, int> rules;
   for ( const Json& packet : mixed["packets"] ) {
      ++rules[ingressRule( packet )];
   }
   EXPECT_GT( rules["BGP - Dst Port"], 0 );
   EXPECT_GT( rules["LLDPDU Priority Elevator"], 0 );
   EXPECT_GT( rules["BPDU Priority Elevator"], 0 );
   EXPECT_GT( rules["LACPDU Priority Elevator"], 0 );
   EXPECT_EQ( mixed["summary"]["packets"], 20 );
}

}  // namespace
}  // namespace FerroAclTest

namespace FerroAclTest {
namespace {

// --explain on a BGP packet to the switch: the entry hit with every qualifier
// matched, and the IS-IS and CPU-port entries looked at first with the
// qualifier each failed on.
TEST( CaptureClassify, ExplainNamesTheHitAndTheHigherEntriesMissed ) {
   const Json result = classify( "bgp.pcap", { "--explain" } );
   const Json& packet = result["packets"][0];
   ASSERT_NE( packet["summary"].get<std::string>().find( "> 10.0.0.1:179" ), std::string::npos );
   const Json& explain = packet["explain"];
   const Json* l3 = nullptr;
   for ( const Json& group : explain["groups"] ) {
      if ( group["group"] == "L3 control" ) {
         l3 = &group;
      }
   }
   ASSERT_NE( l3, nullptr );
   std::map<std::string, Json> entries;
   for ( const Json& entry : ( *l3 )["entries"] ) {
      entries[entry["name"]] = entry;
   }
   const Json& bgp = entries["BGP - Dst Port"];
   EXPECT_EQ( bgp["hit"], true );
   EXPECT_EQ( bgp["qualifiers"],
              Json::parse( R"([
                 {"qualifier":"dst-class-l3","packet":"1","entry":"1","matched":true},
                 {"qualifier":"l4-dst-port","packet":"179","entry":"179","matched":true},
                 {"qualifier":"ip-protocol","packet":"6","entry":"6","matched":true}])" ) );
   EXPECT_EQ( entries["ISIS IS-L1L2 Entry Fp Ports"]["qualifiers"],
              Json::parse( R"([{"qualifier":"dst-mac","packet":"00:1c:73:00:00:01",
                                "entry":"01:80:c2:00:00:14/ff:ff:ff:ff:ff:fe","matched":false}])" ) );
   EXPECT_EQ( entries["ISIS ALL-IS Entry Cpu Ports"]["hit"], false );
   EXPECT_EQ( entries["Redirect packets from CPU to CPU drop queue"]["qualifiers"],
              Json::parse( R"([{"qualifier":"in-ports","packet":"1","entry":"0","matched":false}])" ) );
   // The winner is the last entry of its group: nothing after it is looked at.
   EXPECT_EQ( ( *l3 )["entries"].back()["name"], "BGP - Dst Port" );
   EXPECT_EQ( explain["cpuReasons"], Json::parse( R"(["self IP"])" ) );
   EXPECT_EQ( explain["queueFrom"], "\"BGP - Dst Port\"" );

   const ToolRun text = runTool( { "classify", "--pcap", capture( "bgp.pcap" ), "--explain" } );
   EXPECT_NE( text.out.find( "        miss 1028 \"Redirect packets from CPU to CPU drop queue\" "
                             "(priority 252): in-ports 1 is not 0\n" ),
              std::string::npos )
       << text.out;
   EXPECT_NE( text.out.find( "      to CPU because: self IP; queue from \"BGP - Dst Port\"\n" ),
              std::string::npos );
}

}  // namespace
}  // namespace FerroAclTest
