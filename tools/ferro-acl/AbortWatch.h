// In the child: when the helper library aborts, the assertion names the
// failed check but not the entry it was looking at. The SDK journal's last
// call does (its second argument), so on SIGABRT the child sends that call
// to the parent before it dies.
#pragma once

#include "tools/ferro-acl/ChildProcess.h"

namespace FerroAcl {

void watchAborts( const MessageChannel& channel );

}  // namespace FerroAcl
