#include "platform/runtime/Trace.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <tuple>
#include <vector>

using namespace Lumo;
using namespace std::string_literals;

// Handles live as long as the process, so every case names its own.

TEST( Trace, LevelIsOnExactlyWhenItsBitIsSet ) {
   const std::pair<uint16_t, std::vector<int>> cases[] = {
      { 0x0000, {} }, { 0x8000, { 15 } }, { 0x0111, { 0, 4, 8 } },
      { 0xFFFF, { 0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15 } } };
   TraceHandle handle( "MaskProbe" );
   for ( const auto& [ mask, on ] : cases ) {
      handle.maskIs( mask );
      for ( int level = -2; level <= 17; ++level ) {
         EXPECT_EQ( handle.enabled( level ), std::count( on.begin(), on.end(), level ) == 1 )
            << "mask " << mask << " level " << level;
      }
   }
   handle.maskIs( 0 );
   for ( int level : { 3, 15, 16, -1 } ) {
      handle.levelIs( level, true );
   }
   handle.levelIs( 3, false );
   EXPECT_EQ( handle.mask(), 0x8000 );
}

TEST( Trace, ConfigReachesExistingAndLaterHandles ) {
   // '@' stands for a prefix of this run's own, so that --gtest_repeat meets
   // fresh handles again.
   static int run = 0;
   const std::string prefix = "Cfg" + std::to_string( ++run );
   auto named = [ & ]( std::string text ) {
      for ( size_t at; ( at = text.find( '@' ) ) != std::string::npos; ) {
         text.replace( at, 1, prefix );
      }
      return text;
   };
   const std::pair<const char*, std::vector<std::pair<const char*, uint16_t>>> cases[] = {
      { "@A/4", { { "@A", 0x0010 } } },
      { "@B/0-8", { { "@B", 0x01FF } } },
      { "@C/*", { { "@C", 0xFFFF } } },
      { "@D", { { "@D", 0xFFFF } } },
      { "@E/15,@F/2-3,@E/0", { { "@E", 0x8001 }, { "@F", 0x000C } } } };
   for ( const auto& [ config, masks ] : cases ) {
      // The first handle exists before the config, any second one only after it.
      ASSERT_EQ( traceHandle( named( masks[ 0 ].first ) ).mask(), 0 ) << config;
      ASSERT_TRUE( traceConfigIs( named( config ) ) ) << config;
      for ( const auto& [ name, mask ] : masks ) {
         EXPECT_EQ( traceHandle( named( name ) ).mask(), mask ) << config << " -> " << name;
      }
   }
}

TEST( Trace, MalformedConfigChangesNothing ) {
   TraceHandle& existing = traceHandle( "BadA" );
   for ( const char* config : { "BadA/16", "BadA/", "/4", "BadA/4-", "BadA/8-2", "BadA/x",
                                "BadA/1-2-3", "BadA/4,BadB/-1" } ) {
      EXPECT_FALSE( traceConfigIs( config ) ) << config;
   }
   EXPECT_EQ( existing.mask(), 0 );
   EXPECT_EQ( traceHandle( "BadB" ).mask(), 0 );
}

// FERRO_TRACE is read once per process, at the first handle, so only a fresh
// process shows its effect. The threadsafe death-test style re-executes this
// binary for each EXPECT_EXIT: the child starts with the variable already set
// and with none of this process's trace state.
TEST( TraceDeathTest, FerroTraceReachesHandlesMadeOnFirstUse ) {
   GTEST_FLAG_SET( death_test_style, "threadsafe" );
   const std::pair<const char*, const char*> cases[] = {
      { "EnvA/2,EnvB/0-3", "EnvA=0004 EnvB=000f" },
      { "EnvA/99", "cannot parse.*EnvA=0000 EnvB=0000" } };
   for ( const auto& [ value, expected ] : cases ) {
      ASSERT_EQ( setenv( "FERRO_TRACE", value, 1 ), 0 );
      EXPECT_EXIT( ( std::fprintf( stderr, "EnvA=%04x EnvB=%04x", traceHandle( "EnvA" ).mask(),
                                   traceHandle( "EnvB" ).mask() ),
                     std::exit( 0 ) ),
                   ::testing::ExitedWithCode( 0 ), expected ) << value;
   }
   unsetenv( "FERRO_TRACE" );
}

// Counts how often the macro formats it.
struct CountedFormat {
   int* calls;
   friend std::ostream& operator<<( std::ostream& os, CountedFormat c ) {
      return os << ( ++*c.calls, "counted" );
   }
};

TEST( Trace, MacroFormatsOnlyWhenOnAndDeliversOneLine ) {
   std::vector<TraceLine> lines;
   traceSinkIs( [ & ]( const TraceLine& line ) { lines.push_back( line ); } );
   TraceHandle& handle = traceHandle( "SinkProbe" );
   handle.maskIs( 0x0004 );
   int calls = 0;
   ::testing::internal::CaptureStderr();
   LUMO_TRACE( handle, 3, "off " << CountedFormat{ &calls } );
   EXPECT_EQ( calls, 0 );
   const int line = __LINE__ + 1;
   LUMO_TRACE( handle, 2, "on " << CountedFormat{ &calls } << ' ' << 7 );
   EXPECT_EQ( ::testing::internal::GetCapturedStderr(), "" ) << "a sink takes lines alone";
   traceSinkIs( nullptr );
   EXPECT_EQ( calls, 1 );
   ASSERT_EQ( lines.size(), 1u );
   const TraceLine& l = lines[ 0 ];
   EXPECT_EQ( std::tuple( l.handle, l.level, l.line, l.text ),
              std::tuple( "SinkProbe"s, 2, line, "on counted 7"s ) );
   EXPECT_STREQ( l.file, __FILE__ );
   EXPECT_STREQ( l.function, __func__ );

   ::testing::internal::CaptureStderr();
   LUMO_TRACE( handle, 2, "unsunk " << 42 );
   const std::string err = ::testing::internal::GetCapturedStderr();
   for ( const char* part : { "SinkProbe", __FILE__, "unsunk 42" } ) {
      EXPECT_NE( err.find( part ), std::string::npos ) << part << " missing from " << err;
   }
}
