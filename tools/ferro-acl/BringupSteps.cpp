#include "tools/ferro-acl/BringupSteps.h"

#include <algorithm>

namespace FerroAcl {

namespace {

using FerroTcamSystemAcl::HelperBase;
constexpr auto install = StepKind::install;
constexpr auto verify = StepKind::verify;
constexpr auto every = StepUnits::every;
constexpr auto vlanStageClass = StepUnits::vlanStageClass;
constexpr auto fullL2Traps = StepUnits::fullL2Traps;

// The PTP operations are the ...Common ones: the plain ones are deliberately
// inert on these chips and the agent calls the common ones at bring-up. The L2
// PTP entries are reserved by the L2 trap installer, which leaves them out
// while the traps are reduced.
const BringupStep steps[] = {
    { "doInstallAclRules", &HelperBase::doInstallAclRules, install, every },
    { "doInstallL2TrapRules", &HelperBase::doInstallL2TrapRules, install, every },
    { "doInstallEapolFwdRule", &HelperBase::doInstallEapolFwdRule, install, every },
    { "doInstallL2McastPTPRuleCommon", &HelperBase::doInstallL2McastPTPRuleCommon,
      install, fullL2Traps },
    { "doInstallL2UnicastPTPRuleCommon", &HelperBase::doInstallL2UnicastPTPRuleCommon,
      install, fullL2Traps },
    { "doInstallIpv4McastPTPRuleCommon", &HelperBase::doInstallIpv4McastPTPRuleCommon,
      install, every },
    { "doInstallIpv4UnicastFwdPTPRuleCommon",
      &HelperBase::doInstallIpv4UnicastFwdPTPRuleCommon, install, every },
    { "doInstallIpv4ElevatorPTPRuleCommon",
      &HelperBase::doInstallIpv4ElevatorPTPRuleCommon, install, every },
    { "doInstallTH3SystemAclRule", &HelperBase::doInstallTH3SystemAclRule, install,
      vlanStageClass },
    { "verifyInstalledAclRules", &HelperBase::verifyInstalledAclRules, verify, every },
    { "verifyInstalledL2TrapRules", &HelperBase::verifyInstalledL2TrapRules, verify,
      every },
};

bool appliesTo( const BringupStep& step, const Agent::SwitchConfig& config,
                const Agent::ChipProfile* chip ) {
   switch ( step.units ) {
      case StepUnits::every:
         return true;
      case StepUnits::fullL2Traps:
         return !config.reducedL2TrapsA && !config.reducedL2TrapsB;
      case StepUnits::vlanStageClass:
         return chip != nullptr && chip->attributes.vlanStageClassRulesSupported;
   }
   return false;
}

const Agent::ChipProfile* chipOf( const Agent::SwitchConfig& config, U16 unit ) {
   for ( const Agent::UnitSpec& configured : config.units ) {
      if ( configured.unit != unit ) {
         continue;
      }
      for ( const Agent::ChipProfile& chip : config.chips ) {
         if ( chip.family == configured.chip ) {
            return &chip;
         }
      }
   }
   return nullptr;
}

}  // namespace

std::span<const BringupStep> bringupSteps() {
   return steps;
}

const BringupStep* findBringupStep( std::string_view name ) {
   for ( const BringupStep& step : steps ) {
      if ( name == step.name ) {
         return &step;
      }
   }
   return nullptr;
}

std::string BringupPlan::unverifiedReason( U16 unit ) const {
   // Verified means every verification ran: a skipped one leaves the unit
   // unchecked in what it covers.
   for ( const SkippedStep& s : skipped ) {
      if ( s.step->kind == StepKind::verify ) {
         return std::string( s.step->name ) + " skipped (" + s.reason + ")";
      }
   }
   const bool verifyCalls =
       std::any_of( calls.begin(), calls.end(), [unit]( const PlannedCall& call ) {
          return call.unit == unit && call.step->kind == StepKind::verify;
       } );
   if ( !verifyCalls ) {
      return "no verification ran";
   }
   auto stage = stages.find( unit );
   constexpr auto needed = FerroCentral::BringupStage::aclVerifiable;
   if ( stage != stages.end() &&
        FerroCentral::isBlocked( { "", 0, 0, stage->second }, needed ) ) {
      return "bring-up stage " + std::to_string( int( stage->second ) ) + " is before " +
             std::to_string( int( needed ) );
   }
   return "";
}

BringupPlan planBringup( const Agent::SwitchConfig& config,
                         const std::vector<std::string>& operatorSkips ) {
   BringupPlan plan;
   for ( const Agent::UnitSpec& configured : config.units ) {
      plan.units.push_back( configured.unit );
      plan.stages[configured.unit] = configured.bringupStage;
   }
   std::sort( plan.units.begin(), plan.units.end() );

   for ( const BringupStep& step : steps ) {
      const bool applies =
          std::any_of( plan.units.begin(), plan.units.end(),
                       [&]( U16 u ) { return appliesTo( step, config, chipOf( config, u ) ); } );
      const bool operatorSkip = std::find( operatorSkips.begin(), operatorSkips.end(),
                                           step.name ) != operatorSkips.end();
      if ( applies && operatorSkip ) {
         plan.skipped.push_back( SkippedStep{ &step, "--skip-step" } );
      }
   }
   auto runs = [&]( const BringupStep& step ) {
      return std::none_of( plan.skipped.begin(), plan.skipped.end(),
                           [&]( const SkippedStep& s ) { return s.step == &step; } );
   };
   // Every install on a unit before the next unit, as the agent brings units up
   // one by one; verification only once every unit is installed.
   for ( StepKind kind : { StepKind::install, StepKind::verify } ) {
      for ( U16 unit : plan.units ) {
         for ( const BringupStep& step : steps ) {
            if ( step.kind == kind && runs( step ) &&
                 appliesTo( step, config, chipOf( config, unit ) ) ) {
               plan.calls.push_back( PlannedCall{ &step, unit } );
            }
         }
      }
   }
   return plan;
}

}  // namespace FerroAcl
