#include "tools/ferro-acl/NetworkProfile.h"

#include <gtest/gtest.h>

#include "tools/ferro-acl/DefaultProfile.h"
#include "tools/ferro-acl/NetworkOptions.h"
#include "tools/ferro-acl/ProfileLoader.h"
#include "tools/ferro-acl/RunOptions.h"

using namespace FerroAcl;
using Pipeline::PortRef;

namespace {

// One unit of 17 logical ports, with `network` as its network section.
std::string profile( const std::string& network ) {
   return R"({"chips":{"T":{"chipType":1,"model":2,"attributes":{"portCount":17}}},)"
          R"("units":[{"unit":0,"modId":0,"chip":"T"}],"network":{)" +
          network + "}}";
}

Result<Pipeline::NetworkContext> network( const std::string& section ) {
   const std::string text = profile( section );
   Result<Agent::SwitchConfig> config = parseProfile( text, "n.json" );
   EXPECT_TRUE( config ) << config.error();
   return parseNetwork( text, "n.json", config.value() );
}

const std::string vlan10 =
    R"("interfaces":[{"name":"Vlan10","vlan":10,"ports":["0:1-4","0:9"],)"
    R"("addresses":["10.0.0.1/24","2001:db8::1/64"]}])";

}  // namespace

TEST( NetworkProfile, EveryKeyReachesTheContext ) {
   const auto result = network(
       R"("routerMac":"02:1c:73:00:00:09","defaultCpuQueue":47,"ptpEnabled":true,)" + vlan10 +
       R"(,"neighbours":[{"address":"10.0.0.2","mac":"02:00:00:00:00:02","port":"0:2"}],)"
       R"("gateways":["10.0.0.2"],"multicastRoutes":[{"group":"239.1.1.1","cpuOif":true},)"
       R"({"group":"ff0e::1"}],"stpBlockedPorts":["0:3"],"vxlanDecapPorts":["0:10-11"],)"
       R"("higigPorts":["0:16"])" );
   ASSERT_TRUE( result ) << result.error();
   const Pipeline::NetworkContext& n = result.value();
   EXPECT_EQ( Pipeline::toString( n.routerMac ), "02:1c:73:00:00:09" );
   EXPECT_EQ( n.defaultCpuQueue, 47u );
   EXPECT_TRUE( n.ptpEnabled );
   ASSERT_EQ( n.interfaces.size(), 1u );
   EXPECT_EQ( n.interfaces[0].ports,
              ( std::vector<PortRef>{ { 0, 1 }, { 0, 2 }, { 0, 3 }, { 0, 4 }, { 0, 9 } } ) );
   EXPECT_EQ( Pipeline::toString( n.interfaces[0].addresses[1] ), "2001:db8::1/64" );
   ASSERT_EQ( n.neighbours.size(), 1u );
   EXPECT_EQ( n.neighbours[0].port, ( PortRef{ 0, 2 } ) );
   EXPECT_EQ( n.gateways.size(), 1u );
   EXPECT_TRUE( n.multicastRoutes[0].cpuOif );
   EXPECT_FALSE( n.multicastRoutes[1].cpuOif );
   EXPECT_EQ( n.stpBlockedPorts, ( std::vector<PortRef>{ { 0, 3 } } ) );
   EXPECT_EQ( n.vxlanDecapPorts, ( std::vector<PortRef>{ { 0, 10 }, { 0, 11 } } ) );
   EXPECT_EQ( n.higigPorts, ( std::vector<PortRef>{ { 0, 16 } } ) );
   // Port 1 is first and routed; blocked port 3 and HiGig port 16 never are.
   EXPECT_EQ( n.firstRoutedPort(), ( PortRef{ 0, 1 } ) );
}

TEST( NetworkProfile, MistakesNameTheFieldAndWhatWasExpected ) {
   const std::pair<std::string, std::string> cases[] = {
       { R"("colour":1)",
         "n.json: network.colour: unknown key; expected one of routerMac, defaultCpuQueue, "
         "ptpEnabled, interfaces, neighbours, gateways, multicastRoutes, stpBlockedPorts, "
         "vxlanDecapPorts, higigPorts" },
       { R"("routerMac":"00:1c:73:00:00")",
         "n.json: network.routerMac: expected a MAC address as \"00:1c:73:00:00:01\", got "
         "\"00:1c:73:00:00\"" },
       { R"("defaultCpuQueue":48)",
         "n.json: network.defaultCpuQueue: expected an integer 0-47, got 48" },
       { R"("interfaces":[{"name":"V","vlan":10,"ports":["0:17"]}])",
         "n.json: network.interfaces[0].ports[0]: expected front-panel ports 1-16 of unit 0, "
         "got \"0:17\"" },
       { R"("interfaces":[{"name":"V","vlan":10,"ports":["0:0"]}])",
         "n.json: network.interfaces[0].ports[0]: expected front-panel ports 1-16 of unit 0, "
         "got \"0:0\"" },
       { R"("interfaces":[{"name":"V","vlan":10,"ports":["1:3"]}])",
         "n.json: network.interfaces[0].ports[0]: the profile has no unit 1" },
       { R"("interfaces":[{"name":"V","vlan":10,"ports":["0:3","0:1-4"]}])",
         "n.json: network.interfaces[0].ports[1]: port 0:3 listed twice" },
       { R"("interfaces":[{"name":"V","vlan":10,"ports":["3"]}])",
         "n.json: network.interfaces[0].ports[0]: expected UNIT:PORT or UNIT:FIRST-LAST, got "
         "\"3\"" },
       { R"("interfaces":[{"name":"V","vlan":4095,"ports":[]}])",
         "n.json: network.interfaces[0].vlan: expected an integer 1-4094, got 4095" },
       { R"("interfaces":[{"name":"A","vlan":5,"ports":[]},{"name":"B","vlan":5,"ports":[]}])",
         "n.json: network.interfaces[1].vlan: VLAN 5 listed twice" },
       { R"("interfaces":[{"name":"V","vlan":10,"ports":[],"addresses":["10.0.0.1"]}])",
         "n.json: network.interfaces[0].addresses[0]: expected a unicast address with its "
         "prefix length, as \"10.0.0.1/24\", got \"10.0.0.1\"" },
       { vlan10 + R"(,"neighbours":[{"address":"10.0.1.2","mac":"02:00:00:00:00:02","port":"0:2"}])",
         "n.json: network.neighbours[0].address: expected an address of a connected subnet "
         "that is not the switch's own, got \"10.0.1.2\"" },
       { vlan10 + R"(,"neighbours":[{"address":"10.0.0.1","mac":"02:00:00:00:00:02","port":"0:2"}])",
         "n.json: network.neighbours[0].address: expected an address of a connected subnet "
         "that is not the switch's own, got \"10.0.0.1\"" },
       { vlan10 + R"(,"neighbours":[{"address":"10.0.0.2","mac":"02:00:00:00:00:02","port":"0:2-3"}])",
         "n.json: network.neighbours[0].port: expected UNIT:PORT, got \"0:2-3\"" },
       { vlan10 + R"(,"gateways":["10.0.0.3"])",
         "n.json: network.gateways[0]: expected the address of one of the neighbours, got "
         "\"10.0.0.3\"" },
       { R"("multicastRoutes":[{"group":"224.0.0.5"}])",
         "n.json: network.multicastRoutes[0].group: expected a routable multicast group (not "
         "224.0.0.0/24 or ff02::/16), got \"224.0.0.5\"" },
   };
   for ( const auto& [section, message] : cases ) {
      SCOPED_TRACE( section );
      const auto result = network( section );
      ASSERT_FALSE( result );
      EXPECT_EQ( result.error(), message );
   }
}

TEST( NetworkProfile, EmbeddedDefaultRoutesVlan10FromPortOne ) {
   const Result<AgentSetup> setup = loadSetup( "" );
   ASSERT_TRUE( setup ) << setup.error();
   EXPECT_EQ( setup.value().network.firstRoutedPort(), ( PortRef{ 0, 1 } ) );
   const Pipeline::Interface* vlan10 = setup.value().network.vlanInterface( 10 );
   ASSERT_NE( vlan10, nullptr );
   EXPECT_TRUE( vlan10->routed() );
   EXPECT_NE( setup.value().network.owner( *Pipeline::parseIpAddress( "10.0.0.1" ) ), nullptr );
}

TEST( NetworkOptions, OverridesAndTheirMistakes ) {
   const Result<AgentSetup> setup = loadSetup( "" );
   ASSERT_TRUE( setup ) << setup.error();
   NetworkOptions options;
   options.inPort = "1:3";
   options.selfIps = { "192.0.2.1", "2001:db8:5::1" };
   options.routerMac = "any";
   std::optional<NetworkSetup> prepared = prepareNetwork( options, setup.value() );
   ASSERT_TRUE( prepared );
   EXPECT_EQ( prepared->ingress, ( PortRef{ 1, 3 } ) );
   EXPECT_TRUE( prepared->network.anyRouterMac );
   const Pipeline::Interface* owner =
       prepared->network.owner( *Pipeline::parseIpAddress( "192.0.2.1" ) );
   ASSERT_NE( owner, nullptr );
   EXPECT_EQ( owner, prepared->network.nativeInterface( { 1, 3 } ) );
   EXPECT_NE( prepared->network.connected( *Pipeline::parseIpAddress( "192.0.2.200" ) ), nullptr );
   EXPECT_NE( prepared->network.connected( *Pipeline::parseIpAddress( "2001:db8:5::ff" ) ),
              nullptr );

   const std::pair<NetworkOptions, std::string> mistakes[] = {
       { { {}, "", "0:65", "" },
         "ferro-acl: --in-port \"0:65\": expected front-panel ports 1-64 of unit 0, got \"0:65\"\n" },
       { { {}, "", "2:1", "" }, "ferro-acl: --in-port \"2:1\": the profile has no unit 2\n" },
       { { {}, "00-1c-73-00-00-01", "", "" },
         "ferro-acl: --router-mac \"00-1c-73-00-00-01\": expected a MAC address as "
         "00:1c:73:00:00:01, or any\n" },
       { { { "239.1.1.1" }, "", "", "" },
         "ferro-acl: --self-ip \"239.1.1.1\": expected a unicast IPv4 or IPv6 address\n" },
       { { {}, "", "", "/nonexistent.scenario" },
         "ferro-acl: /nonexistent.scenario: cannot read the scenario file\n" },
   };
   for ( const auto& [bad, message] : mistakes ) {
      testing::internal::CaptureStderr();
      EXPECT_FALSE( prepareNetwork( bad, setup.value() ) );
      EXPECT_EQ( testing::internal::GetCapturedStderr(), message );
   }
}
