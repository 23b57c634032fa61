// What changed in the installed entries between two looks at the same switch:
// entries added or removed, and per entry each qualifier, action, priority or
// state that differs, with its value before and after as the entry lines show
// values ("InPorts 1-64/0-64 -> 1-63/0-63", "CosQCpuNew 38 -> 5",
// "enabled true -> false").
#pragma once

#include <string>
#include <vector>

#include "tools/ferro-acl/ChipState.h"

namespace FerroAcl {

struct FieldChange {
   std::string kind;    // "qualifier", "action" or "state"
   std::string field;   // "InPorts", "CopyToCpu", "enabled", "installed", "priority"
   std::string before;  // "" when absent before
   std::string after;   // "" when absent after
};

struct EntryChange {
   int unit = 0;
   int id = 0;
   std::string name;
   std::string change;  // "added", "removed" or "changed"
   std::vector<FieldChange> fields;  // for "changed"
};

// Entries are matched by unit and id, in unit and id order.
std::vector<EntryChange> diffChipStates( const ChipState& before, const ChipState& after );

}  // namespace FerroAcl
