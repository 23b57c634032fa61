#include "platform/runtime/Trace.h"

#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

namespace Lumo {

namespace {

struct Setting {
   std::string name;
   uint16_t mask;
};

struct Registry {
   std::mutex mutex;
   std::map<std::string, std::unique_ptr<TraceHandle>, std::less<>> handles;
   std::vector<Setting> settings;  // applied, in order, to handles made later
   TraceSink sink;
   bool environmentRead = false;
};

Registry& registry() {
   static Registry r;
   return r;
}

std::optional<int> parseLevel( std::string_view text ) {
   int value = -1;
   auto [ end, ec ] = std::from_chars( text.data(), text.data() + text.size(), value );
   if ( ec != std::errc() || end != text.data() + text.size() || value < 0 || value > 15 ) {
      return std::nullopt;
   }
   return value;
}

std::optional<uint16_t> parseLevels( std::string_view text ) {
   if ( text == "*" ) {
      return 0xFFFF;
   }
   const auto dash = text.find( '-' );
   const auto low = parseLevel( text.substr( 0, dash ) );
   const auto high = dash == std::string_view::npos ? low : parseLevel( text.substr( dash + 1 ) );
   if ( !low || !high || *low > *high ) {
      return std::nullopt;
   }
   uint16_t mask = 0;
   for ( int level = *low; level <= *high; ++level ) {
      mask |= uint16_t( 1u << level );
   }
   return mask;
}

std::optional<std::vector<Setting>> parseConfig( std::string_view config ) {
   std::vector<Setting> settings;
   while ( !config.empty() ) {
      const auto comma = config.find( ',' );
      std::string_view item = config.substr( 0, comma );
      config = comma == std::string_view::npos ? std::string_view{} : config.substr( comma + 1 );
      if ( item.empty() ) {
         continue;
      }
      const auto slash = item.find( '/' );
      std::string_view name = item.substr( 0, slash );
      std::optional<uint16_t> mask = 0xFFFF;
      if ( slash != std::string_view::npos ) {
         mask = parseLevels( item.substr( slash + 1 ) );
      }
      if ( name.empty() || !mask ) {
         return std::nullopt;
      }
      settings.push_back( { std::string( name ), *mask } );
   }
   return settings;
}

void applySettings( TraceHandle& handle, const std::vector<Setting>& settings ) {
   for ( const Setting& s : settings ) {
      if ( s.name == handle.name() ) {
         handle.maskIs( uint16_t( handle.mask() | s.mask ) );
      }
   }
}

// Called with the registry locked.
void readEnvironment( Registry& r ) {
   if ( r.environmentRead ) {
      return;
   }
   r.environmentRead = true;
   if ( const char* env = std::getenv( "FERRO_TRACE" ) ) {
      if ( auto settings = parseConfig( env ) ) {
         r.settings.insert( r.settings.end(), settings->begin(), settings->end() );
      } else {
         std::fprintf( stderr, "FERRO_TRACE: cannot parse \"%s\"; expected Name/N, "
                               "Name/N-M or Name/*, comma-separated\n", env );
      }
   }
}

}  // namespace

void TraceHandle::levelIs( int level, bool enabled ) {
   if ( level < 0 || level > 15 ) {
      return;
   }
   const uint16_t bit = uint16_t( 1u << level );
   maskIs( enabled ? uint16_t( mask() | bit ) : uint16_t( mask() & ~bit ) );
}

void TraceHandle::write( int level, const char* file, int line, const char* function,
                         std::string_view text ) const {
   Registry& r = registry();
   TraceSink sink;
   {
      std::lock_guard<std::mutex> guard( r.mutex );
      sink = r.sink;
   }
   if ( sink ) {
      sink( TraceLine{ name_, level, file, line, function, std::string( text ) } );
      return;
   }
   std::fprintf( stderr, "[%s/%d] %s:%d %s: %.*s\n", name_.c_str(), level, file, line,
                 function, int( text.size() ), text.data() );
}

TraceHandle& traceHandle( std::string_view name ) {
   Registry& r = registry();
   std::lock_guard<std::mutex> guard( r.mutex );
   readEnvironment( r );
   auto it = r.handles.find( name );
   if ( it != r.handles.end() ) {
      return *it->second;
   }
   auto handle = std::make_unique<TraceHandle>( std::string( name ) );
   applySettings( *handle, r.settings );
   TraceHandle& result = *handle;
   r.handles.emplace( std::string( name ), std::move( handle ) );
   return result;
}

bool traceConfigIs( std::string_view config ) {
   auto settings = parseConfig( config );
   if ( !settings ) {
      return false;
   }
   Registry& r = registry();
   std::lock_guard<std::mutex> guard( r.mutex );
   readEnvironment( r );
   for ( auto& [ name, handle ] : r.handles ) {
      applySettings( *handle, *settings );
   }
   r.settings.insert( r.settings.end(), settings->begin(), settings->end() );
   return true;
}

void traceSinkIs( TraceSink sink ) {
   Registry& r = registry();
   std::lock_guard<std::mutex> guard( r.mutex );
   r.sink = std::move( sink );
}

}  // namespace Lumo
