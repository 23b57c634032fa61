// The L2 trap set of every chip profile: where each rule sits, what L2 control
// frames it catches on the simulated chip, and which ports L2 protocol
// forwarding takes out of it.
#include <gtest/gtest.h>

#include <map>

#include "L3TestSupport.h"
#include "platform/agent/HelperBase.h"
#include "platform/agent/TcamHelpers.h"

namespace {

using FerroTcamSystemAcl::Helper;
using FerroTcamSystemAcl::HelperBase;
using L3Test::ingress;

Sim::FieldProcessor& chip() { return Sim::FieldProcessor::instance(); }

const Wirex::EthAddr lldpMac( 0x01, 0x80, 0xC2, 0x00, 0x00, 0x0E );
const Wirex::EthAddr stpMac( 0x01, 0x80, 0xC2, 0x00, 0x00, 0x00 );
const Wirex::EthAddr slowMac( 0x01, 0x80, 0xC2, 0x00, 0x00, 0x02 );
const Wirex::EthAddr microBfdMac( 0x01, 0x00, 0x5E, 0x90, 0x00, 0x01 );

class L2TrapRules : public testing::TestWithParam<std::string> {
  protected:
   void SetUp() override {
      config_ = L3Test::loadProfile( GetParam() );
      ASSERT_FALSE( config_.units.empty() );
      s_ = L3Test::installSystemAcl( config_ );
   }
   bool reduced() const { return config_.reducedL2TrapsA || config_.reducedL2TrapsB; }
   template <typename Check>
   void forEachUnit( Check check ) {
      for ( const Agent::UnitSpec& unit : config_.units ) {
         SCOPED_TRACE( "unit " + std::to_string( unit.unit ) );
         check( unit.unit, *s_.attributes( unit.unit ) );
      }
   }
   // The rule name an L2 control entry was requested under.
   std::string nameOf( U16 unit, U32 entry ) const {
      const TcamEntryRecord* record = s_.sw->l2Manager->record( unit, entry );
      return record ? record->ruleName : "";
   }
   Agent::SwitchConfig config_;
   L3Test::InstalledSwitch s_;
};

TEST_P( L2TrapRules, EveryRuleSitsAtItsPlaceInTheL2Block ) {
   const U32 base = Agent::ManagerLayout::l2Base;
   forEachUnit( [ & ]( U16 unit, const FerroCentral::ChipAttributes& a ) {
      std::map<U32, std::string> expected = { { base, "BPDU Priority Elevator" },
                                              { base + 1, "LACPDU Priority Elevator" } };
      if ( !reduced() ) {
         expected[ base + 2 ] = "L2 Mcast PTP";
         expected[ base + 3 ] = "L2 Unicast PTP";
         const bool vxlan = a.hasVxlanCoreProtocol( Lamo::L2Pt::lldp() );
         U32 c = base + 3;
         if ( a.linkLocalPtpSupported && vxlan ) {
            expected[ base + 4 ] = "Non Vxlan Core Link-local PTP";
            expected[ base + 5 ] = "Vxlan Core Link-local PTP";
            c = base + 5;
         } else if ( a.linkLocalPtpSupported ) {
            expected[ base + 4 ] = "Link-local PTP";
            c = base + 4;
         }
         expected[ c + 1 ] = "MicroBfdPdu Priority Elevator";
         if ( vxlan ) {
            expected[ c + 2 ] = "Non Vxlan Core LLDPDU Priority Elevator";
            expected[ c + 3 ] = "Vxlan Core LLDPDU Priority Elevator";
         } else {
            expected[ c + 2 ] = "LLDPDU Priority Elevator";
         }
      }
      std::map<U32, std::string> installed;
      for ( const Sim::EntryView& e : chip().entries( unit ) ) {
         if ( e.group == Agent::ManagerLayout::l2Group && e.installed ) {
            installed[ U32( e.id ) ] = nameOf( unit, U32( e.id ) );
         }
      }
      EXPECT_EQ( installed, expected );
      // Every installed rule is recorded in its table, and only those.
      const Helper& h = *s_.helper;
      EXPECT_EQ( h.bpduPrioRule( unit ), base );
      EXPECT_EQ( h.lacpPrioRule( unit ), base + 1 );
      EXPECT_EQ( h.microBfdPrioRuleHas( unit ), !reduced() );
      EXPECT_EQ( h.l2McastPtpRuleHas( unit ), !reduced() );
      EXPECT_EQ( h.linkLocalPtpRuleHas( unit ), !reduced() && a.linkLocalPtpSupported );
   } );
}

TEST_P( L2TrapRules, ControlFramesGetTheirTrafficClassAndQueue ) {
   struct Case {
      const char* what;
      U32 dstClass;
      U16 etherType;
      const Wirex::EthAddr* mac;
      U32 tc;
      U32 queue;
      bool reducedToo;
   };
   const Case cases[] = {
      { "BPDU", 1, 0x0026, &stpMac, 15, 47, true },
      { "LACPDU", 2, 0x8809, &slowMac, 14, 46, true },
      { "micro-BFD", 8, 0x0800, &microBfdMac, 9, 45, false },
      { "LLDPDU", 3, 0x88CC, &lldpMac, 13, 39, false },
   };
   forEachUnit( [ & ]( U16 unit, const FerroCentral::ChipAttributes& ) {
      for ( const Case& c : cases ) {
         SCOPED_TRACE( c.what );
         const Sim::StageResult r = ingress( unit, L3Test::l2Packet( c.dstClass, c.etherType, *c.mac ) );
         if ( reduced() && !c.reducedToo ) {
            EXPECT_EQ( r.cpuQueue, std::nullopt );
            continue;
         }
         EXPECT_EQ( r.internalPriority, c.tc );
         EXPECT_EQ( r.cpuQueue, c.queue );
         EXPECT_FALSE( r.drop );
         EXPECT_EQ( r.copyToCpu, config_.platformCode == 7 );
      }
      // Without the L2 table's class the elevators stay out of it.
      EXPECT_EQ( ingress( unit, L3Test::l2Packet( 0, 0x88CC, lldpMac ) ).internalPriority,
                 std::nullopt );
   } );
}

TEST_P( L2TrapRules, LinkLocalPtpIsTrappedOnTheLldpQueue ) {
   forEachUnit( [ & ]( U16 unit, const FerroCentral::ChipAttributes& a ) {
      // PTP is off: the chip does not resolve the frame as IEEE 1588.
      const Sim::PacketFields ptp = L3Test::l2Packet( 3, 0x88F7, lldpMac );
      const Sim::StageResult r = ingress( unit, ptp );
      if ( reduced() || !a.linkLocalPtpSupported ) {
         // The LLDP elevator's ether-type match keeps PTP out, where it has one.
         EXPECT_FALSE( r.drop );
         return;
      }
      EXPECT_NE( L3Test::hitNames( s_, unit, ptp ).front().find( "Link-local PTP" ),
                 std::string::npos );
      EXPECT_TRUE( r.drop );
      EXPECT_TRUE( r.copyToCpu );
      EXPECT_EQ( r.cpuQueue, HelperBase::cpuCosqLLDP_ );
      EXPECT_EQ( r.internalPriority, HelperBase::TC_LLDP_DOT1X );
   } );
}

TEST_P( L2TrapRules, L2PtpMatchesByGroupBit ) {
   if ( reduced() ) {
      GTEST_SKIP() << "no L2 PTP rules with reduced traps";
   }
   forEachUnit( [ & ]( U16 unit, const FerroCentral::ChipAttributes& ) {
      Sim::PacketFields ptp = L3Test::l2Packet( 0, 0x88F7, Wirex::EthAddr( 0x01, 0x1B, 0x19, 0, 0, 0 ) );
      ptp.packetRes = Shim::PacketRes::Ieee1588;
      EXPECT_EQ( L3Test::hitNames( s_, unit, ptp ).front(), "L2 Mcast PTP" );
      EXPECT_EQ( ingress( unit, ptp ).cpuQueue, HelperBase::cpuCosqPtp_ );
      ptp.dstMac[ 0 ] = 0x03;  // a group address, but not 01:..
      EXPECT_TRUE( L3Test::hitNames( s_, unit, ptp ).empty() );
      ptp.dstMac[ 0 ] = 0x02;  // any unicast address
      EXPECT_EQ( L3Test::hitNames( s_, unit, ptp ).front(), "L2 Unicast PTP" );
   } );
}

INSTANTIATE_TEST_SUITE_P( Profiles, L2TrapRules, testing::ValuesIn( L3Test::profileNames() ),
                          []( const auto& info ) {
                             std::string name = info.param;
                             std::replace( name.begin(), name.end(), '-', '_' );
                             return name;
                          } );

// Ports of the forwarding configuration leave the protocol's rule; everything
// else keeps every Ethernet port.
class L2Forwarding : public testing::Test {
  protected:
   void install( const char* profile ) {
      s_ = L3Test::installSystemAcl( L3Test::loadProfile( profile ) );
   }
   bcm_pbmp_t inPorts( U16 unit, U32 entry ) {
      bcm_pbmp_t data, mask;
      EXPECT_EQ( Shim::sdk_->bcm_field_qualify_InPorts_get( unit, entry, &data, &mask ), 0 );
      return data;
   }
   bool has( U16 unit, U32 entry, int port ) {
      return BCM_PBMP_MEMBER( inPorts( unit, entry ), port );
   }
   L3Test::InstalledSwitch s_;
};

TEST_F( L2Forwarding, LldpForwardingSplitsByTrafficTypeOnVxlanCore ) {
   install( "vxlan-core-l2" );
   const Helper& h = *s_.helper;
   const U32 plain = h.lldpPrioRule( 0 ), core = h.vxlanCoreLldpPrioRule( 0 );
   for ( int port : { 5, 6 } ) {  // forwarded for all traffic
      EXPECT_FALSE( has( 0, plain, port ) ) << port;
      EXPECT_FALSE( has( 0, core, port ) ) << port;
   }
   // Forwarded for decapsulated traffic only: the plain variant still traps it.
   EXPECT_TRUE( has( 0, plain, 7 ) );
   EXPECT_FALSE( has( 0, core, 7 ) );
   // The port-channel and the interface of an absent unit change nothing, and
   // forwarding of LLDP leaves the other traps whole.
   bcm_pbmp_t rest = FerroTcam::getPbmpEAll( *s_.sw->smData, 0 );
   for ( int port : { 5, 6, 7 } ) {
      BCM_PBMP_PORT_REMOVE( rest, port );
   }
   EXPECT_TRUE( BCM_PBMP_EQ( inPorts( 0, core ), rest ) );
   BCM_PBMP_PORT_ADD( rest, 7 );
   EXPECT_TRUE( BCM_PBMP_EQ( inPorts( 0, plain ), rest ) );
   for ( U32 entry : { h.bpduPrioRule( 0 ), h.linkLocalPtpRule( 0 ), h.microBfdPrioRule( 0 ) } ) {
      EXPECT_TRUE( BCM_PBMP_EQ( inPorts( 0, entry ), FerroTcam::getPbmpEAll( *s_.sw->smData, 0 ) ) );
   }

   // Through the chip: an LLDPDU from a forwarded port is not trapped.
   EXPECT_EQ( ingress( 0, L3Test::l2Packet( 3, 0x88CC, lldpMac, 5 ) ).cpuQueue, std::nullopt );
   EXPECT_EQ( ingress( 0, L3Test::l2Packet( 3, 0x88CC, lldpMac, 1 ) ).cpuQueue,
              HelperBase::cpuCosqLLDP_ );
   Sim::PacketFields decap = L3Test::l2Packet( 3, 0x88CC, lldpMac, 7 );
   EXPECT_EQ( ingress( 0, decap ).cpuQueue, HelperBase::cpuCosqLLDP_ );
   decap.interfaceClassVPort = 0;
   EXPECT_EQ( ingress( 0, decap ).cpuQueue, std::nullopt );
}

TEST_F( L2Forwarding, WithoutPerDeviceBitmapsThePortBitIsClearedOnItsOwnUnit ) {
   install( "espwar-wesp-protocol" );
   const Helper& h = *s_.helper;
   EXPECT_FALSE( has( 0, h.lacpPrioRule( 0 ), 3 ) );
   EXPECT_TRUE( has( 1, h.lacpPrioRule( 1 ), 3 ) );
   EXPECT_FALSE( has( 1, h.bpduPrioRule( 1 ), 4 ) );
   EXPECT_TRUE( has( 0, h.bpduPrioRule( 0 ), 4 ) );
   // LLDP is forwarded on a port-channel only: its rule keeps every port.
   EXPECT_TRUE( BCM_PBMP_EQ( inPorts( 0, h.lldpPrioRule( 0 ) ),
                             FerroTcam::getPbmpEAll( *s_.sw->smData, 0 ) ) );
   EXPECT_EQ( ingress( 0, L3Test::l2Packet( 2, 0x8809, slowMac, 3 ) ).cpuQueue, std::nullopt );
   EXPECT_EQ( ingress( 1, L3Test::l2Packet( 2, 0x8809, slowMac, 3 ) ).cpuQueue, 46u );
   // A rule whose ports forwarding narrowed keeps them through the manager's
   // refreshes; so does every L2 elevator bound by in-ports.
   const TcamEntryRecord* lacp = s_.sw->l2Manager->record( 0, h.lacpPrioRule( 0 ) );
   ASSERT_TRUE( lacp && lacp->pbmp );
   EXPECT_TRUE( lacp->pbmp->permanent );
}

// With per-device bitmaps the forwarding walk asks the tables which variant an
// entry is, so each elevator is recorded before its install; otherwise after.
class SetterTiming : public Helper {
  public:
   SetterTiming() : Helper( "setter-timing" ) {}
   void installL2ControlSystemTcamEntry( U16 unit,
                                         const FerroBoundedTcamEntryManager::Ptr& manager,
                                         int entry, const Lumo::String& name, U32 dstClassId,
                                         U32 dstClassIdMask, U32 newTc, U32 newCpuQ,
                                         Lamo::L2Pt::L2PtProtocol protocol ) override {
      bool recorded = false;
      for ( const auto& table : ruleTables() ) {
         auto it = table.second->find( unit );
         recorded = recorded || ( it != table.second->end() && it->second == U32( entry ) );
      }
      recordedBeforeInstall[ name ] = recorded;
      Helper::installL2ControlSystemTcamEntry( unit, manager, entry, name, dstClassId,
                                               dstClassIdMask, newTc, newCpuQ, protocol );
   }
   std::map<std::string, bool> recordedBeforeInstall;
};

TEST( L2SetterTiming, FollowsPerDeviceBitmapSupport ) {
   for ( const char* profile : { "default", "vxlan-core-l2" } ) {
      SCOPED_TRACE( profile );
      const Agent::SwitchConfig config = L3Test::loadProfile( profile );
      Agent::Switch::Ptr sw = Agent::bringUp( config );
      Lumo::Ptr<SetterTiming> h( new SetterTiming );
      sw->attach( *h );
      h->doInstallL2TrapRules( 0 );
      const bool perDevice = sw->chip( 0 )->attributes.l2PfDevicePbmpSupported != 0;
      ASSERT_FALSE( h->recordedBeforeInstall.empty() );
      for ( const auto& [ name, recorded ] : h->recordedBeforeInstall ) {
         // The split LLDP rules are always recorded first.
         const bool split = name.find( "Vxlan Core LLDPDU" ) != std::string::npos;
         EXPECT_EQ( recorded, perDevice || split ) << name;
      }
   }
}

TEST( L2InstallFailure, AbortsOnTheNamedAssertion ) {
   const Agent::SwitchConfig config = L3Test::loadProfile( "default" );
   Agent::Switch::Ptr sw = Agent::bringUp( config );
   Helper helper( "l2-failures" );
   sw->attach( helper );
   const std::string install =
      "virtual void FerroTcamSystemAcl::Helper::doInstallL2TrapRules(U16)";
   const std::string elevator =
      "virtual void FerroTcamSystemAcl::Helper::installL2ControlSystemTcamEntry(U16, const "
      "Ptr&, int, const String&, U32, U32, U32, U32, Lamo::L2Pt::L2PtProtocol)";
   EXPECT_DEATH(
      {
         helper.l2TcamEntryManagerIs( nullptr );
         helper.doInstallL2TrapRules( 0 );
      },
      L3Test::quoted( "Assertion `!!l2TcamEntryManager() && \"L2 TCAM manager not instantiated!\"' failed." ) );
   EXPECT_DEATH(
      {
         Sim::FieldProcessor::instance().injectFault( { "bcm_field_entry_install", {}, {}, 2, BCM_E_FULL, true } );
         helper.doInstallL2TrapRules( 0 );
      },
      L3Test::quoted( "Assertion `rc == BCM_E_NONE && \"installEntry failed\"' failed." ) );
   EXPECT_DEATH( helper.installL2ControlSystemTcamEntry(
                    0, sw->l2Manager, int( Agent::ManagerLayout::l2Base + Agent::ManagerLayout::l2Size ),
                    "outside", 1, 15, 15, 47, Lamo::L2Pt::L2PtProtocol::stp ),
                 L3Test::quoted( "Assertion `entryId == entry' failed." ) );
   EXPECT_DEATH( helper.getRequestKeyForProtocol( 4 ),
                 L3Test::quoted( "Assertion `0 && \"Invalid classId type\"' failed." ) );
   EXPECT_DEATH(
      {
         Sim::FieldProcessor::instance().injectFault( { "bcm_field_qualify_DstClassL2", {}, {}, 1, BCM_E_PARAM, true } );
         helper.doInstallL2TrapRules( 0 );
      },
      L3Test::quoted( " bcm_field_qualify_DstClassL2( unit, entry, dstClassId, dstClassIdMask ) "
                      "API ERROR:Invalid parameter (-4)" ) );
   EXPECT_TRUE( helper.getRequestKeyForProtocol( 8 ).isEq(
      FerroTcam::RequestKey( "PBMP_E_ALL for l2 ctrl group", false ) ) );
}

}  // namespace
