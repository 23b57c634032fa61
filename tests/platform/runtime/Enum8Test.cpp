#include "platform/runtime/Enum8.h"

#include <gtest/gtest.h>

using Lumo::CharRange;
using Lumo::Enum8Type;

namespace {

// Declared out of name order on purpose: lookups must not depend on it.
const Enum8Type color( "Color", { { 3, "red" }, { 0, "amber" }, { 255, "violet" },
                                  { 7, "blue" }, { 9, "bluegreen" } } );

}  // namespace

TEST( Enum8, ValuesAndNamesMapBothWaysAndParseFromARange ) {
   for ( const auto& [ value, name ] : { std::pair<uint8_t, const char*>{ 0, "amber" },
                                         { 3, "red" }, { 7, "blue" }, { 9, "bluegreen" },
                                         { 255, "violet" } } ) {
      EXPECT_STREQ( color.name( value ), name );
      EXPECT_EQ( color.value( name ), value ) << name;
   }
   EXPECT_EQ( color.name( 1 ), nullptr );
   for ( const char* unknown : { "green", "blu", "reds", "", "Red" } ) {
      EXPECT_EQ( color.value( unknown ), std::nullopt ) << unknown;
   }
   // A name is read from exactly the range given.
   const char buffer[] = "<bluegreenred>";
   uint8_t value = 42;
   for ( const auto& [ range, expected ] :
         { std::pair<CharRange, uint8_t>{ { buffer + 1, buffer + 5 }, 7 },
           { { buffer + 1, buffer + 10 }, 9 }, { { buffer + 10, buffer + 13 }, 3 } } ) {
      EXPECT_TRUE( color.sequenceToValue( range, &value ) ) << range.view();
      EXPECT_EQ( value, expected ) << range.view();
   }
   for ( CharRange miss : { CharRange{ buffer + 1, buffer + 6 }, { buffer + 1, buffer + 4 },
                            { buffer + 5, buffer + 5 }, { buffer, buffer + 5 } } ) {
      EXPECT_FALSE( color.sequenceToValue( miss, &value ) ) << miss.view();
      EXPECT_EQ( value, 3 ) << "a miss must leave the value alone";
   }
}
