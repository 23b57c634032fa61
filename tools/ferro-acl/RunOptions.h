// The options of the subcommands that bring up one simulated switch (show,
// verify) and the checks CLI11 cannot make, ending in the setup the child
// process runs.
#pragma once

#include <CLI/CLI.hpp>

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "tools/ferro-acl/ChildProcess.h"
#include "tools/ferro-acl/SimulatedAgent.h"

namespace FerroAcl {

struct RunOptions {
   std::string profile;
   bool json = false;
   std::vector<std::string> traces;
   std::vector<std::string> faults;
   std::vector<std::string> skipSteps;
   std::string helperLibrary;
};

void addRunOptions( CLI::App& app, RunOptions& options );

// Parses argv (argv[0] being the subcommand); the exit status when the
// options say not to run (--help, or an error already reported).
std::optional<int> parseCommandLine( CLI::App& app, int argc, char** argv );

// Reads a profile; the embedded default when `path` is empty. The error
// names the file, the field and what was expected.
Result<AgentSetup> loadSetup( const std::string& path );

// Checks traces, faults and skipped steps and loads the profile; nothing when
// something is wrong, the message being on stderr.
std::optional<AgentSetup> prepareRun( const RunOptions& options );

// The child's end of a run: in a forked child, brings the switch of `setup`
// up, installs the system ACL as planned, then runs `body`, whose result is
// the child's exit status; aborts are watched and explained by finishRun.
ChildOutcome runInstalled(
    const AgentSetup& setup,
    const std::function<int( SimulatedAgent& agent, const MessageChannel& channel )>& body );

// The parent's end of a run: the child's stderr passed on and, when the
// library aborted, its explanation; returns the exit status.
int finishRun( const ChildOutcome& outcome, const BringupPlan& plan );

}  // namespace FerroAcl
