#include "tools/ferro-acl/BringupSteps.h"

#include <gtest/gtest.h>

#include <algorithm>

using namespace FerroAcl;

namespace {

Agent::UnitSpec unitOf( U16 unit, const char* chip ) {
   Agent::UnitSpec described;  // a complete bring-up unless a case says otherwise
   described.unit = unit;
   described.modId = unit;
   described.chip = chip;
   return described;
}

// Units 2 (a VLAN-stage-class chip) and 0 (not one), listed out of order.
Agent::SwitchConfig mixedSwitch() {
   Agent::ChipProfile plain;
   plain.family = "Plain";
   Agent::ChipProfile th3;
   th3.family = "Th3";
   th3.attributes.vlanStageClassRulesSupported = true;
   Agent::SwitchConfig config;
   config.chips = { plain, th3 };
   config.units = { unitOf( 2, "Th3" ), unitOf( 0, "Plain" ) };
   return config;
}

size_t position( const BringupStep* step ) {
   return size_t( step - bringupSteps().data() );
}

bool isSkipped( const BringupPlan& plan, std::string_view name,
                std::string_view reason ) {
   return std::any_of( plan.skipped.begin(), plan.skipped.end(),
                       [&]( const SkippedStep& s ) {
                          return s.step->name == name && s.reason == reason;
                       } );
}

}  // namespace

TEST( BringupSteps, TableFollowsTheAgentsOrder ) {
   std::vector<std::string> names;
   for ( const BringupStep& step : bringupSteps() ) {
      names.push_back( step.name );
   }
   EXPECT_EQ(
       names,
       ( std::vector<std::string>{
           "doInstallAclRules", "doInstallL2TrapRules", "doInstallEapolFwdRule",
           "doInstallL2McastPTPRuleCommon", "doInstallL2UnicastPTPRuleCommon",
           "doInstallIpv4McastPTPRuleCommon", "doInstallIpv4UnicastFwdPTPRuleCommon",
           "doInstallIpv4ElevatorPTPRuleCommon", "doInstallTH3SystemAclRule",
           "verifyInstalledAclRules", "verifyInstalledL2TrapRules" } ) );
   EXPECT_EQ( findBringupStep( "doInstallTH3SystemAclRule" )->units,
              StepUnits::vlanStageClass );
   EXPECT_EQ( findBringupStep( "verifyInstalledAclRules" )->kind, StepKind::verify );
   EXPECT_EQ( findBringupStep( "doInstallAclRules" )->operation,
              &FerroTcamSystemAcl::HelperBase::doInstallAclRules );
   EXPECT_EQ( findBringupStep( "doInstallAclRule" ), nullptr );
}

TEST( BringupSteps, InstallsUnitByUnitThenVerifies ) {
   const BringupPlan plan = planBringup( mixedSwitch(), {} );
   EXPECT_EQ( plan.units, ( std::vector<U16>{ 0, 2 } ) );
   ASSERT_FALSE( plan.calls.empty() );
   EXPECT_EQ( plan.calls[0].step->name, std::string( "doInstallAclRules" ) );
   EXPECT_EQ( plan.calls[0].unit, 0 );
   // Installs of unit 0, installs of unit 2, verifications of unit 0, of unit
   // 2; table order within each.
   auto rank = []( const PlannedCall& call ) {
      return std::make_tuple( call.step->kind == StepKind::verify, call.unit,
                              position( call.step ) );
   };
   for ( size_t i = 1; i < plan.calls.size(); ++i ) {
      EXPECT_LT( rank( plan.calls[i - 1] ), rank( plan.calls[i] ) ) << "call " << i;
   }
   for ( const PlannedCall& call : plan.calls ) {
      EXPECT_TRUE( call.step->available ) << call.step->name;
   }
   EXPECT_TRUE( plan.verifies( 0 ) );
   EXPECT_TRUE( plan.verifies( 2 ) );
}

TEST( BringupSteps, UnavailableStepsAreSkippedNeverCalled ) {
   const BringupPlan plan = planBringup( mixedSwitch(), {} );
   for ( const BringupStep& step : bringupSteps() ) {
      const bool called =
          std::any_of( plan.calls.begin(), plan.calls.end(),
                       [&]( const PlannedCall& call ) { return call.step == &step; } );
      EXPECT_EQ( called, step.available ) << step.name;
      EXPECT_EQ( isSkipped( plan, step.name, "not in this helper build" ),
                 !step.available )
          << step.name;
   }
}

TEST( BringupSteps, Th3StepOnlyOnVlanStageClassUnits ) {
   const BringupStep& th3 = *findBringupStep( "doInstallTH3SystemAclRule" );
   const BringupPlan mixed = planBringup( mixedSwitch(), {} );
   for ( const PlannedCall& call : mixed.calls ) {
      if ( call.step == &th3 ) {
         EXPECT_EQ( call.unit, 2 );
      }
   }
   // Without such a unit the step does not apply: neither run nor skipped.
   Agent::SwitchConfig plainOnly = mixedSwitch();
   plainOnly.units = { unitOf( 0, "Plain" ) };
   const BringupPlan plain = planBringup( plainOnly, {} );
   EXPECT_FALSE( std::any_of( plain.calls.begin(), plain.calls.end(),
                              [&]( const PlannedCall& c ) { return c.step == &th3; } ) );
   EXPECT_FALSE( std::any_of( plain.skipped.begin(), plain.skipped.end(),
                              [&]( const SkippedStep& s ) { return s.step == &th3; } ) );
}

TEST( BringupSteps, OperatorSkipsAreReportedAndLeaveUnitsUnverified ) {
   const BringupPlan plan = planBringup(
       mixedSwitch(),
       { "verifyInstalledAclRules", "verifyInstalledL2TrapRules", "doInstallAclRules" } );
   EXPECT_TRUE( isSkipped( plan, "verifyInstalledAclRules", "--skip-step" ) );
   EXPECT_TRUE( isSkipped( plan, "doInstallAclRules", "--skip-step" ) );
   for ( const PlannedCall& call : plan.calls ) {
      EXPECT_NE( call.step->name, std::string( "verifyInstalledAclRules" ) );
      EXPECT_NE( call.step->name, std::string( "doInstallAclRules" ) );
   }
   EXPECT_EQ( plan.unverifiedReason( 0 ), "no verification ran" );
   EXPECT_FALSE( plan.verifies( 2 ) );
}

// The library checks nothing on a unit whose bring-up has not reached ACL
// verification, so such a unit is not reported as verified.
TEST( BringupSteps, UnitsBeforeAclVerificationAreNotVerified ) {
   Agent::SwitchConfig config = mixedSwitch();
   config.units[0].bringupStage = FerroCentral::BringupStage::systemAclInstalled;
   config.units[1].bringupStage = FerroCentral::BringupStage::aclVerifiable;
   const BringupPlan plan = planBringup( config, {} );
   EXPECT_EQ( plan.unverifiedReason( 2 ), "bring-up stage 80 is before 91" );
   EXPECT_TRUE( plan.verifies( 0 ) );
   // Its rules are still installed and verification is still called.
   EXPECT_TRUE(
       std::any_of( plan.calls.begin(), plan.calls.end(), []( const PlannedCall& c ) {
          return c.unit == 2 && c.step->kind == StepKind::verify;
       } ) );
}
