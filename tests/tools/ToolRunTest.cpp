// ferro-acl as a person or a script runs it: the built binary as a subprocess.
#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>
#include <set>

#include <nlohmann/json.hpp>

#include "ToolProcess.h"
#include "platform/agent/HelperBase.h"
#include "tools/ferro-acl/BringupSteps.h"
#include "tools/ferro-acl/ProfileLoader.h"

using namespace FerroAclTest;
using Json = nlohmann::json;

namespace {

// Every rule table of HelperBase, as recordedAs names them.
const std::set<std::string>& ruleTableNames() {
   static const std::set<std::string> names{
#define FERRO_TEST_TABLE_NAME( lower, Upper ) #lower "Rule",
       FERRO_RULE_TABLES( FERRO_TEST_TABLE_NAME )
#undef FERRO_TEST_TABLE_NAME
   };
   return names;
}

void expectFieldValue( const Json& value, const std::string& where ) {
   ASSERT_TRUE( value.is_object() ) << where;
   EXPECT_EQ( value.size(), 2u ) << where;
   for ( const char* key : { "data", "mask" } ) {
      ASSERT_TRUE( value.contains( key ) ) << where;
      const Json& v = value[key];
      EXPECT_TRUE( v.is_number_unsigned() || v.is_string() || v.is_array() ) << where;
   }
}

void expectStableEntry( const Json& entry, const std::string& where ) {
   const std::set<std::string> keys{ "id",       "name",      "stage",   "group",
                                     "priority", "installed", "enabled", "qualifiers",
                                     "actions",  "recordedAs" };
   std::set<std::string> present;
   for ( const auto& [key, value] : entry.items() ) {
      present.insert( key );
   }
   ASSERT_EQ( present, keys ) << where;
   EXPECT_TRUE( entry["id"].is_number_integer() ) << where;
   EXPECT_TRUE( entry["name"].is_string() ) << where;
   EXPECT_TRUE( entry["stage"] == "ingress" || entry["stage"] == "vlan" ) << where;
   EXPECT_TRUE( entry["group"].is_string() ) << where;
   EXPECT_TRUE( entry["priority"].is_number_integer() ) << where;
   EXPECT_TRUE( entry["installed"].is_boolean() ) << where;
   EXPECT_TRUE( entry["enabled"].is_boolean() ) << where;
   ASSERT_TRUE( entry["qualifiers"].is_object() ) << where;
   for ( const auto& [name, value] : entry["qualifiers"].items() ) {
      if ( value.is_array() ) {
         EXPECT_GE( value.size(), 2u ) << where << " " << name;  // one value is an object
         for ( const Json& each : value ) {
            expectFieldValue( each, where + " " + name );
         }
      } else {
         expectFieldValue( value, where + " " + name );
      }
   }
   ASSERT_TRUE( entry["actions"].is_object() ) << where;
   for ( const auto& [name, params] : entry["actions"].items() ) {
      ASSERT_TRUE( params.is_array() && params.size() == 2 ) << where << " " << name;
      EXPECT_TRUE( params[0].is_number_unsigned() && params[1].is_number_unsigned() )
          << where << " " << name;
   }
   ASSERT_TRUE( entry["recordedAs"].is_array() ) << where;
   for ( const Json& table : entry["recordedAs"] ) {
      EXPECT_EQ( ruleTableNames().count( table.get<std::string>() ), 1u )
          << where << table;
   }
}

class ProfileRun : public testing::TestWithParam<std::string> {};

std::string profileName( const testing::TestParamInfo<std::string>& info ) {
   std::string name = std::filesystem::path( info.param ).stem().string();
   for ( char& c : name ) {
      c = std::isalnum( static_cast<unsigned char>( c ) ) ? c : '_';
   }
   return name;
}

}  // namespace

TEST_P( ProfileRun, JsonHasTheStableForm ) {
   const std::string file = GetParam();
   FerroAcl::Result<Agent::SwitchConfig> config = FerroAcl::loadProfile( file );
   ASSERT_TRUE( config ) << config.error();
   const ToolRun run = runTool( { "--profile", file, "--json" } );
   ASSERT_EQ( run.exitCode, 0 ) << run.err;
   const Json state = Json::parse( run.out );
   ASSERT_TRUE( state.is_object() );

   // Units ascending, each with its chip family and model from the profile.
   std::vector<Agent::UnitSpec> units = config.value().units;
   std::sort( units.begin(), units.end(),
              []( const auto& a, const auto& b ) { return a.unit < b.unit; } );
   ASSERT_EQ( state["units"].size(), units.size() );
   for ( size_t u = 0; u < units.size(); ++u ) {
      const Json& unit = state["units"][u];
      const std::string where = file + " unit " + std::to_string( units[u].unit );
      EXPECT_EQ( unit["unit"], units[u].unit );
      EXPECT_EQ( unit["chip"], units[u].chip );
      for ( const Agent::ChipProfile& chip : config.value().chips ) {
         if ( chip.family == units[u].chip ) {
            EXPECT_EQ( unit["model"], chip.model ) << where;
         }
      }
      EXPECT_EQ( unit["verified"],
                 units[u].bringupStage >= FerroCentral::BringupStage::aclVerifiable )
          << where;
      ASSERT_TRUE( unit["entries"].is_array() ) << where;
      EXPECT_FALSE( unit["entries"].empty() ) << where;
      std::set<std::string> tablesSeen;
      int previousId = -1;
      bool bgpTrapped = false;
      for ( const Json& entry : unit["entries"] ) {
         const std::string at = where + " entry " + entry.value( "id", Json() ).dump();
         expectStableEntry( entry, at );
         EXPECT_GT( entry["id"].get<int>(), previousId ) << at;
         previousId = entry["id"].get<int>();
         for ( const Json& table : entry["recordedAs"] ) {
            // A table holds one entry per unit, and the entries of a manager.
            EXPECT_TRUE( tablesSeen.insert( table.get<std::string>() ).second )
                << at << table;
            EXPECT_FALSE( entry["group"].get<std::string>().empty() ) << at;
            if ( table == "bgpRule" ) {
               EXPECT_EQ(
                   entry["actions"]["CosQCpuNew"],
                   Json::array( { FerroTcamSystemAcl::HelperBase::cpuCosqBGP_, 0 } ) )
                   << at;
               EXPECT_TRUE( entry["installed"] == true && entry["enabled"] == true )
                   << at;
               bgpTrapped = true;
            }
         }
      }
      EXPECT_TRUE( bgpTrapped ) << where << ": no entry recorded as bgpRule";
   }

   std::vector<std::string> skipped;
   for ( const FerroAcl::SkippedStep& step :
         FerroAcl::planBringup( config.value(), {} ).skipped ) {
      skipped.push_back( step.step->name );
   }
   EXPECT_EQ( state["skipped"], Json( skipped ) );
}

INSTANTIATE_TEST_SUITE_P( Profiles, ProfileRun, testing::ValuesIn( profileFiles() ),
                          profileName );

TEST( ToolRun, WithoutArgumentsBringsUpTheDefaultSwitch ) {
   const ToolRun run = runTool( {} );
   ASSERT_EQ( run.exitCode, 0 ) << run.err;
   EXPECT_EQ( run.out.rfind( "unit 0: Trident3, model 5, ", 0 ), 0u ) << run.out;
   EXPECT_NE( run.out.find( "\nunit 1: Trident3, model 5, " ), std::string::npos );
   EXPECT_NE( run.out.find( "\nunit 0: verified\nunit 1: verified\n" ),
              std::string::npos );
   for ( const FerroAcl::BringupStep& step : FerroAcl::bringupSteps() ) {
      const std::string line =
          "\nskipped: " + std::string( step.name ) + " (not in this helper build)\n";
      // The default switch has no VLAN-stage-class chip.
      const bool expected = !step.available && step.units == FerroAcl::StepUnits::every;
      EXPECT_EQ( run.out.find( line ) != std::string::npos, expected ) << step.name;
   }
}

TEST( ToolRun, EmbeddedDefaultMatchesTheProfileFile ) {
   const ToolRun embedded = runTool( { "--json" } );
   const ToolRun file = runTool(
       { "--json", "--profile", std::string( FERRO_PROFILES_DIR ) + "/default.json" } );
   ASSERT_EQ( embedded.exitCode, 0 ) << embedded.err;
   ASSERT_EQ( file.exitCode, 0 ) << file.err;
   EXPECT_EQ( embedded.out, file.out );
}

TEST( ToolRun, UsageAndProfileErrorsExitTwoWithOneMessage ) {
   const std::string badType = writeTempFile(
       "bad-type.json",
       R"({"chips":{"Trident3":{"chipType":1,"model":2,"attributes":)"
       R"({"ipfixInPort":"x"}}},"units":[{"unit":0,"modId":0,"chip":"Trident3"}]})" );
   const std::string unknownKey = writeTempFile(
       "unknown-key.json",
       R"({"chips":{"T":{"chipType":1,"model":2}},"units":[{"unit":0,"modId":0,"chip":"T"}],)"
       "\n"
       R"("colour":"red"})" );
   const std::string malformed =
       writeTempFile( "malformed.json", "{\n  \"chips\": {\n    \"T\" {}\n" );
   const std::string missing = testing::TempDir() + "absent-profile.json";
   const std::pair<std::vector<std::string>, std::string> cases[] = {
       { { "--bogus" },
         "ferro-acl: The following argument was not expected: --bogus\n"
         "Run with --help for more information.\n" },
       { { "--profile" },
         "ferro-acl: --profile: 1 required FILE missing\n"
         "Run with --help for more information.\n" },
       { { "--profile", missing },
         missing + ": cannot open: No such file or directory\n" },
       { { "--profile", malformed },
         malformed +
             ":3:9: syntax error while parsing object separator - unexpected '{'; "
             "expected ':'\n" },
       { { "--profile", unknownKey },
         unknownKey +
             ": colour: unknown key; expected one of name, sdkVersion, platform, "
             "sharedState, helper, chips, units\n" },
       { { "--profile", badType },
         badType +
             ": chips.Trident3.attributes.ipfixInPort: expected an integer 0-255, got "
             "\"x\"\n" },
       { { "--fail", "field_action_add" },
         "ferro-acl: --fail \"field_action_add\": FUNCTION must be an SDK function name "
         "(bcm_...); expected FUNCTION[@N][=RC], e.g. bcm_field_action_add@2=BCM_E_FULL "
         "(N 1 "
         "or more, RC a BCM_E_ name or a negative number)\n" },
       { { "--trace", "ApiFerro/x" },
         "ferro-acl: --trace \"ApiFerro/x\": expected HANDLE/LEVELS, LEVELS being N, N-M "
         "or *\n" },
       { { "--skip-step", "doInstallEverything" },
         "ferro-acl: --skip-step \"doInstallEverything\": no such step; expected one of "
         "doInstallAclRules, doInstallL2TrapRules, doInstallEapolFwdRule, "
         "doInstallL2McastPTPRuleCommon, doInstallL2UnicastPTPRuleCommon, "
         "doInstallIpv4McastPTPRuleCommon, doInstallIpv4UnicastFwdPTPRuleCommon, "
         "doInstallIpv4ElevatorPTPRuleCommon, doInstallTH3SystemAclRule, "
         "verifyInstalledAclRules, verifyInstalledL2TrapRules\n" },
   };
   for ( const auto& [arguments, message] : cases ) {
      const ToolRun run = runTool( arguments );
      EXPECT_EQ( run.exitCode, 2 ) << arguments[0] << ": " << run.err;
      EXPECT_EQ( run.err, message );
      EXPECT_EQ( run.out, "" ) << arguments[0];
   }
}

TEST( ToolRun, InjectedFailureStopsTheLibraryWithItsErrorLine ) {
   const ToolRun run = runTool( { "--fail", "bcm_field_action_add" } );
   EXPECT_EQ( run.signal, SIGABRT ) << run.err;
   EXPECT_NE( run.err.find( " API ERROR:Invalid parameter (-4)\n" ), std::string::npos )
       << run.err;
   EXPECT_NE( run.err.find( "bcm_field_action_add(" ), std::string::npos ) << run.err;
   EXPECT_EQ( run.out, "" );

   const ToolRun full = runTool( { "--fail", "bcm_field_action_add@3=BCM_E_FULL" } );
   EXPECT_EQ( full.signal, SIGABRT ) << full.err;
   EXPECT_NE( full.err.find( "bcm_field_action_add(" ), std::string::npos ) << full.err;
   EXPECT_NE( full.err.find( " API ERROR:Table full (-6)\n" ), std::string::npos )
       << full.err;
}

TEST( ToolRun, FailureThatNeverFiresIsReported ) {
   const ToolRun run = runTool( { "--fail", "bcm_field_group_destroy", "--json" } );
   EXPECT_EQ( run.exitCode, 1 );
   EXPECT_EQ( run.err,
              "ferro-acl: --fail bcm_field_group_destroy: nothing failed; the library "
              "made 0 matching calls\n" );
   EXPECT_TRUE( Json::accept( run.out ) );
}

TEST( ToolRun, SkippedVerificationLeavesUnitsUnverified ) {
   const ToolRun run = runTool( { "--json", "--skip-step", "verifyInstalledAclRules" } );
   ASSERT_EQ( run.exitCode, 0 ) << run.err;
   const Json state = Json::parse( run.out );
   for ( const Json& unit : state["units"] ) {
      EXPECT_EQ( unit["verified"], false );
   }
   const Json& skipped = state["skipped"];
   EXPECT_NE( std::find( skipped.begin(), skipped.end(), "verifyInstalledAclRules" ),
              skipped.end() );
}

TEST( ToolRun, TraceReachesTheLibrarysHandles ) {
   const ToolRun run = runTool( { "--trace", "ApiFerro/4", "--json" } );
   ASSERT_EQ( run.exitCode, 0 ) << run.err;
   EXPECT_NE( run.err.find( "[ApiFerro/4] " ), std::string::npos );
   EXPECT_NE( run.err.find( " bcm_field_action_add( unit, entry, " ), std::string::npos );
}

TEST( ToolRun, MissingHelperLibraryIsNamed ) {
   const std::string path =
       testing::TempDir() + "no-such-dir/libFerroTcamSystemAclHelper.so";
   const ToolRun run = runTool( { "--helper-lib", path } );
   EXPECT_EQ( run.exitCode, 1 );
   EXPECT_EQ(
       run.err.rfind( "ferro-acl: cannot load the helper library: " + path + ": ", 0 ),
       0u )
       << run.err;
}
