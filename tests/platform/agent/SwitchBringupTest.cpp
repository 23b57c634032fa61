#include <functional>
#include <stdexcept>

#include "AgentTestSupport.h"
#include "platform/agent/TcamHelpers.h"

using namespace AgentTest;

namespace {

class SwitchBringupTest : public SwitchTest {};

Agent::ChipProfile tomahawk3() {
   Agent::ChipProfile chip;
   chip.family = "Tomahawk3";
   chip.attributes.vlanStageClassRulesSupported = true;
   chip.attributes.extensionHeaderTypeQualifierSupported = true;
   chip.attributes.portCount = 33;
   return chip;
}

// The default switch with unit 1 on a chip with the VLAN stage and the WESP
// extension-header qualifier, which unit 0's chip lacks.
Agent::SwitchConfig mixedSwitch() {
   Agent::SwitchConfig config = Agent::defaultSwitchConfig();
   config.chips.push_back( tomahawk3() );
   config.units[ 1 ].chip = "Tomahawk3";
   config.units[ 1 ].inactivePorts = { 3, 32 };
   return config;
}

}  // namespace

TEST_F( SwitchBringupTest, InvalidConfigurationsAreNamed ) {
   using Edit = std::function<void( Agent::SwitchConfig& )>;
   const struct {
      const char* row;
      Edit edit;
      const char* message;
   } rows[] = {
      { "no units", []( auto& c ) { c.units.clear(); }, "switch 'switch' has no units" },
      { "duplicate unit", []( auto& c ) { c.units[ 1 ].unit = 0; },
        "unit 0 is listed twice" },
      { "unknown chip", []( auto& c ) { c.units[ 1 ].chip = "Jericho"; },
        "unit 1 names unknown chip family 'Jericho'; expected one of Trident3" },
      { "one port", []( auto& c ) { c.chips[ 0 ].attributes.portCount = 1; },
        "chip family 'Trident3' has portCount 1; expected 2..256" },
      { "too many ports", []( auto& c ) { c.chips[ 0 ].attributes.portCount = 257; },
        "has portCount 257; expected 2..256" },
      { "duplicate chip", []( auto& c ) { c.chips.push_back( c.chips[ 0 ] ); },
        "chip family 'Trident3' is listed twice" },
      { "inactive CPU port", []( auto& c ) { c.units[ 0 ].inactivePorts = { 0 }; },
        "unit 0 lists inactive port 0; expected a front-panel port 1..64" },
   };
   for ( const auto& row : rows ) {
      SCOPED_TRACE( row.row );
      Agent::SwitchConfig config = Agent::defaultSwitchConfig();
      row.edit( config );
      try {
         Agent::bringUp( config );
         ADD_FAILURE() << "accepted";
      } catch ( const std::invalid_argument& e ) {
         EXPECT_NE( std::string( e.what() ).find( row.message ), std::string::npos )
            << e.what();
      }
   }
}

TEST_F( SwitchBringupTest, ChipRefusalNamesUnitAndSdkError ) {
   Agent::SwitchConfig config = Agent::defaultSwitchConfig();
   config.chips[ 0 ].attributes.cpuQueueCount = 0;
   try {
      Agent::bringUp( config );
      ADD_FAILURE() << "accepted";
   } catch ( const std::runtime_error& e ) {
      const std::string expected =
         std::string( "unit 0: attaching a 'Trident3' chip failed: " ) +
         Shim::sdk_->bcm_errmsg( BCM_E_PARAM );
      EXPECT_EQ( std::string( e.what() ).find( expected ), 0u ) << e.what();
   }
}

TEST_F( SwitchBringupTest, SharedStateDescribesEveryUnit ) {
   bringUp( mixedSwitch() );
   const FerroCommonSmData& sm = *sw_->smData;
   ASSERT_EQ( sm.modules.size(), 2u );
   EXPECT_EQ( sm.chipInfo( 1 ).chipName, "Tomahawk3" );
   EXPECT_EQ( sm.module( 2 ), nullptr );
   EXPECT_EQ( sm.firstCpuPort(), FerroTypes::FerroPort( 0, 0, 0 ) );
   EXPECT_EQ( FerroTcam::intfToPort( sm, Wirex::IntfId::ethernet( 1032 ) ),
              FerroTypes::FerroPort( 1, 1, 32 ) );

   int count = 0;
   EXPECT_EQ( BCM_PBMP_COUNT( FerroTcam::getPbmpAll( sm, 1 ), count ), 33 );
   const bcm_pbmp_t eAll = FerroTcam::getPbmpEAll( sm, 1 );
   EXPECT_FALSE( BCM_PBMP_MEMBER( eAll, 0 ) );
   EXPECT_EQ( BCM_PBMP_COUNT( eAll, count ), 32 );
   bcm_pbmp_t inactive = eAll;
   BCM_PBMP_REMOVE( inactive, FerroTcam::getActivePorts( sm, 1 ) );
   EXPECT_TRUE( BCM_PBMP_EQ( inactive, ports( { 3, 32 } ) ) );
}

// Groups are created with what each chip has: the WESP extension header only
// where the chip can match it, the VLAN stage only where it classifies.
TEST_F( SwitchBringupTest, GroupsFollowEachChipsAttributes ) {
   bringUp( mixedSwitch() );
   const U32 l3Entry = l3Base, vlanEntry = Agent::ManagerLayout::vlanBase;
   for ( U32 unit : { 0u, 1u } ) {
      ASSERT_EQ( sw_->l3Manager->getEntry( unit, l3Entry, "l3", {} ), l3Entry );
   }
   for ( U32 unit : { 0u, 1u } ) {
      EXPECT_EQ( Shim::sdk_->bcm_field_qualify_DstClassL3( unit, l3Entry, 2, 1023 ), 0 );
   }
   EXPECT_EQ( Shim::sdk_->bcm_field_qualify_ExtensionHeaderType( 0, l3Entry, 141, 0xff ),
              BCM_E_NOT_FOUND );
   EXPECT_EQ( Shim::sdk_->bcm_field_qualify_ExtensionHeaderType( 1, l3Entry, 141, 0xff ), 0 );
   // Only ACL-group managers match port classes.
   EXPECT_NE( Shim::sdk_->bcm_field_qualify_InterfaceClassPort( 0, l3Entry, 1, 1 ), 0 );

   EXPECT_EQ( sw_->vlanManager->getEntry( 0, vlanEntry, "vlan", {} ), 0u );
   ASSERT_EQ( sw_->vlanManager->getEntry( 1, vlanEntry, "vlan", {} ), vlanEntry );
   EXPECT_EQ( chip().entry( 1, int( vlanEntry ) )->stage, bcmFieldStageLookup );
   EXPECT_EQ( sw_->groupManager->chipAttributes( 1 )->portCount, 33 );
}

TEST_F( SwitchBringupTest, GroupCreationReturnsTheSdkCode ) {
   chip().injectFault( Sim::Fault{ "bcm_field_group_create_id", 0, std::nullopt, 1,
                                   BCM_E_RESOURCE, true } );
   FerroBoundedTcamEntryManager extra( "extra", bcmFieldStageIngress, 20, 1, false, 9000,
                                       4 );
   const auto attributes = sw_->groupManager->chipAttributes( 0 );
   EXPECT_EQ( extra.unitIs( 0, *attributes ), BCM_E_RESOURCE );
   EXPECT_EQ( extra.unitIs( 0, *attributes ), 0 );
}

TEST_F( SwitchBringupTest, UnknownUnitsAndChipsReadDefaultAttributes ) {
   const auto unknownUnit = sw_->groupManager->chipAttributes( 7 );
   ASSERT_TRUE( unknownUnit );
   const auto platform = FerroCentral::ferroAttributes();
   EXPECT_EQ( unknownUnit, platform->chipAttributes( { "Nope" } ) );
   EXPECT_FALSE( unknownUnit->dstClassL3Supported );
   EXPECT_TRUE( sw_->groupManager->chipAttributes( 0 )->dstClassL3Supported );

   FerroCentral::ferroAttributesIs( nullptr );
   ASSERT_TRUE( FerroCentral::ferroAttributes() );
   EXPECT_FALSE( sw_->groupManager->chipAttributes( 0 )->dstClassL3Supported );
}
