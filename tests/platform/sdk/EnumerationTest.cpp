// Run-time enumeration values per SDK version, and return-code texts.
#include <gmock/gmock.h>

#include <array>
#include <set>

#include "tests/platform/sdk/SdkFixture.h"

using namespace SdkTest;
using Sim::SdkVersion;

namespace {

using Values = std::array<std::vector<long long>, 2>;  // per version

class EnumerationTest : public SdkFixture {
 protected:
   template <typename Value, typename Name>
   Values valuesOf( Value ( Shim::Sdk::*get )( Name ) ) {
      Values values;
      for ( int v = 0; v < 2; ++v ) {
         fp.reset( v == 0 ? SdkVersion::V6_5 : SdkVersion::V6_6 );
         for ( int i = 0; i < static_cast<int>( Name::Count ); ++i ) {
            values[v].push_back( ( sdk.*get )( static_cast<Name>( i ) ) );
         }
      }
      return values;
   }
   // From `first` on, no value is its position or the other version's value; no
   // two names share a value.
   static void expectScrambled( const Values& values, size_t first = 0 ) {
      for ( size_t i = first; i < values[0].size(); ++i ) {
         EXPECT_NE( static_cast<long long>( i ), values[0][i] ) << i;
         EXPECT_NE( static_cast<long long>( i ), values[1][i] ) << i;
         EXPECT_NE( values[0][i], values[1][i] ) << i;
      }
      for ( const auto& v : values ) {
         EXPECT_EQ( v.size(), std::set<long long>( v.begin(), v.end() ).size() );
      }
   }
};

TEST_F( EnumerationTest, ValuesDifferFromPositionsAndBetweenVersions ) {
   expectScrambled( valuesOf( &Shim::Sdk::fieldAction ) );
   expectScrambled( valuesOf( &Shim::Sdk::fieldIpType ) );
   expectScrambled( valuesOf( &Shim::Sdk::packetRes ) );
   const Values constants = valuesOf( &Shim::Sdk::constant );
   EXPECT_EQ( 0, constants[0][0] );  // BCM_E_NONE is 0 in every version
   EXPECT_EQ( 0, constants[1][0] );
   expectScrambled( constants, 1 );
}

TEST_F( EnumerationTest, ActionValueOfOneVersionIsNoSuchActionInTheNext ) {
   const bcm_field_action_t stale = bcmFieldActionCosQCpuNew;
   bringUp( SdkVersion::V6_6 );
   for ( int i = 0; i < static_cast<int>( Shim::FieldAction::Count ); ++i ) {
      const auto action = static_cast<Shim::FieldAction>( i );
      EXPECT_EQ( action, fp.actionFromValue( fp.fieldAction( action ) ) );
   }
   EXPECT_NE( Shim::FieldAction::CosQCpuNew, fp.actionFromValue( stale ) );
   createEntry( 100 );
   EXPECT_EQ( BCM_E_PARAM, addAction( 100, stale, 1 ) );
   EXPECT_EQ( 0, addAction( 100, bcmFieldActionCosQCpuNew, 1 ) );
}

// Lookup decodes an entry's enumerated qualifiers by the version it runs.
TEST_F( EnumerationTest, LookupReadsEnumeratedQualifiersOfTheRunningVersion ) {
   bringUp( SdkVersion::V6_6 );
   createEntry( 100 );
   ASSERT_EQ( 0, sdk.bcm_field_qualify_IpType( kUnit, 100, bcmFieldIpTypeIpv6 ) );
   ASSERT_EQ(
       0, sdk.bcm_field_qualify_PacketRes( kUnit, 100, BCM_FIELD_PKT_RES_L2UC, ~0u ) );
   ASSERT_EQ( 0, addAction( 100, bcmFieldActionDrop ) );
   ASSERT_EQ( 0, sdk.bcm_field_entry_install( kUnit, 100 ) );
   Sim::PacketFields packet;
   packet.ipType = Shim::FieldIpType::Ipv6;
   packet.packetRes = Shim::PacketRes::L2Uc;
   EXPECT_TRUE( ingress( packet ).drop );
   packet.packetRes = Shim::PacketRes::L2Bc;
   EXPECT_FALSE( ingress( packet ).drop );
}

TEST_F( EnumerationTest, ErrorTextsEndWithTheSdksCodes ) {
   EXPECT_STREQ( "Ok", sdk.bcm_errmsg( 0 ) );
   EXPECT_STREQ( "Invalid parameter", sdk.bcm_errmsg( BCM_E_PARAM ) );
   EXPECT_STREQ( "Partial success", sdk.bcm_errmsg( BCM_E_PARTIAL ) );
   EXPECT_STREQ( "Unknown error", sdk.bcm_errmsg( BCM_E_PARTIAL - 1 ) );
   EXPECT_STREQ( "Unknown error", sdk.bcm_errmsg( 1 ) );
}

}  // namespace
