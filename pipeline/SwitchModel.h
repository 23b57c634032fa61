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

#include "pipeline/Fate.h"
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
