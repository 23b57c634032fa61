#include "platform/runtime/Publisher.h"

#include <gtest/gtest.h>

#include <functional>
#include <initializer_list>
#include <string>
#include <vector>

using namespace Lumo;

namespace {

std::vector<std::string> heard;  // by every Recorder, in order

// Logs "who:attribute" or "who:attribute/key", then runs its hook.
struct Recorder : Reactor {
   explicit Recorder( std::string who, std::function<void()> hook = {}, bool deferred = false )
         : who( std::move( who ) ), hook( std::move( hook ) ) { deferredIs( deferred ); }
   void onAttributeChange( const Notification& n ) override {
      const std::string key = n.key ? "/" + *n.key : "";
      heard.push_back( who + ":" + std::to_string( n.attribute ) + key );
      if ( hook ) {
         hook();
      }
   }
   std::string who;
   std::function<void()> hook;
};

class PublisherTest : public ::testing::Test {
  protected:
   void SetUp() override {
      heard.clear();
      ASSERT_EQ( zombieReactorCount(), 0u );
   }
   void subscribe( std::initializer_list<Reactor*> reactors ) {
      for ( Reactor* r : reactors ) {
         r->notifierIs( &publisher_ );
      }
   }
   Publisher publisher_;
};

}  // namespace

// In subscription order, with the key when there is one (empty is a key).
// Leaving mid-dispatch every way at once: unsubscribing, deleting itself,
// deleting a sibling not yet called, moving to another publisher. A reactor
// joining mid-dispatch waits for the next notification. The sanitizer build
// turns a stale slot into a crash.
TEST_F( PublisherTest, SubscribersHearEachChangeAndMayLeaveDuringDispatch ) {
   Publisher other;
   Recorder* doomed = new Recorder( "doomed" );
   Recorder late( "late" ), steady( "steady" ), mover( "mover" );
   Recorder quitter( "quitter", [ & ] { quitter.notifierIs( nullptr ); } );
   Recorder killer( "killer", [ & ] {
      delete std::exchange( doomed, nullptr );
      late.notifierIs( &publisher_ );
      mover.notifierIs( &other );
   } );
   Recorder* suicidal = new Recorder( "suicidal", [ & ] { delete suicidal; } );
   subscribe( { &quitter, suicidal, &killer, doomed, &mover, &steady } );
   publisher_.notify( 1 );
   publisher_.notify( 2, "eth1" );
   other.notify( 3, "" );
   const std::vector<std::string> expected = {
      "quitter:1", "suicidal:1", "killer:1", "steady:1", "killer:2/eth1", "steady:2/eth1",
      "late:2/eth1", "mover:3/" };
   EXPECT_EQ( heard, expected );
   EXPECT_EQ( publisher_.reactorCount(), 3u );
}

TEST_F( PublisherTest, DeferredCallsWaitForFlushAndDieWithTheirReactor ) {
   Publisher second;
   Recorder now( "now" ), chained( "chained", {}, true );
   Recorder later( "later", [ & ] { second.notify( 8 ); }, true );
   auto* gone = new Recorder( "gone", {}, true );
   chained.notifierIs( &second );
   subscribe( { &now, &later, gone } );
   publisher_.notify( 3, std::string( "port-3" ) );  // the queued key outlives this string
   publisher_.notify( 4 );
   EXPECT_EQ( heard, ( std::vector<std::string>{ "now:3/port-3", "now:4" } ) );
   EXPECT_EQ( zombieReactorCount(), 4u );
   delete gone;
   EXPECT_EQ( zombieReactorCount(), 2u );

   flushZombieReactors();
   // What a running call queues (chained) runs in the same flush, after it.
   const std::vector<std::string> expected = { "now:3/port-3",   "now:4",     "later:3/port-3",
                                               "later:4",        "chained:8", "chained:8" };
   EXPECT_EQ( heard, expected );
   EXPECT_EQ( zombieReactorCount(), 0u );
}
