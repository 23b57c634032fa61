// The chip state as collected from a switch whose entries the test made
// itself, shown in both forms. The helper is the real library, loaded the way
// the tool loads it, so that recordedAs reads its actual rule tables; none of
// its operations is called.
#include "tools/ferro-acl/ChipState.h"

#include <gtest/gtest.h>

#include <sstream>

#include "tools/ferro-acl/ChipStateJson.h"
#include "tools/ferro-acl/ChipStateText.h"
#include "tools/ferro-acl/HelperLoader.h"

using namespace FerroAcl;

namespace {

class ChipStateOutput : public testing::Test {
 protected:
   void SetUp() override {
      Agent::ChipProfile chip{ "Trident3", 0, 5, {} };
      chip.attributes.vlanStageClassRulesSupported = true;
      chip.attributes.portCount = 9;
      Agent::SwitchConfig config;
      config.chips = { chip };
      config.units = { { 0, 0, "Trident3", FerroCentral::BringupStage::complete, {} } };
      sw_ = Agent::bringUp( config );
      auto loaded = HelperLibrary::open( FERRO_HELPER_LIB, "probe" );
      ASSERT_TRUE( loaded ) << loaded.error();
      library_ = std::move( loaded.value() );
      FerroTcamSystemAcl::HelperBase& helper = library_->helper();
      sw_->attach( helper );

      // A trap in the L3 group with plain, compressed and mixed qualifiers, an
      // entry no manager owns, and a disabled VLAN-stage entry.
      Shim::Sdk& sdk = *Shim::sdk_;
      auto ok = []( int rc ) { EXPECT_EQ( rc, 0 ); };
      ASSERT_EQ( sw_->l3Manager->getEntry( 0, 1024, "BGP probe", {} ), 1024u );
      ok( sdk.bcm_field_entry_prio_set( 0, 1024, 500 ) );
      const bcm_mac_t mac{ 1, 0x80, 0xc2, 0, 0, 0x14 },
          macMask{ 255, 255, 255, 255, 255, 254 };
      ok( sdk.bcm_field_qualify_DstMac( 0, 1024, mac, macMask ) );
      ok( sdk.bcm_field_qualify_L4SrcPort( 0, 1024, 179, 0xffff ) );
      for ( uint8_t port : { 180, 181 } ) {  // after the plain value, by compression
         Shim::FieldBytes data, mask;
         data.bytes[1] = port;
         mask.bytes[0] = mask.bytes[1] = 0xff;
         ok( sdk.bcm_field_qualify_compressed_add(
             0, 1024, Shim::CompressedField::L4SrcPort, data, mask, port - 179u, 0xf ) );
      }
      bcm_pbmp_t ports{}, portMask{};
      for ( int port = 0; port < 9; ++port ) {
         BCM_PBMP_PORT_ADD( portMask, port );
      }
      for ( int port : { 1, 2, 3, 5 } ) {
         BCM_PBMP_PORT_ADD( ports, port );
      }
      ok( sdk.bcm_field_qualify_InPorts( 0, 1024, ports, portMask ) );
      ok( sdk.bcm_field_action_add( 0, 1024, bcmFieldActionCosQCpuNew, 38, 0 ) );
      ok( sdk.bcm_field_action_add( 0, 1024, bcmFieldActionCopyToCpu, 0, 0 ) );
      ok( sdk.bcm_field_action_add( 0, 1024, bcmFieldActionEgressClassSelect, 0, 4 ) );
      ok( sw_->l3Manager->installEntry( 0, 1024 ) );
      // Set out of table order, shown in table order; another unit's row for
      // the same id is not this entry.
      helper.vrrpRuleIs( 0, 1024 );
      helper.bgpRuleIs( 0, 1024 );
      helper.ospfRuleIs( 1, 1024 );

      ok( sdk.bcm_field_entry_create_id( 0, Agent::ManagerLayout::l3Group, 1100 ) );
      ok( sdk.bcm_field_entry_prio_set( 0, 1100, 7 ) );

      ASSERT_EQ( sw_->vlanManager->getEntry( 0, 3072, "VLAN probe", {} ), 3072u );
      ok( sdk.bcm_field_entry_prio_set( 0, 3072, 3 ) );
      ok( sdk.bcm_field_qualify_EtherType( 0, 3072, 0x0800, 0xffff ) );
      ok( sdk.bcm_field_action_add( 0, 3072, bcmFieldActionClassDestSet, 9, 0 ) );
      ok( sw_->vlanManager->installEntry( 0, 3072 ) );
      ok( sw_->vlanManager->enableEntry( 0, 3072, false,
                                         BCM_FIELD_ENTRY_ENABLE_STATUS ) );

      BringupPlan plan;
      plan.units = { 0 };
      plan.calls = { PlannedCall{ findBringupStep( "verifyInstalledAclRules" ), 0 } };
      plan.skipped = { SkippedStep{ findBringupStep( "doInstallL2TrapRules" ),
                                    "--skip-step" } };
      state_ = collectChipState( *sw_, helper, plan );
   }

   std::unique_ptr<HelperLibrary> library_;  // declared first: outlives the switch
   Agent::Switch::Ptr sw_;
   ChipState state_;
};

}  // namespace

TEST_F( ChipStateOutput, JsonIsTheStableForm ) {
   const std::string expected =
       R"({"units":[{"unit":0,"chip":"Trident3","model":5,"verified":true,"entries":[)"
       R"({"id":1024,"name":"BGP probe","stage":"ingress","group":"L3 control","priority":500,)"
       R"("installed":true,"enabled":true,"qualifiers":{)"
       R"("DstMac":{"data":"01:80:c2:00:00:14","mask":"ff:ff:ff:ff:ff:fe"},)"
       R"("L4SrcPort":[{"data":179,"mask":65535},{"data":180,"mask":65535},)"
       R"({"data":181,"mask":65535}],)"
       R"("InPorts":{"data":[1,2,3,5],"mask":[0,1,2,3,4,5,6,7,8]}},)"
       R"("actions":{"CosQCpuNew":[38,0],"CopyToCpu":[0,0],"EgressClassSelect":[0,4]},)"
       R"("recordedAs":["bgpRule","vrrpRule"]},)"
       R"({"id":1100,"name":"","stage":"ingress","group":"","priority":7,"installed":false,)"
       R"("enabled":false,"qualifiers":{},"actions":{},"recordedAs":[]},)"
       R"({"id":3072,"name":"VLAN probe","stage":"vlan","group":"VLAN control","priority":3,)"
       R"("installed":true,"enabled":false,"qualifiers":{"EtherType":{"data":2048,"mask":65535}},)"
       R"("actions":{"ClassDestSet":[9,0]},"recordedAs":[]}]}],)"
       R"("skipped":["doInstallL2TrapRules"]})";
   EXPECT_EQ( chipStateJson( state_ ).dump(), expected );
}

// Grouped by stage (VLAN first) and group, highest priority first, in
// words; the row is wider than 160 columns, so match and actions wrap onto a
// continuation line that leaves the other columns blank.
TEST_F( ChipStateOutput, TextIsGroupedInWordsAndFitsTheTerminal ) {
   std::ostringstream out;
   printChipState( out, state_ );
   const std::string expected =
       "unit 0: Trident3, model 5, 3 entries\n"
       "      id  prio  state          rule        match                                  "
       "                     actions                                 tables\n"
       "  vlan stage, group \"VLAN control\" (1 entry)\n"
       "    3072     3  disabled       VLAN probe  ether-type 0x800                       "
       "                     class-dest 9\n"
       "  ingress stage, group \"L3 control\" (1 entry)\n"
       "    1024   500  enabled        BGP probe   dst-mac 01:80:c2:00:00:14/ff:ff:ff:ff:"
       "ff:fe,                cpu-queue 38, copy-to-cpu,              bgpRule, vrrpRule\n"
       "                                           l4-src-port 179|180|181, in-ports 1-3,5"
       "                     egress-class 0,4\n"
       "  ingress stage, no group (1 entry)\n"
       "    1100     7  not installed  -\n"
       "skipped: doInstallL2TrapRules (--skip-step)\n"
       "unit 0: verified\n";
   EXPECT_EQ( out.str(), expected );
}
