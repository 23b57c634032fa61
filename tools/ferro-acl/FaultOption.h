// --fail FUNCTION[@N][=RC]: makes the simulated SDK fail the Nth call (the
// first by default) of FUNCTION with RC (BCM_E_PARAM by default), once, so
// that a person can watch the library's failure path. RC is a BCM_E_ name or
// a negative number.
#pragma once

#include <optional>
#include <string_view>

#include "platform/sdk/Simulator.h"
#include "tools/ferro-acl/Result.h"

namespace FerroAcl {

Result<Sim::Fault> parseFaultOption( std::string_view text );

// The value of a failure code by its SDK name ("BCM_E_PARAM" -> -4).
std::optional<int> returnCodeByName( std::string_view name );

}  // namespace FerroAcl
