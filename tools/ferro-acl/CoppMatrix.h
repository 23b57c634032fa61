// The control-plane matrix of a switch: the canonical packets sent into each
// unit through the switch model, each with the entries it hit (named as
// `show` names them) and its fate. Built in the child, once the system ACL is
// installed; CoppOutput prints it.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "pipeline/CanonicalPackets.h"
#include "pipeline/SwitchModel.h"
#include "tools/ferro-acl/ChipState.h"
#include "tools/ferro-acl/ExplainReport.h"

namespace FerroAcl {

struct CoppHit {
   int entry = 0;
   std::string stage;  // "vlan" or "ingress", as in ChipState
   std::string group;  // the owning manager; "" when none owns the entry
   std::string rule;   // the recorded rule name; "" when none
};

struct CoppRow {
   std::string packet;  // the canonical packet's name
   Pipeline::PortRef ingress;
   std::vector<CoppHit> hits;  // VLAN stage first, then ingress; highest group first
   Pipeline::Fate fate;
   std::optional<ExplainReport> explain;  // with --explain
};

struct CoppUnit {
   uint16_t unit = 0;
   Pipeline::PortRef ingress;
   std::vector<CoppRow> rows;
};

// The entries of `lookup`, named from `unit`'s entries.
std::vector<CoppHit> namedHits( const Sim::LookupResult& lookup, const UnitState& unit );

CoppRow coppRow( const Pipeline::SwitchModel& model,
                 const Pipeline::CanonicalPacket& packet, const UnitState& unit );

// Where a unit takes packets: its first routed front-panel port, by the
// same rule as NetworkContext::firstRoutedPort; nothing when it has none.
std::optional<Pipeline::PortRef> firstRoutedPortOf(
    const Pipeline::NetworkContext& network, uint16_t unit );

// The port the chip's IPFIX rule takes packets from, when it has one.
std::optional<Pipeline::PortRef> ipfixInPortOf( const Agent::Switch& sw, uint16_t unit );

// Every canonical packet into `ingress`, classified, and explained when asked.
CoppUnit coppUnit( const Pipeline::SwitchModel& model, const Agent::Switch& sw,
                   const UnitState& unit, const Pipeline::PortRef& ingress,
                   bool explain = false );

}  // namespace FerroAcl
