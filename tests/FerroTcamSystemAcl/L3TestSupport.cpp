#include "L3TestSupport.h"

#include <algorithm>
#include <regex>

#include "tools/ferro-acl/ProfileLoader.h"

namespace L3Test {

std::vector<std::string> profileNames() {
   std::vector<std::string> names;
   for ( const auto& file : std::filesystem::directory_iterator( FERRO_PROFILES_DIR ) ) {
      if ( file.path().extension() == ".json" ) {
         names.push_back( file.path().stem().string() );
      }
   }
   std::sort( names.begin(), names.end() );
   return names;
}

Agent::SwitchConfig loadProfile( const std::string& name ) {
   const std::string path = std::string( FERRO_PROFILES_DIR ) + "/" + name + ".json";
   auto loaded = FerroAcl::loadProfile( path );
   if ( !loaded ) {
      ADD_FAILURE() << loaded.error();
      return {};
   }
   return loaded.value();
}

FerroCentral::ChipAttributes::PtrConst InstalledSwitch::attributes( U16 unit ) const {
   return sw->groupManager->chipAttributes( unit );
}

InstalledSwitch installL3( const Agent::SwitchConfig& config ) {
   InstalledSwitch s;
   s.sw = Agent::bringUp( config );
   s.helper = FerroTcamSystemAcl::Helper::Ptr( new FerroTcamSystemAcl::Helper( "l3-test" ) );
   s.sw->attach( *s.helper );
   for ( const Agent::UnitSpec& unit : config.units ) {
      s.helper->doInstallAclRules( unit.unit );
   }
   return s;
}

InstalledSwitch installSystemAcl( const Agent::SwitchConfig& config ) {
   InstalledSwitch s = installL3( config );
   FerroTcamSystemAcl::Helper& h = *s.helper;
   for ( const Agent::UnitSpec& unit : config.units ) {
      const U16 u = unit.unit;
      h.doInstallL2TrapRules( u );
      h.doInstallEapolFwdRule( u );
      if ( h.l2McastPtpRuleHas( u ) ) {
         h.doInstallL2McastPTPRuleCommon( u );
         h.doInstallL2UnicastPTPRuleCommon( u );
      }
      h.doInstallIpv4McastPTPRuleCommon( u );
      h.doInstallIpv4UnicastFwdPTPRuleCommon( u );
      h.doInstallIpv4ElevatorPTPRuleCommon( u );
   }
   return s;
}

Sim::PacketFields l2Packet( U32 dstClassL2, U16 etherType, const Wirex::EthAddr& dstMac,
                            bcm_port_t inPort ) {
   Sim::PacketFields p;
   p.inPort = inPort;
   p.etherType = etherType;
   p.dstClassL2 = dstClassL2;
   p.l2CacheHit = true;
   p.interfaceClassVPort = 1;
   for ( int i = 0; i < 6; ++i ) {
      p.dstMac[ size_t( i ) ] = dstMac[ i ];
   }
   return p;
}

std::string quoted( const std::string& text ) {
   return std::regex_replace( text, std::regex( R"([.^$|()\[\]{}*+?\\])" ), R"(\$&)" );
}

std::string assertionIn( const std::string& function, const std::string& expression ) {
   return quoted( function + ": Assertion `" + expression + "' failed." );
}

Sim::PacketFields ipv4Packet( U32 dstIp, U8 protocol ) {
   Sim::PacketFields p;
   p.inPort = 1;
   p.etherType = 0x0800;
   p.ipType = Shim::FieldIpType::Ipv4Any;
   p.dstIp = dstIp;
   p.ipProtocol = protocol;
   p.l3Routable = true;
   return p;
}

Sim::PacketFields selfIpPacket( const FerroCentral::ChipAttributes& chip, U8 protocol ) {
   Sim::PacketFields p = ipv4Packet( 0x0A000001, protocol );  // 10.0.0.1
   if ( chip.dstClassL3Supported ) {
      p.dstClassL3 = FerroCommon::selfIpClassId_;
   } else {
      p.dstL3EgressNextHop = FerroCommon::selfIpNextHopTcamId_;
   }
   return p;
}

Sim::PacketFields gleanPacket( const FerroCentral::ChipAttributes& chip ) {
   Sim::PacketFields p = ipv4Packet( 0x0A000163, 6 );  // 10.0.1.99, unresolved
   p.l4DstPort = 443;
   if ( chip.gleanViaNextHopToCpu ) {
      p.dstModid = FerroCommon::cpuNhInvalidModId_;
   } else if ( chip.dstClassL3Supported ) {
      p.dstClassL3 = FerroCommon::gleanClassId_;
   } else {
      p.dstL3EgressNextHop = FerroCommon::gleanNextHopTcamId_;
   }
   return p;
}

Sim::StageResult ingress( U16 unit, const Sim::PacketFields& packet ) {
   return Sim::FieldProcessor::instance().lookup( unit, packet ).ingress;
}

std::vector<std::string> hitNames( const InstalledSwitch& s, U16 unit,
                                   const Sim::PacketFields& packet ) {
   std::vector<std::string> names;
   for ( const Sim::StageHit& hit : ingress( unit, packet ).hits ) {
      const auto manager = s.sw->groupManager->managerForEntry( hit.entry );
      const TcamEntryRecord* record = manager ? manager->record( unit, hit.entry ) : nullptr;
      names.push_back( record ? record->ruleName : "?" );
   }
   return names;
}

U32 entryNamed( const InstalledSwitch& s, U16 unit, const std::string& name ) {
   for ( const Sim::EntryView& e : Sim::FieldProcessor::instance().entries( unit ) ) {
      const TcamEntryRecord* record = s.sw->l3Manager->record( unit, e.id );
      if ( record && record->ruleName == name ) {
         return e.id;
      }
   }
   return 0;
}

}  // namespace L3Test
