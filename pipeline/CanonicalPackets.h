// The control-plane packets the system ACL exists for, one per protocol and
// case, built as bytes: BGP, OSPF, IS-IS, PIM, VRRP, BFD, LACP, LLDP, STP,
// PTP, EAPoL, glean, self-IP elevators, IPFIX, ICMPv6 ND and MLD, DHCP, MLAG,
// IGMP, ARP, LDP, RIP. Addresses come from the switch's network
// (CanonicalAddresses), so the set follows the profile's network.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "pipeline/NetworkContext.h"
#include "pipeline/PacketBuilder.h"

namespace Pipeline {

struct CanonicalPacket {
   std::string name;  // "BGP - dst port 179"
   Bytes bytes;
   PortRef ingress;
};

// Every packet arrives on `ingress`, except the IPFIX one, which comes from
// `ipfixInPort` when the chip takes IPFIX from one port. The glean packets
// are left out when the ingress subnet has no unresolved host.
std::vector<CanonicalPacket> canonicalPackets(
    const NetworkContext& network, const PortRef& ingress,
    std::optional<PortRef> ipfixInPort = std::nullopt );

// The MLAG peers' well-known port (TCP and UDP), which the VLAN-stage class
// rules match as the source port.
constexpr uint16_t mlagPort = 4432;

}  // namespace Pipeline
