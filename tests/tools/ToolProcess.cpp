#include "ToolProcess.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>

extern char** environ;

namespace FerroAclTest {

namespace {

std::string tempPath( const std::string& name ) {
   static int serial = 0;
   return testing::TempDir() + "ferro-acl-" + std::to_string( ::getpid() ) + "-" +
          std::to_string( ++serial ) + "-" + name;
}

}  // namespace

std::string readFile( const std::string& path ) {
   std::ifstream in( path, std::ios::binary );
   std::ostringstream text;
   text << in.rdbuf();
   return text.str();
}

std::string writeTempFile( const std::string& name, const std::string& content ) {
   const std::string path = tempPath( name );
   std::ofstream( path, std::ios::binary ) << content;
   return path;
}

ToolRun runTool( const std::vector<std::string>& arguments ) {
   // Files rather than pipes: nothing to drain while the child runs, however
   // much it prints.
   const std::string outPath = tempPath( "stdout" );
   const std::string errPath = tempPath( "stderr" );
   posix_spawn_file_actions_t actions;
   posix_spawn_file_actions_init( &actions );
   posix_spawn_file_actions_addopen( &actions, 1, outPath.c_str(),
                                     O_WRONLY | O_CREAT | O_TRUNC, 0600 );
   posix_spawn_file_actions_addopen( &actions, 2, errPath.c_str(),
                                     O_WRONLY | O_CREAT | O_TRUNC, 0600 );
   std::vector<std::string> argv{ FERRO_ACL_PATH };
   argv.insert( argv.end(), arguments.begin(), arguments.end() );
   std::vector<char*> pointers;
   for ( std::string& argument : argv ) {
      pointers.push_back( argument.data() );
   }
   pointers.push_back( nullptr );

   ToolRun run;
   pid_t pid = 0;
   const int rc =
       posix_spawn( &pid, FERRO_ACL_PATH, &actions, nullptr, pointers.data(), environ );
   posix_spawn_file_actions_destroy( &actions );
   if ( rc != 0 ) {
      ADD_FAILURE() << "cannot start " << FERRO_ACL_PATH << ": " << std::strerror( rc );
      return run;
   }
   int status = 0;
   while ( ::waitpid( pid, &status, 0 ) < 0 && errno == EINTR ) {
   }
   if ( WIFEXITED( status ) ) {
      run.exitCode = WEXITSTATUS( status );
   } else if ( WIFSIGNALED( status ) ) {
      run.signal = WTERMSIG( status );
   }
   run.out = readFile( outPath );
   run.err = readFile( errPath );
   std::filesystem::remove( outPath );
   std::filesystem::remove( errPath );
   return run;
}

std::vector<std::string> profileFiles() {
   std::vector<std::string> files;
   for ( const auto& item : std::filesystem::directory_iterator( FERRO_PROFILES_DIR ) ) {
      if ( item.path().extension() == ".json" ) {
         files.push_back( item.path().string() );
      }
   }
   std::sort( files.begin(), files.end() );
   return files;
}

}  // namespace FerroAclTest
