// A scenario: the configuration changes an agent makes on a running switch,
// one event a line, parsed whole before anything is applied. The grammar:
//
//   [unit N] ptp mode N [flag on|off]
//   [unit N] ptp tap-aggregation on|off
//   [unit N] pim copy on|off
//   [unit N] ll-mcast cancel on|off
//   [unit N] eapol mac MAC
//   [unit N] eapol enable|disable
//   vxlan on|off
//   port add|remove UNIT:PORT [mesa]
//   l2pf PROTOCOL UNIT:PORT all|vxlan-decap|off     (lacp, lldp, bpdu, micro-bfd)
//   ipfix sw-export on|off
//   ipfix tracker T add|remove
//   ipfix exporter T/E add|remove
//   ipfix collector T/E/C ADDRESS:PORT|remove       (IPv4, or [IPv6]:PORT)
//   ipfix local-collector T port P add on|off
//   [unit N] verify
//
// '#' starts a comment; blank lines are skipped. A leading "unit N" addresses
// one unit; without it an event applies to every unit.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <vector>

#include "platform/agent/FerroTypes.h"
#include "tools/ferro-acl/Result.h"

namespace FerroAcl {

enum class EventKind : U8 {
   ptpMode,
   ptpTapAggregation,
   pimCopy,
   llMcastCancel,
   eapolMac,
   eapolEnable,
   vxlan,
   port,
   l2pf,
   ipfixSwExport,
   ipfixTracker,
   ipfixExporter,
   ipfixCollector,
   ipfixLocalCollector,
   verify,
};

struct ScenarioEvent {
   int line = 0;
   std::string text;           // the line without its comment, trimmed
   EventKind kind = EventKind::verify;
   std::optional<U16> unit;    // "unit N": only that unit
   bool on = false;            // on / add / enable / flag on
   U32 number = 0;             // PTP mode, local-collector port
   bool flag = false;          // ptp mode ... flag on
   Wirex::EthAddr mac;
   U16 targetUnit = 0, targetPort = 0;  // port and l2pf: UNIT:PORT
   bool mesa = false;
   Lamo::L2Pt::L2PtProtocol protocol = Lamo::L2Pt::L2PtProtocol::lldp;
   std::optional<Lamo::L2Pt::L2PtTrafficType> traffic;  // l2pf; none: off
   std::string tracker, exporter, collector;
   bool ipv6 = false;
   U32 ipv4 = 0;
   std::array<U8, 16> ip6{};
   U16 collectorPort = 0;
};

// `file` names the scenario in errors: "FILE:LINE: unexpected 'TOKEN',
// expected ...". Trackers and exporters must exist (earlier in the file) when
// a line names them.
Result<std::vector<ScenarioEvent>> parseScenario( const std::string& text,
                                                  const std::string& file );

}  // namespace FerroAcl

namespace Agent {
struct SwitchConfig;
}

namespace FerroAcl {

// Checks a parsed scenario against the switch it will run on: every unit it
// names exists, every UNIT:PORT is a front-panel port of that unit's chip, a
// port is removed before it is added. The error reads like a parse error,
// "FILE:LINE: unexpected 'TOKEN', expected ...", or nullopt when it fits.
std::optional<std::string> checkScenario( const std::vector<ScenarioEvent>& events,
                                          const Agent::SwitchConfig& config,
                                          const std::string& file );

// The scenario file at `path` read, parsed and checked against the switch;
// nothing when it is not usable, the message being on stderr.
std::optional<std::vector<ScenarioEvent>> loadScenario( const std::string& path,
                                                        const Agent::SwitchConfig& config );

}  // namespace FerroAcl
