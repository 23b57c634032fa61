// The addresses the canonical control-plane packets are built from, taken
// from the switch's network around one ingress port, so that each packet
// meets the switch as it would on a live network: from a resolved neighbour,
// to the interface's own address, or to an unresolved one of its subnet.
#pragma once

#include <optional>

#include "pipeline/NetworkContext.h"

namespace Pipeline {

struct CanonicalAddresses {
   MacAddress routerMac{};
   MacAddress neighbourMac{};  // the neighbour's, or a locally administered one
   // The ingress interface's own addresses; where it has none of a family,
   // the first the switch owns elsewhere; failing that a documentation
   // address (192.0.2.1, 2001:db8::1) that the switch does not own.
   IpAddress selfV4;
   IpAddress selfV6;
   // A resolved neighbour of the self address's subnet; failing that the
   // lowest free host of the subnet.
   IpAddress neighbourV4;
   IpAddress neighbourV6;
   Ipv6Address neighbourLinkLocal{};  // fe80:: with the neighbour MAC's EUI-64
   // The highest host of the subnet that is neither the switch's nor a
   // neighbour's; nothing when the subnet has no such host (/31, /32).
   std::optional<IpAddress> gleanV4;
   std::optional<IpAddress> gleanV6;
};

CanonicalAddresses canonicalAddresses( const NetworkContext& network,
                                       const PortRef& ingress );

}  // namespace Pipeline
