// Shared by the rule tests: a switch brought up from a chip profile with its
// rules installed on every unit, packets described as the field processor
// sees them, and the texts an abort leaves.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "FerroTcamSystemAcl/Helper.h"
#include "platform/agent/SwitchBringup.h"
#include "platform/sdk/Simulator.h"

namespace L3Test {

// Every profile in profiles/, by file name.
std::vector<std::string> profileNames();
Agent::SwitchConfig loadProfile( const std::string& name );

struct InstalledSwitch {
   Agent::Switch::Ptr sw;
   FerroTcamSystemAcl::Helper::Ptr helper;
   FerroCentral::ChipAttributes::PtrConst attributes( U16 unit ) const;
};
// Brings the switch up and runs doInstallAclRules on every unit.
InstalledSwitch installL3( const Agent::SwitchConfig& config );
// Then the L2 traps, the EAPoL forward rule and the five PTP rules, unit by
// unit as the agent does (the L2 PTP rules only where the L2 installer
// reserved them).
InstalledSwitch installSystemAcl( const Agent::SwitchConfig& config );

// A packet routed to one of the switch's own addresses: the L3 lookup gives it
// the self-IP class or next hop, whichever the chip uses.
Sim::PacketFields selfIpPacket( const FerroCentral::ChipAttributes& chip, U8 protocol );
// A packet that needs its next hop resolved (glean), in the chip's form.
Sim::PacketFields gleanPacket( const FerroCentral::ChipAttributes& chip );
Sim::PacketFields ipv4Packet( U32 dstIp, U8 protocol );

Sim::StageResult ingress( U16 unit, const Sim::PacketFields& packet );
// The names of the ingress entries a packet hits, highest group first.
std::vector<std::string> hitNames( const InstalledSwitch& s, U16 unit,
                                   const Sim::PacketFields& packet );
// An L2 control frame from `inPort`, classified by the L2 table into
// `dstClassL2`, as it arrives on a plain (non-VXLAN) interface.
Sim::PacketFields l2Packet( U32 dstClassL2, U16 etherType, const Wirex::EthAddr& dstMac,
                            bcm_port_t inPort = 1 );

// The regex of `text` taken literally.
std::string quoted( const std::string& text );
// glibc's assertion line for `expression` failing in `function`.
std::string assertionIn( const std::string& function, const std::string& expression );

// The entry recorded under `name` on `unit` by the L3 manager; 0 when none.
U32 entryNamed( const InstalledSwitch& s, U16 unit, const std::string& name );

}  // namespace L3Test
