// Scenarios: the grammar's errors as a person reads them, and events run on
// the default switch with the real helper library, seen as the changes
// `apply` reports.
#include "tools/ferro-acl/Scenario.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <filesystem>
#include <fstream>
#include <sstream>

#include "tools/ferro-acl/ApplyScenario.h"
#include "tools/ferro-acl/ChipStateDiff.h"
#include "tools/ferro-acl/DefaultProfile.h"
#include "tools/ferro-acl/HelperLoader.h"
#include "tools/ferro-acl/ProfileLoader.h"

using namespace FerroAcl;

namespace {

struct Malformed {
   const char* text;
   const char* error;
};

const Malformed malformed[] = {
   { "pim copy maybe", "s.scenario:1: unexpected 'maybe', expected 'on' or 'off'" },
   { "pim", "s.scenario:1: unexpected end of line, expected 'copy'" },
   { "ptp mode 9", "s.scenario:1: unexpected '9', expected a PTP mode 0..7" },
   { "ptp mode 3 flag on extra", "s.scenario:1: unexpected 'extra', expected end of line" },
   { "unit 0 vxlan on",
     "s.scenario:1: unexpected 'vxlan', expected 'ptp', 'pim', 'll-mcast', 'eapol' or 'verify'" },
   { "eapol mac 01:80:c2:00:00", "s.scenario:1: unexpected '01:80:c2:00:00', expected a MAC "
                                  "address xx:xx:xx:xx:xx:xx" },
   { "port add 0-5", "s.scenario:1: unexpected '0-5', expected UNIT:PORT" },
   { "l2pf cdp 0:5 all",
     "s.scenario:1: unexpected 'cdp', expected 'lacp', 'lldp', 'bpdu' or 'micro-bfd'" },
   { "ipfix exporter t1/e1 add",
     "s.scenario:1: unexpected 't1/e1', expected a tracker added earlier ('ipfix tracker t1 "
     "add')" },
   { "ipfix tracker t1 add\nipfix exporter t1/e1 add\nipfix collector t1/e1/c1 10.0.0.1",
     "s.scenario:3: unexpected '10.0.0.1', expected ADDRESS:PORT (a.b.c.d:PORT or "
     "[IPv6]:PORT) or 'remove'" },
   { "ipfix tracker t1 add\nipfix tracker t1 remove\nipfix local-collector t1 port 5 add on",
     "s.scenario:3: unexpected 't1', expected a tracker added earlier ('ipfix tracker t1 add')" },
   { "# comment\n\nfly", "s.scenario:3: unexpected 'fly', expected 'ptp', 'pim', 'll-mcast', "
                         "'eapol', 'verify', 'vxlan', 'port', 'l2pf' or 'ipfix'" },
};

TEST( Scenario, MalformedLinesNameFileLineTokenAndWhatWasExpected ) {
   for ( const Malformed& m : malformed ) {
      const Result<std::vector<ScenarioEvent>> parsed = parseScenario( m.text, "s.scenario" );
      ASSERT_FALSE( parsed ) << m.text;
      EXPECT_EQ( parsed.error(), m.error );
   }
}

TEST( Scenario, EveryEventKindParses ) {
   const char* text =
      "# every event kind\n"
      "unit 1 ptp mode 3 flag on   # boundary\n"
      "ptp tap-aggregation off\n"
      "pim copy on\n"
      "ll-mcast cancel off\n"
      "eapol mac 01:80:C2:00:00:0e\n"
      "eapol enable\n"
      "vxlan on\n"
      "port remove 0:64\n"
      "port add 0:64 mesa\n"
      "l2pf micro-bfd 1:3 vxlan-decap\n"
      "ipfix sw-export on\n"
      "ipfix tracker t1 add\n"
      "ipfix exporter t1/e1 add\n"
      "ipfix collector t1/e1/c6 [2001:db8::1]:4739\n"
      "ipfix collector t1/e1/c4 192.0.2.7:2055\n"
      "ipfix local-collector t1 port 6343 add on\n"
      "verify\n";
   const Result<std::vector<ScenarioEvent>> parsed = parseScenario( text, "all.scenario" );
   ASSERT_TRUE( parsed ) << parsed.error();
   const std::vector<ScenarioEvent>& e = parsed.value();
   ASSERT_EQ( e.size(), 17u );
   EXPECT_EQ( e[ 0 ].line, 2 );
   EXPECT_EQ( e[ 0 ].text, "unit 1 ptp mode 3 flag on" );
   EXPECT_EQ( e[ 0 ].unit, 1 );
   EXPECT_EQ( e[ 0 ].number, 3u );
   EXPECT_TRUE( e[ 0 ].flag );
   EXPECT_EQ( e[ 4 ].mac, Wirex::EthAddr( 0x01, 0x80, 0xC2, 0, 0, 0x0E ) );
   EXPECT_TRUE( e[ 8 ].mesa );
   EXPECT_EQ( e[ 9 ].protocol, Lamo::L2Pt::L2PtProtocol::microBfd );
   EXPECT_EQ( e[ 9 ].traffic, Lamo::L2Pt::l2PtTrafficTypeVxlanDecap );
   EXPECT_TRUE( e[ 13 ].ipv6 );
   EXPECT_EQ( e[ 13 ].ip6[ 0 ], 0x20 );
   EXPECT_EQ( e[ 14 ].ipv4, 0xC0000207u );
   EXPECT_EQ( e[ 14 ].collectorPort, 2055 );
   EXPECT_EQ( e[ 15 ].number, 6343u );

   const Result<Agent::SwitchConfig> config = parseProfile( defaultProfileText, "default" );
   ASSERT_TRUE( config );
   EXPECT_EQ( checkScenario( e, config.value(), "all.scenario" ), std::nullopt );
}

TEST( Scenario, CheckedAgainstTheSwitchItRunsOn ) {
   const Result<Agent::SwitchConfig> config = parseProfile( defaultProfileText, "default" );
   ASSERT_TRUE( config );
   const struct {
      const char* text;
      const char* error;
   } cases[] = {
      { "unit 4 pim copy on", "s:1: unexpected '4', expected a unit of the switch (0, 1)" },
      { "port remove 0:65", "s:1: unexpected '0:65', expected a front-panel port 1..64 of unit 0" },
      { "l2pf lldp 3:1 all", "s:1: unexpected '3:1', expected UNIT:PORT on a unit of the switch (0, 1)" },
      { "port add 0:5", "s:1: unexpected '0:5', expected a port removed earlier (every "
                        "front-panel port is present at bring-up)" },
      { "port remove 0:5\nport remove 0:5",
        "s:2: unexpected '0:5', expected a present port (it was removed earlier)" },
   };
   for ( const auto& c : cases ) {
      const auto parsed = parseScenario( c.text, "s" );
      ASSERT_TRUE( parsed ) << parsed.error();
      EXPECT_EQ( checkScenario( parsed.value(), config.value(), "s" ), c.error );
   }

   const std::string aclGroupProfile = FERRO_PROFILES_DIR "/nexthop-glean-aclgroup.json";
   const Result<Agent::SwitchConfig> aclGroups =
      parseProfile( readProfileText( aclGroupProfile ).value(), aclGroupProfile );
   ASSERT_TRUE( aclGroups );
   const auto mesa = parseScenario( "port remove 0:20\nport add 0:20 mesa", "s" );
   ASSERT_TRUE( mesa );
   EXPECT_EQ( checkScenario( mesa.value(), aclGroups.value(), "s" ),
              "s:2: unexpected 'mesa', expected none: this switch's entry managers use ACL "
              "groups, which take no Mesa fabric interfaces" );
}

// The default switch brought up and installed as the tool does, then a
// scenario applied; the report as JSON.
class ScenarioApply : public testing::Test {
 protected:
   void SetUp() override {
      const Result<Agent::SwitchConfig> config = parseProfile( defaultProfileText, "default" );
      ASSERT_TRUE( config );
      sw_ = Agent::bringUp( config.value() );
      auto loaded = HelperLibrary::open( FERRO_HELPER_LIB, "scenario" );
      ASSERT_TRUE( loaded ) << loaded.error();
      library_ = std::move( loaded.value() );
      sw_->attach( library_->helper() );
      plan_ = planBringup( config.value(), {} );
      for ( const PlannedCall& call : plan_.calls ) {
         ( library_->helper().*call.step->operation )( call.unit );
      }
   }
   nlohmann::json apply( const std::string& text ) {
      const auto parsed = parseScenario( text, "t" );
      EXPECT_TRUE( parsed ) << parsed.error();
      std::ostringstream out;
      applyScenario( parsed.value(), sw_, library_->helper(), plan_, true, out );
      return nlohmann::json::parse( out.str() )[ "events" ];
   }
   // The changes of one event as "unit rule change field before->after".
   static std::vector<std::string> lines( const nlohmann::json& event ) {
      std::vector<std::string> out;
      for ( const auto& change : event[ "changes" ] ) {
         std::string head = std::to_string( change[ "unit" ].get<int>() ) + " " +
                            change[ "rule" ].get<std::string>() + " " +
                            change[ "change" ].get<std::string>();
         if ( change[ "fields" ].empty() ) {
            out.push_back( head );
         }
         for ( const auto& f : change[ "fields" ] ) {
            const std::string field = f[ "field" ].get<std::string>();
            out.push_back( head + " " + field + " " + differenceText( field, f[ "before" ] ) +
                           "->" + differenceText( field, f[ "after" ] ) );
         }
      }
      return out;
   }
   std::unique_ptr<HelperLibrary> library_;  // outlives the switch
   Agent::Switch::Ptr sw_;
   BringupPlan plan_;
};

// Forwarding changes one unit's LLDP rule and back. A port that is not of the
// Mesa fabric re-binds the all-port rules only; the next forwarding change
// rebuilds the forwarding rules of every unit from the ports there are now.
TEST_F( ScenarioApply, PortAndForwardingEventsRebindTheirRules ) {
   const nlohmann::json events = apply( "l2pf lldp 1:10 all\nl2pf lldp 1:10 off\n"
                                        "port remove 0:64\nl2pf lacp 0:3 all\n" );
   EXPECT_EQ( lines( events[ 0 ] ),
              std::vector<std::string>{ "1 LLDPDU Priority Elevator changed qualifier InPorts "
                                        "1-64/0-64->1-9,11-64/0-64" } );
   EXPECT_EQ( lines( events[ 1 ] ),
              std::vector<std::string>{ "1 LLDPDU Priority Elevator changed qualifier InPorts "
                                        "1-9,11-64/0-64->1-64/0-64" } );
   const std::vector<std::string> removed = lines( events[ 2 ] );
   EXPECT_NE( std::find( removed.begin(), removed.end(),
                         "0 ISIS IS-L1L2 Entry Fp Ports changed qualifier InPorts 1-64/0-64->1-63/0-63" ),
              removed.end() );
   for ( const std::string& line : removed ) {
      EXPECT_EQ( line.find( "Elevator changed" ) == std::string::npos ||
                    line.find( "MicroBfdPdu" ) != std::string::npos,
                 true )
         << line;
   }
   EXPECT_EQ( lines( events[ 3 ] ),
              ( std::vector<std::string>{
                 "0 BPDU Priority Elevator changed qualifier InPorts 1-64/0-64->1-63/0-63",
                 "0 LACPDU Priority Elevator changed qualifier InPorts 1-64/0-64->1-2,4-63/0-63",
                 "0 LLDPDU Priority Elevator changed qualifier InPorts 1-64/0-64->1-63/0-63" } ) );
}

// Every shipped example runs on the default switch, checked first as the tool
// does, and ends with both verifications passing on every unit.
TEST_F( ScenarioApply, EveryExampleRunsAndVerifies ) {
   size_t examples = 0;
   for ( const auto& file : std::filesystem::directory_iterator( FERRO_EXAMPLES_DIR ) ) {
      if ( file.path().extension() != ".scenario" ) {
         continue;
      }
      ++examples;
      SCOPED_TRACE( file.path().filename().string() );
      std::ifstream in( file.path() );
      const std::string text( ( std::istreambuf_iterator<char>( in ) ), {} );
      const auto parsed = parseScenario( text, file.path().filename().string() );
      ASSERT_TRUE( parsed ) << parsed.error();
      EXPECT_EQ( checkScenario( parsed.value(), sw_->config, "example" ), std::nullopt );
      EXPECT_EQ( parsed.value().back().kind, EventKind::verify );
      SetUp();  // a fresh switch per example
      std::ostringstream out;
      applyScenario( parsed.value(), sw_, library_->helper(), plan_, false, out );
      EXPECT_NE( out.str().find( std::to_string( parsed.value().back().line ) + ": verify\n" ),
                 std::string::npos );
   }
   EXPECT_GE( examples, 6u );
}

}  // namespace
