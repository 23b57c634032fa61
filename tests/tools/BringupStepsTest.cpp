#include "tools/ferro-acl/BringupSteps.h"

#include <gtest/gtest.h>

using namespace FerroAcl;

// Units 2 (a VLAN-stage-class chip) and 0, listed out of order: every install
// of a unit before the next unit, verification once all are in. The TH3 step
// applies to VLAN-stage-class units only; lacking in this helper build, it is
// skipped while there is such a unit and absent otherwise.
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
              "doInstallAclRules@0 doInstallAclRules@2 verifyInstalledAclRules@0 "
              "verifyInstalledAclRules@2 " );
   ASSERT_EQ( plan.skipped.size(), 9u );  // the steps this helper build lacks
   EXPECT_EQ( plan.skipped[7].step->name, std::string( "doInstallTH3SystemAclRule" ) );
   EXPECT_EQ( plan.skipped[7].reason, "not in this helper build" );
   config.units.erase( config.units.begin() );  // no VLAN-stage-class unit left
   const BringupPlan plain = planBringup( config, {} );
   ASSERT_EQ( plain.skipped.size(), 8u );
   EXPECT_EQ( plain.skipped[7].step->name, std::string( "verifyInstalledL2TrapRules" ) );
}
