// Request keys of the system rules' entries: every entry is bound to all
// Ethernet ports of its unit, in the L2 or the L3 control group.
#pragma once

#include "platform/agent/TcamEntryManager.h"

namespace FerroTcamSystemAcl {

inline FerroTcam::RequestKey l2CtrlGroupKey() {
   return FerroTcam::RequestKey( "PBMP_E_ALL for l2 ctrl group", false );
}
inline FerroTcam::RequestKey l3CtrlGroupKey() {
   return FerroTcam::RequestKey( "PBMP_E_ALL for l3 ctrl group", false );
}

}  // namespace FerroTcamSystemAcl
