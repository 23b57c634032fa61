// The two forms of the control-plane matrix.
//
// Text: per unit a header line, then one row per canonical packet: the
// packet, the entries it hit ("GROUP: RULE", VLAN stage first), CPU delivery
// (trap, copy, none), CPU queue, traffic class, forwarding (forwarded,
// dropped: WHY, or trapped) with the class ids written, and the CPU reasons
// ("cancelled: ..." for those an entry took back). Rows fit 160 columns.
//   unit 0: ingress 0:1, 52 packets
//     packet                 rule hit                    cpu   queue  tc  forwarding
//     reasons BGP - dst port 179     L3 control: BGP - Dst Port  trap     38   -  trapped
//     self IP
//
// JSON, a stable interface (later versions add keys, never rename, retype or
// drop one):
//   {"units":[{"unit":0,"ingress":"0:1","packets":[{"name":"BGP - dst port 179",
//     "ingress":"0:1","hits":[{"entry":1030,"stage":"ingress","group":"L3 control",
//     "rule":"BGP - Dst Port"}],"toCpu":"trap","cpuQueue":38,"trafficClass":null,
//     "forwarded":false,"dropped":false,"dropReason":"","reasons":["self IP"],
//     "cancelled":[],"classDest":null,"newClassId":null,"egressClassSelect":null}]}]}
// Absent values (no queue, no traffic class, no class id) are null.
#pragma once

#include <nlohmann/json.hpp>

#include <ostream>
#include <vector>

#include "tools/ferro-acl/CoppMatrix.h"

namespace FerroAcl {

void printCopp( std::ostream& out, const std::vector<CoppUnit>& units );
nlohmann::ordered_json coppJson( const std::vector<CoppUnit>& units );

}  // namespace FerroAcl
