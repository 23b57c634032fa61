#include "IpfixFixture.h"

namespace IpfixTest {

namespace {
Lumo::TraceHandle& libraryTrace() { return Lumo::traceHandle( "FerroTcamSystemAclHelper" ); }
}  // namespace

std::ostream& operator<<( std::ostream& os, const RuleState& s ) {
   return os << "{port " << s.port << ( s.installed ? ", installed" : ", not installed" )
             << ( s.enabled ? ", enabled}" : ", disabled}" );
}

void IpfixFixture::SetUp() {
   libraryTrace().maskIs( 1 << 2 );
   Lumo::traceSinkIs( [ this ]( const Lumo::TraceLine& line ) {
      if ( line.handle == "FerroTcamSystemAclHelper" && line.level == 2 ) {
         trace_.push_back( line.text );
      }
   } );
   sw = Agent::bringUp( Agent::defaultSwitchConfig() );
   config = sw->flowTracking;
   helper = Lumo::makePtr<FerroTcamSystemAcl::Helper>( "ipfix-test" );
   sw->attach( *helper );
   for ( const Agent::UnitSpec& unit : sw->config.units ) {
      helper->doInstallAclRules( unit.unit );
   }
   ASSERT_TRUE( helper->ipfixPortProgrammerSm() );
   trace_.clear();
}

void IpfixFixture::TearDown() {
   helper.reset();
   config.reset();
   sw.reset();
   Lumo::traceSinkIs( nullptr );
   libraryTrace().maskIs( 0 );
   chip().reset();
}

RuleState IpfixFixture::ruleAt( U16 unit, U32 entry ) {
   RuleState state;
   const auto view = chip().entry( unit, entry );
   if ( !view ) {
      return state;
   }
   state.installed = view->installed;
   state.enabled = view->enabled;
   for ( const Sim::QualifierView& q : view->hardware.qualifiers ) {
      if ( q.name == "L4DstPort" && q.compressed.size() == 1 ) {
         const auto& bytes = q.compressed.front().data.bytes;
         state.port = U16( bytes[ 0 ] << 8 | bytes[ 1 ] );
      }
   }
   return state;
}

void IpfixFixture::expectEveryUnit( const RuleState& expected ) const {
   for ( const Agent::UnitSpec& unit : sw->config.units ) {
      EXPECT_EQ( rule( unit.unit ), expected ) << "unit " << unit.unit;
   }
}

std::optional<uint32_t> IpfixFixture::ipfixQueueFor( U16 unit, U16 port ) const {
   Sim::PacketFields p;
   p.inPort = sw->chip( unit )->attributes.ipfixInPort;
   p.etherType = 0x0800;
   p.ipType = Shim::FieldIpType::Ipv4Any;
   p.dstIp = 0x0A000063;
   p.ipProtocol = 17;
   p.l4DstPort = port;
   p.l3Routable = true;
   const Sim::StageResult ingress = chip().lookup( unit, p ).ingress;
   for ( const Sim::StageHit& hit : ingress.hits ) {
      if ( hit.entry == int( helper->ipfixRule( unit ) ) ) {
         return ingress.cpuQueue;
      }
   }
   return std::nullopt;
}

std::vector<std::string> IpfixFixture::takeTrace() { return std::exchange( trace_, {} ); }

FtConfig::Ptr IpfixFixture::trackerIs( const std::string& name ) {
   auto tracker = Lumo::makePtr<FtConfig>();
   config->hwFtConfigIs( name, tracker );
   return tracker;
}

ExporterConfig::Ptr IpfixFixture::exporterIs( const FtConfig::Ptr& tracker,
                                              const std::string& name ) {
   auto exporter = Lumo::makePtr<ExporterConfig>();
   tracker->expConfigIs( name, exporter );
   return exporter;
}

FerroTcamSystemAcl::IpfixPortFlowTrackerProgrammerSm::Ptr IpfixFixture::tracker(
   const std::string& name ) const {
   const auto& trackers = helper->ipfixPortProgrammerSm()->ipfixFtProgrammerSm();
   auto it = trackers.find( name );
   return it == trackers.end() ? nullptr : it->second;
}

}  // namespace IpfixTest
