// ferro-acl's exit statuses, the same for every subcommand.
#pragma once

namespace FerroAcl {

constexpr int exitOk = 0;
constexpr int exitFailure = 1;  // a check failed, the library aborted, or the run failed
constexpr int exitUsage = 2;    // bad options or input: nothing was run

}  // namespace FerroAcl
