#include "tools/ferro-acl/BringupSteps.h"

#include <gtest/gtest.h>

using namespace FerroAcl;

// Units 2 (a VLAN-stage-class chip) and 0, listed out of order: every install
// of a unit before the next unit, verification once all are in. The TH3 step
// runs on VLAN-stage-class units only.
TEST( BringupSteps, InstallsUnitByUnitThenVerifies ) {
   FerroCentral::ChipAttributes vlanStageClass;
   vlanStageClass.vlanStageClassRulesSupported = true;
   Agent::SwitchConfig config;
   config.chips = { { "Th3", 0, 0, vlanStageClass }, { "Plain", 0, 0, {} } };
   config.units = { { 2, 2, "Th3", FerroCentral::BringupStage::complete, {} },
                    { 0, 0, "Plain", FerroCentral::BringupStage::complete, {} } };
   const BringupPlan plan = planBringup( config, {} );
   std::string calls;
   for ( const PlannedCall& call : plan.calls ) {
      calls += call.step->name + ( "@" + std::to_string( call.unit ) ) + " ";
   }
   EXPECT_EQ( calls,
              "doInstallAclRules@0 doInstallAclRules@2 doInstallTH3SystemAclRule@2 "
              "verifyInstalledAclRules@0 verifyInstalledAclRules@2 " );
   // The steps this helper build lacks; whether a VLAN-stage-class unit is
   // there makes no difference any more.
   ASSERT_EQ( plan.skipped.size(), 8u );
   EXPECT_EQ( plan.skipped[7].step->name, std::string( "verifyInstalledL2TrapRules" ) );
   config.units.erase( config.units.begin() );  // no VLAN-stage-class unit left
   const BringupPlan plain = planBringup( config, {} );
   calls.clear();
   for ( const PlannedCall& call : plain.calls ) {
      calls += call.step->name + ( "@" + std::to_string( call.unit ) ) + " ";
   }
   EXPECT_EQ( calls, "doInstallAclRules@0 verifyInstalledAclRules@0 " );
   EXPECT_EQ( plain.skipped.size(), 8u );
}
