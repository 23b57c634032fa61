// ferro-acl classify's output: a report per packet as it is classified, in
// text or JSON, then the counts per CPU queue and per rule. The JSON form is
// an interface scripts read:
//
//    {"packets":[{"index":1,"summary":"...","hits":[{"stage":"ingress",
//      "group":"...","id":N,"name":"..."}],"fate":{"toCpu":"trap",
//      "cpuQueue":38,"trafficClass":null,"dropped":false,"classIds":{}}}],
//     "summary":{"packets":1,"byQueue":{"38":1,"none":0},"byRule":{"...":1}}}
#pragma once

#include <cstddef>
#include <map>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "pipeline/Fate.h"
#include "tools/ferro-acl/ExplainReport.h"

namespace FerroAcl {

struct RuleHit {
   std::string stage;  // "vlan" or "ingress"
   std::string group;  // the owning manager's name, as show gives it
   int id = 0;
   std::string name;  // the rule name its manager recorded; "" when none
};

struct PacketReport {
   size_t index = 0;  // 1-based, in capture order
   std::string summary;
   std::vector<RuleHit> hits;  // the VLAN stage's first; per stage, highest group first
   Pipeline::Fate fate;
   std::optional<ExplainReport> explain;  // with --explain
};

enum class ClassifyForm : uint8_t { Text, Json };

// Prints each report as it is added (unless only the summary is wanted), so
// that a long capture streams and a capture cut short still shows what came
// before; finish() prints the summary and, in JSON, closes the document.
class ClassifyPrinter {
 public:
   ClassifyPrinter( std::ostream& out, ClassifyForm form, bool summaryOnly )
       : out_( out ), form_( form ), summaryOnly_( summaryOnly ) {}

   void add( const PacketReport& report );
   void finish();

 private:
   void count( const PacketReport& report );
   void printText( const PacketReport& report );
   void printJson( const PacketReport& report );
   void finishText();
   void finishJson();

   std::ostream& out_;
   ClassifyForm form_;
   bool summaryOnly_;
   size_t packets_ = 0;
   std::map<uint32_t, size_t> byQueue_;
   size_t notToCpu_ = 0;
   std::map<std::string, size_t> byRule_;
};

}  // namespace FerroAcl
