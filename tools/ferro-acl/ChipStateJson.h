// The --json form of the chip state. Scripts and tests parse it, so it is a
// stable interface: later versions add keys but never rename, retype or drop
// one.
//   {"units":[{"unit":0,"chip":"Trident3","model":5,"verified":true,
//     "entries":[{"id":1024,"name":"...","stage":"ingress|vlan","group":"...",
//       "priority":N,"installed":true,"enabled":true,
//       "qualifiers":{"L4DstPort":{"data":179,"mask":65535},
//                     "L4SrcPort":[{"data":67,"mask":65535},{"data":68,"mask":65535}]},
//       "actions":{"CosQCpuNew":[38,0]},"recordedAs":["bgpRule"]}]}],
//    "skipped":["doInstallL2TrapRules"]}
// A qualifier with one value is one {"data","mask"} object; one with several
// (a compressed field, or a plain value beside compressed ones) is a list.
#pragma once

#include <nlohmann/json.hpp>

#include "tools/ferro-acl/ChipState.h"

namespace FerroAcl {

nlohmann::ordered_json chipStateJson( const ChipState& state );

}  // namespace FerroAcl
