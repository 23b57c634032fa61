// ferro-acl classify as a script runs it: the built tool on captures the
// test writes, its JSON read back field by field, its exit status and its
// messages.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "CaptureFiles.h"
#include "ToolProcess.h"
#include "pipeline/PacketBuilder.h"

using namespace FerroAclTest;
using namespace Pipeline;
using Json = nlohmann::json;

namespace {

// The default profile's network: Vlan10 (ports 0:1-8) owns 10.0.0.1 behind
// router MAC 00:1c:73:00:00:01, with 10.0.0.2 as a neighbour; the default
// route goes through 10.1.0.1.
const MacAddress routerMac = mac( "00:1c:73:00:00:01" );
const MacAddress peerMac = mac( "02:00:00:00:00:02" );

Frame bgpToSelfIp() {
   return ethernetFrame(
       { routerMac, peerMac, {} }, 0x0800,
       ipv4Packet(
           { .src = ipv4( "10.0.0.2" ), .dst = ipv4( "10.0.0.1" ), .protocol = 6 },
           tcpSegment( 52000, 179, TcpFlag::Syn, {} ) ) );
}

Frame lldp() {
   return ethernetFrame( { mac( "01:80:c2:00:00:0e" ), peerMac, {} }, 0x88CC,
                         Bytes( 46, 0 ) );
}

Frame transitUdp() {
   return ethernetFrame(
       { routerMac, peerMac, {} }, 0x0800,
       ipv4Packet(
           { .src = ipv4( "10.0.0.2" ), .dst = ipv4( "10.9.9.9" ), .protocol = 17 },
           udpDatagram( 40000, 5000, Bytes( 20, 0 ) ) ) );
}

const std::vector<Frame> threePackets = { bgpToSelfIp(), lldp(), transitUdp() };

struct CaptureRun {
   ToolRun run;
   std::string path;
};

CaptureRun classify( const std::string& capture, std::vector<std::string> options ) {
   const std::string path = writeTempFile( "capture.pcap", capture );
   options.insert( options.begin(), { "classify", "--pcap", path } );
   CaptureRun result{ runTool( options ), path };
   takeFile( path );
   return result;
}

// stage:group:name for each hit.
std::vector<std::string> hitsOf( const Json& packet ) {
   std::vector<std::string> hits;
   for ( const Json& hit : packet["hits"] ) {
      hits.push_back( hit["stage"].get<std::string>() + ":" +
                      hit["group"].get<std::string>() + ":" +
                      hit["name"].get<std::string>() );
   }
   return hits;
}

TEST( ClassifyRun, JsonSaysWhatEachPacketHitsAndWhereItGoes ) {
   const CaptureRun capture = classify( pcapCapture( threePackets ), { "--json" } );
   ASSERT_EQ( capture.run.exitCode, 0 ) << capture.run.err;
   EXPECT_EQ( capture.run.err, "" );
   const Json document = Json::parse( capture.run.out );
   const Json& packets = document["packets"];
   ASSERT_EQ( packets.size(), 3u );

   EXPECT_EQ( packets[0]["index"], 1 );
   EXPECT_EQ( packets[0]["summary"], "BGP 10.0.0.2:52000 > 10.0.0.1:179" );
   EXPECT_EQ( hitsOf( packets[0] ),
              std::vector<std::string>{ "ingress:L3 control:BGP - Dst Port" } );
   EXPECT_EQ( packets[0]["fate"]["toCpu"], "trap" );
   EXPECT_EQ( packets[0]["fate"]["cpuQueue"], 38 );
   EXPECT_EQ( packets[0]["fate"]["dropped"], false );

   EXPECT_EQ( packets[1]["index"], 2 );
   EXPECT_EQ( hitsOf( packets[1] ),
              std::vector<std::string>{ "ingress:L2 control:LLDPDU Priority Elevator" } );
   EXPECT_EQ( packets[1]["fate"]["toCpu"], "trap" );
   EXPECT_EQ( packets[1]["fate"]["cpuQueue"], 39 );
   EXPECT_EQ( packets[1]["fate"]["trafficClass"], 13 );

   EXPECT_EQ( packets[2]["index"], 3 );
   EXPECT_EQ( packets[2]["hits"], Json::array() );
   EXPECT_EQ( packets[2]["fate"]["toCpu"], "none" );
   EXPECT_EQ( packets[2]["fate"]["cpuQueue"], nullptr );

   EXPECT_EQ( document["summary"],
              Json::parse( R"({"packets":3,"byQueue":{"38":1,"39":1,"none":1},
                 "byRule":{"BGP - Dst Port":1,"LLDPDU Priority Elevator":1}})" ) );
}

TEST( ClassifyRun, PcapngGivesWhatPcapGives ) {
   const CaptureRun pcap = classify( pcapCapture( threePackets ), { "--json" } );
   const CaptureRun pcapng = classify( pcapngCapture( threePackets ), { "--json" } );
   ASSERT_EQ( pcapng.run.exitCode, 0 ) << pcapng.run.err;
   EXPECT_EQ( pcapng.run.out, pcap.run.out );
}

TEST( ClassifyRun, TextHasALinePerPacketThenTheCounts ) {
   const CaptureRun capture = classify( pcapCapture( threePackets ), {} );
   ASSERT_EQ( capture.run.exitCode, 0 ) << capture.run.err;
   EXPECT_EQ( capture.run.out.substr( 0, capture.run.out.find( "\n\n" ) ),
              "   1  BGP 10.0.0.2:52000 > 10.0.0.1:179 | ingress: BGP - Dst Port "
              "| trap to CPU queue 38\n"
              "   2  LLDP 02:00:00:00:00:02 > 01:80:c2:00:00:0e "
              "| ingress: LLDPDU Priority Elevator | trap to CPU queue 39, tc 13\n"
              "   3  UDP 10.0.0.2:40000 > 10.9.9.9:5000 | no entry | forwarded" );
   EXPECT_NE( capture.run.out.find( "\n\n3 packets\nby CPU queue:\n" ),
              std::string::npos )
       << capture.run.out;
}

TEST( ClassifyRun, ASnappedPacketSaysHowMuchWasCaptured ) {
   const CaptureRun capture =
       classify( pcapCapture( { bgpToSelfIp() }, linkTypeEthernet, 946 ), { "--json" } );
   ASSERT_EQ( capture.run.exitCode, 0 ) << capture.run.err;
   EXPECT_EQ( Json::parse( capture.run.out )["packets"][0]["summary"],
              "BGP 10.0.0.2:52000 > 10.0.0.1:179 (54 of 1000 bytes captured)" );
}

TEST( ClassifyRun, SummaryOnlyCountsWithoutListing ) {
   const CaptureRun capture =
       classify( pcapCapture( threePackets ), { "--json", "--summary" } );
   ASSERT_EQ( capture.run.exitCode, 0 ) << capture.run.err;
   const Json document = Json::parse( capture.run.out );
   EXPECT_EQ( document["packets"], Json::array() );
   EXPECT_EQ( document["summary"]["packets"], 3 );
   EXPECT_EQ( document["summary"]["byQueue"]["38"], 1 );
}

TEST( ClassifyRun, ATruncatedCaptureReportsThePacketsBeforeItThenFails ) {
   const std::string whole = pcapCapture( threePackets );
   const CaptureRun capture =
       classify( whole.substr( 0, whole.size() - 10 ), { "--json" } );
   EXPECT_EQ( capture.run.exitCode, 2 );
   EXPECT_EQ( capture.run.err, "ferro-acl: " + capture.path +
                                   ": truncated capture: packet record 3 cut short\n" );
   const Json document = Json::parse( capture.run.out );
   ASSERT_EQ( document["packets"].size(), 2u );
   EXPECT_EQ( document["packets"][1]["fate"]["cpuQueue"], 39 );
   EXPECT_EQ( document["summary"]["packets"], 2 );
}

TEST( ClassifyRun, ANonEthernetCaptureIsRefusedBeforeAnythingRuns ) {
   const CaptureRun capture =
       classify( pcapCapture( threePackets, linkTypeLinuxSll ), {} );
   EXPECT_EQ( capture.run.exitCode, 2 );
   EXPECT_EQ( capture.run.out, "" );
   EXPECT_EQ( capture.run.err,
              "ferro-acl: " + capture.path +
                  ": link type LINUX_SLL (Linux cooked v1), expected EN10MB "
                  "(Ethernet)\n" );
}

TEST( ClassifyRun, ABadIngressPortNamesTheOption ) {
   const CaptureRun capture =
       classify( pcapCapture( threePackets ), { "--in-port", "9:1" } );
   EXPECT_EQ( capture.run.exitCode, 2 );
   EXPECT_EQ( capture.run.out, "" );
   EXPECT_EQ( capture.run.err.rfind( "ferro-acl: --in-port \"9:1\": ", 0 ), 0u )
       << capture.run.err;
}

TEST( ClassifyRun, AMissingCaptureNamesTheFile ) {
   const ToolRun run = runTool( { "classify", "--pcap", "/nonexistent/capture.pcap" } );
   EXPECT_EQ( run.exitCode, 2 );
   EXPECT_EQ( run.out, "" );
   EXPECT_EQ( run.err,
              "ferro-acl: /nonexistent/capture.pcap: No such file or directory\n" );
}

}  // namespace
