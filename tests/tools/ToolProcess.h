// Runs the built ferro-acl as a subprocess and captures what it printed and
// how it ended, for tests that use the tool the way a person or script does.
#pragma once

#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace FerroAclTest {

struct ToolRun {
   std::string out;
   std::string err;
   int exitCode = -1;  // -1 when the process was killed by a signal
   int signal = 0;     // the signal that ended it, 0 when it exited
};

// Writes `content` to a fresh file under the test temporary directory.
inline std::string writeTempFile( const std::string& name, const std::string& content ) {
   static int serial = 0;
   const std::string path = testing::TempDir() + std::to_string( ::getpid() ) + "-" +
                            std::to_string( ++serial ) + "-" + name;
   std::ofstream( path, std::ios::binary ) << content;
   return path;
}

// Reads and removes the file.
inline std::string takeFile( const std::string& path ) {
   std::ostringstream text;
   text << std::ifstream( path, std::ios::binary ).rdbuf();
   std::filesystem::remove( path );
   return text.str();
}

inline ToolRun runTool( const std::vector<std::string>& arguments ) {
   // exec: the shell becomes the tool, so its status is the tool's, signal and all.
   const std::string outPath = writeTempFile( "stdout", "" );
   const std::string errPath = writeTempFile( "stderr", "" );
   std::string command = "exec '" FERRO_ACL_PATH "'";
   for ( const std::string& argument : arguments ) {
      command += " '" + argument + "'";  // no test argument holds a quote
   }
   const int status =
       std::system( ( command + " >'" + outPath + "' 2>'" + errPath + "'" ).c_str() );
   ToolRun run{ takeFile( outPath ), takeFile( errPath ) };
   if ( WIFEXITED( status ) ) {
      run.exitCode = WEXITSTATUS( status );
   } else if ( WIFSIGNALED( status ) ) {
      run.signal = WTERMSIG( status );
   }
   return run;
}

// The *.json files of profiles/, sorted.
inline std::vector<std::string> profileFiles() {
   std::vector<std::string> files;
   for ( const auto& item : std::filesystem::directory_iterator( FERRO_PROFILES_DIR ) ) {
      if ( item.path().extension() == ".json" ) {
         files.push_back( item.path().string() );
      }
   }
   std::sort( files.begin(), files.end() );
   return files;
}

// Names parameterised tests after the profile's file stem: "vxlan_core_l2".
struct ProfileStem {
   std::string operator()( const testing::TestParamInfo<std::string>& info ) const {
      std::string stem = std::filesystem::path( info.param ).stem().string();
      std::replace( stem.begin(), stem.end(), '-', '_' );
      return stem;
   }
};

}  // namespace FerroAclTest
