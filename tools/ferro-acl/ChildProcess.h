// Runs part of ferro-acl in a forked child. The helper library asserts on
// every failure by design, which ends the whole process; running the
// simulated agent in a child lets the tool outlive an abort and explain it.
// The child inherits stdout; its stderr and a message channel (one line per
// message) come back to the parent, read until the child ends.
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace FerroAcl {

// The child's end of the message channel.
class MessageChannel {
 public:
   explicit MessageChannel( int fd ) : fd_( fd ) {}
   // One message; it must not hold a newline.
   void send( const std::string& message ) const;
   int fd() const { return fd_; }

 private:
   int fd_;
};

struct ChildOutcome {
   int exitCode = -1;  // -1 when a signal ended the child
   int signal = 0;     // the signal that ended it, 0 when it exited
   std::string err;    // everything it wrote to stderr
   std::vector<std::string> messages;
};

// Forks, runs `body` in the child and exits the child with its result; the
// parent waits for the child and returns what it saw.
ChildOutcome runInChild( const std::function<int( const MessageChannel& )>& body );

}  // namespace FerroAcl
