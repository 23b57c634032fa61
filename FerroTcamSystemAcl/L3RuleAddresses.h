// IPv6 destinations of the L3 rules, and the destination MACs that stand in for
// them on chips that match IPv6 destinations by MAC.
#pragma once

#include "platform/sdk/Bcm.h"

namespace FerroTcamSystemAcl {

inline constexpr bcm_ip6_t anyIp6 = {};
inline constexpr bcm_ip6_t exactIp6 = { 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff,
                                        0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff };
inline constexpr bcm_mac_t exactMac = { 0xff, 0xff, 0xff, 0xff, 0xff, 0xff };

// PIM hellos go to ALL-PIM-ROUTERS: 224.0.0.13 (MAC 01:00:5e:00:00:0d) and
// ff02::d (MAC 33:33:00:00:00:0d).
inline constexpr bcm_mac_t pimIpv4Mac = { 0x01, 0x00, 0x5e, 0x00, 0x00, 0x0d };
inline constexpr bcm_ip6_t pimIpv6 = { 0xff, 0x02, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0x0d };
inline constexpr bcm_mac_t pimIpv6Mac = { 0x33, 0x33, 0x00, 0x00, 0x00, 0x0d };

// OSPFv3 AllSPFRouters ff02::5 and AllDRouters ff02::6, as ff02::4/126 like the
// IPv4 rule's 224.0.0.4/30; their MACs 33:33:00:00:00:05 and :06 likewise.
inline constexpr bcm_ip6_t ospfv3Ip6 = { 0xff, 0x02, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0x04 };
inline constexpr bcm_ip6_t ospfv3Ip6Mask = { 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff,
                                             0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xfc };
inline constexpr bcm_mac_t ospfv3Mac = { 0x33, 0x33, 0x00, 0x00, 0x00, 0x04 };
inline constexpr bcm_mac_t ospfv3MacMask = { 0xff, 0xff, 0xff, 0xff, 0xff, 0xfc };

// Link-local scope multicast, any flags: ff02::/ff0f::, and every IPv6
// multicast MAC.
inline constexpr bcm_ip6_t linkLocalMcastIp6 = { 0xff, 0x02 };
inline constexpr bcm_ip6_t linkLocalMcastIp6Mask = { 0xff, 0x0f };
inline constexpr bcm_mac_t ipv6McastMac = { 0x33, 0x33, 0x00, 0x00, 0x00, 0x00 };
inline constexpr bcm_mac_t ipv6McastMacMask = { 0xff, 0xff, 0x00, 0x00, 0x00, 0x00 };

}  // namespace FerroTcamSystemAcl
