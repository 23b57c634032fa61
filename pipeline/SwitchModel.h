// The switch around the simulated field processor: what a real chip's
// pipeline does with a frame before and after the field processor looks it up.
// It parses the frame, derives the metadata the earlier stages attach
// (ingress port and STP state, VLAN and its interface class, the L2 table's
// reserved-MAC classes, the L3 lookup's class or next hop, packet resolution,
// drop status), looks the packet up in the VLAN and ingress stages of the
// unit, and decides its fate: forwarded or not, and whether it reaches the CPU
// as a trap or a copy, on which queue. pipeline/README.md describes the model.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "pipeline/NetworkContext.h"
#include "platform/agent/SwitchBringup.h"

namespace Pipeline {

// What the chip knows of one unit beyond its field processor.
struct UnitModel {
   uint16_t unit = 0;
   bcm_module_t modId = 0;
   bool dstClassL3Supported = false;   // the L3 lookup gives classes, not next-hop ids
   bool gleanViaNextHopToCpu = false;  // glean resolves to the CPU next hop
};
std::vector<UnitModel> unitModels( const Agent::SwitchConfig& config );

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

// Everything the model found out about one packet.
struct Classification {
   ParsedPacket parsed;
   PortRef ingress;
   uint16_t vlan = 0;
   const Interface* interface = nullptr;  // the VLAN's interface; null when it has none
   std::optional<std::string> reservedMac;  // the L2 table entry hit: "BPDU", "LACP", ...
   Sim::PacketFields fields;                // what the field processor looked up
   Sim::LookupResult lookup;
   Fate fate;
};

class SwitchModel {
  public:
   // Unknown units and ports are the caller's to refuse: classify() on a port
   // the chip does not have drops the packet ("no such port").
   SwitchModel( NetworkContext network, std::vector<UnitModel> units );

   Classification classify( std::span<const uint8_t> frame, const PortRef& ingress ) const;
   Classification classify( ParsedPacket parsed, const PortRef& ingress ) const;

   const NetworkContext& network() const { return network_; }
   const UnitModel* unit( uint16_t unit ) const;

  private:
   NetworkContext network_;
   std::vector<UnitModel> units_;
};

}  // namespace Pipeline
