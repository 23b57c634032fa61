// Whether every installed, enabled entry of a unit can be hit: for each one a
// witness packet from the simulator (one that matches it and nothing its
// group looks at first), confirmed by a lookup, or the entries that shadow it
// or its own qualifiers that contradict each other. Entries shadowed by
// design are listed in one table here, with the reason.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/agent/SwitchBringup.h"
#include "platform/sdk/Simulator.h"

namespace FerroAcl {

struct AuditFinding {
   int id = 0;
   std::string name;   // the rule name its manager recorded
   std::string group;  // the owning manager
   std::string stage;  // "ingress" or "vlan"
   std::optional<Sim::PacketFields> witness;
   bool confirmed = false;               // the lookup of the witness hit the entry
   std::vector<std::string> shadowedBy;  // rule names (or "entry N")
   std::vector<std::string> contradictions;
   const char* byDesign = nullptr;  // why it is shadowed, when the design table lists it

   bool reachable() const { return witness && confirmed; }
   // Shadowed or unmatchable, and not by design.
   bool unexplained() const { return !reachable() && byDesign == nullptr; }
};

// Why a rule cannot be hit as installed; null when it should be reachable.
const char* shadowedByDesign( const std::string& ruleName );

std::vector<AuditFinding> auditUnit( const Agent::Switch& sw, U16 unit );

}  // namespace FerroAcl
