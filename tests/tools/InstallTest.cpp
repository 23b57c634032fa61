// An installed ferro-acl finds its helper library and embedded default switch
// without any option, from wherever the installed tree is.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>

#include "ToolProcess.h"

TEST( Install, InstalledToolRunsFromItsPrefix ) {
   const std::filesystem::path prefix =
       std::filesystem::path( testing::TempDir() ) /
       ( "ferro-acl-install-" + std::to_string( ::getpid() ) );
   const std::string install = "'" FERRO_CMAKE_COMMAND "' --install '" FERRO_BUILD_DIR
                               "' --prefix '" + prefix.string() + "' >/dev/null";
   ASSERT_EQ( std::system( install.c_str() ), 0 ) << install;
   for ( const char* file :
         { "bin/ferro-acl", "lib/libFerroTcamSystemAclHelper.so", "lib/libferro_platform.so",
           "share/ferro-acl/profiles/default.json", "share/ferro-acl/examples" } ) {
      EXPECT_TRUE( std::filesystem::exists( prefix / file ) ) << file;
   }
   const std::string out = ( prefix / "out.txt" ).string();
   const std::string run =
       "env -u LD_LIBRARY_PATH '" + ( prefix / "bin/ferro-acl" ).string() + "' verify >'" + out + "'";
   EXPECT_EQ( std::system( run.c_str() ), 0 );
   EXPECT_TRUE( FerroAclTest::takeFile( out ).ends_with( "unit 0: verified\nunit 1: verified\n" ) );
   std::filesystem::remove_all( prefix );
}
