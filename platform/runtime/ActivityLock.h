// The agent's activity lock and interpreter lock, and the scoped releases that
// let other agent activity run while the hardware is programmed.
#pragma once

#include <atomic>
#include <mutex>
#include <thread>

namespace Kel {

// A recursive lock that knows which thread holds it.
class OwnedLock {
  public:
   explicit OwnedLock( const char* name ) : name_( name ) {}
   OwnedLock( const OwnedLock& ) = delete;
   OwnedLock& operator=( const OwnedLock& ) = delete;

   void lock();
   void unlock();
   bool heldByCurrentThread() const;
   int depth() const { return depth_; }  // recursion depth of the holder
   const char* name() const { return name_; }

  private:
   const char* name_;
   std::recursive_mutex mutex_;
   std::atomic<std::thread::id> owner_{};
   int depth_ = 0;
};

// The process activity lock, held by the agent's activity thread while it runs
// any operation of the library.
OwnedLock& activityLock();
// The scripting interpreter's lock; held only by threads that came from the
// interpreter.
OwnedLock& interpreterLock();

// Releases every level of `lock` held by this thread for the anchor's lifetime
// and takes them again when it goes out of scope, on return or throw.
class UnlockAnchor {
  public:
   explicit UnlockAnchor( OwnedLock& lock );
   ~UnlockAnchor();
   UnlockAnchor( const UnlockAnchor& ) = delete;
   UnlockAnchor& operator=( const UnlockAnchor& ) = delete;

  private:
   OwnedLock& lock_;
   int released_;
};

// Releases the interpreter lock if, and only if, the calling thread holds it
// (an UnlockAnchor already leaves a lock it does not hold alone).
class MaybeGilUnlockAnchor : public UnlockAnchor {
  public:
   MaybeGilUnlockAnchor() : UnlockAnchor( interpreterLock() ) {}
};

}  // namespace Kel
