// Named trace handles. Each carries a 16-bit mask of enabled levels: level N is
// on exactly when bit N is set. Handles are created on first use and pick up
// their levels from FERRO_TRACE (for example
// "ApiFerro/4,FerroTcamSystemAclHelper/0-8") and from traceConfigIs().
// A line costs nothing but a mask test while its level is off.
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <sstream>
#include <string>
#include <string_view>

namespace Lumo {

struct TraceLine {
   std::string handle;
   int level;
   const char* file;
   int line;
   const char* function;
   std::string text;
};

class TraceHandle {
  public:
   explicit TraceHandle( std::string name ) : name_( std::move( name ) ) {}
   TraceHandle( const TraceHandle& ) = delete;
   TraceHandle& operator=( const TraceHandle& ) = delete;

   const std::string& name() const { return name_; }
   uint16_t mask() const { return mask_.load( std::memory_order_relaxed ); }
   void maskIs( uint16_t mask ) { mask_.store( mask, std::memory_order_relaxed ); }
   void levelIs( int level, bool enabled );
   bool enabled( int level ) const {
      return level >= 0 && level < 16 && ( ( mask() >> level ) & 1 );
   }

   // Writes one line with its origin; the caller has checked enabled(level).
   void write( int level, const char* file, int line, const char* function,
               std::string_view text ) const;

  private:
   std::string name_;
   std::atomic<uint16_t> mask_{ 0 };
};

// The handle of that name, created on first use.
TraceHandle& traceHandle( std::string_view name );

// Applies a configuration "Name/LEVELS[,Name/LEVELS...]" to existing and
// future handles; LEVELS is N, N-M or * (all), and a bare name enables all.
// Returns false, changing nothing, when the text does not parse.
bool traceConfigIs( std::string_view config );

// Where lines go: stderr by default; a sink captures them (tests, tools).
using TraceSink = std::function<void( const TraceLine& )>;
void traceSinkIs( TraceSink sink );

}  // namespace Lumo

// Streams `expression` into one trace line when `level` is on for `handle`,
// attributed to `function`.
#define LUMO_TRACE_IN( handle, level, function, expression )                        \
   do {                                                                             \
      ::Lumo::TraceHandle& lumoTraceHandle_ = ( handle );                           \
      if ( lumoTraceHandle_.enabled( level ) ) {                                    \
         std::ostringstream lumoTraceStream_;                                       \
         lumoTraceStream_ << expression;                                            \
         lumoTraceHandle_.write( ( level ), __FILE__, __LINE__, ( function ),       \
                                 lumoTraceStream_.view() );                         \
      }                                                                             \
   } while ( 0 )

// The same, attributed to the enclosing function.
#define LUMO_TRACE( handle, level, expression ) \
   LUMO_TRACE_IN( handle, level, __func__, expression )
