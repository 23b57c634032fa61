// ferro-acl audit: every entry of every profile has a witness packet or a
// listed reason; a planted entry that shadows one is found with its name; a
// listed entry that becomes reachable is said to be.
#include "tools/ferro-acl/Audit.h"

#include <gtest/gtest.h>

#include "tests/FerroTcamSystemAcl/L3TestSupport.h"
#include "tests/tools/ToolProcess.h"

namespace {

using FerroAcl::AuditFinding;

const AuditFinding& named( const std::vector<AuditFinding>& findings, const std::string& name ) {
   for ( const AuditFinding& f : findings ) {
      if ( f.name == name ) {
         return f;
      }
   }
   ADD_FAILURE() << "no entry named " << name;
   static const AuditFinding none;
   return none;
}

class AuditProfiles : public testing::TestWithParam<std::string> {};

TEST_P( AuditProfiles, EveryEntryHasAWitnessOrAListedReason ) {
   const FerroAclTest::ToolRun run =
       FerroAclTest::runTool( { "audit", "--profile", GetParam() } );
   EXPECT_EQ( run.exitCode, 0 ) << run.out << run.err;
   EXPECT_EQ( run.out.find( "NOT EXPECTED" ), std::string::npos ) << run.out;
}

INSTANTIATE_TEST_SUITE_P( Profiles, AuditProfiles,
                          testing::ValuesIn( FerroAclTest::profileFiles() ),
                          FerroAclTest::ProfileStem() );

class AuditTest : public testing::Test {
  protected:
   void SetUp() override { s_ = L3Test::installSystemAcl( L3Test::loadProfile( "default" ) ); }
   std::vector<AuditFinding> audit() { return FerroAcl::auditUnit( *s_.sw, 0 ); }
   L3Test::InstalledSwitch s_;
};

// Every witness the audit reports hit its entry in a lookup.
TEST_F( AuditTest, WitnessesHitTheirEntries ) {
   for ( const AuditFinding& f : audit() ) {
      SCOPED_TRACE( f.name );
      EXPECT_EQ( f.reachable(), f.byDesign == nullptr );
      if ( f.witness ) {
         EXPECT_TRUE( f.confirmed );
      }
   }
}

TEST_F( AuditTest, APlantedEntryIsNamedAsTheShadower ) {
   Shim::Sdk& sdk = *Shim::sdk_;
   const bcm_field_entry_t planted = Agent::ManagerLayout::l3Base + 200;
   ASSERT_EQ( sdk.bcm_field_entry_create_id( 0, Agent::ManagerLayout::l3Group, planted ), 0 );
   ASSERT_EQ( sdk.bcm_field_entry_prio_set( 0, planted, 1000 ), 0 );
   ASSERT_EQ( sdk.bcm_field_qualify_L4DstPort( 0, planted, 179, 0xffff ), 0 );
   ASSERT_EQ( sdk.bcm_field_entry_install( 0, planted ), 0 );
   const std::vector<AuditFinding> findings = audit();
   const AuditFinding& bgp = named( findings, "BGP - Dst Port" );
   EXPECT_FALSE( bgp.reachable() );
   EXPECT_TRUE( bgp.unexplained() );
   EXPECT_EQ( bgp.shadowedBy, std::vector<std::string>{ "entry " + std::to_string( planted ) } );
   // Its neighbour on the source port is untouched.
   EXPECT_TRUE( named( findings, "BGP - Src Port" ).reachable() );
}

TEST_F( AuditTest, AListedEntryThatBecomesReachableSaysSo ) {
   const AuditFinding before = named( audit(), "BFD Echo" );
   ASSERT_FALSE( before.reachable() );
   ASSERT_NE( before.byDesign, nullptr );
   // Match the echo port exactly: the control entry's 3784/0xfffe no longer covers it.
   ASSERT_EQ( Shim::sdk_->bcm_field_qualify_clear( 0, before.id ), 0 );
   ASSERT_EQ( Shim::sdk_->bcm_field_qualify_L4DstPort( 0, before.id, 3785, 0xffff ), 0 );
   ASSERT_EQ( Shim::sdk_->bcm_field_entry_reinstall( 0, before.id ), 0 );
   const AuditFinding after = named( audit(), "BFD Echo" );
   EXPECT_TRUE( after.reachable() );
   EXPECT_NE( after.byDesign, nullptr );
   EXPECT_FALSE( after.unexplained() );
   EXPECT_EQ( after.witness->l4DstPort, 3785 );
}

}  // namespace
