// The port refresh of the system rules: ports come and go through the agent's
// events, and the rules' in-ports follow as read back from the chip and as
// packets from the port find them.
#include <gtest/gtest.h>

#include "L3TestSupport.h"
#include "platform/agent/HelperBase.h"
#include "platform/agent/SystemAclEvents.h"
#include "platform/agent/TcamHelpers.h"

namespace {

using FerroTcamSystemAcl::Helper;
using FerroTcamSystemAcl::HelperBase;

Sim::FieldProcessor& chip() { return Sim::FieldProcessor::instance(); }

const Wirex::EthAddr stpMac( 0x01, 0x80, 0xC2, 0x00, 0x00, 0x00 );

struct InPorts {
   bcm_pbmp_t data{}, mask{};
};
InPorts inPortsOf( U16 unit, U32 entry ) {
   InPorts p;
   EXPECT_EQ( Shim::sdk_->bcm_field_qualify_InPorts_get( unit, int( entry ), &p.data, &p.mask ), 0 );
   return p;
}

Sim::PacketFields isisFrom( bcm_port_t port ) {
   Sim::PacketFields isis;
   isis.inPort = port;
   isis.dstMac = { 0x01, 0x80, 0xc2, 0x00, 0x00, 0x14 };
   isis.interfaceClassL2 = FerroCommon::VlanClassIds::classSviConfigured_;
   return isis;
}

class PortRefresh : public testing::Test {
  protected:
   void install( const char* profile ) {
      s_ = L3Test::installSystemAcl( L3Test::loadProfile( profile ) );
      events_.emplace( s_.sw, *s_.helper );
   }
   const Helper& h() const { return *s_.helper; }
   // The rules the refresh binds to every Ethernet port, and those that get
   // their recorded bitmap back.
   std::vector<U32> nonL2Pf( U16 unit ) const {
      return { h().microBfdPrioRule( unit ), h().isisL1L2FpPrioRule( unit ),
               h().isisAllISFpPrioRule( unit ), h().pimRule( unit ), h().l3McCpuOifRule( unit ) };
   }
   std::vector<U32> l2Pf( U16 unit ) const {
      std::vector<U32> rules = { h().eapolRule( unit ), h().bpduPrioRule( unit ),
                                 h().lacpPrioRule( unit ), h().linkLocalPtpRule( unit ),
                                 h().lldpPrioRule( unit ), h().vxlanCoreLldpPrioRule( unit ) };
      rules.erase( std::remove( rules.begin(), rules.end(), 0u ), rules.end() );
      return rules;
   }
   bool has( U16 unit, U32 entry, int port ) const {
      return BCM_PBMP_MEMBER( inPortsOf( unit, entry ).data, port );
   }
   void expectNonL2PfOnEveryEthernetPort( U16 unit ) const {
      for ( U32 entry : nonL2Pf( unit ) ) {
         const InPorts p = inPortsOf( unit, entry );
         EXPECT_TRUE( BCM_PBMP_EQ( p.data, FerroTcam::getPbmpEAll( *s_.sw->smData, unit ) ) ) << entry;
         EXPECT_TRUE( BCM_PBMP_EQ( p.mask, Shim::sdk_->portBitmapAll( unit ) ) ) << entry;
      }
   }
   L3Test::InstalledSwitch s_;
   std::optional<Agent::SystemAclEvents> events_;
};

// A Mesa fabric port going away takes its port out of every rule; coming
// back, the rules bound to all Ethernet ports take it again while the
// forwarding rules keep the bitmap recorded for them, which no longer has it.
// A port that is not of the fabric leaves the forwarding rules untouched.
TEST_F( PortRefresh, PortChangesRebindTheRulesAsRecorded ) {
   install( "default" );
   const U16 unit = 0;
   const int port = 64;
   const Wirex::IntfId intf = Agent::Switch::ethernetIntf( unit, port );
   auto verifyL2 = [ & ] { s_.helper->verifyInstalledL2TrapRules( unit ); };
   auto isisQueue = [ & ] { return L3Test::ingress( unit, isisFrom( port ) ).cpuQueue; };
   auto bpduQueue = [ & ] {
      return L3Test::ingress( unit, L3Test::l2Packet( 1, 0x0026, stpMac, port ) ).cpuQueue;
   };
   ASSERT_EQ( isisQueue(), HelperBase::cpuCosqOspfIsis_ );

   // Not a fabric interface: only the all-port rules follow.
   EXPECT_EQ( events_->portRemove( unit, port ), intf );
   expectNonL2PfOnEveryEthernetPort( unit );
   EXPECT_FALSE( has( unit, h().isisL1L2FpPrioRule( unit ), port ) );
   for ( U32 entry : l2Pf( unit ) ) {
      EXPECT_TRUE( has( unit, entry, port ) ) << entry;
   }
   EXPECT_EQ( isisQueue(), std::nullopt );  // the port is gone
   verifyL2();

   // Back as a fabric interface: the forwarding rules get their recorded
   // bitmaps, which still have the port.
   EXPECT_EQ( events_->portAdd( unit, port, true ), intf );
   expectNonL2PfOnEveryEthernetPort( unit );
   EXPECT_TRUE( has( unit, h().pimRule( unit ), port ) );
   EXPECT_TRUE( has( unit, h().l3McCpuOifRule( unit ), port ) );
   EXPECT_EQ( isisQueue(), HelperBase::cpuCosqOspfIsis_ );
   EXPECT_EQ( bpduQueue(), HelperBase::cpuCosqBpdu_ );
   verifyL2();

   // The fabric interface goes: every rule lets its port go.
   events_->portRemove( unit, port );
   EXPECT_EQ( s_.sw->smData->mesaFabricIntfToPort.count( intf ), 0u );
   for ( U32 entry : l2Pf( unit ) ) {
      EXPECT_FALSE( has( unit, entry, port ) ) << entry;
   }
   verifyL2();

   // And comes back: the recorded bitmaps, limited to the ports the unit had,
   // no longer have it; the all-port rules do.
   events_->portAdd( unit, port, true );
   for ( U32 entry : l2Pf( unit ) ) {
      EXPECT_FALSE( has( unit, entry, port ) ) << entry;
   }
   expectNonL2PfOnEveryEthernetPort( unit );
   EXPECT_EQ( isisQueue(), HelperBase::cpuCosqOspfIsis_ );
   EXPECT_EQ( bpduQueue(), std::nullopt );
   verifyL2();
}

TEST_F( PortRefresh, RecordedBitmapIsLimitedToValidPortsAndLeftAsItWas ) {
   install( "default" );
   const U32 bpdu = h().bpduPrioRule( 1 );
   ASSERT_EQ( chip().portValidIs( 1, 9, false ), 0 );
   bcm_pbmp_t expected = s_.sw->l2Manager->tcamEntryBcmPbmp( 1, bpdu );
   ASSERT_TRUE( BCM_PBMP_MEMBER( expected, 9 ) );
   BCM_PBMP_PORT_REMOVE( expected, 9 );
   EXPECT_TRUE( BCM_PBMP_EQ( s_.helper->getPbmpForL2ProfileRule( 1, bpdu ), expected ) );
   EXPECT_TRUE( BCM_PBMP_MEMBER( s_.sw->l2Manager->tcamEntryBcmPbmp( 1, bpdu ), 9 ) );
}

TEST_F( PortRefresh, UnitWithoutRecordedRulesMakesNoSdkCall ) {
   Agent::Switch::Ptr sw = Agent::bringUp( L3Test::loadProfile( "default" ) );
   Helper helper( "no-rules" );
   sw->attach( helper );
   const Wirex::IntfId intf = Agent::Switch::ethernetIntf( 0, 3 );
   sw->smData->mesaFabricIntfToPort[ intf ] = FerroTcam::intfToPort( *sw->smData, intf );
   chip().clearJournal();
   helper.updatePbmpEAllSystemAclRules( 0, intf );
   EXPECT_TRUE( chip().journal().empty() );
}

TEST_F( PortRefresh, AclGroupManagersAbortOnTheFirstRecordedRule ) {
   install( "nexthop-glean-aclgroup" );
   EXPECT_DEATH( events_->portRemove( 0, 5 ),
                 L3Test::assertionIn( "virtual void FerroTcamSystemAcl::Helper::updateL2PfRule(U32, "
                                      "U32, Wirex::IntfId)",
                                      "!entryManager->supportsAclGroup() && \"MESA is not "
                                      "supported on chips that support aclGroup\"" ) );
}

TEST_F( PortRefresh, AbortsOnTheNamedAssertions ) {
   install( "default" );
   Helper& helper = *s_.helper;
   const std::string nonL2Pf =
      "virtual void FerroTcamSystemAcl::Helper::updateNonL2PfRule(U32, U32)";
   const std::string pbmp =
      "bcm_pbmp_t FerroTcamSystemAcl::Helper::getPbmpForL2ProfileRule(U32, U32)";
   EXPECT_DEATH( helper.updateNonL2PfRule( 0, 77777 ),
                 L3Test::assertionIn( nonL2Pf, "!!entryManager && \"Not able to identify the "
                                               "entryManager for the entry\"" ) );
   EXPECT_DEATH( helper.getPbmpForL2ProfileRule( 5, helper.bpduPrioRule( 0 ) ),
                 L3Test::assertionIn( pbmp, "!!entries" ) );
   // The BFD entries bind no ports: no bitmap is recorded for them.
   EXPECT_DEATH( helper.getPbmpForL2ProfileRule( 0, helper.bfdRule( 0 ) ),
                 L3Test::assertionIn( pbmp, "entries->tcamEntryBcmPbmp( entry )" ) );
   EXPECT_DEATH(
      {
         chip().injectFault( { "bcm_field_entry_reinstall", 0, {}, 1, BCM_E_FULL, true } );
         helper.updateNonL2PfRule( 0, helper.pimRule( 0 ) );
      },
      L3Test::assertionIn( nonL2Pf, "rc == BCM_E_NONE && \"installEntry failed\"" ) );
   EXPECT_DEATH(
      {
         chip().injectFault( { "bcm_field_qualify_InPorts", 0, {}, 1, BCM_E_PORT, true } );
         helper.updateNonL2PfRule( 0, helper.pimRule( 0 ) );
      },
      "PortBitmapRefresh.cpp:[0-9]+ " +
         L3Test::quoted( "bcm_field_qualify_InPorts( unit, entry, pbmp, mask ) API ERROR:" +
                         std::string( Shim::sdk_->bcm_errmsg( BCM_E_PORT ) ) + " (" +
                         std::to_string( BCM_E_PORT ) + ")" ) );
}

TEST_F( PortRefresh, AgentRefusesImpossiblePortChanges ) {
   install( "default" );
   EXPECT_THROW( events_->portAdd( 0, 5, false ), std::invalid_argument );   // present
   EXPECT_THROW( events_->portRemove( 0, 65 ), std::invalid_argument );     // beyond the chip
   EXPECT_THROW( events_->portRemove( 0, 0 ), std::invalid_argument );      // the CPU
   EXPECT_THROW( events_->portRemove( 4, 1 ), std::invalid_argument );      // no such unit
   events_->portRemove( 0, 5 );
   EXPECT_THROW( events_->portRemove( 0, 5 ), std::invalid_argument );      // absent
}

}  // namespace
