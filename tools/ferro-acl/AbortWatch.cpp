#include "tools/ferro-acl/AbortWatch.h"

#include <unistd.h>

#include <csignal>
#include <cstring>

#include "platform/sdk/Simulator.h"
#include "tools/ferro-acl/AgentProgress.h"

namespace FerroAcl {

namespace {

int abortFd = -1;

void put( const char* text ) {
   // Best effort: the process is going down either way.
   [[maybe_unused]] const ssize_t written = ::write( abortFd, text, std::strlen( text ) );
}

// abort() raises the signal on the failing thread after the assertion message
// is out; nothing is half-updated then, so reading the journal is safe. When
// the handler returns, abort() ends the process with the default action.
extern "C" void sendLastCall( int ) {
   const std::vector<Sim::JournalEntry>& journal = Sim::FieldProcessor::instance().journal();
   if ( !journal.empty() ) {
      put( AgentProgress::lastCallTag );
      put( journal.back().function );
      put( "(" );
      put( journal.back().arguments.c_str() );
      put( ")\n" );
   }
   std::signal( SIGABRT, SIG_DFL );
}

}  // namespace

void watchAborts( const MessageChannel& channel ) {
   abortFd = channel.fd();
   std::signal( SIGABRT, sendLastCall );
}

}  // namespace FerroAcl
