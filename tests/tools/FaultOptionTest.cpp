#include "tools/ferro-acl/FaultOption.h"

#include <gtest/gtest.h>

using namespace FerroAcl;

TEST( FaultOption, FormsGiveFunctionCallNumberAndCode ) {
   struct Case {
      const char* text;
      const char* function;
      int nth;
      int rc;
   };
   const Case cases[] = {
       { "bcm_field_action_add", "bcm_field_action_add", 1, BCM_E_PARAM },
       { "bcm_field_action_add@3", "bcm_field_action_add", 3, BCM_E_PARAM },
       { "bcm_field_entry_install=BCM_E_FULL", "bcm_field_entry_install", 1, BCM_E_FULL },
       { "bcm_field_qualify_DstMac@12=-11", "bcm_field_qualify_DstMac", 12, BCM_E_FAIL },
       { "bcm_port_config_get=-100", "bcm_port_config_get", 1, -100 },
       { "bcm_field_entry_remove@2=BCM_E_PARTIAL", "bcm_field_entry_remove", 2,
         BCM_E_PARTIAL },
   };
   for ( const Case& c : cases ) {
      Result<Sim::Fault> fault = parseFaultOption( c.text );
      ASSERT_TRUE( fault ) << c.text << ": " << fault.error();
      EXPECT_EQ( fault.value().function, c.function ) << c.text;
      EXPECT_EQ( fault.value().nth, c.nth ) << c.text;
      EXPECT_EQ( fault.value().rc, c.rc ) << c.text;
      // Once, on any unit and entry: a person watches one failure.
      EXPECT_TRUE( fault.value().once ) << c.text;
      EXPECT_FALSE( fault.value().unit || fault.value().entry ) << c.text;
   }
}

TEST( FaultOption, MalformedFormsSayWhatIsWrong ) {
   const std::pair<const char*, const char*> cases[] = {
       { "", "FUNCTION must be an SDK function name (bcm_...)" },
       { "field_action_add", "FUNCTION must be an SDK function name (bcm_...)" },
       { "bcm_", "FUNCTION must be an SDK function name (bcm_...)" },
       { "bcm_field action", "FUNCTION must be an SDK function name (bcm_...)" },
       { "@2", "FUNCTION must be an SDK function name (bcm_...)" },
       { "bcm_field_action_add@", "N must be a whole number 1 or more" },
       { "bcm_field_action_add@0", "N must be a whole number 1 or more" },
       { "bcm_field_action_add@-1", "N must be a whole number 1 or more" },
       { "bcm_field_action_add@+2", "N must be a whole number 1 or more" },
       { "bcm_field_action_add@2x", "N must be a whole number 1 or more" },
       { "bcm_field_action_add@1@2", "N must be a whole number 1 or more" },
       { "bcm_field_action_add@99999999999", "N must be a whole number 1 or more" },
       { "bcm_field_action_add=", "RC must be a BCM_E_ name or a negative number" },
       { "bcm_field_action_add=0", "RC must be a BCM_E_ name or a negative number" },
       { "bcm_field_action_add=4", "RC must be a BCM_E_ name or a negative number" },
       { "bcm_field_action_add=-", "RC must be a BCM_E_ name or a negative number" },
       { "bcm_field_action_add=BCM_E_NONE",
         "RC must be a BCM_E_ name or a negative number" },
       { "bcm_field_action_add=bcm_e_param",
         "RC must be a BCM_E_ name or a negative number" },
       { "bcm_field_action_add=-99999999999",
         "RC must be a BCM_E_ name or a negative number" },
   };
   const std::string form =
       "; expected FUNCTION[@N][=RC], e.g. bcm_field_action_add@2=BCM_E_FULL (N 1 or "
       "more, RC "
       "a BCM_E_ name or a negative number)";
   for ( const auto& [text, problem] : cases ) {
      Result<Sim::Fault> fault = parseFaultOption( text );
      ASSERT_FALSE( fault ) << text;
      EXPECT_EQ( fault.error(),
                 "--fail \"" + std::string( text ) + "\": " + problem + form );
   }
}

TEST( FaultOption, ReturnCodeNamesAreTheSdks ) {
   EXPECT_EQ( returnCodeByName( "BCM_E_INTERNAL" ), -1 );
   EXPECT_EQ( returnCodeByName( "BCM_E_PARAM" ), -4 );
   EXPECT_EQ( returnCodeByName( "BCM_E_NOT_FOUND" ), -7 );
   EXPECT_EQ( returnCodeByName( "BCM_E_PARTIAL" ), -22 );
   EXPECT_EQ( returnCodeByName( "BCM_E_NONE" ), std::nullopt );
   EXPECT_EQ( returnCodeByName( "PARAM" ), std::nullopt );
}
