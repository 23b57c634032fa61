// Applies scenario events to a running simulated switch the way the agent
// does: through the helper's update operations, the agent's events for ports
// and L2 protocol forwarding, and the flow-tracking configuration, whose
// publishers drive the helper's IPFIX machines.
#pragma once

#include <vector>

#include "platform/agent/HelperBase.h"
#include "platform/agent/SystemAclEvents.h"
#include "platform/agent/SwitchBringup.h"
#include "tools/ferro-acl/Scenario.h"

namespace FerroAcl {

class ScenarioRun {
  public:
   ScenarioRun( Agent::Switch::Ptr sw, FerroTcamSystemAcl::HelperBase& helper );

   // Library failures abort the process, by design. An event the switch
   // cannot take (a unit or port it does not have) throws
   // std::invalid_argument naming it, before anything of it is applied.
   void apply( const ScenarioEvent& event );

  private:
   std::vector<U16> unitsOf( const ScenarioEvent& event ) const;
   void ipfix( const ScenarioEvent& event );

   Agent::Switch::Ptr switch_;
   FerroTcamSystemAcl::HelperBase& helper_;
   Agent::SystemAclEvents events_;
};

}  // namespace FerroAcl
