// The names of the VLAN-stage class rules through every operation of the
// enumeration, and what an unknown name or value gets.
#include "FerroTcamSystemAcl/TH3SystemAclVfpTcamRules.h"

#include <sstream>
#include <stdexcept>

#include <gtest/gtest.h>

namespace {

using FerroTcamSystemAcl::TH3SystemAclVfpTcamRules;

// In the order the rules are installed; the enumerators follow it.
const char* const names[] = {
   "ospfMulticastMacRule", "pimMulticastIpRule",    "ospfMulticastIpRule",
   "igmpFloodLLMIpRule",   "igmpMulticastMacRule",  "mlagPortRule",
   "kixHBPortRule",        "kixControllerPortRule", "kixClientPortRule",
   "bgpPortRule",          "dhcpV4ServerPortRule",  "dhcpV6ServerPortRule",
   "dhcpV4ClientPortRule", "neighborSolicitRule",   "neighborAdvertRule",
   "mldQueryRule",         "mldV1ReportRule",       "mldDoneRule",
   "mldV2ReportRule",
};

TEST( TH3SystemAclVfpTcamRules, EveryEnumeratorRoundTripsThroughItsName ) {
   EXPECT_EQ( FerroTcamSystemAcl::TH3SystemAclVfpTcamRulesType().size(), std::size( names ) );
   for ( U32 value = 0; value < std::size( names ); ++value ) {
      const std::string name = names[ value ];
      SCOPED_TRACE( name );
      const TH3SystemAclVfpTcamRules rule =
         FerroTcamSystemAcl::TH3SystemAclVfpTcamRulesInstance( value );
      EXPECT_EQ( stringValue( rule ), name );
      std::ostringstream printed;
      printed << rule;
      EXPECT_EQ( printed.str(), name );
      EXPECT_EQ( FerroTcamSystemAcl::TH3SystemAclVfpTcamRulesInstance( name ), rule );
      // Parsed from the middle of a larger buffer: exactly the range counts.
      const std::string buffer = "<" + name + "Rule>";
      TH3SystemAclVfpTcamRules parsed = TH3SystemAclVfpTcamRules( 0xFF );
      EXPECT_TRUE( sequenceToValue( { buffer.data() + 1, buffer.data() + 1 + name.size() },
                                    &parsed ) );
      EXPECT_EQ( parsed, rule );
   }
}

TEST( TH3SystemAclVfpTcamRules, UnknownNamesAndValuesFail ) {
   const std::string buffer = "bgpPortRules bgpPort BgpPortRule";
   const Lumo::CharRange misses[] = {
      { buffer.data(), buffer.data() + 12 },   // "bgpPortRules"
      { buffer.data() + 13, buffer.data() + 20 },  // "bgpPort"
      { buffer.data() + 21, buffer.data() + 32 },  // "BgpPortRule"
      { buffer.data(), buffer.data() },
   };
   for ( const Lumo::CharRange& miss : misses ) {
      TH3SystemAclVfpTcamRules value = TH3SystemAclVfpTcamRules::mlagPortRule;
      EXPECT_FALSE( sequenceToValue( miss, &value ) ) << miss.view();
      EXPECT_EQ( value, TH3SystemAclVfpTcamRules::mlagPortRule ) << "a miss leaves it alone";
   }
   EXPECT_THROW( FerroTcamSystemAcl::TH3SystemAclVfpTcamRulesInstance( "bgpPort" ),
                 std::invalid_argument );
   for ( U32 value : { 19u, 255u, 256u + 9u } ) {
      EXPECT_THROW( FerroTcamSystemAcl::TH3SystemAclVfpTcamRulesInstance( value ),
                    std::out_of_range )
         << value;
   }
   const TH3SystemAclVfpTcamRules unnamed = TH3SystemAclVfpTcamRules( 200 );
   std::ostringstream printed;
   printed << unnamed;
   EXPECT_EQ( printed.str(), "200" );
   EXPECT_EQ( stringValue( unnamed ), "200" );
}

}  // namespace
