#include "pipeline/ReservedMacs.h"

#include <algorithm>

#include "platform/agent/FerroCommon.h"

namespace Pipeline {

namespace {

// The nearest-bridge addresses: STP and PVST+ BPDUs, slow protocols (LACP,
// marker), the nearest non-TPMR bridge (EAPoL, LLDP) and the nearest bridge
// (LLDP, PTP peer delay), and micro-BFD's dedicated MAC (RFC 7130).
const ReservedMac reservedMacs[] = {
    { { 0x01, 0x80, 0xc2, 0x00, 0x00, 0x00 }, "BPDU", FerroCommon::classBpdu_ },
    { { 0x01, 0x00, 0x0c, 0xcc, 0xcc, 0xcd }, "BPDU", FerroCommon::classBpdu_ },
    { { 0x01, 0x80, 0xc2, 0x00, 0x00, 0x02 }, "LACP", FerroCommon::classLacp_ },
    { { 0x01, 0x80, 0xc2, 0x00, 0x00, 0x03 }, "link-local", FerroCommon::classLldp_ },
    { { 0x01, 0x80, 0xc2, 0x00, 0x00, 0x0e }, "link-local", FerroCommon::classLldp_ },
    { { 0x01, 0x00, 0x5e, 0x90, 0x00, 0x01 }, "micro-BFD", FerroCommon::classMicroBfd_ },
};

}  // namespace

const ReservedMac* reservedMac( const MacAddress& mac ) {
   const ReservedMac* end = std::end( reservedMacs );
   const ReservedMac* found = std::find_if(
       std::begin( reservedMacs ), end, [&]( const ReservedMac& r ) { return r.mac == mac; } );
   return found == end ? nullptr : found;
}

bool isBridgeReserved( const MacAddress& mac ) {
   return mac[0] == 0x01 && mac[1] == 0x80 && mac[2] == 0xc2 && mac[3] == 0 && mac[4] == 0 &&
          mac[5] <= 0x0f;
}

}  // namespace Pipeline
