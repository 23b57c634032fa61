// Why a packet landed where it did, for classify --explain: per stage and
// group, the entry hit with each of its qualifiers beside the packet's value,
// and every entry looked at before it with the first qualifier that failed;
// then where the fate came from (the chip's own reasons to send it to the
// CPU, what an entry cancelled, which entry set the queue, the drop).
#pragma once

#include <ostream>
#include <string>
#include <vector>

#include "pipeline/SwitchModel.h"
#include "platform/agent/SwitchBringup.h"
#include "tools/ferro-acl/JsonText.h"

namespace FerroAcl {

struct QualifierCheckReport {
   std::string name;    // "l4-dst-port"
   std::string packet;  // the packet's value: "179"
   std::string entry;   // the entry's data/mask in show's words: "179", "3784/0xfffe"
   bool matched = false;
};
struct EntryCheckReport {
   int id = 0;
   std::string name;
   int priority = 0;
   bool hit = false;
   std::vector<QualifierCheckReport> qualifiers;  // the hit: all; a miss: the one that failed
};
struct GroupCheckReport {
   std::string stage;  // "vlan" or "ingress"
   std::string group;
   std::vector<EntryCheckReport> entries;  // misses in lookup order, then the hit if any
};
struct ExplainReport {
   std::vector<GroupCheckReport> groups;
   std::vector<std::string> reasons;    // why the chip sends it to the CPU
   std::vector<std::string> cancelled;  // reasons an entry's SwitchToCpuCancel took back
   std::string queueFrom;  // "\"BGP - Dst Port\"", "the network's default", "" when not to CPU
   std::string dropReason;
};

ExplainReport explainPacket( const Agent::Switch& sw, const Pipeline::Classification& packet );
Json explainJson( const ExplainReport& report );
// Indented lines under the packet's line.
void printExplain( std::ostream& out, const ExplainReport& report );

}  // namespace FerroAcl
