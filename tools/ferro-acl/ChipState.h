// What the simulated chips hold after bring-up, gathered once and shown in two
// forms (ChipStateJson, ChipStateText): per unit every field-processor entry
// with the owning group, the rule name its manager recorded, the software
// copy's qualifiers and actions, and the helper's rule tables that hold it;
// plus what bring-up skipped and which units were verified.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "platform/agent/HelperBase.h"
#include "platform/agent/SwitchBringup.h"
#include "tools/ferro-acl/BringupSteps.h"
#include "tools/ferro-acl/QualifierFormat.h"

namespace FerroAcl {

struct ActionState {
   std::string name;  // the SDK's name: "CosQCpuNew"
   uint32_t param0 = 0;
   uint32_t param1 = 0;
   bool operator==( const ActionState& ) const = default;
};

struct EntryState {
   int id = 0;
   std::string name;   // the rule name its manager recorded; "" when none
   std::string stage;  // "ingress" or "vlan"
   std::string group;  // the owning manager's name; "" when none owns it
   int priority = 0;
   bool installed = false;
   bool enabled = false;
   std::vector<QualifierState> qualifiers;  // software copy, in qualification order
   std::vector<ActionState> actions;        // software copy, in the order added
   std::vector<std::string> recordedAs;     // helper rule tables, in table order
};

struct UnitState {
   int unit = 0;
   std::string chip;  // the chip family
   int model = 0;
   bool verified = false;
   std::string unverifiedReason;     // why not, when not
   std::vector<EntryState> entries;  // by id
};

struct SkippedState {
   std::string name;
   std::string reason;
};

struct ChipState {
   std::vector<UnitState> units;  // ascending
   std::vector<SkippedState> skipped;
};

// The entry's owning manager and the rule name it recorded, as show names
// every entry; empty strings where no manager owns it or none recorded a name.
struct EntryOwner {
   std::string group;
   std::string name;
};
EntryOwner entryOwner( const Agent::Switch& sw, U16 unit, U32 id );

// Call once the plan has run: a unit counts as verified when its planned
// verifications returned.
ChipState collectChipState( const Agent::Switch& sw,
                            const FerroTcamSystemAcl::HelperBase& helper,
                            const BringupPlan& plan );

}  // namespace FerroAcl
