#include "platform/runtime/Log.h"

#include <cstdio>
#include <map>
#include <memory>
#include <mutex>

namespace Lumo {

namespace {

struct Registry {
   std::mutex mutex;
   std::map<std::string, std::unique_ptr<LogHandle>, std::less<>> handles;
   LogSink sink;
};

Registry& registry() {
   static Registry r;
   return r;
}

}  // namespace

void LogHandle::log( std::string_view message ) {
   ++messages_;
   LogSink sink;
   {
      Registry& r = registry();
      std::lock_guard<std::mutex> guard( r.mutex );
      sink = r.sink;
   }
   if ( sink ) {
      sink( tag_, message );
   } else {
      std::fprintf( stderr, "%%%s: %.*s\n", tag_.c_str(), int( message.size() ),
                    message.data() );
   }
}

LogHandle& logHandle( std::string_view tag ) {
   Registry& r = registry();
   std::lock_guard<std::mutex> guard( r.mutex );
   auto it = r.handles.find( tag );
   if ( it == r.handles.end() ) {
      it = r.handles.emplace( std::string( tag ), std::make_unique<LogHandle>( std::string( tag ) ) )
              .first;
   }
   return *it->second;
}

bool logHandleExists( std::string_view tag ) {
   Registry& r = registry();
   std::lock_guard<std::mutex> guard( r.mutex );
   return r.handles.find( tag ) != r.handles.end();
}

void logSinkIs( LogSink sink ) {
   Registry& r = registry();
   std::lock_guard<std::mutex> guard( r.mutex );
   r.sink = std::move( sink );
}

}  // namespace Lumo
