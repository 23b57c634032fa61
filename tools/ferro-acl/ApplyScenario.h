// `ferro-acl apply`: runs a checked scenario on the installed switch and says,
// after each event, what it changed in the installed entries. The text form
// prints each event before it runs, so that an event the library aborts on is
// the last one shown; the JSON form is one document at the end:
//   {"events":[{"line":N,"event":"pim copy on","changes":[
//     {"unit":0,"id":1037,"name":"PIM","change":"changed","fields":[
//       {"kind":"action","field":"CopyToCpu","before":null,"after":"0"}]}]}]}
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
