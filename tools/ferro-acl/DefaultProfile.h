// profiles/default.json compiled into ferro-acl: the switch it brings up when
// no profile is given, so that the tool works from any directory.
#pragma once

#include <string_view>

namespace FerroAcl {

extern const std::string_view defaultProfileText;
// How messages name the embedded profile.
inline constexpr const char* defaultProfileSource = "profiles/default.json (embedded)";

}  // namespace FerroAcl
