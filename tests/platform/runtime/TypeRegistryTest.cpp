#include "platform/runtime/TypeRegistry.h"

#include <gtest/gtest.h>

using namespace Lumo;

namespace {

AllocationTracker widgets;
const TypeData widgetType{ "RuntimeTest", 7 };

struct Widget : Node {
   explicit Widget( String n ) : name( std::move( n ) ) { widgets.allocationIs(); }
   ~Widget() override { widgets.deallocationIs(); }
   const String name;
};

// Takes nothing beyond its name. It builds before it checks, so a refusal is
// clean only if the half-made object is released on the way out.
Ptr<Node> makeWidget( const String& name, Directory*, const CreationArgs& extra ) {
   Ptr<Widget> widget = makePtr<Widget>( name );
   if ( !extra.empty() ) {
      throw WrongCreationArguments( widgetType, extra.size() );
   }
   return widget;
}

class TypeRegistryTest : public ::testing::Test {
  protected:
   void SetUp() override { registry_.typeIs( "RtWidget", widgetType, makeWidget ); }
   void TearDown() override { registry_.typeDel( "RtWidget" ); }
   TypeRegistry& registry_ = TypeRegistry::instance();
   Ptr<Directory> dir_ = makePtr<Directory>( "sys" );
   const int64_t live_ = widgets.live();
};

}  // namespace

TEST_F( TypeRegistryTest, CreatesByNameInsideTheDirectory ) {
   Ptr<Node> node = registry_.create( "RtWidget", "w1", dir_.get() );
   ASSERT_TRUE( node );
   EXPECT_EQ( static_cast<Widget*>( node.get() )->name, "w1" );
   EXPECT_TRUE( dir_->entry( "w1" ) == node );
   EXPECT_EQ( widgets.live(), live_ + 1 );
   dir_->entryDel( "w1" );
   node.reset();
   EXPECT_EQ( widgets.live(), live_ );
}

TEST_F( TypeRegistryTest, RefusedCreationLeavesNothingBehind ) {
   EXPECT_THROW( registry_.create( "NoSuchType", "x", dir_.get() ), UnknownType );
   const uint64_t total = widgets.total();
   try {
      registry_.create( "RtWidget", "w2", dir_.get(), CreationArgs{ std::any( 5 ) } );
      ADD_FAILURE() << "creation with a surplus argument succeeded";
   } catch ( const WrongCreationArguments& e ) {
      EXPECT_EQ( e.type(), widgetType );
   }
   EXPECT_EQ( widgets.total(), total + 1 ) << "the factory did not run";
   EXPECT_EQ( widgets.live(), live_ );
   EXPECT_EQ( dir_->entries(), 0u );
}
