// Field values of the system rules, under the names the rules are written with.
#pragma once

#include "platform/agent/FerroTypes.h"
#include "platform/runtime/IntTypes.h"
#include "platform/sdk/Bcm.h"

namespace FerroTcamSystemAcl {

// Only packets the pipeline has not already marked to drop.
constexpr U8 TCAM_FIELD_DROP_DATA = 0;
constexpr U8 TCAM_FIELD_DROP_MASK = 1;
constexpr U8 TCAM_FIELD_INGRESS_STP_STATE_MASK = 0xFF;
constexpr U8 TCAM_FIELD_VRRP_TTL_DATA = 255;
constexpr U8 TCAM_FIELD_TTL_MASK = 0xFF;
// Single-hop BFD arrives with TTL 255; 254 is accepted too, on purpose.
constexpr U8 TCAM_FIELD_BFD_TTL_DATA = 254;
constexpr U8 TCAM_FIELD_TTL_BFD_MASK = 254;
// DSCP 48 to 63: the SDK's DSCP field is the whole TOS byte.
constexpr U8 TCAM_FIELD_L3PRIOHIGHDSCP_DATA = 0xC0;
constexpr U8 TCAM_FIELD_L3PRIOHIGHDSCP_MASK = 0xC0;
// Outer VLAN priority 6 or 7.
constexpr U8 TCAM_FIELD_L3PRIOHIGHCOS_OUTERVLANPRI_DATA = 6;
constexpr U8 TCAM_FIELD_L3PRIOHIGHCOS_OUTERVLANPRI_MASK = 6;
constexpr U8 TCAM_FIELD_IPPROTO_MASK = 0xFF;
constexpr bcm_ip_t TCAM_FIELD_PIM_MCASTIP_DATA = 0xE000000D;  // 224.0.0.13
constexpr bcm_ip_t TCAM_FIELD_PIM_MCASTIP_MASK = 0xFFFFFFFF;
constexpr bcm_ip_t TCAM_FIELD_OSPF_MCASTIP_DATA = 0xE0000004;  // 224.0.0.4 - 224.0.0.7
constexpr bcm_ip_t TCAM_FIELD_OSPF_MCASTIP_MASK = 0xFFFFFFFC;

// IS-IS: level-1 and level-2 IS addresses (..:14 and ..:15) under one mask; the
// ALL-IS address is a single group address and is matched exactly.
constexpr Wirex::EthAddr TCAM_FIELD_ISIS_L1L2_DSTMAC_DATA( 0x01, 0x80, 0xC2, 0x00, 0x00, 0x14 );
constexpr Wirex::EthAddr TCAM_FIELD_ISIS_L1L2_DSTMAC_MASK( 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFE );
constexpr Wirex::EthAddr TCAM_FIELD_ISIS_ALL_DSTMAC_DATA( 0x09, 0x00, 0x2B, 0x00, 0x00, 0x05 );
constexpr Wirex::EthAddr TCAM_FIELD_ISIS_ALL_DSTMAC_MASK( 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF );

// The CPU port as the source-port qualifier reads it back: port 0 under the
// field's full 8-bit mask. It is programmed with all ones, which the chip cuts
// to the field's width.
constexpr bcm_port_t CPU_IN_PORT_NUM = 0;
constexpr bcm_port_t CPU_IN_PORT_MASK = 0xFF;
constexpr int IN_PORT_FULL_MASK = ~0;

constexpr U8 IPPROTO_TCP = 6;
constexpr U8 IPPROTO_UDP = 17;
constexpr U8 IPPROTO_GRE = 47;
constexpr U8 IPPROTO_ESP = 50;
constexpr U8 IPPROTO_ICMPV6 = 58;
constexpr U8 IPPROTO_OSPF = 89;
constexpr U8 IPPROTO_PIM = 103;
constexpr U8 IPPROTO_VRRP = 112;
constexpr U8 IPPROTO_WESP = 141;

constexpr U16 BGP_PORT = 179;
constexpr U16 MLAG_L4_PORT = 4432;
// KIX: the heartbeat, the controller's and the client's attribute-log sessions.
constexpr U16 KIX_HB_PORT = 50003;
constexpr U16 KIX_CONTROLLER_PORT = 9979;
constexpr U16 KIX_CLIENT_PORT = 9999;

}  // namespace FerroTcamSystemAcl
