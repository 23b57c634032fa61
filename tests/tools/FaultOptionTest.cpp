#include "tools/ferro-acl/FaultOption.h"

#include <gtest/gtest.h>

using namespace FerroAcl;

TEST( FaultOption, FormsGiveFunctionCallNumberAndCode ) {
   const std::tuple<const char*, const char*, int, int> cases[] = {
       { "bcm_field_action_add", "bcm_field_action_add", 1, -4 },
       { "bcm_field_entry_install=BCM_E_FULL", "bcm_field_entry_install", 1, -6 },
       { "bcm_field_qualify_DstMac@12=-11", "bcm_field_qualify_DstMac", 12, -11 },
       { "bcm_x@2=BCM_E_PARTIAL", "bcm_x", 2, -22 },
   };
   for ( const auto& [text, function, nth, rc] : cases ) {
      Result<Sim::Fault> fault = parseFaultOption( text );
      ASSERT_TRUE( fault ) << text << ": " << fault.error();
      EXPECT_EQ( fault.value().function, function ) << text;
      EXPECT_EQ( fault.value().nth, nth ) << text;
      EXPECT_EQ( fault.value().rc, rc ) << text;
      // Once, on any unit and entry: a person watches one failure.
      EXPECT_TRUE( fault.value().once && !fault.value().unit && !fault.value().entry )
          << text;
   }
}

TEST( FaultOption, MalformedFormsSayWhatIsWrong ) {
   const std::string function = "FUNCTION must be an SDK function name (bcm_...)";
   const std::string nth = "N must be a whole number 1 or more";
   const std::string rc = "RC must be a BCM_E_ name or a negative number";
   const std::pair<const char*, std::string> cases[] = {
       { "", function },
       { "field_action_add", function },
       { "bcm_x@0", nth },
       { "bcm_x@+2", nth },  // digits only
       { "bcm_x@99999999999", nth },
       { "bcm_x=4", rc },
       { "bcm_x=BCM_E_NONE", rc },  // not a failure
       { "bcm_x=-99999999999", rc },
   };
   for ( const auto& [text, problem] : cases ) {
      Result<Sim::Fault> fault = parseFaultOption( text );
      ASSERT_FALSE( fault ) << text;
      EXPECT_EQ( fault.error(), "--fail \"" + std::string( text ) + "\": " + problem +
                                    "; expected FUNCTION[@N][=RC], e.g. "
                                    "bcm_field_action_add@2=BCM_E_FULL (N 1 or more, RC "
                                    "a BCM_E_ name or a negative number)" );
   }
}
