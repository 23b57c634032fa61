// Reflection of a node's attributes and operations: the runtime addresses them
// by attribute id with one access kind; arguments and result travel as values.
#pragma once

#include <any>
#include <vector>

#include "platform/runtime/Publisher.h"

namespace Lumo {

enum class ReflectAccess : uint8_t { read, set, del, call };

struct ReflectIo {
   std::vector<std::any> args;  // set: the new value; call: the arguments
   std::any result;             // read: the value; call: the result
};

enum class ReflectResult : uint8_t {
   ok,
   unknownAttribute,  // not this class's: the runtime asks the base class
   accessRefused,     // known, but not with this access
   badArguments,
};

}  // namespace Lumo
