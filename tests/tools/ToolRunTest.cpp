// ferro-acl as a person or a script runs it: the built binary as a subprocess.
#include <gtest/gtest.h>

#include <csignal>
#include <map>
#include <set>

#include <nlohmann/json.hpp>

#include "ToolProcess.h"
#include "tools/ferro-acl/ProfileLoader.h"

using namespace FerroAclTest;
using Json = nlohmann::json;

namespace {

// "key:type " for each member of an object, in key order.
std::string typesOf( const Json& object ) {
   std::string types;
   for ( const auto& [key, value] : object.items() ) {
      types += key + ":" + value.type_name() + " ";
   }
   return types;
}

class ProfileRun : public testing::TestWithParam<std::string> {};

}  // namespace

TEST_P( ProfileRun, JsonHasTheStableForm ) {
   const auto config = FerroAcl::loadProfile( GetParam() );
   ASSERT_TRUE( config ) << config.error();
   const ToolRun run = runTool( { "--profile", GetParam(), "--json" } );
   ASSERT_EQ( run.exitCode, 0 ) << run.err;
   const Json state = Json::parse( run.out );
   ASSERT_EQ( typesOf( state ), "skipped:array units:array " );
   // Units ascending, each with its chip family and model from the profile.
   std::map<int, Json> units;
   for ( const Agent::UnitSpec& u : config.value().units ) {
      for ( const Agent::ChipProfile& chip : config.value().chips ) {
         if ( chip.family == u.chip ) {
            units[u.unit] = Json::array(
                { u.unit, u.chip, chip.model,
                  u.bringupStage >= FerroCentral::BringupStage::aclVerifiable } );
         }
      }
   }
   auto expected = units.begin();
   ASSERT_EQ( state["units"].size(), units.size() );
   for ( const Json& unit : state["units"] ) {
      ASSERT_EQ( typesOf( unit ),
                 "chip:string entries:array model:number unit:number verified:boolean " );
      std::set<Json> tablesSeen;
      Json previousId = -1;
      for ( const Json& entry : unit["entries"] ) {
         // The exact form of each member is ChipStateOutputTest's.
         ASSERT_EQ(
             typesOf( entry ),
             "actions:object enabled:boolean group:string id:number installed:boolean "
             "name:string priority:number qualifiers:object recordedAs:array "
             "stage:string " )
             << entry;
         EXPECT_GT( entry["id"], previousId );
         previousId = entry["id"];
         for ( const Json& table : entry["recordedAs"] ) {
            // A table holds one entry per unit, and the entries of a manager.
            EXPECT_TRUE( tablesSeen.insert( table ).second ) << table;
            EXPECT_NE( entry["group"], "" ) << entry["id"];
            if ( table == "bgpRule" ) {  // trapped to the BGP CPU queue
               EXPECT_EQ( entry["actions"].value( "CosQCpuNew", Json() ),
                          Json::array( { 38, 0 } ) );
               EXPECT_TRUE( entry["installed"] == true && entry["enabled"] == true );
            }
         }
      }
      EXPECT_EQ( tablesSeen.count( "bgpRule" ), 1u ) << unit["unit"];
      EXPECT_EQ(
          Json::array( { unit["unit"], unit["chip"], unit["model"], unit["verified"] } ),
          ( expected++ )->second );
   }
}

// The VLAN-stage class rules, by name and class in installation order, on
// exactly the units whose chip classifies in the VLAN stage; the two IGMP
// rules only where the chip does not suppress them.
TEST_P( ProfileRun, VlanStageClassRulesOnlyWhereTheChipClassifies ) {
   struct Rule {
      const char* name;
      int classId;
      bool igmp;
   };
   const Rule rules[] = {
       { "OSPF Multicast MAC", 1, false },
       { "PIM Multicast IP", 2, false },
       { "PIM Multicast IP", 3, false },
       { "IGMP Flood Link Local", 4, true },
       { "IGMP Multicast MAC", 5, true },
       { "MLAG L4 Source Port", 10, false },
       { "KIX Heartbeat L4 Source Port", 11, false },
       { "KIX Controller L4 Source Port", 12, false },
       { "KIX Client L4 Source Port", 13, false },
       { "BGP L4 Source Port", 9, false },
       { "DHCPv4 Server L4 Source Port", 7, false },
       { "DHCPv6 Server L4 Source Port", 8, false },
       { "DHCPv4 Client L4 Source Port", 15, false },
       { "ICMPv6 ND Solicit", 14, false },
       { "ICMPv6 ND Advertisement", 17, false },
       { "MLD Listener Query", 16, false },
       { "MLD V1 Report", 16, false },
       { "MLD Listener Done", 16, false },
       { "MLD V2 Report", 16, false },
   };
   const auto config = FerroAcl::loadProfile( GetParam() );
   ASSERT_TRUE( config ) << config.error();
   std::map<std::string, FerroCentral::ChipCapabilities> chips;
   for ( const Agent::ChipProfile& chip : config.value().chips ) {
      chips[chip.family] = chip.attributes;
   }
   const ToolRun run = runTool( { "--profile", GetParam(), "--json" } );
   ASSERT_EQ( run.exitCode, 0 ) << run.err;
   const Json state = Json::parse( run.out );
   for ( const Json& unit : state["units"] ) {
      const FerroCentral::ChipCapabilities& chip = chips.at( unit["chip"] );
      Json expected = Json::array();
      for ( const Rule& rule : rules ) {
         if ( chip.vlanStageClassRulesSupported &&
              !( rule.igmp && chip.igmpVlanClassRulesSuppressed ) ) {
            expected.push_back( { rule.name, { { "ClassDestSet", { rule.classId, 0 } } },
                                  true } );
         }
      }
      Json shown = Json::array();
      for ( const Json& entry : unit["entries"] ) {
         if ( entry["stage"] == "vlan" ) {
            shown.push_back( { entry["name"], entry["actions"],
                               entry["installed"] == true && entry["enabled"] == true } );
         }
      }
      EXPECT_EQ( shown, expected ) << "unit " << unit["unit"];
   }
}

INSTANTIATE_TEST_SUITE_P( Profiles, ProfileRun, testing::ValuesIn( profileFiles() ),
                          ProfileStem() );

TEST( ToolRun, WithoutArgumentsBringsUpTheEmbeddedDefault ) {
   const ToolRun run = runTool( {} );
   ASSERT_EQ( run.exitCode, 0 ) << run.err;
   EXPECT_TRUE( run.out.starts_with( "unit 0: Trident3, model 5, " ) ) << run.out;
   EXPECT_EQ( run.out,
              runTool( { "--profile", FERRO_PROFILES_DIR "/default.json" } ).out );
}

TEST( ToolRun, BadOptionsAndProfilesExitTwoWithOneLine ) {
   const std::string missing = testing::TempDir() + "absent-profile.json";
   const std::string malformed = writeTempFile( "m.json", "{\n \"chips\" {" );
   const std::string unknownKey = writeTempFile( "k.json", R"({"colour":1})" );
   const std::string badType =
       writeTempFile( "t.json", R"({"sharedState":{"platformCode":"x"}})" );
   const std::pair<std::vector<std::string>, std::string> cases[] = {
       { { "--bogus" },
         "ferro-acl: The following argument was not expected: --bogus\n"
         "Run with --help for more information.\n" },
       { { "--profile", missing },
         missing + ": cannot open: No such file or directory\n" },
       { { "--profile", malformed },
         malformed +
             ":2:10: syntax error while parsing object separator - unexpected '{'; "
             "expected ':'\n" },
       { { "--profile", unknownKey },
         unknownKey +
             ": colour: unknown key; expected one of name, sdkVersion, platform, "
             "sharedState, helper, chips, units, l2ProtocolForwarding, network\n" },
       { { "--profile", badType },
         badType + ": sharedState.platformCode: expected an integer 0-255, got \"x\"\n" },
   };
   for ( const auto& [arguments, err] : cases ) {
      const ToolRun run = runTool( arguments );
      EXPECT_EQ( run.exitCode, 2 ) << arguments[0] << ": " << run.err;
      EXPECT_EQ( run.err, err );
      EXPECT_EQ( run.out, "" ) << arguments[0];
   }
}

// A failing SDK call makes the library print its error line and abort; the
// tool outlives it and names the operation, the SDK error and the assertion.
TEST( ToolRun, InjectedFailureIsReportedWithTheLibrarysErrorLine ) {
   const std::pair<const char*, const char*> cases[] = {
       { "bcm_field_action_add", " API ERROR:Invalid parameter (-4)\n" },
       { "bcm_field_action_add@3=BCM_E_FULL", " API ERROR:Table full (-6)\n" },
   };
   for ( const auto& [fault, line] : cases ) {
      const ToolRun run = runTool( { "--fail", fault } );
      EXPECT_EQ( run.exitCode, 1 ) << fault << ": " << run.err;
      EXPECT_TRUE( run.err.starts_with( "ferro-acl: the helper library aborted in "
                                        "doInstallAclRules on unit 0\n  "
                                        "FerroTcamSystemAcl/L3TrapRules.cpp:" ) )
          << run.err;
      EXPECT_NE( run.err.find( " bcm_field_action_add( unit, entry, " ), std::string::npos )
          << run.err;
      EXPECT_NE( run.err.find( line ), std::string::npos ) << run.err;
      EXPECT_TRUE( run.err.ends_with(
          "  assertion \"0\" failed in virtual void "
          "FerroTcamSystemAcl::Helper::doInstallAclRules(U16)\n" ) )
          << run.err;
      EXPECT_EQ( run.out, "" ) << fault;
   }
}

// One run for the options of a run that completes: traces on stderr, a
// skipped verification leaving the units unverified, and a fault that never
// fired, which makes the status 1.
TEST( ToolRun, OptionsReachTheRun ) {
   const ToolRun run =
       runTool( { "--fail", "bcm_field_group_destroy", "--trace", "ApiFerro/4",
                  "--skip-step", "verifyInstalledAclRules", "--json" } );
   EXPECT_EQ( run.exitCode, 1 );
   EXPECT_NE( run.err.find( "[ApiFerro/4] " ), std::string::npos ) << run.err;
   EXPECT_TRUE(
       run.err.ends_with( "\nferro-acl: --fail bcm_field_group_destroy: nothing "
                          "failed; the library made 0 matching calls\n" ) )
       << run.err;
   const Json state = Json::parse( run.out );
   EXPECT_EQ( state.at( "units" ).at( 0 ).at( "verified" ), false );
   EXPECT_EQ( state.at( "units" ).at( 1 ).at( "verified" ), false );
   EXPECT_NE( run.out.find( "\"verifyInstalledAclRules\"" ), std::string::npos );
}

namespace {

// apply as a person runs it: the events and their changes on stdout; a bad
// scenario stops before the switch comes up, with the file and line.
TEST( ToolApply, PrintsEachEventAndWhatItChanged ) {
   const std::string scenario =
      writeTempFile( "pim.scenario", "# copy PIM to the CPU\nunit 1 pim copy on\n" );
   const ToolRun run = runTool( { "apply", scenario } );
   EXPECT_EQ( run.exitCode, 0 ) << run.err;
   EXPECT_EQ( run.out, "2: unit 1 pim copy on\n"
                       "  unit 1 \"PIM\" changed\n"
                       "    action CopyToCpu: absent -> 0\n" );
   std::filesystem::remove( scenario );

   const std::string bad = writeTempFile( "bad.scenario", "pim copy on\nport add 0:5\n" );
   const ToolRun refused = runTool( { "apply", bad, "--json" } );
   EXPECT_EQ( refused.exitCode, 2 );
   EXPECT_EQ( refused.out, "" );
   EXPECT_EQ( refused.err, bad + ":2: unexpected '0:5', expected a port removed earlier "
                                 "(every front-panel port is present at bring-up)\n" );
   std::filesystem::remove( bad );

   // Switched on twice, the copy-cancel add is refused by the SDK: the library
   // aborts, and the tool says where, after the events that ran.
   const std::string twice =
      writeTempFile( "twice.scenario", "unit 0 ll-mcast cancel on\nunit 0 ll-mcast cancel on\n" );
   const ToolRun aborted = runTool( { "apply", twice } );
   EXPECT_EQ( aborted.exitCode, 1 );
   EXPECT_TRUE( aborted.out.ends_with( "2: unit 0 ll-mcast cancel on\n" ) ) << aborted.out;
   EXPECT_NE( aborted.err.find( "LinkLocalMcastCancel.cpp:" ), std::string::npos ) << aborted.err;
   EXPECT_NE( aborted.err.find( " bcm_field_action_add( unit, entry, "
                                "bcmFieldActionSwitchToCpuCancel, 0, 0 ) API ERROR:Invalid "
                                "configuration (-15)\n" ),
              std::string::npos )
      << aborted.err;
   std::filesystem::remove( twice );

   const ToolRun missing = runTool( { "apply", "/nonexistent.scenario" } );
   EXPECT_EQ( missing.exitCode, 2 );
   EXPECT_EQ( missing.err, "ferro-acl: /nonexistent.scenario: cannot read the scenario file\n" );
}

}  // namespace

namespace {

// The shipped examples through the tool, as a person runs them: each applies
// on the default switch and says what the events are meant to do.
class ExampleRun : public testing::Test {
 protected:
   // The changes of the event on `line`, as "unit rule field before->after"
   // ("unit rule change" for an added or removed entry).
   static std::set<std::string> changesOf( const Json& events, const std::string& event ) {
      std::set<std::string> out;
      for ( const Json& e : events ) {
         if ( e[ "event" ] != event ) {
            continue;
         }
         for ( const Json& change : e[ "changes" ] ) {
            const std::string head = std::to_string( change[ "unit" ].get<int>() ) + " " +
                                     change[ "rule" ].get<std::string>();
            if ( change[ "fields" ].empty() ) {
               out.insert( head + " " + change[ "change" ].get<std::string>() );
            }
            for ( const Json& f : change[ "fields" ] ) {
               out.insert( head + " " + f[ "field" ].get<std::string>() + " " +
                           f[ "before" ].dump() + "->" + f[ "after" ].dump() );
            }
         }
         return out;
      }
      ADD_FAILURE() << "no event \"" << event << "\"";
      return out;
   }
   static Json apply( const std::string& example ) {
      const ToolRun run =
          runTool( { "apply", std::string( FERRO_EXAMPLES_DIR ) + "/" + example, "--json" } );
      EXPECT_EQ( run.exitCode, 0 ) << example << ": " << run.err;
      return Json::parse( run.out )[ "events" ];
   }
};

TEST_F( ExampleRun, PtpModeZeroDisablesTheFivePtpEntries ) {
   const Json events = apply( "ptp.scenario" );
   std::set<std::string> expected;
   for ( int unit : { 0, 1 } ) {
      for ( const char* rule : { "IPV4 MCAST PTP", "IPV4 UNICAST FORWARD PTP", "IPV4 PTP",
                                 "L2 Mcast PTP", "L2 Unicast PTP" } ) {
         expected.insert( std::to_string( unit ) + " " + rule + " enabled true->false" );
      }
      // What the flag on had added goes with it.
      expected.insert( std::to_string( unit ) + " L2 Mcast PTP action Drop [0,0]->null" );
      expected.insert( std::to_string( unit ) +
                       " L2 Unicast PTP action SwitchToCpuCancel [0,0]->null" );
   }
   EXPECT_EQ( changesOf( events, "ptp mode 0" ), expected );
   EXPECT_TRUE( changesOf( events, "ptp mode 2 flag on" ).empty() );  // tap aggregation
}

// Chips with reduced L2 traps install no PTP rules, so the agent leaves PTP
// alone there: nothing changes and both units still verify.
TEST_F( ExampleRun, PtpModesLeaveAChipWithoutPtpRulesAlone ) {
   const ToolRun run = runTool( { "apply", std::string( FERRO_EXAMPLES_DIR ) + "/ptp.scenario",
                                  "--profile", FERRO_PROFILES_DIR "/reduced-traps-sim.json",
                                  "--json" } );
   ASSERT_EQ( run.exitCode, 0 ) << run.err;
   const Json events = Json::parse( run.out )[ "events" ];
   EXPECT_TRUE( changesOf( events, "ptp mode 0" ).empty() );
   EXPECT_EQ( events.back()[ "event" ], "verify" );  // a failed verification aborts
}

TEST_F( ExampleRun, PimCopyComesAndGoesAndTheQueueStays ) {
   const Json events = apply( "pim-copy.scenario" );
   EXPECT_EQ( changesOf( events, "pim copy on" ),
              ( std::set<std::string>{ "0 PIM action CopyToCpu null->[0,0]",
                                       "1 PIM action CopyToCpu null->[0,0]" } ) );
   EXPECT_EQ( changesOf( events, "pim copy off" ),
              ( std::set<std::string>{ "0 PIM action CopyToCpu [0,0]->null",
                                       "1 PIM action CopyToCpu [0,0]->null" } ) );
}

TEST_F( ExampleRun, VxlanBlanksAndRestoresTheCpuPortDropRule ) {
   const Json events = apply( "vxlan.scenario" );
   const std::set<std::string> on = changesOf( events, "vxlan on" );
   const std::string rule = "0 Redirect packets from CPU to CPU drop queue ";
   EXPECT_TRUE( on.count( rule + "installed true->false" ) );
   EXPECT_TRUE( on.count( rule + "action CosQCpuNew [0,0]->null" ) );
   EXPECT_TRUE( changesOf( events, "vxlan off" ).count( rule + "action CosQCpuNew null->[0,0]" ) );
}

TEST_F( ExampleRun, CollectorPortRewritesEveryUnitsIpfixRule ) {
   const Json events = apply( "ipfix.scenario" );
   EXPECT_EQ( changesOf( events, "ipfix collector t1/e1/c1 192.0.2.7:2055" ),
              ( std::set<std::string>{
                  "0 Ipfix Dst Port qualifier L4DstPort {\"data\":4739,\"mask\":65535}->"
                  "{\"data\":2055,\"mask\":65535}",
                  "1 Ipfix Dst Port qualifier L4DstPort {\"data\":4739,\"mask\":65535}->"
                  "{\"data\":2055,\"mask\":65535}" } ) );
}

}  // namespace
