// The agent's bring-up of the system ACL as one ordered table: per unit the
// install operations, then per unit the verifications. A step the operator
// leaves out is reported as skipped.
#pragma once

#include <map>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/agent/HelperBase.h"
#include "platform/agent/SwitchBringup.h"

namespace FerroAcl {

enum class StepKind : U8 { install, verify };

// Which units a step runs on.
enum class StepUnits : U8 {
   every,
   vlanStageClass,  // units whose chip classifies control packets in the VLAN stage
   fullL2Traps,     // every unit, unless the switch installs only the reduced L2 traps
};

struct BringupStep {
   const char* name;
   void ( FerroTcamSystemAcl::HelperBase::*operation )( U16 unit );
   StepKind kind;
   StepUnits units;
};

// In the order the agent runs them.
std::span<const BringupStep> bringupSteps();
const BringupStep* findBringupStep( std::string_view name );

struct PlannedCall {
   const BringupStep* step;
   U16 unit;
};

struct SkippedStep {
   const BringupStep* step;
   std::string reason;  // "--skip-step"
};

struct BringupPlan {
   std::vector<U16> units;          // ascending
   std::vector<PlannedCall> calls;  // in the order to make them
   std::vector<SkippedStep>
       skipped;  // in table order; steps that apply to no unit are absent
   std::map<U16, FerroCentral::BringupStage> stages;  // how far each unit's bring-up got

   // Why `unit` is not verified once the calls ran: no verification runs on it,
   // or its bring-up stopped before verification is possible (the library
   // then checks nothing). Empty when it is verified.
   std::string unverifiedReason( U16 unit ) const;
   bool verifies( U16 unit ) const { return unverifiedReason( unit ).empty(); }
};

// `operatorSkips` names steps not to run (--skip-step); each must be a step of
// the table.
BringupPlan planBringup( const Agent::SwitchConfig& config,
                         const std::vector<std::string>& operatorSkips );

}  // namespace FerroAcl
