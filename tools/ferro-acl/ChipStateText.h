// The human form of the chip state: per unit a header line, then one aligned
// line per entry (id, priority, state, group, rule name, qualifiers, actions,
// rule tables); then the skipped steps and the verification of each unit.
//   unit 0: Trident3, model 5, 38 entries
//        id  prio  state    group       name  qualifiers                    actions
//        tables
//      1024    12  enabled  L3 control  bgp   IpType=Ipv4Any L4DstPort=179 CosQCpuNew(38)
//      bgpRule
// A value whose mask covers the field is shown alone, others as data/mask;
// several values of one qualifier are joined with "|".
#pragma once

#include <ostream>
#include <string>

#include "tools/ferro-acl/ChipState.h"

namespace FerroAcl {

void printChipState( std::ostream& out, const ChipState& state );

// One qualifier as the entry lines show it: "L4DstPort=67|68".
std::string qualifierText( const QualifierState& qualifier );
// One action: "CosQCpuNew(38)", "CopyToCpu"; parameters up to the last non-zero one.
std::string actionText( const ActionState& action );
// Port lists as ranges: "0-3,7".
std::string portRanges( const std::vector<int>& ports );

}  // namespace FerroAcl
