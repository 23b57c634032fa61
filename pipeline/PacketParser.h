// Parses a frame as captured on the wire (no preamble, no FCS) into the fields
// the simulated chip's lookup reads and the facts a switch model needs.
//
// The parser reads only inside the given bytes. A header cut short by the end
// of the frame, or a length field that runs past it, ends the parse with
// ParseOutcome::Truncated; an impossible value (wrong IP version, a header
// length below the minimum) with ParseOutcome::Malformed. Either way, what the
// headers before it said is kept, and nothing from the failed header is claimed.
#pragma once

#include <cstdint>
#include <span>

#include "pipeline/ParsedPacket.h"

namespace Pipeline {

ParsedPacket parsePacket( std::span<const uint8_t> frame );

}  // namespace Pipeline
