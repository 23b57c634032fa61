// updateCopyPimToCpuTcam edits the installed PIM trap's actions in place; a
// PIM packet's fate changes only once the entry is reinstalled.
#include <gtest/gtest.h>

#include "L3TestSupport.h"

namespace {

using FerroTcamSystemAcl::Helper;
using FerroTcamSystemAcl::HelperBase;

class PimToggle : public testing::Test {
  protected:
   void SetUp() override { s_ = L3Test::installL3( L3Test::loadProfile( "default" ) ); }
   Helper& helper() { return *s_.helper; }
   U32 pim() { return helper().pimRule( unit ); }
   // The actions of the PIM entry as (name, param0), software or hardware copy.
   std::vector<std::pair<std::string, uint32_t>> actions( bool hardware ) {
      const auto e = Sim::FieldProcessor::instance().entry( unit, pim() );
      std::vector<std::pair<std::string, uint32_t>> out;
      for ( const auto& a : ( hardware ? e->hardware : e->software ).actions ) {
         out.emplace_back( a.name, a.param0 );
      }
      std::sort( out.begin(), out.end() );
      return out;
   }
   Sim::StageResult pimHello() {
      Sim::PacketFields p = L3Test::ipv4Packet( 0xE000000D, 103 );
      p.dstMac = { 0x01, 0x00, 0x5e, 0x00, 0x00, 0x0d };
      return L3Test::ingress( unit, p );
   }
   L3Test::InstalledSwitch s_;
   const U16 unit = 0;
};

using Actions = std::vector<std::pair<std::string, uint32_t>>;

TEST_F( PimToggle, TrueTwiceLeavesOneCopyAndOneQueueAction ) {
   helper().updateCopyPimToCpuTcam( unit, true );
   helper().updateCopyPimToCpuTcam( unit, true );
   const Actions expected = { { "CopyToCpu", 0 }, { "CosQCpuNew", HelperBase::cpuCosqPIM_ } };
   EXPECT_EQ( actions( false ), expected );
   EXPECT_EQ( actions( true ), expected );
}

TEST_F( PimToggle, FalseWithoutCopyActionIsIgnoredAndReinstalled ) {
   auto& sim = Sim::FieldProcessor::instance();
   sim.clearJournal();
   helper().updateCopyPimToCpuTcam( unit, false );
   ASSERT_EQ( sim.journal().size(), 2u );
   EXPECT_STREQ( sim.journal()[ 0 ].function, "bcm_field_action_remove" );
   EXPECT_EQ( sim.journal()[ 0 ].rc, BCM_E_NOT_FOUND );
   EXPECT_STREQ( sim.journal()[ 1 ].function, "bcm_field_entry_reinstall" );
   EXPECT_EQ( actions( true ), ( Actions{ { "CosQCpuNew", HelperBase::cpuCosqPIM_ } } ) );
}

TEST_F( PimToggle, FalseThenTrueEqualsASingleTrue ) {
   helper().updateCopyPimToCpuTcam( unit, true );
   const Actions once = actions( true );
   helper().updateCopyPimToCpuTcam( unit, false );
   EXPECT_EQ( actions( true ), ( Actions{ { "CosQCpuNew", HelperBase::cpuCosqPIM_ } } ) );
   helper().updateCopyPimToCpuTcam( unit, true );
   EXPECT_EQ( actions( true ), once );
}

TEST_F( PimToggle, UnitWithoutPimRuleMakesNoSdkCall ) {
   Helper fresh( "no-rules" );
   s_.sw->attach( fresh );
   Sim::FieldProcessor::instance().clearJournal();
   fresh.updateCopyPimToCpuTcam( unit, true );
   fresh.updateCopyPimToCpuTcam( unit, false );
   EXPECT_TRUE( Sim::FieldProcessor::instance().journal().empty() );
}

TEST_F( PimToggle, PacketFateChangesOnlyThroughTheReinstall ) {
   EXPECT_EQ( pimHello().cpuQueue, HelperBase::cpuCosqPIM_ );
   EXPECT_FALSE( pimHello().copyToCpu );
   // The same edit without a reinstall stays in software.
   Shim::sdk_->bcm_field_action_add( unit, pim(), bcmFieldActionCopyToCpu, 0, 0 );
   EXPECT_FALSE( pimHello().copyToCpu );
   Shim::sdk_->bcm_field_action_remove( unit, pim(), bcmFieldActionCopyToCpu );

   helper().updateCopyPimToCpuTcam( unit, true );
   EXPECT_TRUE( pimHello().copyToCpu );
   EXPECT_EQ( pimHello().cpuQueue, HelperBase::cpuCosqPIM_ );
   helper().updateCopyPimToCpuTcam( unit, false );
   EXPECT_FALSE( pimHello().copyToCpu );
}

TEST_F( PimToggle, FailedReinstallAborts ) {
   Sim::FieldProcessor::instance().injectFault( { "bcm_field_entry_reinstall", {}, {}, 1, BCM_E_FULL, true } );
   EXPECT_DEATH( helper().updateCopyPimToCpuTcam( unit, true ),
                 "Assertion `rc == BCM_E_NONE && \"reinstallEntry failed\"' failed" );
}

}  // namespace
