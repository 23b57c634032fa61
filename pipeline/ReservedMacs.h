// The L2 table's entries for reserved destination MACs: the control protocols
// the switch terminates. A hit gives the frame the entry's destination class
// (which the system ACL's L2 elevators match), counts as an L2 cache hit and
// sends the frame to the CPU.
#pragma once

#include <cstdint>

#include "pipeline/ParsedPacket.h"

namespace Pipeline {

struct ReservedMac {
   MacAddress mac;
   const char* name;    // "BPDU", "LACP", "link-local", "micro-BFD"
   uint32_t dstClass;   // the L2 destination class the entry writes
};

// Null when `mac` has no reserved entry.
const ReservedMac* reservedMac( const MacAddress& mac );

// 01:80:c2:00:00:00 to 01:80:c2:00:00:0f: a bridge never forwards them.
bool isBridgeReserved( const MacAddress& mac );

}  // namespace Pipeline
