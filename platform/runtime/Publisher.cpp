#include "platform/runtime/Publisher.h"

#include <algorithm>
#include <deque>

namespace Lumo {

namespace {

struct ZombieCall {
   Reactor* reactor;
   AttributeId attribute;
   std::optional<String> key;
};

std::deque<ZombieCall>& zombies() {
   static std::deque<ZombieCall> queue;
   return queue;
}

void forgetZombies( const Reactor* reactor ) {
   auto& queue = zombies();
   queue.erase( std::remove_if( queue.begin(), queue.end(),
                                [ reactor ]( const ZombieCall& call ) {
                                   return call.reactor == reactor;
                                } ),
                queue.end() );
}

}  // namespace

Reactor::~Reactor() {
   notifierIs( nullptr );
   forgetZombies( this );
}

void Reactor::notifierIs( Publisher* publisher ) {
   if ( publisher == notifier_ ) {
      return;
   }
   if ( notifier_ ) {
      notifier_->remove( this );
      forgetZombies( this );
   }
   notifier_ = publisher;
   if ( notifier_ ) {
      notifier_->add( this );
   }
}

Publisher::~Publisher() {
   for ( Reactor* reactor : reactors_ ) {
      if ( reactor ) {
         reactor->notifier_ = nullptr;
         forgetZombies( reactor );
      }
   }
}

void Publisher::add( Reactor* reactor ) { reactors_.push_back( reactor ); }

// A reactor may leave while its publisher is dispatching (a reactor deleting a
// sibling, or itself): its slot is only nulled then, so the loop stays valid.
void Publisher::remove( Reactor* reactor ) {
   auto it = std::find( reactors_.begin(), reactors_.end(), reactor );
   if ( it == reactors_.end() ) {
      return;
   }
   if ( dispatching_ ) {
      *it = nullptr;
   } else {
      reactors_.erase( it );
   }
}

size_t Publisher::reactorCount() const {
   return std::count_if( reactors_.begin(), reactors_.end(),
                         []( Reactor* r ) { return r != nullptr; } );
}

void Publisher::notify( AttributeId attribute ) { dispatch( { attribute, nullptr } ); }

void Publisher::notify( AttributeId attribute, const String& key ) {
   dispatch( { attribute, &key } );
}

void Publisher::dispatch( const Notification& notification ) {
   ++notifications_;
   ++dispatching_;
   // Reactors subscribed during the dispatch hear only later notifications.
   const size_t count = reactors_.size();
   for ( size_t i = 0; i < count; ++i ) {
      Reactor* reactor = reactors_[ i ];
      if ( !reactor ) {
         continue;
      }
      if ( reactor->deferred() ) {
         std::optional<String> key;
         if ( notification.key ) {
            key = *notification.key;
         }
         zombies().push_back( { reactor, notification.attribute, std::move( key ) } );
      } else {
         reactor->onAttributeChange( notification );
      }
   }
   if ( --dispatching_ == 0 ) {
      reactors_.erase( std::remove( reactors_.begin(), reactors_.end(), nullptr ),
                       reactors_.end() );
   }
}

void flushZombieReactors() {
   auto& queue = zombies();
   while ( !queue.empty() ) {
      ZombieCall call = std::move( queue.front() );
      queue.pop_front();
      Notification n{ call.attribute, call.key ? &*call.key : nullptr };
      call.reactor->onAttributeChange( n );
   }
}

size_t zombieReactorCount() { return zombies().size(); }

}  // namespace Lumo
