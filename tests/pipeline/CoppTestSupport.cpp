#include "tests/pipeline/CoppTestSupport.h"

#include <algorithm>

#include "tools/ferro-acl/BringupSteps.h"
#include "tools/ferro-acl/RunOptions.h"

namespace CoppTest {

CoppSwitch::CoppSwitch( const std::string& profile ) {
   FerroAcl::Result<FerroAcl::AgentSetup> setup =
       FerroAcl::loadSetup( std::string( FERRO_PROFILES_DIR ) + "/" + profile + ".json" );
   if ( !setup ) {
      ADD_FAILURE() << setup.error();
      return;
   }
   const Agent::SwitchConfig& config = setup.value().config;
   installed_ = L3Test::installSystemAcl( config );
   for ( const Agent::UnitSpec& unit : config.units ) {
      if ( installed_.attributes( unit.unit )->vlanStageClassRulesSupported ) {
         installed_.helper->doInstallTH3SystemAclRule( unit.unit );
      }
   }
   const Pipeline::NetworkContext& network = setup.value().network;
   model_.emplace( network, Pipeline::unitModels( config ) );
   state_ = FerroAcl::collectChipState( *installed_.sw, *installed_.helper,
                                        FerroAcl::planBringup( config, {} ) );
   const std::optional<Pipeline::PortRef> ingress =
       FerroAcl::firstRoutedPortOf( network, 0 );
   if ( !ingress ) {
      ADD_FAILURE() << profile << ": unit 0 has no routed port";
      return;
   }
   ingress_ = *ingress;
   addresses_ = Pipeline::canonicalAddresses( network, ingress_ );
   packets_ = Pipeline::canonicalPackets( network, ingress_,
                                          FerroAcl::ipfixInPortOf( *installed_.sw, 0 ) );
}

FerroAcl::CoppRow CoppSwitch::send( const std::string& packetName ) const {
   const auto packet = std::find_if(
       packets_.begin(), packets_.end(),
       [&]( const Pipeline::CanonicalPacket& p ) { return p.name == packetName; } );
   if ( packet == packets_.end() ) {
      ADD_FAILURE() << "no canonical packet \"" << packetName << "\"";
      return {};
   }
   return FerroAcl::coppRow( *model_, *packet, state_.units.front() );
}

FerroAcl::CoppRow CoppSwitch::send( const Pipeline::Bytes& frame,
                                    const Pipeline::PortRef& ingress ) const {
   return FerroAcl::coppRow( *model_, { "test frame", frame, ingress },
                             state_.units.front() );
}

std::optional<Pipeline::PortRef> CoppSwitch::bridgedPort() const {
   for ( const Pipeline::Interface& intf : network().interfaces ) {
      for ( const Pipeline::PortRef& port : intf.ports ) {
         if ( port.unit == 0 && port.port != 0 && !network().higig( port ) &&
              !network().stpBlocked( port ) &&
              !network().nativeInterface( port )->routed() ) {
            return port;
         }
      }
   }
   return std::nullopt;
}

std::vector<std::string> ruleNames( const FerroAcl::CoppRow& row ) {
   std::vector<std::string> names;
   for ( const FerroAcl::CoppHit& hit : row.hits ) {
      names.push_back( hit.rule );
   }
   return names;
}

void expectFate( const FerroAcl::CoppRow& row, const Expected& expected ) {
   SCOPED_TRACE( expected.packet );
   EXPECT_EQ( ruleNames( row ), expected.rules );
   EXPECT_EQ( Pipeline::deliveryName( row.fate.toCpu ),
              std::string( Pipeline::deliveryName( expected.toCpu ) ) );
   EXPECT_EQ( row.fate.cpuQueue, expected.queue );
   EXPECT_EQ( row.fate.trafficClass, expected.trafficClass );
   EXPECT_EQ( row.fate.forwarded, expected.forwarded );
   EXPECT_EQ( row.fate.dropped, expected.dropped ) << row.fate.dropReason;
   EXPECT_EQ( row.fate.classDest, expected.classDest );
}

void expectFates( const CoppSwitch& s, const std::vector<Expected>& table ) {
   for ( const Expected& expected : table ) {
      expectFate( s.send( expected.packet ), expected );
   }
}

std::vector<std::string> fateProfiles() {
   return { "default", "espwar-wesp-protocol", "nexthop-glean-aclgroup",
            "th3-vlan-class" };
}

}  // namespace CoppTest
