// The CPU-port drop rule across VXLAN changes, and install-time failures of the
// L3 installer.
#include <gtest/gtest.h>

#include "L3TestSupport.h"

namespace {

using FerroTcamSystemAcl::Helper;

class CpuPortDrop : public testing::Test {
  protected:
   void SetUp() override { s_ = L3Test::installL3( L3Test::loadProfile( "default" ) ); }
   static Sim::PacketFields cpuPacket() {
      Sim::PacketFields p = L3Test::ipv4Packet( 0x0A000001, 6 );
      p.inPort = 0;
      return p;
   }
   Sim::StageResult fromCpu() { return L3Test::ingress( unit, cpuPacket() ); }
   L3Test::InstalledSwitch s_;
   const U16 unit = 0;
};

TEST_F( CpuPortDrop, PacketsFromTheCpuGoToTheDropQueue ) {
   EXPECT_EQ( fromCpu().cpuQueue, FerroTcamSystemAcl::HelperBase::cpuCosqDrop_ );
   EXPECT_EQ( L3Test::hitNames( s_, unit, cpuPacket() ).front(),
              "Redirect packets from CPU to CPU drop queue" );
}

TEST_F( CpuPortDrop, VxlanOnBlanksTheEntryAndOffReinstallsTheSameId ) {
   const U32 entry = s_.helper->sourceCpuPortDropRule( unit );
   s_.sw->smData->vxlanEnabled = true;
   s_.helper->doInstallVxlanCpuPortDropRule();
   auto view = Sim::FieldProcessor::instance().entry( unit, entry );
   ASSERT_TRUE( view.has_value() );
   EXPECT_FALSE( view->installed );
   EXPECT_TRUE( view->software.qualifiers.empty() );
   EXPECT_TRUE( view->software.actions.empty() );
   EXPECT_EQ( fromCpu().cpuQueue, std::nullopt );

   s_.sw->smData->vxlanEnabled = false;
   s_.helper->doInstallVxlanCpuPortDropRule();
   EXPECT_EQ( s_.helper->sourceCpuPortDropRule( unit ), entry );
   EXPECT_TRUE( Sim::FieldProcessor::instance().entry( unit, entry )->installed );
   EXPECT_EQ( fromCpu().cpuQueue, FerroTcamSystemAcl::HelperBase::cpuCosqDrop_ );
}

TEST_F( CpuPortDrop, NoModulesMeansNoSdkCall ) {
   s_.sw->smData->modules.clear();
   Sim::FieldProcessor::instance().clearJournal();
   s_.helper->doInstallVxlanCpuPortDropRule();
   EXPECT_TRUE( Sim::FieldProcessor::instance().journal().empty() );
}

TEST( L3InstallFailure, FailedInstallAbortsInTheInstaller ) {
   const Agent::SwitchConfig config = L3Test::loadProfile( "default" );
   Agent::Switch::Ptr sw = Agent::bringUp( config );
   Helper helper( "failing" );
   sw->attach( helper );
   Sim::FieldProcessor::instance().injectFault( { "bcm_field_entry_install", {}, {}, 3, BCM_E_FULL, true } );
   EXPECT_DEATH( helper.doInstallAclRules( 0 ),
                 "virtual void FerroTcamSystemAcl::Helper::doInstallAclRules\\(U16\\): Assertion "
                 "`rc == BCM_E_NONE && \"installEntry failed\"' failed" );
}

TEST( L3InstallFailure, CheckedCallFailureNamesTheInstaller ) {
   const Agent::SwitchConfig config = L3Test::loadProfile( "default" );
   Agent::Switch::Ptr sw = Agent::bringUp( config );
   Helper helper( "failing" );
   sw->attach( helper );
   Sim::FieldProcessor::instance().injectFault( { "bcm_field_qualify_OuterVlanPri", {}, {}, 1, BCM_E_PARAM, true } );
   EXPECT_DEATH( helper.doInstallAclRules( 0 ),
                 "FerroTcamSystemAcl/L3ElevatorRules.cpp:[0-9]+ bcm_field_qualify_OuterVlanPri\\( unit, "
                 "entry, TCAM_FIELD_L3PRIOHIGHCOS_OUTERVLANPRI_DATA, "
                 "TCAM_FIELD_L3PRIOHIGHCOS_OUTERVLANPRI_MASK \\) API ERROR:Invalid parameter \\(-4\\)"
                 "(.|\n)*virtual void FerroTcamSystemAcl::Helper::doInstallAclRules\\(U16\\): "
                 "Assertion `0' failed" );
}

TEST( L3InstallFailure, MissingCpuPortAborts ) {
   Agent::SwitchConfig config = L3Test::loadProfile( "default" );
   Agent::Switch::Ptr sw = Agent::bringUp( config );
   sw->smData->cpuPortOrder.clear();
   sw->smData->cpuPorts.clear();
   Helper helper( "no-cpu" );
   sw->attach( helper );
   EXPECT_DEATH( helper.doInstallAclRules( 0 ), "Expecting cpu port at init time" );
}

}  // namespace
