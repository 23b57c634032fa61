// Run-time enumeration values per SDK version, and return-code texts.
#include <gtest/gtest.h>

#include <set>

#include "tests/platform/sdk/SdkFixture.h"

using namespace SdkTest;
using Sim::SdkVersion;

namespace {

class EnumerationTest : public ::testing::Test {
 protected:
   void TearDown() override { fp.reset(); }

   // Values of every name of one enumeration under `version`.
   template <typename Name>
   std::vector<long long> valuesUnder( SdkVersion version,
                                       long long ( *value )( Name ) ) {
      fp.reset( version );
      std::vector<long long> out;
      for ( int i = 0; i < static_cast<int>( Name::Count ); ++i ) {
         out.push_back( value( static_cast<Name>( i ) ) );
      }
      return out;
   }

   // Every value differs from its position and from the other version's value,
   // and no two names share a value.
   void expectScrambled( const std::vector<long long>& v65,
                         const std::vector<long long>& v66 ) {
      ASSERT_EQ( v65.size(), v66.size() );
      for ( size_t i = 0; i < v65.size(); ++i ) {
         SCOPED_TRACE( "position " + std::to_string( i ) );
         EXPECT_NE( static_cast<long long>( i ), v65[i] );
         EXPECT_NE( static_cast<long long>( i ), v66[i] );
         EXPECT_NE( v65[i], v66[i] );
      }
      EXPECT_EQ( v65.size(), std::set<long long>( v65.begin(), v65.end() ).size() );
      EXPECT_EQ( v66.size(), std::set<long long>( v66.begin(), v66.end() ).size() );
   }

   static inline Sim::FieldProcessor& fp = Sim::FieldProcessor::instance();
};

long long actionOf( Shim::FieldAction a ) {
   return Shim::sdk_->fieldAction( a );
}
long long ipTypeOf( Shim::FieldIpType t ) {
   return Shim::sdk_->fieldIpType( t );
}
long long packetResOf( Shim::PacketRes r ) {
   return Shim::sdk_->packetRes( r );
}

TEST_F( EnumerationTest, ValuesDifferFromPositionsAndBetweenVersions ) {
   expectScrambled( valuesUnder( SdkVersion::V6_5, actionOf ),
                    valuesUnder( SdkVersion::V6_6, actionOf ) );
   expectScrambled( valuesUnder( SdkVersion::V6_5, ipTypeOf ),
                    valuesUnder( SdkVersion::V6_6, ipTypeOf ) );
   expectScrambled( valuesUnder( SdkVersion::V6_5, packetResOf ),
                    valuesUnder( SdkVersion::V6_6, packetResOf ) );
}

TEST_F( EnumerationTest, ConstantsFollowVersionButSuccessIsZero ) {
   fp.reset( SdkVersion::V6_5 );
   const int select65 = BCM_FIELD_EGRESS_CLASS_SELECT_NEW;
   const int status65 = BCM_FIELD_ENTRY_ENABLE_STATUS;
   EXPECT_EQ( 0, int( BCM_E_NONE ) );
   fp.reset( SdkVersion::V6_6 );
   EXPECT_EQ( 0, int( BCM_E_NONE ) );
   EXPECT_NE( select65, int( BCM_FIELD_EGRESS_CLASS_SELECT_NEW ) );
   EXPECT_NE( status65, int( BCM_FIELD_ENTRY_ENABLE_STATUS ) );
   EXPECT_NE( 1, select65 );
   EXPECT_NE( 2, status65 );
}

TEST_F( EnumerationTest, ActionValuesDecodeOnlyInTheirVersion ) {
   for ( SdkVersion version : { SdkVersion::V6_5, SdkVersion::V6_6 } ) {
      fp.reset( version );
      for ( int i = 0; i < static_cast<int>( Shim::FieldAction::Count ); ++i ) {
         const auto action = static_cast<Shim::FieldAction>( i );
         EXPECT_EQ( action, fp.actionFromValue( fp.fieldAction( action ) ) );
      }
      EXPECT_FALSE( fp.actionFromValue( 0 ) );
   }

   // A value remembered from one version is no action, or another one, in the next.
   fp.reset( SdkVersion::V6_5 );
   const bcm_field_action_t stale = bcmFieldActionCosQCpuNew;
   fp.reset( SdkVersion::V6_6 );
   EXPECT_NE( Shim::FieldAction::CosQCpuNew, fp.actionFromValue( stale ) );
   ASSERT_EQ( 0, fp.attachUnit( kUnit, Sim::UnitConfig{} ) );
   ASSERT_EQ( 0, Shim::sdk_->bcm_field_group_create_id( kUnit, ingressQset(), 1, 1 ) );
   ASSERT_EQ( 0, Shim::sdk_->bcm_field_entry_create_id( kUnit, 1, 1 ) );
   EXPECT_EQ( BCM_E_PARAM, Shim::sdk_->bcm_field_action_add( kUnit, 1, stale, 1, 0 ) );
   EXPECT_EQ(
       0, Shim::sdk_->bcm_field_action_add( kUnit, 1, bcmFieldActionCosQCpuNew, 1, 0 ) );
}

TEST_F( EnumerationTest, ErrorTextsFollowTheSdk ) {
   const std::pair<int, const char*> texts[] = {
       { 0, "Ok" },
       { BCM_E_INTERNAL, "Internal error" },
       { BCM_E_MEMORY, "Out of memory" },
       { BCM_E_UNIT, "Invalid unit" },
       { BCM_E_PARAM, "Invalid parameter" },
       { BCM_E_EMPTY, "Table empty" },
       { BCM_E_FULL, "Table full" },
       { BCM_E_NOT_FOUND, "Entry not found" },
       { BCM_E_EXISTS, "Entry exists" },
       { BCM_E_TIMEOUT, "Operation timed out" },
       { BCM_E_BUSY, "Operation still running" },
       { BCM_E_FAIL, "Operation failed" },
       { BCM_E_DISABLED, "Operation disabled" },
       { BCM_E_BADID, "Invalid identifier" },
       { BCM_E_RESOURCE, "No resources for operation" },
       { BCM_E_CONFIG, "Invalid configuration" },
       { BCM_E_UNAVAIL, "Feature unavailable" },
       { BCM_E_INIT, "Feature not initialized" },
       { BCM_E_PORT, "Invalid port" },
       { BCM_E_IO, "I/O error" },
       { BCM_E_ACCESS, "Access error" },
       { BCM_E_NO_HANDLER, "No handler" },
       { BCM_E_PARTIAL, "Partial success" },
       { -23, "Unknown error" },
       { 1, "Unknown error" },
   };
   for ( const auto& [rc, text] : texts ) {
      EXPECT_STREQ( text, Shim::sdk_->bcm_errmsg( rc ) ) << rc;
   }
}

}  // namespace
