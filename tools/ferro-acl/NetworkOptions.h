// The options of the subcommands that send packets through the simulated
// switch (classify, copp): the profile's network context with the command
// line's changes, the ingress port, and a scenario applied before the first
// packet.
#pragma once

#include <CLI/CLI.hpp>

#include <optional>
#include <string>
#include <vector>

#include "pipeline/SwitchModel.h"
#include "tools/ferro-acl/Scenario.h"
#include "tools/ferro-acl/ScenarioRun.h"
#include "tools/ferro-acl/SimulatedAgent.h"

namespace FerroAcl {

struct NetworkOptions {
   std::vector<std::string> selfIps;  // --self-ip, repeatable
   std::string routerMac;             // --router-mac MAC|any; empty: the profile's
   std::string inPort;                // --in-port UNIT:PORT; empty: first routed port
   std::string scenario;              // --apply FILE; empty: none
};

// Adds --self-ip, --router-mac, --in-port and --apply.
void addNetworkOptions( CLI::App& app, NetworkOptions& options );

struct NetworkSetup {
   Pipeline::NetworkContext network;  // the profile's, with the options applied
   Pipeline::PortRef ingress;
   std::vector<ScenarioEvent> events;  // --apply's events, checked against the switch
};

// The network of `setup`'s profile with `options` applied; nothing when an
// option or the scenario is wrong, or the switch has no port to take packets
// from, the message (naming the option or file, and what was expected) being
// on stderr.
std::optional<NetworkSetup> prepareNetwork( const NetworkOptions& options,
                                            const AgentSetup& setup );

// In the child, after install: applies the scenario's events to the running
// switch and to `network` (a PTP mode change switches the chip's IEEE 1588
// trap on or off), then builds the model of the switch.
Pipeline::SwitchModel startModel( NetworkSetup& network, SimulatedAgent& agent );

}  // namespace FerroAcl
