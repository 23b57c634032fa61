// Runs the built ferro-acl as a subprocess and captures what it printed and
// how it ended, for tests that use the tool the way a person or script does.
#pragma once

#include <string>
#include <vector>

namespace FerroAclTest {

struct ToolRun {
   std::string out;
   std::string err;
   int exitCode = -1;  // -1 when the process was killed by a signal
   int signal = 0;     // the signal that ended it, 0 when it exited
};

ToolRun runTool( const std::vector<std::string>& arguments );

// Writes `content` to a fresh file under the test temporary directory.
std::string writeTempFile( const std::string& name, const std::string& content );

// The *.json files of profiles/, sorted.
std::vector<std::string> profileFiles();

std::string readFile( const std::string& path );

}  // namespace FerroAclTest
