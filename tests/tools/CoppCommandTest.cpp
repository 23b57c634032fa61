// ferro-acl copp as a script uses it: the JSON matrix of every unit, and the
// exit status of a bad network option.
#include <nlohmann/json.hpp>

#include "tests/tools/ToolProcess.h"

namespace FerroAclTest {
namespace {

using Json = nlohmann::json;

const Json* packetNamed( const Json& unit, const std::string& name ) {
   for ( const Json& packet : unit["packets"] ) {
      if ( packet["name"] == name ) {
         return &packet;
      }
   }
   return nullptr;
}

TEST( CoppCommand, JsonMatrixPerUnitFromItsFirstRoutedPort ) {
   const ToolRun run = runTool( { "copp", "--json" } );
   ASSERT_EQ( run.exitCode, 0 ) << run.err;
   const Json out = Json::parse( run.out );
   ASSERT_EQ( out["units"].size(), 2u );
   EXPECT_EQ( out["units"][0]["ingress"], "0:1" );
   EXPECT_EQ( out["units"][1]["ingress"], "1:1" );
   for ( const Json& unit : out["units"] ) {
      const Json* bgp = packetNamed( unit, "BGP - dst port 179" );
      ASSERT_TRUE( bgp );
      ASSERT_EQ( ( *bgp )["hits"].size(), 1u );
      const Json& hit = ( *bgp )["hits"][0];
      EXPECT_TRUE( hit["entry"].is_number_integer() );
      EXPECT_EQ( hit["stage"], "ingress" );
      EXPECT_EQ( hit["group"], "L3 control" );
      EXPECT_EQ( hit["rule"], "BGP - Dst Port" );
      EXPECT_EQ( ( *bgp )["toCpu"], "trap" );
      EXPECT_EQ( ( *bgp )["cpuQueue"], 38 );
      EXPECT_EQ( ( *bgp )["trafficClass"], nullptr );
      EXPECT_EQ( ( *bgp )["forwarded"], false );
      EXPECT_EQ( ( *bgp )["reasons"], Json::parse( R"(["self IP"])" ) );
      const Json* vrrp = packetNamed( unit, "VRRP - TTL 254" );
      ASSERT_TRUE( vrrp );
      EXPECT_EQ( ( *vrrp )["hits"], Json::array() );
      EXPECT_EQ( ( *vrrp )["toCpu"], "copy" );
   }
}

TEST( CoppCommand, InPortAloneAndTheIpfixPacketFromItsPort ) {
   const ToolRun run = runTool( { "copp", "--json", "--in-port", "0:9" } );
   ASSERT_EQ( run.exitCode, 0 ) << run.err;
   const Json out = Json::parse( run.out );
   ASSERT_EQ( out["units"].size(), 1u );
   EXPECT_EQ( out["units"][0]["ingress"], "0:9" );
   const Json* ipfix = packetNamed( out["units"][0], "IPFIX - UDP 4739 to self" );
   ASSERT_TRUE( ipfix );
   EXPECT_EQ( ( *ipfix )["ingress"], "0:1" );
   EXPECT_EQ( ( *ipfix )["hits"][0]["rule"], "Ipfix Dst Port" );
   EXPECT_EQ( ( *ipfix )["cpuQueue"], 3 );
}

TEST( CoppCommand, TextFitsTheTerminal ) {
   const ToolRun run = runTool( { "copp" } );
   ASSERT_EQ( run.exitCode, 0 ) << run.err;
   std::istringstream lines( run.out );
   for ( std::string line; std::getline( lines, line ); ) {
      EXPECT_LE( line.size(), 160u ) << line;
   }
   EXPECT_NE( run.out.find( "L3 control: BGP - Dst Port" ), std::string::npos )
       << run.out;
}

// --explain adds, per packet, the entry hit qualifier by qualifier and the
// entries missed before it, and says where the fate came from.
TEST( CoppCommand, ExplainSaysWhyEachPacketLandedWhereItDid ) {
   const ToolRun run = runTool( { "copp", "--json", "--explain", "--in-port", "0:1" } );
   ASSERT_EQ( run.exitCode, 0 ) << run.err;
   const Json matrix = Json::parse( run.out );
   for ( const Json& packet : matrix["units"][0]["packets"] ) {
      if ( packet["name"] != "VRRP - TTL 254" ) {
         continue;
      }
      const Json& explain = packet["explain"];
      bool vrrpMissedOnTtl = false;
      for ( const Json& group : explain["groups"] ) {
         for ( const Json& entry : group["entries"] ) {
            if ( entry["name"] == "VRRP" ) {
               EXPECT_EQ( entry["hit"], false );
               EXPECT_EQ( entry["qualifiers"],
                          Json::parse( R"([{"qualifier":"ttl","packet":"254","entry":"255",)"
                                       R"("matched":false}])" ) );
               vrrpMissedOnTtl = true;
            }
         }
      }
      EXPECT_TRUE( vrrpMissedOnTtl );
      EXPECT_EQ( explain["cpuReasons"], Json::parse( R"(["link-local multicast on a routed VLAN"])" ) );
      EXPECT_EQ( explain["queueFrom"], "the network's default" );
      return;
   }
   ADD_FAILURE() << "no VRRP - TTL 254 packet";
}

TEST( CoppCommand, BadNetworkOptionExitsTwo ) {
   const ToolRun run = runTool( { "copp", "--self-ip", "224.0.0.5" } );
   EXPECT_EQ( run.exitCode, 2 );
   EXPECT_EQ(
       run.err,
       "ferro-acl: --self-ip \"224.0.0.5\": expected a unicast IPv4 or IPv6 address\n" );
   EXPECT_EQ( run.out, "" );
}

}  // namespace
}  // namespace FerroAclTest
