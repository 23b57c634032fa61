#include "platform/runtime/Publisher.h"

#include <gtest/gtest.h>

#include <functional>
#include <initializer_list>
#include <string>
#include <vector>

using namespace Lumo;

namespace {

// Logs "who:attribute" or "who:attribute/key", then runs its hook.
class Recorder : public Reactor {
  public:
   Recorder( std::string who, std::vector<std::string>& log, std::function<void()> hook = {} )
         : who_( std::move( who ) ), log_( log ), hook_( std::move( hook ) ) {}
   void onAttributeChange( const Notification& n ) override {
      log_.push_back( who_ + ":" + std::to_string( n.attribute ) + ( n.key ? "/" + *n.key : "" ) );
      if ( hook_ ) {
         hook_();
      }
   }

  private:
   std::string who_;
   std::vector<std::string>& log_;
   std::function<void()> hook_;
};

class PublisherTest : public ::testing::Test {
  protected:
   void SetUp() override { ASSERT_EQ( zombieReactorCount(), 0u ); }
   void subscribe( std::initializer_list<Reactor*> reactors ) {
      for ( Reactor* r : reactors ) {
         r->notifierIs( &publisher_ );
      }
   }
   Publisher publisher_;
   std::vector<std::string> heard_;
};

}  // namespace

TEST_F( PublisherTest, SubscribersHearAttributeAndKey ) {
   Publisher other;
   Recorder a( "a", heard_ ), b( "b", heard_ ), moved( "moved", heard_ );
   subscribe( { &a, &b, &moved } );
   moved.notifierIs( &other );
   publisher_.notify( 7 );
   publisher_.notify( 9, "eth1" );
   other.notify( 1, "" );
   const std::vector<std::string> expected = { "a:7", "b:7", "a:9/eth1", "b:9/eth1", "moved:1/" };
   EXPECT_EQ( heard_, expected );
   EXPECT_EQ( publisher_.reactorCount(), 2u );
}

// Leaving mid-dispatch every way at once: unsubscribing, deleting itself,
// deleting a sibling not yet called. A reactor joining mid-dispatch waits for
// the next notification. The sanitizer build turns a stale slot into a crash.
TEST_F( PublisherTest, SubscriptionChangesDuringDispatchAreSafe ) {
   Recorder* doomed = new Recorder( "doomed", heard_ );
   Recorder* suicidal = nullptr;
   Recorder late( "late", heard_ );
   Recorder quitter( "quitter", heard_, [ & ] { quitter.notifierIs( nullptr ); } );
   Recorder killer( "killer", heard_, [ & ] {
      delete std::exchange( doomed, nullptr );
      late.notifierIs( &publisher_ );
   } );
   suicidal = new Recorder( "suicidal", heard_, [ & ] { delete suicidal; } );
   Recorder steady( "steady", heard_ );
   subscribe( { &quitter, suicidal, &killer, doomed, &steady } );
   publisher_.notify( 1 );
   publisher_.notify( 2 );
   const std::vector<std::string> expected = { "quitter:1", "suicidal:1", "killer:1", "steady:1",
                                               "killer:2",  "steady:2",   "late:2" };
   EXPECT_EQ( heard_, expected );
   EXPECT_EQ( publisher_.reactorCount(), 3u );
}

TEST_F( PublisherTest, DeferredCallsWaitForFlushAndDieWithTheirReactor ) {
   Publisher second;
   Recorder chained( "chained", heard_ ), now( "now", heard_ );
   Recorder later( "later", heard_, [ & ] { second.notify( 8 ); } );
   auto* gone = new Recorder( "gone", heard_ );
   for ( Reactor* r : std::initializer_list<Reactor*>{ &chained, &later, gone } ) {
      r->deferredIs( true );
   }
   chained.notifierIs( &second );
   subscribe( { &now, &later, gone } );
   publisher_.notify( 3, std::string( "port-3" ) );  // the queued key outlives this string
   publisher_.notify( 4 );
   EXPECT_EQ( heard_, ( std::vector<std::string>{ "now:3/port-3", "now:4" } ) );
   EXPECT_EQ( zombieReactorCount(), 4u );
   delete gone;
   EXPECT_EQ( zombieReactorCount(), 2u );

   heard_.clear();
   flushZombieReactors();
   // What a running call queues (chained) runs in the same flush, after it.
   const std::vector<std::string> expected = { "later:3/port-3", "later:4", "chained:8",
                                               "chained:8" };
   EXPECT_EQ( heard_, expected );
   EXPECT_EQ( zombieReactorCount(), 0u );
}
