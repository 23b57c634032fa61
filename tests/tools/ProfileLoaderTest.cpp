#include "tools/ferro-acl/ProfileLoader.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <variant>

#include "ToolProcess.h"
#include "tools/ferro-acl/ChipAttributeFields.h"

using namespace FerroAcl;

namespace {

// The smallest profile there is; cases edit it by text replacement.
const std::string minimal =
    R"({"chips":{"T":{"chipType":1,"model":2}},"units":[{"unit":0,"modId":0,"chip":"T"}]})";

std::string with( std::string text, const std::string& from, const std::string& to ) {
   const size_t at = text.find( from );
   EXPECT_NE( at, std::string::npos ) << from;
   return at == std::string::npos ? text : text.replace( at, from.size(), to );
}

// A minimal profile whose chip has these attributes.
std::string withAttributes( const std::string& attributes ) {
   return with( minimal, R"("model":2})",
                R"("model":2,"attributes":{)" + attributes + "}}" );
}

}  // namespace

TEST( ProfileLoader, MinimalProfileTakesTheDefaults ) {
   Result<Agent::SwitchConfig> result = parseProfile( minimal, "p.json" );
   ASSERT_TRUE( result ) << result.error();
   const Agent::SwitchConfig& config = result.value();
   const Agent::SwitchConfig defaults;
   EXPECT_EQ( config.name, defaults.name );
   EXPECT_EQ( config.sdkVersion, Sim::SdkVersion::V6_5 );
   EXPECT_FALSE( config.aclGroupManagers || config.vxlanEnabled ||
                 config.reducedL2TrapsA );
   ASSERT_EQ( config.chips.size(), 1u );
   EXPECT_EQ( config.chips[0].family, "T" );
   EXPECT_EQ( config.chips[0].chipType, 1u );
   EXPECT_EQ( config.chips[0].model, 2 );
   EXPECT_EQ( config.chips[0].attributes.portCount, 65 );
   ASSERT_EQ( config.units.size(), 1u );
   EXPECT_EQ( config.units[0].chip, "T" );
   EXPECT_EQ( config.units[0].bringupStage, FerroCentral::BringupStage::complete );
   EXPECT_TRUE( config.units[0].inactivePorts.empty() );
}

TEST( ProfileLoader, EverySectionReachesItsField ) {
   const std::string text = R"({
      "name": "lab", "sdkVersion": "6.6",
      "platform": { "l2ProtocolFwdSupported": true, "mayRunAsSimulation": true,
                    "aclGroupManagers": true },
      "sharedState": { "vxlanEnabled": true, "skipInPortQualify": 3, "platformCode": 7,
                       "nextHopToCpuGleanDisabled": true, "ipClassIdShift": 31 },
      "helper": { "reducedL2TrapsA": true, "reducedL2TrapsB": true,
                  "tapAggregationEnabled": true },
      "chips": { "A": { "chipType": 22, "model": 33 }, "B": { "chipType": 4, "model": 0 } },
      "units": [ { "unit": 3, "modId": 9, "chip": "B", "bringupStage": 91,
                   "inactivePorts": [ 64, 1 ] },
                 { "unit": 0, "modId": 255, "chip": "A" } ] })";
   Result<Agent::SwitchConfig> result = parseProfile( text, "p.json" );
   ASSERT_TRUE( result ) << result.error();
   const Agent::SwitchConfig& c = result.value();
   EXPECT_EQ( c.name, "lab" );
   EXPECT_EQ( c.sdkVersion, Sim::SdkVersion::V6_6 );
   EXPECT_TRUE( c.l2ProtocolFwdSupported && c.mayRunAsSimulation && c.aclGroupManagers );
   EXPECT_TRUE( c.vxlanEnabled && c.nextHopToCpuGleanDisabled );
   EXPECT_EQ( c.skipInPortQualify, 3 );
   EXPECT_EQ( c.platformCode, 7 );
   EXPECT_EQ( c.ipClassIdShift, 31 );
   EXPECT_TRUE( c.reducedL2TrapsA && c.reducedL2TrapsB && c.tapAggregationEnabled );
   ASSERT_EQ( c.chips.size(), 2u );
   EXPECT_EQ( c.chips[0].family, "A" );  // file order
   EXPECT_EQ( c.chips[0].chipType, 22u );
   EXPECT_EQ( c.chips[0].model, 33 );
   ASSERT_EQ( c.units.size(), 2u );
   EXPECT_EQ( c.units[0].unit, 3 );
   EXPECT_EQ( c.units[0].modId, 9 );
   EXPECT_EQ( c.units[0].chip, "B" );
   EXPECT_EQ( c.units[0].bringupStage, FerroCentral::BringupStage::aclVerifiable );
   EXPECT_EQ( c.units[0].inactivePorts, ( std::vector<U16>{ 64, 1 } ) );
   EXPECT_EQ( c.units[1].modId, 255 );
}

// The profile names each capability exactly as FerroCentral::ChipCapabilities
// does; every value here differs from the default so a mix-up shows.
TEST( ProfileLoader, AttributesUseTheCppNames ) {
   Result<Agent::SwitchConfig> result =
       parseProfile( withAttributes( R"("dstClassL3Supported":true,"espWarRequired":true,
         "extensionHeaderTypeQualifierSupported":true,"ipfixSupported":true,"ipfixInPort":7,
         "gleanViaNextHopToCpu":true,"gleanClassIdSupported":true,
         "l3McCpuOifCosqSupported":true,"ipv6MulticastSupported":true,
         "dstIpv6ClassSupported":true,"bfdEchoCheckEnabled":true,"bfdEchoRuleSuppressed":true,
         "bfdEchoSupported":true,"l2PfDevicePbmpSupported":4000000000,
         "linkLocalPtpSupported":2,"etherTypeChipFlag":3,"l2CacheHitSupported":4,
         "vxlanCoreL2PFSupportedProtocols":["lldp","microBfd"],
         "vlanStageClassRulesSupported":true,"igmpVlanClassRulesSuppressed":true,
         "portCount":129,"cpuQueueCount":64,"classIdBits":10,
         "stpStateMaskReadBack":3)" ),
                     "p.json" );
   ASSERT_TRUE( result ) << result.error();
   const FerroCentral::ChipCapabilities& a = result.value().chips[0].attributes;
   EXPECT_TRUE( a.dstClassL3Supported && a.espWarRequired &&
                a.extensionHeaderTypeQualifierSupported && a.ipfixSupported &&
                a.gleanViaNextHopToCpu && a.gleanClassIdSupported &&
                a.l3McCpuOifCosqSupported && a.ipv6MulticastSupported &&
                a.dstIpv6ClassSupported && a.bfdEchoCheckEnabled &&
                a.bfdEchoRuleSuppressed && a.bfdEchoSupported &&
                a.vlanStageClassRulesSupported && a.igmpVlanClassRulesSuppressed );
   EXPECT_EQ( a.ipfixInPort, 7 );
   EXPECT_EQ( a.l2PfDevicePbmpSupported, 4000000000u );
   EXPECT_EQ( a.linkLocalPtpSupported, 2 );
   EXPECT_EQ( a.etherTypeChipFlag, 3 );
   EXPECT_EQ( a.l2CacheHitSupported, 4 );
   EXPECT_EQ( a.vxlanCoreL2PFSupportedProtocols,
              ( ProtocolList{ Lamo::L2Pt::L2PtProtocol::lldp,
                              Lamo::L2Pt::L2PtProtocol::microBfd } ) );
   EXPECT_EQ( a.portCount, 129 );
   EXPECT_EQ( a.cpuQueueCount, 64 );
   EXPECT_EQ( a.classIdBits, 10 );
   EXPECT_EQ( a.stpStateMaskReadBack, 3 );
}

// Setting one attribute changes its own member and no other: catches two
// names sharing a member.
TEST( ProfileLoader, EachAttributeSetsOnlyItsMember ) {
   using Caps = FerroCentral::ChipCapabilities;
   const auto fields = chipAttributeFields();
   auto changed = []( const ChipAttributeField& field, const Caps& a, const Caps& b ) {
      return std::visit( [&]( auto member ) { return !( a.*member == b.*member ); },
                         field.member );
   };
   for ( const ChipAttributeField& field : fields ) {
      const std::string value = std::visit(
          [&]( auto member ) -> std::string {
             using T = std::decay_t<decltype( Caps().*member )>;
             if constexpr ( std::is_same_v<T, bool> ) {
                return Caps().*member ? "false" : "true";
             } else if constexpr ( std::is_same_v<T, ProtocolList> ) {
                return R"(["stp"])";
             } else {
                return std::to_string(
                    int64_t( Caps().*member ) == field.max ? field.min : field.max );
             }
          },
          field.member );
      Result<Agent::SwitchConfig> result = parseProfile(
          withAttributes( "\"" + std::string( field.name ) + "\":" + value ), "p.json" );
      ASSERT_TRUE( result ) << field.name << ": " << result.error();
      const Caps& parsed = result.value().chips[0].attributes;
      for ( const ChipAttributeField& other : fields ) {
         EXPECT_EQ( changed( other, parsed, Caps() ), &other == &field )
             << "setting " << field.name << ", looking at " << other.name;
      }
   }
}

TEST( ProfileLoader, ErrorsNameFileFieldAndExpectation ) {
   const std::pair<std::string, std::string> cases[] = {
       { "{\n  \"chips\": {,\n",
         "p.json:2:13: syntax error while parsing object key - unexpected ','; expected "
         "string literal" },
       { "",
         "p.json:1:1: syntax error while parsing value - unexpected end of input; "
         "expected '[', '{', or a literal" },
       { with( minimal, R"("model":2)", R"("model":2,"model":3)" ),
         "p.json: chips.T.model: key given twice" },
       { "[]", "p.json: expected an object, got []" },
       { with( minimal, "{\"chips\"", "{\"colour\":1,\"chips\"" ),
         "p.json: colour: unknown key; expected one of name, sdkVersion, platform, "
         "sharedState, helper, chips, units" },
       { R"({"units":[]})", "p.json: chips: required key missing" },
       { with( minimal, R"(,"units":[{"unit":0,"modId":0,"chip":"T"}])", "" ),
         "p.json: units: required key missing" },
       { withAttributes( R"("ipfixInPort":"x")" ),
         "p.json: chips.T.attributes.ipfixInPort: expected an integer 0-255, got \"x\"" },
       { withAttributes( R"("ipfixInPort":256)" ),
         "p.json: chips.T.attributes.ipfixInPort: expected an integer 0-255, got 256" },
       { withAttributes( R"("portCount":1.5)" ),
         "p.json: chips.T.attributes.portCount: expected an integer 2-256, got 1.5" },
       { withAttributes( R"("ipfixSupported":1)" ),
         "p.json: chips.T.attributes.ipfixSupported: expected true or false, got 1" },
       { withAttributes( R"("vxlanCoreL2PFSupportedProtocols":["lldp","ospf"])" ),
         "p.json: chips.T.attributes.vxlanCoreL2PFSupportedProtocols[1]: expected one of "
         "lacp, lldp, stp, dot1x, elmi, pagp, udld, cdp, microBfd, got \"ospf\"" },
       { withAttributes( R"("vxlanCoreL2PFSupportedProtocols":["lldp","lldp"])" ),
         "p.json: chips.T.attributes.vxlanCoreL2PFSupportedProtocols[1]: protocol listed "
         "twice" },
       { with( minimal, "{\"chips\"", "{\"sdkVersion\":6.5,\"chips\"" ),
         "p.json: sdkVersion: expected \"6.5\" or \"6.6\", got 6.5" },
       { with( minimal, "{\"chips\"", "{\"platform\":{\"aclGroups\":true},\"chips\"" ),
         "p.json: platform.aclGroups: unknown key; expected one of "
         "l2ProtocolFwdSupported, "
         "mayRunAsSimulation, aclGroupManagers" },
       { with( minimal, "{\"chips\"",
               "{\"sharedState\":{\"ipClassIdShift\":32},\"chips\"" ),
         "p.json: sharedState.ipClassIdShift: expected an integer 0-31, got 32" },
       { with( minimal, "{\"chips\"", "{\"helper\":[],\"chips\"" ),
         "p.json: helper: expected an object, got []" },
       { with( minimal, R"({"T":{"chipType":1,"model":2}})", "{}" ),
         "p.json: chips: expected at least one chip family" },
       { with( minimal, R"("chipType":1,)", "" ),
         "p.json: chips.T.chipType: required key missing" },
       { with( minimal, R"([{"unit":0,"modId":0,"chip":"T"}])", "[]" ),
         "p.json: units: expected at least one unit" },
       { with( minimal, R"("chip":"T"})", R"("chip":"X"})" ),
         "p.json: units[0].chip: no chip family \"X\" in chips; expected one of T" },
       { with( minimal, R"("chip":"T"})",
               R"("chip":"T"},{"unit":0,"modId":1,"chip":"T"})" ),
         "p.json: units[1].unit: unit 0 listed twice" },
       { with( minimal, R"("modId":0)", R"("modId":256)" ),
         "p.json: units[0].modId: expected an integer 0-255, got 256" },
       { with( minimal, R"("chip":"T"})", R"("chip":"T","bringupStage":50})" ),
         "p.json: units[0].bringupStage: expected a bring-up stage (0, 10, 40, 60, 80, "
         "91, "
         "100), got 50" },
       { with( minimal, R"("chip":"T"})", R"("chip":"T","inactivePorts":[0]})" ),
         "p.json: units[0].inactivePorts[0]: expected an integer 1-64, got 0" },
       { with( minimal, R"("chip":"T"})", R"("chip":"T","inactivePorts":[3,3]})" ),
         "p.json: units[0].inactivePorts[1]: port 3 listed twice" },
       { with( minimal, R"("chip":"T"})", R"("chip":"T","spare":1})" ),
         "p.json: units[0].spare: unknown key; expected one of unit, modId, chip, "
         "bringupStage, inactivePorts" },
   };
   for ( const auto& [text, message] : cases ) {
      Result<Agent::SwitchConfig> result = parseProfile( text, "p.json" );
      ASSERT_FALSE( result ) << text;
      EXPECT_EQ( result.error(), message ) << text;
   }
}

TEST( ProfileLoader, UnknownAttributeListsTheKnownOnes ) {
   Result<Agent::SwitchConfig> result =
       parseProfile( withAttributes( R"("ipfixInPrt":1)" ), "p.json" );
   ASSERT_FALSE( result );
   EXPECT_EQ(
       result.error().rfind(
           "p.json: chips.T.attributes.ipfixInPrt: unknown chip attribute; expected one "
           "of dstClassL3Supported, ",
           0 ),
       0u )
       << result.error();
   EXPECT_NE( result.error().find( "ipfixInPort" ), std::string::npos );
}

TEST( ProfileLoader, FilesAreReadOrNamedInTheError ) {
   const std::string good = FerroAclTest::writeTempFile( "good.json", minimal );
   Result<Agent::SwitchConfig> loaded = loadProfile( good );
   ASSERT_TRUE( loaded ) << loaded.error();
   EXPECT_EQ( loaded.value().units.size(), 1u );

   const std::string bad = FerroAclTest::writeTempFile( "bad.json", "{\n\"units\": x" );
   Result<Agent::SwitchConfig> malformed = loadProfile( bad );
   ASSERT_FALSE( malformed );
   EXPECT_EQ( malformed.error().rfind( bad + ":2:10: syntax error", 0 ), 0u )
       << malformed.error();

   const std::string missing = testing::TempDir() + "no-such-profile.json";
   Result<Agent::SwitchConfig> absent = loadProfile( missing );
   ASSERT_FALSE( absent );
   EXPECT_EQ( absent.error(), missing + ": cannot open: No such file or directory" );

   const std::string directory = std::filesystem::path( good ).parent_path().string();
   Result<Agent::SwitchConfig> notFile = loadProfile( directory );
   ASSERT_FALSE( notFile );
   EXPECT_EQ( notFile.error(), directory + ": cannot read: Is a directory" );
}
