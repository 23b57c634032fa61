// Agent log handles: one per message tag, created once and kept for the life
// of the process. A message is one line on standard error, or goes to the
// installed sink.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

namespace Lumo {

class LogHandle {
  public:
   explicit LogHandle( std::string tag ) : tag_( std::move( tag ) ) {}
   LogHandle( const LogHandle& ) = delete;
   LogHandle& operator=( const LogHandle& ) = delete;

   const std::string& tag() const { return tag_; }
   void log( std::string_view message );
   uint64_t messages() const { return messages_; }

  private:
   std::string tag_;
   uint64_t messages_ = 0;
};

// The handle of that tag, created on first use.
LogHandle& logHandle( std::string_view tag );
bool logHandleExists( std::string_view tag );

using LogSink = std::function<void( const std::string& tag, std::string_view message )>;
void logSinkIs( LogSink sink );

}  // namespace Lumo
