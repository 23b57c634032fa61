// The simulated agent as ferro-acl runs it inside its child process: brings a
// switch up from a profile, loads the helper library into it, injects the
// requested SDK faults and makes the planned calls, telling the parent over
// the message channel which call it is in (AgentProgress reads them back).
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "pipeline/NetworkContext.h"
#include "platform/agent/SwitchBringup.h"
#include "tools/ferro-acl/BringupSteps.h"
#include "tools/ferro-acl/ChildProcess.h"
#include "tools/ferro-acl/ChipState.h"
#include "tools/ferro-acl/HelperLoader.h"

namespace FerroAcl {

// Everything a run needs, checked by the parent before it forks.
struct AgentSetup {
   Agent::SwitchConfig config;
   Pipeline::NetworkContext network;  // the profile's `network` section
   std::string source;  // how messages name the profile
   std::vector<Sim::Fault> faults;
   std::vector<std::string> faultTexts;  // the --fail options, as given
   std::string helperLibrary;            // empty: next to the executable
   BringupPlan plan;
};

class SimulatedAgent {
 public:
   // Brings the switch up and attaches a freshly loaded helper. On failure
   // the message is on stderr and `status` is the exit status to end with.
   static std::unique_ptr<SimulatedAgent> start( const AgentSetup& setup, int& status );

   // The planned install calls, then the planned verifications unit by unit.
   void install( const MessageChannel& channel );
   void verify( const MessageChannel& channel );

   Agent::Switch& sw() { return *sw_; }
   const Agent::Switch::Ptr& switchPtr() const { return sw_; }
   FerroTcamSystemAcl::HelperBase& helper() { return library_->helper(); }
   ChipState state() const;
   // Says on stderr what became of each --fail; 1 when one never fired.
   int reportFaults() const;

 private:
   SimulatedAgent( const AgentSetup& setup ) : setup_( setup ) {}
   void run( StepKind kind, const MessageChannel& channel );

   const AgentSetup& setup_;
   // Declared before the switch so that it is destroyed after it: whatever the
   // switch still holds of the helper goes before the library's code does.
   std::unique_ptr<HelperLibrary> library_;
   Agent::Switch::Ptr sw_;
};

}  // namespace FerroAcl
