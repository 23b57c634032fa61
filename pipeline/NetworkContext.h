// The switch's network context: what the forwarding tables of a running
// switch hold beside the system ACL, and what the switch model reads to give a
// packet its metadata. A profile's `network` section fills it; the command
// line can add self IPs and replace the router MAC.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "pipeline/IpAddress.h"

namespace Pipeline {

// A port of one unit; port 0 is the unit's CPU port.
struct PortRef {
   uint16_t unit = 0;
   bcm_port_t port = 0;
   bool operator==( const PortRef& other ) const = default;
};
std::string toString( const PortRef& port );  // "0:5"

// A VLAN with its member ports. With addresses it has a routed interface (an
// SVI, or a routed port when it has one member): the switch routes IP traffic
// sent to its router MAC there and owns the addresses; the subnets of the
// addresses are connected. A port's first interface in the list is its native
// VLAN: untagged and priority-tagged frames take it; a tagged frame takes the
// VLAN of its tag when the port is a member of it and is dropped otherwise.
struct Interface {
   std::string name;                 // "Vlan10", "Ethernet17"
   uint16_t vlan = 1;
   std::vector<PortRef> ports;
   std::vector<IpPrefix> addresses;  // the switch's own address and subnet, each
   bool routed() const { return !addresses.empty(); }
};

// A resolved neighbour: routed traffic to it leaves through `port`.
struct Neighbour {
   IpAddress address;
   MacAddress mac{};
   PortRef port;
};

// A multicast route; with the CPU among its outgoing interfaces the L3 lookup
// gives its packets the CPU-OIF class and a copy goes to the CPU.
struct MulticastRoute {
   IpAddress group;
   bool cpuOif = false;
};

struct NetworkContext {
   MacAddress routerMac{ 0x00, 0x1c, 0x73, 0x00, 0x00, 0x01 };
   // Every unicast destination MAC is the router's (captures taken on a host).
   bool anyRouterMac = false;
   uint32_t defaultCpuQueue = 1;  // where a packet sent to the CPU goes when no entry says
   bool ptpEnabled = false;       // the chip sends IEEE 1588 packets to the CPU
   std::vector<Interface> interfaces;
   std::vector<Neighbour> neighbours;
   // Next hops of the default routes (resolved neighbours); without one of
   // its family a routed packet to an unconnected destination is dropped.
   std::vector<IpAddress> gateways;
   std::vector<MulticastRoute> multicastRoutes;
   std::vector<PortRef> stpBlockedPorts;
   std::vector<PortRef> vxlanDecapPorts;  // frames arrive decapsulated from VXLAN
   std::vector<PortRef> higigPorts;       // stacking ports: frames carry a HiGig header

   const Interface* nativeInterface( const PortRef& port ) const;
   const Interface* vlanInterface( uint16_t vlan ) const;
   bool isMember( const PortRef& port, uint16_t vlan ) const;
   // The routed interface owning `address`, if the switch owns it.
   const Interface* owner( const IpAddress& address ) const;
   // The routed interface with a connected subnet holding `address`.
   const Interface* connected( const IpAddress& address ) const;
   const Neighbour* neighbour( const IpAddress& address ) const;
   const MulticastRoute* multicastRoute( const IpAddress& group ) const;
   bool stpBlocked( const PortRef& port ) const;
   bool vxlanDecap( const PortRef& port ) const;
   bool higig( const PortRef& port ) const;
   // The first Ethernet port (not the CPU, not HiGig) whose native VLAN has a
   // routed interface and that STP forwards; nothing when there is none.
   std::optional<PortRef> firstRoutedPort() const;
   // The switch owns `address` on `port`'s native interface; its /24 or /64
   // becomes connected. A port without an interface gets a routed one.
   void addSelfIp( const IpAddress& address, const PortRef& port );
};

}  // namespace Pipeline
