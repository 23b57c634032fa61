// A profile's `network` section: the switch's network context (router MAC,
// interfaces with their ports, VLAN and addresses, neighbours, gateways,
// multicast routes, STP-blocked, VXLAN-decap and HiGig ports). Read as
// strictly as the rest of the profile, against the units it describes: a
// port must exist on a unit of the profile, a neighbour must be in a
// connected subnet, a gateway must be a neighbour.
#pragma once

#include <string>
#include <string_view>

#include "pipeline/NetworkContext.h"
#include "platform/agent/SwitchBringup.h"
#include "tools/ferro-acl/Result.h"

namespace FerroAcl {

// The network of the profile `text` whose switch is `config`; an empty
// context when the profile has no `network` section.
Result<Pipeline::NetworkContext> parseNetwork( std::string_view text, const std::string& source,
                                               const Agent::SwitchConfig& config );

// "UNIT:PORT" of a front-panel port of `config`'s switch, for the command line:
// the message says what was expected.
Result<Pipeline::PortRef> parsePort( std::string_view text, const Agent::SwitchConfig& config );

}  // namespace FerroAcl
