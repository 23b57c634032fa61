// The L3 rules of every chip profile, judged by what packets hit on the
// simulated chip after doInstallAclRules.
#include <set>

#include <gtest/gtest.h>

#include "L3TestSupport.h"
#include "platform/agent/HelperBase.h"

namespace {

using FerroTcamSystemAcl::HelperBase;
using L3Test::ingress;

class L3RuleLookup : public testing::TestWithParam<std::string> {
  protected:
   void SetUp() override {
      config_ = L3Test::loadProfile( GetParam() );
      ASSERT_FALSE( config_.units.empty() );
      s_ = L3Test::installL3( config_ );
   }
   // Runs `check` on every unit with that unit's chip attributes.
   template <typename Check>
   void forEachUnit( Check check ) {
      for ( const Agent::UnitSpec& unit : config_.units ) {
         SCOPED_TRACE( "unit " + std::to_string( unit.unit ) );
         check( unit.unit, *s_.attributes( unit.unit ) );
      }
   }
   Agent::SwitchConfig config_;
   L3Test::InstalledSwitch s_;
};

TEST_P( L3RuleLookup, BgpToSelfIpFromEitherPortDirectionLandsOnBgpQueue ) {
   forEachUnit( [ & ]( U16 unit, const FerroCentral::ChipAttributes& chip ) {
      Sim::PacketFields toBgp = L3Test::selfIpPacket( chip, 6 );
      toBgp.l4SrcPort = 50123;
      toBgp.l4DstPort = 179;
      EXPECT_EQ( ingress( unit, toBgp ).cpuQueue, HelperBase::cpuCosqBGP_ );
      Sim::PacketFields fromBgp = toBgp;
      std::swap( fromBgp.l4SrcPort, fromBgp.l4DstPort );
      EXPECT_EQ( ingress( unit, fromBgp ).cpuQueue, HelperBase::cpuCosqBGP_ );
      // Not TCP: the BGP rules leave it to the self-IP elevator.
      Sim::PacketFields udp = toBgp;
      udp.ipProtocol = 17;
      EXPECT_EQ( ingress( unit, udp ).cpuQueue, HelperBase::cpuCosqSelfIp_ );
   } );
}

TEST_P( L3RuleLookup, OspfMulticastGroupsLandOnOspfIsisQueue ) {
   forEachUnit( [ & ]( U16 unit, const FerroCentral::ChipAttributes& ) {
      EXPECT_EQ( ingress( unit, L3Test::ipv4Packet( 0xE0000005, 89 ) ).cpuQueue,
                 HelperBase::cpuCosqOspfIsis_ );
      EXPECT_EQ( ingress( unit, L3Test::ipv4Packet( 0xE0000006, 89 ) ).cpuQueue,
                 HelperBase::cpuCosqOspfIsis_ );
      EXPECT_EQ( ingress( unit, L3Test::ipv4Packet( 0xE0000009, 89 ) ).cpuQueue, std::nullopt );
   } );
}

TEST_P( L3RuleLookup, VrrpOnlyWithTtl255 ) {
   forEachUnit( [ & ]( U16 unit, const FerroCentral::ChipAttributes& ) {
      Sim::PacketFields vrrp = L3Test::ipv4Packet( 0xE0000012, 112 );
      vrrp.ttl = 255;
      EXPECT_EQ( ingress( unit, vrrp ).cpuQueue, HelperBase::cpuCosqVRRP_ );
      vrrp.ttl = 254;
      EXPECT_EQ( ingress( unit, vrrp ).cpuQueue, std::nullopt );
   } );
}

TEST_P( L3RuleLookup, SingleHopBfdControlAndEchoWithTtl254Or255 ) {
   forEachUnit( [ & ]( U16 unit, const FerroCentral::ChipAttributes& chip ) {
      for ( U16 port : { 3784, 3785 } ) {
         for ( U8 ttl : { 255, 254 } ) {
            SCOPED_TRACE( "port " + std::to_string( port ) + " ttl " + std::to_string( ttl ) );
            Sim::PacketFields bfd = L3Test::selfIpPacket( chip, 17 );
            bfd.l4DstPort = port;
            bfd.ttl = ttl;
            EXPECT_EQ( ingress( unit, bfd ).cpuQueue, HelperBase::cpuCosqBFD_ );
         }
      }
      Sim::PacketFields tooFar = L3Test::selfIpPacket( chip, 17 );
      tooFar.l4DstPort = 3784;
      tooFar.ttl = 253;
      EXPECT_EQ( ingress( unit, tooFar ).cpuQueue, HelperBase::cpuCosqSelfIp_ );
      // A separate echo entry exactly where the chip asks for one.
      const bool separateEcho =
         chip.bfdEchoCheckEnabled && chip.bfdEchoSupported && !chip.bfdEchoRuleSuppressed;
      EXPECT_EQ( s_.helper->bfdEchoRuleHas( unit ), separateEcho );
      if ( separateEcho ) {
         EXPECT_EQ( s_.helper->bfdEchoRule( unit ), s_.helper->bfdRule( unit ) + 1 );
      }
   } );
}

TEST_P( L3RuleLookup, MultihopBfdWithAnyTtl ) {
   forEachUnit( [ & ]( U16 unit, const FerroCentral::ChipAttributes& chip ) {
      Sim::PacketFields bfd = L3Test::selfIpPacket( chip, 17 );
      bfd.l4DstPort = 4784;
      for ( U8 ttl : { 1, 64, 255 } ) {
         bfd.ttl = ttl;
         EXPECT_EQ( ingress( unit, bfd ).cpuQueue, HelperBase::cpuCosqBFD_ );
      }
   } );
}

TEST_P( L3RuleLookup, IsisGetsIsisTrafficClassAndQueue ) {
   forEachUnit( [ & ]( U16 unit, const FerroCentral::ChipAttributes& ) {
      for ( auto mac : { std::array<uint8_t, 6>{ 0x01, 0x80, 0xc2, 0x00, 0x00, 0x14 },
                         std::array<uint8_t, 6>{ 0x01, 0x80, 0xc2, 0x00, 0x00, 0x15 },
                         std::array<uint8_t, 6>{ 0x09, 0x00, 0x2b, 0x00, 0x00, 0x05 } } ) {
         Sim::PacketFields isis;
         isis.inPort = 2;
         isis.dstMac = mac;
         isis.interfaceClassL2 = FerroCommon::VlanClassIds::classSviConfigured_;
         const Sim::StageResult r = ingress( unit, isis );
         EXPECT_EQ( r.internalPriority, HelperBase::TC_ISIS );
         EXPECT_EQ( r.cpuQueue, HelperBase::cpuCosqOspfIsis_ );
         EXPECT_TRUE( r.copyToCpu );
         // Without a routed interface on the VLAN it is not trapped.
         isis.interfaceClassL2 = 0;
         EXPECT_FALSE( ingress( unit, isis ).copyToCpu );
      }
   } );
}

TEST_P( L3RuleLookup, HighDscpAndVlanPriorityToSelfIpTakeTheHighQueue ) {
   forEachUnit( [ & ]( U16 unit, const FerroCentral::ChipAttributes& chip ) {
      Sim::PacketFields ssh = L3Test::selfIpPacket( chip, 6 );
      ssh.l4DstPort = 22;
      EXPECT_EQ( ingress( unit, ssh ).cpuQueue, HelperBase::cpuCosqSelfIp_ );
      for ( U8 tos : { 0xC0, 0xFC } ) {
         ssh.tos = tos;
         EXPECT_EQ( ingress( unit, ssh ).cpuQueue, HelperBase::cpuCosqSelfIpTc6To7_ );
      }
      ssh.tos = 0xBC;  // DSCP 47
      EXPECT_EQ( ingress( unit, ssh ).cpuQueue, HelperBase::cpuCosqSelfIp_ );
      ssh.tos = 0;
      for ( U8 pri : { 6, 7 } ) {
         ssh.outerVlanPri = pri;
         EXPECT_EQ( ingress( unit, ssh ).cpuQueue, HelperBase::cpuCosqSelfIpTc6To7_ );
      }
      ssh.outerVlanPri = 5;
      EXPECT_EQ( ingress( unit, ssh ).cpuQueue, HelperBase::cpuCosqSelfIp_ );
   } );
}

TEST_P( L3RuleLookup, GleanInTheChipsFormAndNeighbourDiscoveryExcluded ) {
   forEachUnit( [ & ]( U16 unit, const FerroCentral::ChipAttributes& chip ) {
      const bool viaNextHop = chip.gleanViaNextHopToCpu && !config_.nextHopToCpuGleanDisabled;
      const bool byClass = !chip.gleanViaNextHopToCpu && chip.gleanClassIdSupported;
      const Sim::PacketFields glean = L3Test::gleanPacket( chip );
      EXPECT_EQ( ingress( unit, glean ).cpuQueue,
                 viaNextHop || byClass ? std::optional<uint32_t>( HelperBase::cpuCosqGlean_ )
                                       : std::nullopt );
      EXPECT_EQ( s_.helper->gleanRuleHas( unit ), viaNextHop || byClass );
      EXPECT_EQ( s_.helper->icmpv6GleanExcludeRuleHas( unit ), viaNextHop );
      if ( viaNextHop ) {
         Sim::PacketFields nd = glean;
         nd.ipType = Shim::FieldIpType::Ipv6;
         nd.ipProtocol = 58;
         nd.l4SrcPort = 0x8700;
         const Sim::StageResult r = ingress( unit, nd );
         EXPECT_EQ( r.cpuQueue, std::nullopt );
         EXPECT_EQ( L3Test::hitNames( s_, unit, nd ).front(), "ICMPv6 NextHopToCpu, Glean exclude" );
      }
   } );
}

TEST_P( L3RuleLookup, EspAndWespClassIdsOnlyWhereTheChipNeedsThem ) {
   forEachUnit( [ & ]( U16 unit, const FerroCentral::ChipAttributes& chip ) {
      auto wesp = [ & ]( Sim::PacketFields p ) {
         p.ipProtocol = 141;
         if ( chip.extensionHeaderTypeQualifierSupported ) {
            p.ipType = Shim::FieldIpType::Ipv6;
            p.extensionHeaderType = 141;
         }
         return p;
      };
      const std::optional<uint32_t> wespClass =
         chip.espWarRequired ? std::optional<uint32_t>( FerroCommon::ifpClassWespWar_ ) : std::nullopt;
      const std::optional<uint32_t> espClass =
         chip.espWarRequired ? std::optional<uint32_t>( FerroCommon::ifpClassEspWar_ ) : std::nullopt;

      // WESP to the switch with priority 6: the workaround elevator, ahead of
      // the plain one.
      Sim::PacketFields toSelf = wesp( L3Test::selfIpPacket( chip, 141 ) );
      toSelf.outerVlanPri = 6;
      Sim::StageResult r = ingress( unit, toSelf );
      EXPECT_EQ( r.cpuQueue, HelperBase::cpuCosqSelfIpTc6To7_ );
      EXPECT_EQ( r.newClassId, wespClass );
      if ( chip.espWarRequired ) {
         EXPECT_EQ( r.egressClassSelect, uint32_t( int( BCM_FIELD_EGRESS_CLASS_SELECT_NEW ) ) );
      }
      // Transit ESP and WESP only get their class.
      r = ingress( unit, wesp( L3Test::ipv4Packet( 0x0B000001, 141 ) ) );
      EXPECT_EQ( r.newClassId, wespClass );
      EXPECT_EQ( r.cpuQueue, std::nullopt );
      r = ingress( unit, L3Test::ipv4Packet( 0x0B000001, 50 ) );
      EXPECT_EQ( r.newClassId, espClass );
      EXPECT_EQ( r.cpuQueue, std::nullopt );
      // ESP to the switch is authenticated OSPF, with its class on every chip.
      r = ingress( unit, L3Test::selfIpPacket( chip, 50 ) );
      EXPECT_EQ( r.cpuQueue, HelperBase::cpuCosqOspfIsis_ );
      EXPECT_EQ( r.newClassId, FerroCommon::ifpClassEspWar_ );

      // Apart from the OSPF-over-ESP traps, nothing selects an egress class on
      // a chip without the workaround.
      for ( const Sim::EntryView& e : Sim::FieldProcessor::instance().entries( unit ) ) {
         const TcamEntryRecord* record = s_.sw->l3Manager->record( unit, e.id );
         const std::string name = record ? record->ruleName : "";
         for ( const Sim::ActionView& a : e.software.actions ) {
            if ( a.action == Shim::FieldAction::EgressClassSelect && !chip.espWarRequired ) {
               EXPECT_EQ( name.rfind( "OSPF Auth ESP", 0 ), 0u ) << name;
            }
         }
      }
   } );
}

TEST_P( L3RuleLookup, EntriesRunUpFromTheBaseInRuleOrderAndAreRecorded ) {
   forEachUnit( [ & ]( U16 unit, const FerroCentral::ChipAttributes& ) {
      const U32 base = Agent::ManagerLayout::l3Base;
      EXPECT_EQ( s_.helper->isisL1L2FpPrioRule( unit ), base );
      EXPECT_EQ( L3Test::entryNamed( s_, unit, "ISIS IS-L1L2 Entry CPU Port" ), base + 1 );
      EXPECT_EQ( s_.helper->isisAllISCpuPrioRule( unit ), base + 3 );
      EXPECT_EQ( s_.helper->sourceCpuPortDropRule( unit ), base + 4 );
      const U32 bgpSrc = L3Test::entryNamed( s_, unit, "BGP - Src Port" );
      EXPECT_EQ( bgpSrc, s_.helper->bgpRule( unit ) + 1 );
      for ( const auto& [ table, rules ] : s_.helper->ruleTables() ) {
         EXPECT_NE( rules->count( unit ) ? rules->at( unit ) : 0, bgpSrc ) << table;
      }
      // The IPv4 PTP rules keep three places after IS-IS over GRE, unprogrammed.
      const U32 gre = s_.helper->ipGreIsisRule( unit );
      EXPECT_EQ( s_.helper->ipv4McastPtpRule( unit ), gre + 1 );
      EXPECT_EQ( s_.helper->ipv4UnicastFwdPtpRule( unit ), gre + 2 );
      EXPECT_EQ( s_.helper->ipv4ElevatorPtpRule( unit ), gre + 3 );
      EXPECT_FALSE( Sim::FieldProcessor::instance().entry( unit, gre + 1 ).has_value() );
      EXPECT_EQ( L3Test::entryNamed( s_, unit, "RouterL3 DSCP 48-63 Elevator" ),
                 s_.helper->l3PrioHighDscpRule( unit ) );
      EXPECT_LT( s_.helper->l3PrioHighCosRule( unit ), s_.helper->l3PrioRule( unit ) );
   } );
}

// Only the rules the port refresh re-binds carry in-ports; any other bitmap
// would go stale when the unit's Ethernet ports change. On ACL-group chips
// port classes stand in for them, and PIM's bitmap is permanent only where it
// has one.
TEST_P( L3RuleLookup, OnlyRefreshedRulesCarryInPorts ) {
   const std::set<std::string> bound = {
      "ISIS IS-L1L2 Entry Fp Ports", "ISIS IS-L1L2 Entry CPU Port", "ISIS ALL-IS Entry Fp Ports",
      "ISIS ALL-IS Entry Cpu Ports", "PIM", "Ipfix Dst Port", "L3MC Cpu OIF",
      "Redirect packets from CPU to CPU drop queue" };
   const bool aclGroups = config_.aclGroupManagers;
   forEachUnit( [ & ]( U16 unit, const FerroCentral::ChipAttributes& ) {
      for ( const Sim::EntryView& e : Sim::FieldProcessor::instance().entries( unit ) ) {
         const TcamEntryRecord* record = s_.sw->l3Manager->record( unit, U32( e.id ) );
         if ( e.group != Agent::ManagerLayout::l3Group || record == nullptr || !e.installed ) {
            continue;
         }
         bool inPorts = false;
         for ( const Sim::QualifierView& q : e.software.qualifiers ) {
            inPorts = inPorts || q.name == "InPorts";
         }
         const bool listed = bound.count( record->ruleName ) != 0;
         EXPECT_EQ( inPorts, listed && !aclGroups ) << record->ruleName;
         if ( record->ruleName == "PIM" ) {
            EXPECT_EQ( record->pbmp && record->pbmp->permanent, !aclGroups );
         }
      }
   } );
}

TEST_P( L3RuleLookup, VerificationPassesAfterInstall ) {
   forEachUnit( [ & ]( U16 unit, const FerroCentral::ChipAttributes& ) {
      s_.helper->verifyInstalledAclRules( unit );
   } );
}

INSTANTIATE_TEST_SUITE_P( Profiles, L3RuleLookup, testing::ValuesIn( L3Test::profileNames() ),
                          []( const auto& info ) {
                             std::string name = info.param;
                             for ( char& c : name ) {
                                if ( !isalnum( static_cast<unsigned char>( c ) ) ) c = '_';
                             }
                             return name;
                          } );

}  // namespace
