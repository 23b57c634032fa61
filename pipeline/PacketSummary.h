// A one-line description of a parsed packet, as a person reading a capture
// wants it: the protocol by the name a router engineer uses (from the
// well-known port, IP protocol or ether type), its message type where the
// protocol has one, and its addresses:
//
//    BGP 10.0.0.2:179 > 10.0.0.1:52000
//    OSPF hello 10.0.0.2 > 224.0.0.5
//    ARP request who-has 10.0.0.1 tell 10.0.0.2
//    PTP sync (L2)
//    UDP 10.0.0.2:4000 > 10.0.0.1 [truncated: UDP header: 4 of 8 bytes]
//
// A parse that did not complete gets its status appended in brackets.
#pragma once

#include <cstdint>
#include <span>
#include <string>

#include "pipeline/ParsedPacket.h"

namespace Pipeline {

// `frame` is the packet's bytes: the message type of protocols the parser
// does not take apart (OSPF, PIM, IGMP) is read from the byte after the IP
// headers.
std::string summarizePacket( const ParsedPacket& packet, std::span<const uint8_t> frame );

}  // namespace Pipeline
