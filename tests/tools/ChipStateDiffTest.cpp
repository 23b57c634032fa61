// The comparison of two --json chip states, field by field: a value in both
// and equal, in both and different, only in A, only in B; entries matched by
// rule name with repeated names paired in order; units on one switch only.
#include "tools/ferro-acl/ChipStateDiff.h"

#include <gtest/gtest.h>

#include <sstream>

using namespace FerroAcl;
using Json = nlohmann::ordered_json;

namespace {

Json entry( const char* name, int priority, Json qualifiers, Json actions ) {
   return Json{ { "id", 1024 },          { "name", name },          { "priority", priority },
                { "installed", true },   { "enabled", true },       { "qualifiers", qualifiers },
                { "actions", actions } };
}

Json state( std::vector<std::pair<int, Json>> units ) {
   Json list = Json::array();
   for ( auto& [number, entries] : units ) {
      list.push_back( Json{ { "unit", number }, { "chip", "Trident3" }, { "entries", entries } } );
   }
   return Json{ { "units", list } };
}

}  // namespace

TEST( ChipStateDiff, ComparesEntriesByNameFieldByField ) {
   const Json ttl255 = { { "data", 255 }, { "mask", 255 } };
   const Json ttl254 = { { "data", 254 }, { "mask", 255 } };
   const Json a = state(
       { { 0, Json::array( { entry( "VRRP", 248, { { "Ttl", ttl255 } }, { { "CosQCpuNew", { 40, 0 } } } ),
                             entry( "PIM Multicast IP", 5, Json::object(), Json::object() ),
                             entry( "PIM Multicast IP", 4, Json::object(), Json::object() ),
                             entry( "Ipfix Dst Port", 230, Json::object(), Json::object() ) } ) },
         { 1, Json::array() } } );
   const Json b = state(
       { { 0, Json::array( { entry( "VRRP", 248, { { "Ttl", ttl254 } }, { { "Drop", { 0, 0 } } } ),
                             entry( "PIM Multicast IP", 5, Json::object(), Json::object() ),
                             entry( "PIM Multicast IP", 3, Json::object(), Json::object() ),
                             entry( "OSPF Multicast MAC", 64, Json::object(), Json::object() ) } ) },
         { 2, Json::array() } } );
   const ChipStateDiff diff = diffChipStates( a, b );
   EXPECT_FALSE( diff.identical() );
   std::ostringstream text;
   printDiff( text, diff );
   EXPECT_EQ( text.str(),
              "unit 0: Trident3 (A) vs Trident3 (B)\n"
              "  only in A: \"Ipfix Dst Port\"\n"
              "  only in B: \"OSPF Multicast MAC\"\n"
              "  \"VRRP\": qualifier Ttl: 255/255 -> 254/255\n"
              "  \"VRRP\": action CosQCpuNew: 40 -> absent\n"
              "  \"VRRP\": action Drop: absent -> 0\n"
              "  \"PIM Multicast IP #2\": priority: 4 -> 3\n"
              "unit 1: Trident3 (A) vs absent (B)\n"
              "unit 2: absent (A) vs Trident3 (B)\n"
              "different\n" );
   EXPECT_TRUE( diffChipStates( a, a ).identical() );
   EXPECT_EQ( diffJson( diff )["units"][0]["changed"][0]["fields"][0],
              ( Json{ { "field", "qualifier Ttl" }, { "a", ttl255 }, { "b", ttl254 } } ) );
}
