// What the packet parser learns from a frame's bytes: the fields the chip's
// field processor reads (as far as the bytes determine them), the facts a
// switch model needs to derive the rest of a packet's metadata, the headers
// found, and whether the frame parsed to its end.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "platform/sdk/Simulator.h"

namespace Pipeline {

using MacAddress = std::array<uint8_t, 6>;
using Ipv4Address = uint32_t;  // host order: 10.0.0.1 is 0x0A000001
using Ipv6Address = std::array<uint8_t, 16>;

// Headers the parser recognises, outermost first in a packet's layer list.
enum class Layer : uint8_t {
   Ethernet,
   Vlan,
   Llc,
   Snap,
   Stp,
   Arp,
   Ipv4,
   Ipv6,
   Ipv6HopByHop,
   Ipv6Routing,
   Ipv6Fragment,
   Ipv6DestinationOptions,
   Ipv6Mobility,  // also HIP and Shim6: same generic header format
   Ah,
   Esp,
   Wesp,
   Tcp,
   Udp,
   Icmp,
   Icmpv6,
   Gre,
   Isis,
   Ptp,
   SlowProtocol,
   Lldp,
   Eapol,
};
const char* layerName( Layer layer );  // "IPv4", "802.1Q", "IPv6 hop-by-hop"

// A header and the bytes it occupies in the frame.
struct LayerSpan {
   Layer layer;
   size_t offset;
   size_t length;
};

// Fields of Sim::PacketFields that come from the bytes. A field not in
// ParsedPacket::known keeps its zero value; metadata fields are never set.
enum class Field : uint16_t {
   DstMac = 1 << 0,
   EtherType = 1 << 1,
   IpType = 1 << 2,
   DstIp = 1 << 3,
   DstIp6 = 1 << 4,
   IpProtocol = 1 << 5,
   ExtensionHeaderType = 1 << 6,
   L4SrcPort = 1 << 7,
   L4DstPort = 1 << 8,
   Ttl = 1 << 9,
   Tos = 1 << 10,
   OuterVlanPri = 1 << 11,
};

enum class ParseOutcome : uint8_t {
   Complete,   // every header the parser knows parsed within its bounds
   Truncated,  // the frame ends, or a length runs past it, inside a header or payload
   Malformed,  // a header holds a value that cannot be (bad version, too short a length)
};
const char* outcomeName( ParseOutcome outcome );  // "complete", "truncated", "malformed"

struct ParseStatus {
   ParseOutcome outcome = ParseOutcome::Complete;
   Layer layer = Layer::Ethernet;  // where parsing stopped short; unused when complete
   std::string reason;             // "IPv4 header: 12 of 20 bytes"
};

struct VlanTag {
   uint16_t tpid;  // 0x8100, 0x88A8 or 0x9100
   uint8_t pcp;
   bool dei;
   uint16_t vid;
};

struct LlcHeader {
   uint8_t dsap;
   uint8_t ssap;
   uint16_t control;  // one byte for unnumbered frames, two otherwise
};

struct SnapHeader {
   uint32_t oui;
   uint16_t protocol;
};

struct ArpFacts {
   uint16_t opcode;
   // Only for Ethernet/IPv4 ARP whose addresses are in the frame.
   std::optional<MacAddress> senderMac;
   std::optional<Ipv4Address> senderIp;
   std::optional<MacAddress> targetMac;
   std::optional<Ipv4Address> targetIp;
};

struct IcmpFacts {
   uint8_t type;
   uint8_t code;
};

enum class PtpTransport : uint8_t { L2, Udp };
struct PtpFacts {
   PtpTransport transport;
   uint8_t messageType;  // 0 Sync, 1 Delay_Req, ..., 0xB Announce, 0xC Signaling
   uint8_t version;
};

struct ParsedPacket {
   Sim::PacketFields fields;  // ttl is 0 unless an IP header gave it
   uint16_t known = 0;        // Field bits the bytes determined
   bool has( Field f ) const { return known & static_cast<uint16_t>( f ); }

   // Layer 2.
   std::optional<MacAddress> srcMac;
   std::optional<VlanTag> outerVlan;
   std::optional<VlanTag> innerVlan;
   std::optional<LlcHeader> llc;
   std::optional<SnapHeader> snap;
   std::optional<uint8_t> bpduType;          // STP: 0x00 config, 0x80 TCN, 0x02 RST/MST
   std::optional<uint8_t> slowProtocolSubtype;  // 1 LACP, 2 marker, 3 OAM
   std::optional<uint8_t> eapolType;         // 0 EAP, 1 start, 2 logoff, 3 key
   std::optional<ArpFacts> arp;

   // Layer 3.
   std::optional<Ipv4Address> srcIp;
   std::optional<Ipv6Address> srcIp6;
   bool ipv4Options = false;
   bool ipv6HopByHop = false;
   bool nonFirstFragment = false;  // no layer-4 header in this packet

   // Layer 4 and above.
   std::optional<uint8_t> tcpFlags;
   std::optional<IcmpFacts> icmp;  // ICMP or ICMPv6, as fields.ipProtocol says
   std::optional<uint16_t> greProtocol;
   std::optional<uint8_t> isisPduType;  // 15/16 LAN hello L1/L2, 17 p2p hello, ...
   std::optional<PtpFacts> ptp;

   std::vector<LayerSpan> layers;
   ParseStatus status;

   bool hasLayer( Layer layer ) const;
};

}  // namespace Pipeline
