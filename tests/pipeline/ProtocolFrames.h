// One frame per protocol the parser knows, built as bytes, with what the
// parser must find in it. Shared by the field tests and the truncation tests.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "pipeline/PacketBuilder.h"
#include "pipeline/PacketParser.h"

namespace Pipeline::Test {

struct FrameCase {
   std::string name;
   Bytes frame;
   std::vector<Layer> layers;
   std::function<void( const ParsedPacket& )> expect;
   // Every byte of the frame lies within some length field (IP, UDP, 802.3,
   // PTP, EAPoL), so any shorter prefix must be reported as truncated.
   bool lengthCovered = true;
};

std::vector<FrameCase> protocolFrames();

}  // namespace Pipeline::Test
