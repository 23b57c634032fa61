// Attribute-change notifications. A Publisher tells its subscribed Reactors
// that one attribute changed, optionally naming the key of a collection
// attribute that changed. Reactors in deferred mode get their notifications
// queued as "zombie" calls, run when the runtime flushes them (a teardown
// flushes them before it unsubscribes).
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "platform/runtime/Containers.h"

namespace Lumo {

using AttributeId = uint32_t;

struct Notification {
   AttributeId attribute;
   const String* key;  // null for a notification without key
};

class Publisher;

class Reactor {
  public:
   Reactor() = default;
   Reactor( const Reactor& ) = delete;
   Reactor& operator=( const Reactor& ) = delete;
   virtual ~Reactor();

   // Subscribes to `publisher` (null: unsubscribes), leaving any previous one.
   void notifierIs( Publisher* publisher );
   Publisher* notifier() const { return notifier_; }

   // Deferred reactors are not called from inside notify(); their calls wait
   // in the runtime's zombie queue.
   void deferredIs( bool deferred ) { deferred_ = deferred; }
   bool deferred() const { return deferred_; }

   virtual void onAttributeChange( const Notification& notification ) = 0;

  private:
   friend class Publisher;
   Publisher* notifier_ = nullptr;
   bool deferred_ = false;
};

class Publisher {
  public:
   Publisher() = default;
   Publisher( const Publisher& ) = delete;
   Publisher& operator=( const Publisher& ) = delete;
   ~Publisher();

   void notify( AttributeId attribute );
   void notify( AttributeId attribute, const String& key );
   size_t reactorCount() const;
   uint64_t notificationCount() const { return notifications_; }

  private:
   friend class Reactor;
   void add( Reactor* reactor );
   void remove( Reactor* reactor );
   void dispatch( const Notification& notification );

   std::vector<Reactor*> reactors_;  // removed slots are null until compaction
   int dispatching_ = 0;
   uint64_t notifications_ = 0;
};

// Runs every queued deferred call, including those queued while running.
void flushZombieReactors();
size_t zombieReactorCount();

}  // namespace Lumo
