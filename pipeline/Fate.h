// A packet's fate: why the chip sends it to the CPU, whether as a trap or a
// copy and on which queue, whether it is forwarded, and the class ids the
// field processor wrote. decideFate() combines the reasons of the stages
// before the field processor with the actions of the entries it hit.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "platform/sdk/Simulator.h"

namespace Pipeline {

// Why the chip itself (before and beside the field processor) sends a packet
// to the CPU.
enum class CpuReason : uint8_t {
   ReservedMac,         // an L2 table entry for a reserved MAC (BPDU, LACP, ...)
   RouterMacNonIp,      // a non-IP frame to the router MAC (ARP reply, ...)
   Broadcast,           // flooded on a VLAN with a routed interface, CPU included
   SelfIp,              // routed to one of the switch's own addresses
   Glean,               // routed to a connected address with no resolved neighbour
   TtlExpired,          // routed with TTL 0 or 1
   LinkLocalMulticast,  // 224.0.0.0/24 or ff02::/16 on a routed VLAN
   MulticastCpuOif,     // a multicast route with the CPU as an outgoing interface
   IgmpSnooping,        // IGMP
   MldSnooping,         // ICMPv6 MLD query, report or done
   Ieee1588,            // a PTP packet while PTP is enabled
   AclCopy,             // a field-processor entry's CopyToCpu
};
const char* cpuReasonName( CpuReason reason );  // "reserved MAC", "self IP", ...
// A reason either takes the packet away from forwarding (trap) or sends a
// copy beside it.
bool isTrap( CpuReason reason );

enum class CpuDelivery : uint8_t { None, Trap, Copy };
const char* deliveryName( CpuDelivery delivery );  // "none", "trap", "copy"

struct Fate {
   CpuDelivery toCpu = CpuDelivery::None;
   std::optional<uint32_t> cpuQueue;      // set when the packet reaches the CPU
   std::optional<uint32_t> trafficClass;  // set when an entry gave one (PrioIntNew)
   bool dropped = false;                  // not forwarded: dropped, not trapped
   bool forwarded = false;                // leaves through front-panel ports
   std::vector<CpuReason> reasons;        // the CPU reasons that held, in enum order
   std::vector<CpuReason> cancelled;      // chip reasons an entry's SwitchToCpuCancel removed
   std::string dropReason;                // "ACL drop", "STP blocking", ...; empty when not dropped
   // Class ids written: the VLAN stage's ClassDestSet, the ingress stage's
   // NewClassId and egress class select.
   std::optional<uint32_t> classDest;
   std::optional<uint32_t> newClassId;
   std::optional<uint32_t> egressClassSelect;
};

// What the stages before the field processor decided.
struct ChipVerdict {
   std::vector<CpuReason> reasons;  // in enum order
   std::string dropReason;          // dropped before the field processor; empty: not
};

Fate decideFate( const ChipVerdict& chip, const Sim::LookupResult& lookup,
                 uint32_t defaultCpuQueue );

}  // namespace Pipeline
