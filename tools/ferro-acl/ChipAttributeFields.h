// The chip attributes a profile sets, by their C++ names, so that a profile's
// "attributes" object reads like FerroCentral::ChipCapabilities itself. Every
// capability of a chip is in this table; one that is missing here cannot be
// set by any profile.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <variant>
#include <vector>

#include "platform/agent/FerroCentral.h"
#include "tools/ferro-acl/JsonText.h"

namespace FerroAcl {

using ProtocolList = std::vector<Lamo::L2Pt::L2PtProtocol>;

struct ChipAttributeField {
   using Caps = FerroCentral::ChipCapabilities;
   const char* name;
   std::variant<bool Caps::*, U8 Caps::*, U32 Caps::*, int Caps::*, ProtocolList Caps::*>
       member;
   int64_t min = 0;  // integer members: the values a chip can have
   int64_t max = 0;
};

std::span<const ChipAttributeField> chipAttributeFields();

// Reads an "attributes" object at `path` into `into`; members not given keep
// their values. Throws FieldError.
void readChipAttributes( const Json& object, const std::string& path,
                         FerroCentral::ChipCapabilities& into );

// The protocol of an L2 protocol-forwarding name ("lldp"); false if unknown.
// Every L2 protocol name, comma-separated, for messages.
std::string l2ProtocolNames();
bool l2ProtocolByName( std::string_view name, Lamo::L2Pt::L2PtProtocol& protocol );

}  // namespace FerroAcl
