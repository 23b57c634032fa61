#include "tools/ferro-acl/ProfileLoader.h"

#include <gtest/gtest.h>

#include <variant>

#include "tools/ferro-acl/ChipAttributeFields.h"

using namespace FerroAcl;
using Caps = FerroCentral::ChipCapabilities;
using Config = Agent::SwitchConfig;

namespace {

// A profile of one chip family and one unit; `attributes` and `unit` add members.
std::string profile( const std::string& attributes, const std::string& unit = "" ) {
   return R"({"chips":{"T":{"chipType":1,"model":2,"attributes":{)" + attributes +
          R"(}}},"units":[{"unit":0,"modId":0,"chip":"T")" + unit + "}]}";
}

// The same profile with an L2 protocol forwarding list.
std::string forwarding( const std::string& items ) {
   std::string text = profile( "" );
   text.pop_back();
   return text + R"(,"l2ProtocolForwarding":[)" + items + "]}";
}

}  // namespace

// A chip attribute, named as its ChipCapabilities member, set to `json`.
#define FERRO_ATTRIBUTE( member, json, value )                      \
   std::tuple<const char*, std::string, bool ( * )( const Caps& )>( \
       #member, json,                                               \
       []( const Caps& a ) { return a.member == decltype( a.member )( value ); } )

// Ints differ from each other, so that two keys read into one member show.
TEST( ProfileLoader, EveryKeyReachesItsMember ) {
   const Result<Config> result = parseProfile( R"({"name":"lab","sdkVersion":"6.6",
      "platform":{"l2ProtocolFwdSupported":true,"mayRunAsSimulation":true,"aclGroupManagers":true},
      "sharedState":{"vxlanEnabled":true,"skipInPortQualify":3,"platformCode":7,
                     "nextHopToCpuGleanDisabled":true,"ipClassIdShift":31},
      "helper":{"reducedL2TrapsA":true,"reducedL2TrapsB":true,"tapAggregationEnabled":true},
      "chips":{"B":{"chipType":22,"model":33},"A":{"chipType":4,"model":5}},
      "units":[{"unit":3,"modId":9,"chip":"A","bringupStage":91,"inactivePorts":[64,1]}],
      "l2ProtocolForwarding":[{"protocol":"stp","interface":"Ethernet3005","traffic":"vxlanDecap"},
                              {"protocol":"lldp","interface":"Port-Channel7"}]})",
                                               "p" );
   ASSERT_TRUE( result ) << result.error();
   const Config& c = result.value();
   EXPECT_TRUE( c.l2ProtocolFwdSupported && c.mayRunAsSimulation && c.aclGroupManagers &&
                c.vxlanEnabled && c.nextHopToCpuGleanDisabled && c.reducedL2TrapsA &&
                c.reducedL2TrapsB && c.tapAggregationEnabled );
   EXPECT_EQ( std::tuple( c.name, c.sdkVersion, c.skipInPortQualify, c.platformCode,
                          c.ipClassIdShift ),
              std::tuple( "lab", Sim::SdkVersion::V6_6, 3, 7, 31 ) );
   const Agent::ChipProfile& chip = c.chips.at( 1 );  // in file order
   EXPECT_EQ( std::tuple( chip.family, chip.chipType, chip.model ),
              std::tuple( "A", 4u, 5 ) );
   const Agent::UnitSpec& unit = c.units.at( 0 );
   EXPECT_EQ( std::tuple( unit.unit, unit.modId, unit.chip, unit.bringupStage,
                          unit.inactivePorts ),
              std::tuple( 3, 9, "A", FerroCentral::BringupStage::aclVerifiable,
                          std::vector<U16>{ 64, 1 } ) );
   ASSERT_EQ( c.l2ProtocolForwarding.size(), 2u );
   const Agent::L2ProtocolForwarding& stp = c.l2ProtocolForwarding[ 0 ];
   EXPECT_EQ( std::tuple( stp.protocol, stp.intf, stp.trafficType ),
              std::tuple( Lamo::L2Pt::L2PtProtocol::stp, Wirex::IntfId::ethernet( 3005 ),
                          Lamo::L2Pt::l2PtTrafficTypeVxlanDecap ) );
   const Agent::L2ProtocolForwarding& lldp = c.l2ProtocolForwarding[ 1 ];
   EXPECT_EQ( std::tuple( lldp.protocol, lldp.intf, lldp.trafficType ),
              std::tuple( Lamo::L2Pt::lldp(), Wirex::IntfId::portChannel( 7 ),
                          Lamo::L2Pt::l2PtTrafficTypeAll ) );
}

// Setting an attribute changes its member and no other. Values are not the defaults.
TEST( ProfileLoader, EachChipAttributeSetsItsMember ) {
   const std::tuple<const char*, std::string, bool ( * )( const Caps& )> cases[] = {
       FERRO_ATTRIBUTE( dstClassL3Supported, "true", true ),
       FERRO_ATTRIBUTE( espWarRequired, "true", true ),
       FERRO_ATTRIBUTE( extensionHeaderTypeQualifierSupported, "true", true ),
       FERRO_ATTRIBUTE( ipfixSupported, "true", true ),
       FERRO_ATTRIBUTE( ipfixInPort, "7", 7 ),
       FERRO_ATTRIBUTE( gleanViaNextHopToCpu, "true", true ),
       FERRO_ATTRIBUTE( gleanClassIdSupported, "true", true ),
       FERRO_ATTRIBUTE( l3McCpuOifCosqSupported, "true", true ),
       FERRO_ATTRIBUTE( ipv6MulticastSupported, "true", true ),
       FERRO_ATTRIBUTE( dstIpv6ClassSupported, "true", true ),
       FERRO_ATTRIBUTE( bfdEchoCheckEnabled, "true", true ),
       FERRO_ATTRIBUTE( bfdEchoRuleSuppressed, "true", true ),
       FERRO_ATTRIBUTE( bfdEchoSupported, "true", true ),
       FERRO_ATTRIBUTE( l2PfDevicePbmpSupported, "4000000000", 4000000000 ),
       FERRO_ATTRIBUTE( linkLocalPtpSupported, "2", 2 ),
       FERRO_ATTRIBUTE( etherTypeChipFlag, "3", 3 ),
       FERRO_ATTRIBUTE( l2CacheHitSupported, "4", 4 ),
       FERRO_ATTRIBUTE( vlanStageClassRulesSupported, "true", true ),
       FERRO_ATTRIBUTE( igmpVlanClassRulesSuppressed, "true", true ),
       FERRO_ATTRIBUTE( portCount, "129", 129 ),
       FERRO_ATTRIBUTE( cpuQueueCount, "64", 64 ),
       FERRO_ATTRIBUTE( classIdBits, "10", 10 ),
       FERRO_ATTRIBUTE( stpStateMaskReadBack, "3", 3 ),
       FERRO_ATTRIBUTE( vxlanCoreL2PFSupportedProtocols, R"(["lldp","microBfd"])",
                        ( ProtocolList{ Lamo::L2Pt::L2PtProtocol::lldp,
                                        Lamo::L2Pt::L2PtProtocol::microBfd } ) ),
   };
   const auto fields = chipAttributeFields();
   EXPECT_EQ( std::size( cases ), fields.size() );
   for ( const auto& [name, value, holds] : cases ) {
      EXPECT_FALSE( holds( Caps() ) ) << name;
      Result<Config> result =
          parseProfile( profile( "\"" + std::string( name ) + "\":" + value ), "p" );
      ASSERT_TRUE( result ) << name << ": " << result.error();
      const Caps& parsed = result.value().chips[0].attributes;
      EXPECT_TRUE( holds( parsed ) ) << name;
      int changed = 0;
      for ( const ChipAttributeField& field : fields ) {
         changed += std::visit(
             [&]( auto member ) { return !( parsed.*member == Caps().*member ); },
             field.member );
      }
      EXPECT_EQ( changed, 1 ) << name;
   }
}

TEST( ProfileLoader, ErrorsNameFileFieldAndExpectation ) {
   const std::pair<std::string, std::string> cases[] = {
       { R"({"chips":{"T":{"model":2,"model":3}}})",
         "p.json: chips.T.model: key given twice" },
       { R"({"units":[]})", "p.json: chips: required key missing" },
       { R"({"platform":{"aclGroups":true}})",
         "p.json: platform.aclGroups: unknown key; expected one of "
         "l2ProtocolFwdSupported, mayRunAsSimulation, aclGroupManagers" },
       { profile( R"("portCount":1.5)" ),
         "p.json: chips.T.attributes.portCount: expected an integer 2-256, got 1.5" },
       { profile( R"("vxlanCoreL2PFSupportedProtocols":["lldp","ospf"])" ),
         "p.json: chips.T.attributes.vxlanCoreL2PFSupportedProtocols[1]: expected one of "
         "lacp, lldp, stp, dot1x, elmi, pagp, udld, cdp, microBfd, got \"ospf\"" },
       { profile( R"("vxlanCoreL2PFSupportedProtocols":["lldp","lldp"])" ),
         "p.json: chips.T.attributes.vxlanCoreL2PFSupportedProtocols[1]: protocol listed "
         "twice" },
       { profile( "", R"(},{"unit":1,"modId":1,"chip":"X")" ),
         "p.json: units[1].chip: no chip family \"X\" in chips; expected one of T" },
       { profile( "", R"(,"bringupStage":50)" ),
         "p.json: units[0].bringupStage: expected a bring-up stage (0, 10, 40, 60, 80, "
         "91, 100), got 50" },
       { profile( "", R"(,"inactivePorts":[3,3])" ),
         "p.json: units[0].inactivePorts[1]: port 3 listed twice" },
       { forwarding( R"({"protocol":"ospf","interface":"Ethernet1"})" ),
         "p.json: l2ProtocolForwarding[0].protocol: expected one of lacp, lldp, stp, dot1x, "
         "elmi, pagp, udld, cdp, microBfd, got \"ospf\"" },
       { forwarding( R"({"protocol":"lldp","interface":"Ethernet05"})" ),
         "p.json: l2ProtocolForwarding[0].interface: expected an interface name such as "
         "\"Ethernet5\" or \"Port-Channel3\", got \"Ethernet05\"" },
       { forwarding( R"({"protocol":"lldp","interface":"Ethernet1","traffic":"decap"})" ),
         "p.json: l2ProtocolForwarding[0].traffic: expected \"all\" or \"vxlanDecap\", got "
         "\"decap\"" },
       { forwarding( R"({"protocol":"lldp","interface":"Port-Channel2"},
                        {"protocol":"lldp","interface":"Port-Channel2","traffic":"vxlanDecap"})" ),
         "p.json: l2ProtocolForwarding[1].interface: lldp forwarding on Port-Channel2 listed "
         "twice" },
   };
   for ( const auto& [text, message] : cases ) {
      Result<Config> result = parseProfile( text, "p.json" );
      ASSERT_FALSE( result ) << text;
      EXPECT_EQ( result.error(), message ) << text;
   }
}
