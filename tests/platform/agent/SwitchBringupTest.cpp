#include <functional>
#include <stdexcept>

#include "AgentTestSupport.h"
#include "platform/agent/TcamHelpers.h"

using namespace AgentTest;

namespace {

class SwitchBringupTest : public SwitchTest {};

}  // namespace

// What is wrong with the configuration is an invalid_argument, what the chip
// refuses a runtime_error; either names its cause.
TEST_F( SwitchBringupTest, RefusalsNameTheirCause ) {
   using Edit = std::function<void( Agent::SwitchConfig& )>;
   const struct {
      Edit edit;
      std::string message;
   } rows[] = {
      { []( auto& c ) { c.units.clear(); }, "config: switch 'switch' has no units" },
      { []( auto& c ) { c.units[ 1 ].unit = 0; }, "config: unit 0 is listed twice" },
      { []( auto& c ) { c.units[ 1 ].chip = "Jericho"; },
        "config: unit 1 names unknown chip family 'Jericho'; expected one of Trident3" },
      { []( auto& c ) { c.chips[ 0 ].attributes.portCount = 1; },
        "config: chip family 'Trident3' has portCount 1; expected 2..256" },
      { []( auto& c ) { c.chips[ 0 ].attributes.portCount = 257; },
        "config: chip family 'Trident3' has portCount 257" },
      { []( auto& c ) { c.chips.push_back( c.chips[ 0 ] ); },
        "config: chip family 'Trident3' is listed twice" },
      { []( auto& c ) { c.units[ 0 ].inactivePorts = { 0 }; },
        "config: unit 0 lists inactive port 0; expected a front-panel port 1..64" },
      { []( auto& c ) { c.chips[ 0 ].attributes.cpuQueueCount = 0; },
        std::string( "chip: unit 0: attaching a 'Trident3' chip failed: " ) +
           Shim::sdk_->bcm_errmsg( BCM_E_PARAM ) },
   };
   for ( const auto& row : rows ) {
      Agent::SwitchConfig config = Agent::defaultSwitchConfig();
      row.edit( config );
      std::string refused = "accepted";
      try {
         Agent::bringUp( config );
      } catch ( const std::invalid_argument& e ) {
         refused = std::string( "config: " ) + e.what();
      } catch ( const std::runtime_error& e ) {
         refused = std::string( "chip: " ) + e.what();
      }
      EXPECT_EQ( refused.rfind( row.message, 0 ), 0u ) << refused;
   }
}

TEST_F( SwitchBringupTest, SharedStateDescribesEveryUnit ) {
   // Unit 1 on a chip of its own, with 33 ports, two of them inactive.
   Agent::SwitchConfig config = Agent::defaultSwitchConfig();
   config.chips.push_back( config.chips[ 0 ] );
   config.chips[ 1 ].family = config.units[ 1 ].chip = "Tomahawk3";
   config.chips[ 1 ].attributes.portCount = 33;
   config.units[ 1 ].inactivePorts = { 3, 32 };
   bringUp( config );
   FerroCommonSmData& sm = *sw_->smData;
   EXPECT_EQ( sm.chipInfo( 1 ).chipName, "Tomahawk3" );
   EXPECT_EQ( FerroTcam::intfToPort( sm, Wirex::IntfId::ethernet( 1032 ) ),
              FerroTypes::FerroPort( 1, 1, 32 ) );
   EXPECT_EQ( FerroTcam::intfToPort( sm, Wirex::IntfId::ethernet( 1033 ) ),
              FerroTypes::FerroPort::invalid() );
   // All ports, the front-panel ones, and those of them that are not inactive.
   for ( int port = 0; port <= 33; ++port ) {
      SCOPED_TRACE( port );
      const bool front = port >= 1 && port <= 32;
      EXPECT_EQ( bool( BCM_PBMP_MEMBER( FerroTcam::getPbmpAll( sm, 1 ), port ) ), port <= 32 );
      EXPECT_EQ( bool( BCM_PBMP_MEMBER( FerroTcam::getPbmpEAll( sm, 1 ), port ) ), front );
      EXPECT_EQ( bool( BCM_PBMP_MEMBER( FerroTcam::getActivePorts( sm, 1 ), port ) ),
                 front && port != 3 && port != 32 );
   }
   EXPECT_TRUE( BCM_PBMP_IS_NULL( FerroTcam::getPbmpAll( sm, 9 ) ) );
   // The first CPU port in table order; one no longer mapped is passed over.
   EXPECT_EQ( sm.firstCpuPort(), FerroTypes::FerroPort( 0, 0, 0 ) );
   sm.cpuPorts.erase( sm.cpuPortOrder.front() );
   EXPECT_EQ( sm.firstCpuPort(), FerroTypes::FerroPort( 1, 1, 0 ) );
}

TEST_F( SwitchBringupTest, UnknownUnitsAndChipsReadDefaultAttributes ) {
   const auto unknownUnit = sw_->groupManager->chipAttributes( 7 );
   ASSERT_TRUE( unknownUnit );
   EXPECT_EQ( unknownUnit, FerroCentral::ferroAttributes()->chipAttributes( { "Nope" } ) );
   EXPECT_FALSE( unknownUnit->dstClassL3Supported );
   EXPECT_TRUE( sw_->groupManager->chipAttributes( 0 )->dstClassL3Supported );

   FerroCentral::ferroAttributesIs( nullptr );
   ASSERT_TRUE( FerroCentral::ferroAttributes() );
   EXPECT_FALSE( sw_->groupManager->chipAttributes( 0 )->dstClassL3Supported );
}
