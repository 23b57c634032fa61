// --tamper '[UNIT/]RULE:FIELD=VALUE' | '[UNIT/]RULE:-ACTION': changes one
// installed entry through the simulated SDK behind the helper library's back
// (qualify or add/remove an action, then reinstall), so that a person can
// watch verification catch it. FIELD is a qualifier or action as --json
// spells it. The entry is the one named RULE on UNIT, or on the lowest unit
// that has one.
//   'BGP - Dst Port:CosQCpuNew=5'   action parameters P0[,P1]
//   'VRRP:Ttl=254'                  qualifier DATA[/MASK]; the mask stays as
//                                   programmed unless given
//   'BGP - Dst Port:InPorts=1-4,6'  a port list; the mask stays
//   'PIM:-CosQCpuNew'               removes the action
//   'PIM Register:CopyToCpu'        adds a flag action
// "Drop" is both: it is the qualifier on an entry that holds that qualifier
// and not the action, and the action otherwise.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/agent/SwitchBringup.h"
#include "tools/ferro-acl/ChipState.h"
#include "tools/ferro-acl/Result.h"

namespace FerroAcl {

struct Tamper {
   std::string text;  // the option as given, for messages
   std::optional<int> unit;
   std::string rule;
   std::string field;
   bool remove = false;
   std::string value;  // "" for a removal or a flag action
};

// Checks the syntax and the field name; the rule is looked up on the chip.
Result<Tamper> parseTamper( const std::string& text );

// Applies it to the entry it names in `state` (collected after install).
// The error says what was wrong with the option: no such rule, a value the
// field cannot take, an action to remove that is not there, or the SDK's
// refusal.
Result<int> applyTamper( const Tamper& tamper, const ChipState& state );

}  // namespace FerroAcl
