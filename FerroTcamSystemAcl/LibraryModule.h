// The module under which the type runtime knows the library's reflected types.
#pragma once

namespace FerroTcamSystemAcl {

inline constexpr const char* libraryModule = "FerroTcamSystemAcl";

}  // namespace FerroTcamSystemAcl
