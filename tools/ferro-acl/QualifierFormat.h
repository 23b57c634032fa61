// How qualifier values read: MAC and IP fields in address notation (IPv6 as
// RFC 5952 text), in-port bitmaps as lists of port numbers, source and
// destination ports as "module:port", IP type and packet
// resolution by their SDK names, everything else as a number. A field set
// through the compression helpers holds every value it matches; a qualifier
// then has several values. Shared by the JSON and the text output.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <variant>
#include <vector>

#include "platform/sdk/Simulator.h"

namespace FerroAcl {

using FieldText = std::variant<uint64_t, std::string, std::vector<int>>;

struct FieldValue {
   FieldText data;
   FieldText mask;
   bool exact = false;  // the mask covers the whole field
   bool operator==( const FieldValue& ) const = default;
};

struct QualifierState {
   std::string name;                // the SDK's name: "DstMac", "InPorts"
   std::vector<FieldValue> values;  // the plain value first, then compressed ones
   bool operator==( const QualifierState& ) const = default;
};

// Decodes names of run-time enumerations with the simulator's current SDK
// version, so call it while the switch is up.
QualifierState describeQualifier( const Sim::QualifierView& view );

std::string formatMac( std::span<const uint8_t> bytes );
std::string formatIpv4( std::span<const uint8_t> bytes );
std::string formatIpv6( std::span<const uint8_t> bytes );
// Ports of a bitmap laid out as the simulator shows it: the highest port in the
// first byte, port 0 in the low bit of the last byte.
std::vector<int> portsOfBitmap( std::span<const uint8_t> bytes );

}  // namespace FerroAcl
