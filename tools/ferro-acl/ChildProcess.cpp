#include "tools/ferro-acl/ChildProcess.h"

#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <stdexcept>

namespace FerroAcl {

namespace {

void writeAll( int fd, const char* data, size_t size ) {
   while ( size > 0 ) {
      const ssize_t written = ::write( fd, data, size );
      if ( written < 0 && errno == EINTR ) {
         continue;
      }
      if ( written <= 0 ) {
         return;  // the parent went away; nobody is left to tell
      }
      data += written;
      size -= size_t( written );
   }
}

struct Pipe {
   int read = -1;
   int write = -1;
   Pipe() {
      int fds[2];
      if ( ::pipe( fds ) != 0 ) {
         throw std::runtime_error( std::string( "pipe: " ) + std::strerror( errno ) );
      }
      read = fds[0];
      write = fds[1];
   }
};

// Reads both pipes until the child closes them (by ending), so that neither
// can fill up and stall it.
void drain( int errFd, int messageFd, std::string& err, std::string& messages ) {
   pollfd fds[2] = { { errFd, POLLIN, 0 }, { messageFd, POLLIN, 0 } };
   std::string* sinks[2] = { &err, &messages };
   int open = 2;
   while ( open > 0 ) {
      if ( ::poll( fds, 2, -1 ) < 0 ) {
         if ( errno == EINTR ) {
            continue;
         }
         break;
      }
      for ( int i = 0; i < 2; ++i ) {
         if ( fds[i].fd < 0 || fds[i].revents == 0 ) {
            continue;
         }
         char buffer[4096];
         const ssize_t got = ::read( fds[i].fd, buffer, sizeof buffer );
         if ( got > 0 ) {
            sinks[i]->append( buffer, size_t( got ) );
         } else if ( got == 0 || errno != EINTR ) {
            ::close( fds[i].fd );
            fds[i].fd = -1;
            --open;
         }
      }
   }
}

std::vector<std::string> lines( const std::string& text ) {
   std::vector<std::string> result;
   size_t start = 0;
   for ( size_t end; ( end = text.find( '\n', start ) ) != std::string::npos;
         start = end + 1 ) {
      result.push_back( text.substr( start, end - start ) );
   }
   return result;
}

}  // namespace

void MessageChannel::send( const std::string& message ) const {
   const std::string line = message + '\n';
   writeAll( fd_, line.data(), line.size() );
}

ChildOutcome runInChild( const std::function<int( const MessageChannel& )>& body ) {
   Pipe err, messages;
   std::cout.flush();
   std::fflush( nullptr );
   const pid_t pid = ::fork();
   if ( pid < 0 ) {
      throw std::runtime_error( std::string( "fork: " ) + std::strerror( errno ) );
   }
   if ( pid == 0 ) {
      ::close( err.read );
      ::close( messages.read );
      ::dup2( err.write, STDERR_FILENO );
      ::close( err.write );
      int status = body( MessageChannel( messages.write ) );
      std::cout.flush();
      std::cerr.flush();
      std::fflush( nullptr );
      // No static destructors: they belong to the parent's copy of the state.
      ::_exit( status );
   }
   ::close( err.write );
   ::close( messages.write );
   ChildOutcome outcome;
   std::string messageText;
   drain( err.read, messages.read, outcome.err, messageText );
   outcome.messages = lines( messageText );
   int status = 0;
   while ( ::waitpid( pid, &status, 0 ) < 0 && errno == EINTR ) {
   }
   if ( WIFEXITED( status ) ) {
      outcome.exitCode = WEXITSTATUS( status );
   } else if ( WIFSIGNALED( status ) ) {
      outcome.signal = WTERMSIG( status );
   }
   return outcome;
}

}  // namespace FerroAcl
