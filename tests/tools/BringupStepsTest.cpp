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
   const std::string install =
       "doInstallAclRules doInstallL2TrapRules doInstallL2McastPTPRuleCommon "
       "doInstallL2UnicastPTPRuleCommon doInstallIpv4McastPTPRuleCommon "
       "doInstallIpv4UnicastFwdPTPRuleCommon doInstallIpv4ElevatorPTPRuleCommon ";
   auto onUnit = []( const std::string& names, int unit ) {
      std::string out;
      for ( size_t at = 0, end; ( end = names.find( ' ', at ) ) != std::string::npos;
            at = end + 1 ) {
         out += names.substr( at, end - at ) + "@" + std::to_string( unit ) + " ";
      }
      return out;
   };
   const std::string verify = "verifyInstalledAclRules verifyInstalledL2TrapRules ";
   EXPECT_EQ( calls, onUnit( install, 0 ) + onUnit( install, 2 ) +
                         "doInstallTH3SystemAclRule@2 " + onUnit( verify, 0 ) +
                         onUnit( verify, 2 ) );
   ASSERT_EQ( plan.skipped.size(), 1u );  // the step this helper build lacks
   EXPECT_EQ( plan.skipped[0].step->name, std::string( "doInstallEapolFwdRule" ) );
   EXPECT_EQ( plan.skipped[0].reason, "not in this helper build" );
   config.units.erase( config.units.begin() );  // no VLAN-stage-class unit left
   const BringupPlan plain = planBringup( config, {} );
   EXPECT_EQ( plain.skipped.size(), 1u );
   EXPECT_EQ( plain.calls.size(), 9u );  // no TH3 step without a VLAN-stage-class unit

   // Reduced L2 traps reserve no L2 PTP entries, so nothing fills them.
   config.reducedL2TrapsB = true;
   for ( const PlannedCall& call : planBringup( config, {} ).calls ) {
      EXPECT_EQ( std::string( call.step->name ).find( "L2McastPTP" ), std::string::npos );
      EXPECT_EQ( std::string( call.step->name ).find( "L2UnicastPTP" ), std::string::npos );
   }
}
