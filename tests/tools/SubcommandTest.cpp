// ferro-acl's subcommands as people run them: show's text on every profile,
// verify passing on every profile and catching each tampered entry with the
// library's own assertion, diff, and the one-line usage errors.
#include <gtest/gtest.h>

#include <sstream>

#include <nlohmann/json.hpp>

#include "ToolProcess.h"

using namespace FerroAclTest;
using Json = nlohmann::json;

namespace {

class ProfileSubcommand : public testing::TestWithParam<std::string> {};

std::vector<std::string> lines( const std::string& text ) {
   std::vector<std::string> result;
   std::istringstream in( text );
   for ( std::string line; std::getline( in, line ); ) {
      result.push_back( line );
   }
   return result;
}

}  // namespace

// Every entry the JSON form lists has its row (id, then priority) in the text,
// and no line is wider than the terminal.
TEST_P( ProfileSubcommand, ShowTextHasARowPerEntryWithin160Columns ) {
   const ToolRun text = runTool( { "show", "--profile", GetParam() } );
   const ToolRun json = runTool( { "show", "--profile", GetParam(), "--json" } );
   ASSERT_EQ( text.exitCode, 0 ) << text.err;
   ASSERT_EQ( json.exitCode, 0 ) << json.err;
   std::multiset<std::pair<std::string, std::string>> rows;
   for ( const std::string& line : lines( text.out ) ) {
      EXPECT_LE( line.size(), 160u ) << line;
      std::istringstream words( line );
      std::string id, priority;
      if ( line.starts_with( "    " ) && words >> id >> priority && std::isdigit( id[0] ) ) {
         rows.insert( { id, priority } );
      }
   }
   std::multiset<std::pair<std::string, std::string>> entries;
   const Json state = Json::parse( json.out );
   for ( const Json& unit : state["units"] ) {
      for ( const Json& entry : unit["entries"] ) {
         entries.insert( { entry["id"].dump(), entry["priority"].dump() } );
      }
   }
   EXPECT_EQ( rows, entries );
}

// Verification passes wherever it runs; a unit whose bring-up stops before
// verification is possible is reported, not failed.
TEST_P( ProfileSubcommand, VerifyPasses ) {
   const ToolRun run = runTool( { "verify", "--profile", GetParam(), "--json" } );
   ASSERT_EQ( run.exitCode, 0 ) << run.err << run.out;
   const Json state = Json::parse( run.out );
   for ( const Json& unit : state["units"] ) {
      if ( unit["verified"] == false ) {
         EXPECT_TRUE( unit["reason"].get<std::string>().starts_with( "bring-up stage " ) )
             << unit;
      }
   }
}

TEST_P( ProfileSubcommand, DiffWithItselfIsIdentical ) {
   const ToolRun run = runTool( { "diff", "--profile", GetParam(), "--profile", GetParam() } );
   EXPECT_EQ( run.exitCode, 0 ) << run.err;
   EXPECT_TRUE( run.out.ends_with( "\nidentical\n" ) ) << run.out;
}

INSTANTIATE_TEST_SUITE_P( Profiles, ProfileSubcommand, testing::ValuesIn( profileFiles() ),
                          ProfileStem() );

// Each tamper changes one entry behind the library's back; verification
// aborts on the library's assertion for that field and the tool names it.
TEST( Verify, CatchesEachTamperedEntryWithItsAssertion ) {
   const std::pair<const char*, const char*> cases[] = {
       { "BGP - Dst Port:CosQCpuNew=5",
         "unit 0: verification failed in verifyInstalledAclRules: param0 == cpuCosqBGP_ "
         "on rule \"BGP - Dst Port\" (entry 1030)" },
       { "VRRP:Ttl=254",
         "unit 0: verification failed in verifyInstalledAclRules: "
         "data8 == TCAM_FIELD_VRRP_TTL_DATA on rule \"VRRP\" (entry 1032)" },
       { "ISIS ALL-IS Entry Fp Ports:PrioIntNew=3",
         "unit 0: verification failed in verifyInstalledAclRules: param0 == TC_ISIS on "
         "rule \"ISIS ALL-IS Entry Fp Ports\" (entry 1026)" },
       { "ISIS IS-L1L2 Entry Fp Ports:InPorts=1-4,6-64",
         "unit 0: verification failed in verifyInstalledAclRules: "
         "BCM_PBMP_EQ( eBmpData, expDataBmp ) on rule \"ISIS IS-L1L2 Entry Fp Ports\" "
         "(entry 1024)" },
       { "Glean packets to CPU:Drop=1",
         "unit 0: verification failed in verifyInstalledAclRules: data8 == 0 on rule "
         "\"Glean packets to CPU\" (entry 1053)" },
       { "BPDU Priority Elevator:DstClassL2=4",
         "unit 0: verification failed in verifyInstalledL2TrapRules: "
         "data32 == dstClassId on rule \"BPDU Priority Elevator\" (entry 2048)" },
       { "PIM:-CosQCpuNew",
         "unit 0: verification failed in verifyInstalledAclRules: "
         "FerroTcamSystemAcl/L3Verification.cpp:196 bcm_field_action_get( unit, entry, "
         "bcmFieldActionCosQCpuNew, &param0, &param1 ) API ERROR:Entry not found (-7) "
         "on rule \"PIM\" (entry 1036)" },
       // On unit 1 only: unit 0 still verifies.
       { "1/VRRP:Ttl=254",
         "unit 0: verified\nunit 1: verification failed in verifyInstalledAclRules: "
         "data8 == TCAM_FIELD_VRRP_TTL_DATA on rule \"VRRP\" (entry 1032)" },
   };
   for ( const auto& [tamper, verdict] : cases ) {
      const ToolRun run = runTool( { "verify", "--tamper", tamper } );
      EXPECT_EQ( run.exitCode, 1 ) << tamper << ": " << run.err;
      EXPECT_NE( ( "\n" + run.out ).find( std::string( "\n" ) + verdict + "\n" ), std::string::npos )
          << tamper << ":\n" << run.out;
      EXPECT_TRUE( run.err.starts_with( "ferro-acl: the helper library aborted in verify" ) )
          << tamper << ": " << run.err;
   }
}

TEST( Diff, TwoFamiliesDifferByNamedEntriesAndFields ) {
   const ToolRun run = runTool( { "diff", "--profile", FERRO_PROFILES_DIR "/default.json",
                                  "--profile", FERRO_PROFILES_DIR "/th3-vlan-class.json" } );
   EXPECT_EQ( run.exitCode, 1 ) << run.err;
   for ( const char* line :
         { "unit 0: Trident3 (A) vs Tomahawk3 (B)\n", "  only in A: \"Ipfix Dst Port\"\n",
           "  only in B: \"PIM Multicast IP #2\"\n",
           "  \"PIM\": qualifier InPorts: 1-64/0-64 -> 1-128/0-128\n",
           "  \"OSPF Auth ESP - Multicast\": action EgressClassSelect: 11 -> 13\n" } ) {
      EXPECT_NE( run.out.find( line ), std::string::npos ) << line << run.out;
   }
   EXPECT_TRUE( run.out.ends_with( "\ndifferent\n" ) ) << run.out;

   const ToolRun json =
       runTool( { "diff", "--json", "--profile", FERRO_PROFILES_DIR "/default.json",
                  "--profile", FERRO_PROFILES_DIR "/th3-vlan-class.json" } );
   EXPECT_EQ( json.exitCode, 1 );
   const Json diff = Json::parse( json.out );
   EXPECT_EQ( diff["identical"], false );
   EXPECT_EQ( diff["units"][0]["chipB"], "Tomahawk3" );
   EXPECT_NE( diff["units"][0]["onlyInB"].dump().find( "\"MLD V2 Report\"" ),
              std::string::npos );
}

// Nothing runs: one line on stderr naming the option and what was expected.
TEST( Subcommands, UsageErrorsExitTwoNamingTheField ) {
   const std::pair<std::vector<std::string>, std::string> cases[] = {
       { { "frobnicate" },
         "ferro-acl: unknown command \"frobnicate\"; expected one of show, verify, apply, diff, "
         "classify, audit, copp, or an option of show\nRun with --help for more information.\n" },
       { { "verify", "--tamper", "Nope:Ttl=3" },
         "ferro-acl: --tamper 'Nope:Ttl=3': no entry is named \"Nope\"; expected a rule "
         "name as show prints it\n" },
       { { "verify", "--tamper", "VRRP:Ttl=300" },
         "ferro-acl: --tamper 'VRRP:Ttl=300': expected DATA[/MASK] up to 255, got \"300\"\n" },
       { { "verify", "--tamper", "VRRP:-Ttl" },
         "ferro-acl: --tamper 'VRRP:-Ttl': expected -ACTION, ACTION one of CopyToCpu, "
         "CosQCpuNew, PrioIntNew, Drop, SwitchToCpuCancel, ClassDestSet, NewClassId, "
         "EgressClassSelect\n" },
       { { "verify", "--tamper", "VRRP:DstMac=1" },
         "ferro-acl: --tamper 'VRRP:DstMac=1': cannot set \"DstMac\"; expected one of "
         "CopyToCpu, CosQCpuNew, PrioIntNew, Drop, SwitchToCpuCancel, ClassDestSet, "
         "NewClassId, EgressClassSelect, Ttl, IpProtocol, L4SrcPort, L4DstPort, EtherType, "
         "DSCP, OuterVlanPri, IngressStpState, HiGig, L2CacheHit, L3Routable, DstClassL2, "
         "DstClassL3, DstClassField, InterfaceClassL2, InterfaceClassPort, InterfaceClassVPort, "
         "InPorts\n" },
       { { "verify", "--tamper", "PIM:-CopyToCpu" },
         "ferro-acl: --tamper 'PIM:-CopyToCpu': the entry has no CopyToCpu action; "
         "expected one of its actions\n" },
       { { "verify", "--tamper", "VRRP:CosQCpuNew=99" },
         "ferro-acl: --tamper 'VRRP:CosQCpuNew=99': the simulated SDK refused "
         "bcm_field_action_add: Invalid parameter (-4)\n" },
       { { "diff", "--profile", FERRO_PROFILES_DIR "/default.json" },
         "ferro-acl: diff: --profile given 1 time; expected it twice, --profile A "
         "--profile B\n" },
   };
   for ( const auto& [arguments, err] : cases ) {
      const ToolRun run = runTool( arguments );
      EXPECT_EQ( run.exitCode, 2 ) << arguments.back() << ": " << run.err;
      EXPECT_EQ( run.err, err );
      EXPECT_EQ( run.out, "" ) << arguments.back();
   }
}

TEST( Subcommands, HelpShowsExamplesOfEach ) {
   for ( const char* command : { "show", "verify", "apply", "diff", "classify", "audit", "copp" } ) {
      const ToolRun run = runTool( { command, "--help" } );
      EXPECT_EQ( run.exitCode, 0 ) << command;
      EXPECT_NE( run.out.find( std::string( "Examples:\n  ferro-acl " ) ), std::string::npos )
          << run.out;
   }
   const ToolRun overview = runTool( { "--help" } );
   EXPECT_EQ( overview.exitCode, 0 );
   EXPECT_NE( overview.out.find( "\n  verify    install" ), std::string::npos ) << overview.out;
   EXPECT_NE( overview.out.find( "\n  classify  install" ), std::string::npos ) << overview.out;
}
