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
   handle.maskIs( 0x0008 );
   handle.levelIs( 3, false );
   handle.levelIs( 15, true );
   handle.levelIs( 16, true );  // out of range: ignored
   EXPECT_EQ( handle.mask(), 0x8000 );
}

// A configuration reaches the handle made before it (A) and the one made after
// it (B); one that does not parse changes neither. '@' stands for a prefix
// fresh to each row and run, so that --gtest_repeat meets new handles too.
TEST( Trace, ConfigReachesExistingAndLaterHandlesOrNone ) {
   const std::tuple<const char*, bool, uint16_t, uint16_t> rows[] = {
      { "@A/4", true, 0x0010, 0 }, { "@A/0-8", true, 0x01FF, 0 }, { "@B/*", true, 0, 0xFFFF },
      { "@A", true, 0xFFFF, 0 }, { "@A/15,@B/2-3,@A/0", true, 0x8001, 0x000C },
      { "@A/4,@B/-1", false, 0, 0 }, { "@A/16", false, 0, 0 }, { "@A/", false, 0, 0 },
      { "/4", false, 0, 0 }, { "@A/4-", false, 0, 0 }, { "@A/8-2", false, 0, 0 },
      { "@A/x", false, 0, 0 }, { "@A/1-2-3", false, 0, 0 } };
   static int run = 0;
   for ( const auto& [ config, parses, a, b ] : rows ) {
      const std::string prefix = "Cfg" + std::to_string( ++run ) + "_";
      auto named = [ & ]( std::string text ) {
         for ( size_t at; ( at = text.find( '@' ) ) != std::string::npos; ) {
            text.replace( at, 1, prefix );
         }
         return text;
      };
      TraceHandle& before = traceHandle( named( "@A" ) );
      EXPECT_EQ( traceConfigIs( named( config ) ), parses ) << config;
      EXPECT_EQ( before.mask(), a ) << config;
      EXPECT_EQ( traceHandle( named( "@B" ) ).mask(), b ) << config;
   }
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
   LUMO_TRACE( handle, 3, "off " << CountedFormat{ &calls } );
   const int line = __LINE__ + 1;
   LUMO_TRACE( handle, 2, "on " << CountedFormat{ &calls } << ' ' << 7 );
   traceSinkIs( nullptr );
   EXPECT_EQ( calls, 1 );
   ASSERT_EQ( lines.size(), 1u );
   const TraceLine& l = lines[ 0 ];
   EXPECT_EQ( std::tuple( l.handle, l.level, l.line, l.text ),
              std::tuple( "SinkProbe"s, 2, line, "on counted 7"s ) );
   EXPECT_STREQ( l.file, __FILE__ );
   EXPECT_STREQ( l.function, __func__ );
}
