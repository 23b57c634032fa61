// How the parent explains a child that did not finish: the operation that was
// running (from the progress messages), the library's SDK error line and the
// assertion (from the child's stderr), and for a verification the rule whose
// entry the last SDK call read.
#pragma once

#include <optional>
#include <string>

#include "tools/ferro-acl/AgentProgress.h"
#include "tools/ferro-acl/BringupSteps.h"
#include "tools/ferro-acl/ChildProcess.h"

namespace FerroAcl {

struct AbortReport {
   std::string operation;  // "doInstallAclRules", or "" outside the planned calls
   int unit = -1;          // the unit of that call
   bool verifying = false;
   std::string sdkError;   // "<path>:<line> <call text> API ERROR:<text> (<code>)"
   std::string assertion;  // "param0 == cpuCosqBGP_"
   std::string function;   // where it failed: "virtual void ...::verifyInstalledAclRules(U16)"
   std::string rule;       // the rule of the entry last read, when known
   int entry = 0;
   int signal = 0;         // the signal that ended the child
   std::string otherErr;   // the child's stderr without the two lines above

   // The failure in one line: the assertion with its rule, or the SDK error.
   std::string summary() const;
   // The whole explanation for stderr, each line starting "ferro-acl: " or "  ".
   std::string message() const;
};

// Nothing when the child ended normally (an exit status, not a signal).
std::optional<AbortReport> explainAbort( const ChildOutcome& outcome,
                                         const BringupPlan& plan );

}  // namespace FerroAcl
