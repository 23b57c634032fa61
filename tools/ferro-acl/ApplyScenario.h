// `ferro-acl apply`: runs a checked scenario on the installed switch and says,
// after each event, what it changed in the installed entries (entries matched
// by rule name as `diff` matches them). The text form prints each event before
// it runs, so that an event the library aborts on is the last one shown:
//   3: pim copy on
//     unit 0 "PIM" changed
//       action CopyToCpu: absent -> 0
// The JSON form is one document at the end:
//   {"events":[{"line":3,"event":"pim copy on","changes":[
//     {"unit":0,"rule":"PIM","change":"changed","fields":[
//       {"field":"action CopyToCpu","before":null,"after":[0,0]}]}]}]}
// "change" is "added", "removed" or "changed"; "fields" lists what differs,
// with the values in the --json form of the chip state.
#pragma once

#include <ostream>
#include <vector>

#include "platform/agent/HelperBase.h"
#include "platform/agent/SwitchBringup.h"
#include "tools/ferro-acl/BringupSteps.h"
#include "tools/ferro-acl/Scenario.h"

namespace FerroAcl {

void applyScenario( const std::vector<ScenarioEvent>& events, const Agent::Switch::Ptr& sw,
                    FerroTcamSystemAcl::HelperBase& helper, const BringupPlan& plan,
                    bool json, std::ostream& out );

}  // namespace FerroAcl
