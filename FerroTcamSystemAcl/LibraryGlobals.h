// Objects the library creates when it is loaded, and its default trace handle.
#pragma once

#include "FerroTcamSystemAcl/OperationContext.h"
#include "platform/runtime/Log.h"
#include "platform/runtime/Trace.h"

namespace FerroTcamSystemAcl {

// The agent's name from AGENT_PROCESS_NAME, read once at load; null when unset.
const char* agentProcessName();

// The library's own log handles.
Lumo::LogHandle& configChangeLog();      // "FERRO_CONFIG_CHANGE"
Lumo::LogHandle& unexpectedRestartLog(); // "FERRO_UNEXPECTED_RESTART"
Lumo::LogHandle& kixMountTimeoutLog();   // "KIX_MOUNT_TIMEOUT"

// "FerroTcamSystemAclHelper", created on first use; every operation traces its
// entry here.
Lumo::TraceHandle& defaultTrace();

}  // namespace FerroTcamSystemAcl

// One line on the library's default trace handle, formatted only when `level`
// is on, attributed to the operation (see OperationContext.h).
#define FERRO_TRACE( level, expression )                                               \
   LUMO_TRACE_IN( ::FerroTcamSystemAcl::defaultTrace(), level, FERRO_FUNCTION_NAME,    \
                  expression )
