// A switch brought up from a chip profile with the whole system ACL installed
// (the VLAN-stage class rules included where the chip has them), its
// profile's network in a switch model, and the canonical packets of unit 0's
// first routed port; what a packet hits is named as `ferro-acl copp` names it.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "pipeline/CanonicalAddresses.h"
#include "tests/FerroTcamSystemAcl/L3TestSupport.h"
#include "tools/ferro-acl/CoppMatrix.h"

namespace CoppTest {

class CoppSwitch {
 public:
   explicit CoppSwitch( const std::string& profile );

   // The canonical packet of that name, sent where the set sends it.
   FerroAcl::CoppRow send( const std::string& packetName ) const;
   FerroAcl::CoppRow send( const Pipeline::Bytes& frame,
                           const Pipeline::PortRef& ingress ) const;

   const Pipeline::NetworkContext& network() const { return model_->network(); }
   const Pipeline::CanonicalAddresses& addresses() const { return addresses_; }
   const Pipeline::PortRef& ingress() const { return ingress_; }
   // A front-panel port of unit 0 whose native VLAN has no routed interface.
   std::optional<Pipeline::PortRef> bridgedPort() const;

 private:
   L3Test::InstalledSwitch installed_;
   std::optional<Pipeline::SwitchModel> model_;
   FerroAcl::ChipState state_;
   Pipeline::PortRef ingress_;
   Pipeline::CanonicalAddresses addresses_;
   std::vector<Pipeline::CanonicalPacket> packets_;
};

// Every entry a packet hit, VLAN stage first, by rule name.
std::vector<std::string> ruleNames( const FerroAcl::CoppRow& row );

struct Expected {
   std::string packet;
   std::vector<std::string> rules;
   Pipeline::CpuDelivery toCpu;
   std::optional<uint32_t> queue;
   std::optional<uint32_t> trafficClass = std::nullopt;
   bool forwarded = false;
   bool dropped = false;
   std::optional<uint32_t> classDest = std::nullopt;
};

// Checks a row against the expectation, each failure labelled with the packet.
void expectFate( const FerroAcl::CoppRow& row, const Expected& expected );
void expectFates( const CoppSwitch& s, const std::vector<Expected>& table );

// The profiles the fate tests run on: one per chip family that changes how
// the system ACL matches.
std::vector<std::string> fateProfiles();

}  // namespace CoppTest
