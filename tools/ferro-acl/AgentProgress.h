// The messages the simulated agent sends its parent, one a line, and the
// parent's reading of them: which planned call was running when the child
// ended, what the entries were named before verification, the last SDK call
// before an abort, and the chip state when the parent asked for it.
//   call I          planned call I (an index into BringupPlan::calls) starts
//   done I          it returned
//   entry U ID NAME entry ID of unit U carries the rule NAME
//   lastcall TEXT   the journal's last SDK call, sent while aborting
//   state JSON      the chip state in its --json form, on one line
#pragma once

#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace FerroAcl {

struct AgentProgress {
   static std::string callMessage( size_t call );
   static std::string doneMessage( size_t call );
   static std::string entryMessage( int unit, int entry, const std::string& name );
   static std::string stateMessage( const std::string& json );
   static constexpr const char* lastCallTag = "lastcall ";

   static AgentProgress read( const std::vector<std::string>& messages );

   std::vector<size_t> done;       // calls that returned, in order
   std::optional<size_t> running;  // the call that started and never returned
   std::map<std::pair<int, int>, std::string> entryNames;  // (unit, entry) -> rule
   std::string lastCall;           // "bcm_field_action_get(0, 1030, ...)"; "" if none
   std::optional<std::string> state;
};

}  // namespace FerroAcl
