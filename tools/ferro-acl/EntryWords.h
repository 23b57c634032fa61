// An entry's match and actions in words, as show prints them:
//   dst-mac 01:80:c2:00:00:14/ff:ff:ff:ff:ff:fe   in-ports 1-64   l4-dst-port 179
//   ip-type ipv4   ether-type 0x88f7   ttl 254/0xfe   l4-src-port 67|68
//   cpu-queue 38   tc 6   copy-to-cpu   drop   cancel-cpu   class-dest 3
// A qualifier is its SDK name in lower case with dashes; a value whose mask
// covers the field is shown alone, others as data/mask; an in-port list
// shows its mask only when the mask leaves out some listed port; several
// values of one compressed field are joined with "|".
#pragma once

#include <string>
#include <vector>

#include "tools/ferro-acl/ChipState.h"

namespace FerroAcl {

std::string qualifierWords( const QualifierState& qualifier );
std::string actionWords( const ActionState& action );

}  // namespace FerroAcl
