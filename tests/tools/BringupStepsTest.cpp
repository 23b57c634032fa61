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
       "doInstallAclRules doInstallL2TrapRules doInstallEapolFwdRule "
       "doInstallL2McastPTPRuleCommon "
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
   EXPECT_TRUE( plan.skipped.empty() );
   config.units.erase( config.units.begin() );  // no VLAN-stage-class unit left
   const BringupPlan plain = planBringup( config, {} );
   EXPECT_TRUE( plain.skipped.empty() );
   EXPECT_EQ( plain.calls.size(), 10u );  // no TH3 step without a VLAN-stage-class unit

   // A step the operator leaves out is reported, on every unit it applies to.
   const BringupPlan skipping = planBringup( config, { "doInstallEapolFwdRule" } );
   ASSERT_EQ( skipping.skipped.size(), 1u );
   EXPECT_EQ( skipping.skipped[0].step->name, std::string( "doInstallEapolFwdRule" ) );
   EXPECT_EQ( skipping.skipped[0].reason, "--skip-step" );
   EXPECT_EQ( skipping.calls.size(), 9u );

   // Reduced L2 traps reserve no L2 PTP entries, so nothing fills them.
   config.reducedL2TrapsB = true;
   for ( const PlannedCall& call : planBringup( config, {} ).calls ) {
      EXPECT_EQ( std::string( call.step->name ).find( "L2McastPTP" ), std::string::npos );
      EXPECT_EQ( std::string( call.step->name ).find( "L2UnicastPTP" ), std::string::npos );
   }
}
