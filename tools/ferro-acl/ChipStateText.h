// The human form of the chip state: per unit a header line, then per stage
// and group (VLAN stage first, as packets meet them) the entries from the
// highest priority down, one row each: id, priority, state, rule name, match
// and actions in words (EntryWords.h) and the helper's rule tables recording
// it; then the skipped steps and the verification of each unit. Rows fit
// 160 columns: the wide columns wrap onto continuation lines.
//   unit 0: Trident3, model 5, 39 entries
//         id  prio  state    rule            match                             actions       tables
//     ingress stage, group "L3 control" (29 entries)
//       1030   250  enabled  BGP - Dst Port  dst-class-l3 1, l4-dst-port 179,  cpu-queue 38  bgpRule
//                                            ip-protocol 6
// State is "enabled" (in hardware and on), "disabled" (in hardware, off) or
// "not installed" (software copy only).
#pragma once

#include <ostream>
#include <string>

#include "tools/ferro-acl/ChipState.h"

namespace FerroAcl {

inline constexpr size_t terminalWidth = 160;

void printChipState( std::ostream& out, const ChipState& state );

// One qualifier in the compact form the library's tests compare:
// "L4DstPort=67|68".
std::string qualifierText( const QualifierState& qualifier );
// Port lists as ranges: "0-3,7"; "none" for an empty list.
std::string portRanges( const std::vector<int>& ports );

}  // namespace FerroAcl
