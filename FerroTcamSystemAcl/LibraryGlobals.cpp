#include "FerroTcamSystemAcl/LibraryGlobals.h"

#include <cstdlib>

#include "FerroTcamSystemAcl/CheckedCall.h"

namespace FerroTcamSystemAcl {

namespace {

// Everything here is made by the loader, before the agent can create a Helper.
struct LoadTimeObjects {
   LoadTimeObjects()
         : agentName( std::getenv( "AGENT_PROCESS_NAME" ) ),
           configChange( &Lumo::logHandle( "FERRO_CONFIG_CHANGE" ) ),
           unexpectedRestart( &Lumo::logHandle( "FERRO_UNEXPECTED_RESTART" ) ),
           kixMountTimeout( &Lumo::logHandle( "KIX_MOUNT_TIMEOUT" ) ) {}
   const char* agentName;
   Lumo::LogHandle* configChange;
   Lumo::LogHandle* unexpectedRestart;
   Lumo::LogHandle* kixMountTimeout;
};

const LoadTimeObjects loadTimeObjects;

}  // namespace

Lumo::TraceHandle* apiFerroTrace = &Lumo::traceHandle( "ApiFerro" );

const char* agentProcessName() { return loadTimeObjects.agentName; }
Lumo::LogHandle& configChangeLog() { return *loadTimeObjects.configChange; }
Lumo::LogHandle& unexpectedRestartLog() { return *loadTimeObjects.unexpectedRestart; }
Lumo::LogHandle& kixMountTimeoutLog() { return *loadTimeObjects.kixMountTimeout; }

Lumo::TraceHandle& defaultTrace() {
   static Lumo::TraceHandle& handle = Lumo::traceHandle( "FerroTcamSystemAclHelper" );
   return handle;
}

}  // namespace FerroTcamSystemAcl
