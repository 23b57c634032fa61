// L2 protocol forwarding and in-port trapping changed on a running switch,
// driven through the agent's events: which ports of which trap entries change,
// seen by the frames that are (no longer) trapped, and that L2 verification
// keeps passing.
#include <gtest/gtest.h>

#include "L3TestSupport.h"
#include "platform/agent/HelperBase.h"
#include "platform/agent/SystemAclEvents.h"
#include "platform/agent/TcamHelpers.h"

namespace {

using FerroTcamSystemAcl::Helper;
using FerroTcamSystemAcl::HelperBase;
using Lamo::L2Pt::L2PtProtocol;
using Lamo::L2Pt::l2PtTrafficTypeAll;
using Lamo::L2Pt::l2PtTrafficTypeVxlanDecap;

const Wirex::EthAddr lldpMac( 0x01, 0x80, 0xC2, 0x00, 0x00, 0x0E );
const Wirex::EthAddr slowMac( 0x01, 0x80, 0xC2, 0x00, 0x00, 0x02 );

Wirex::IntfId ethernet( U16 unit, U16 port ) { return Agent::Switch::ethernetIntf( unit, port ); }

class L2ForwardingUpdate : public testing::Test {
  protected:
   void install( const char* profile ) {
      s_ = L3Test::installSystemAcl( L3Test::loadProfile( profile ) );
      events_.emplace( s_.sw, *s_.helper );
   }
   Helper& h() { return *s_.helper; }
   // The CPU queue an LLDPDU from `port` gets; decapsulated: from a tunnel.
   std::optional<uint32_t> lldpQueue( U16 unit, bcm_port_t port, bool decapsulated = false ) {
      Sim::PacketFields p = L3Test::l2Packet( 3, 0x88CC, lldpMac, port );
      p.interfaceClassVPort = decapsulated ? 0 : 1;
      return L3Test::ingress( unit, p ).cpuQueue;
   }
   bool linkLocalPtpTrapped( U16 unit, bcm_port_t port ) {
      return L3Test::ingress( unit, L3Test::l2Packet( 3, 0x88F7, lldpMac, port ) ).drop;
   }
   void verifyL2() {
      for ( const FerroModule& module : s_.sw->smData->modules ) {
         h().verifyInstalledL2TrapRules( module.unit );
      }
   }
   // Every L2 entry's in-ports on the chip, to show that nothing changed.
   std::string l2InPorts() {
      std::string all;
      for ( const FerroModule& module : s_.sw->smData->modules ) {
         for ( const Sim::EntryView& e : Sim::FieldProcessor::instance().entries( module.unit ) ) {
            for ( const Sim::QualifierView& q : e.hardware.qualifiers ) {
               if ( q.name == "InPorts" ) {
                  all += std::to_string( e.id ) + ":" + std::string( q.data.begin(), q.data.end() );
               }
            }
         }
      }
      return all;
   }
   L3Test::InstalledSwitch s_;
   std::optional<Agent::SystemAclEvents> events_;
};

TEST_F( L2ForwardingUpdate, ForwardingTakesThePortOutAndRemovalPutsItBack ) {
   install( "default" );
   ASSERT_EQ( lldpQueue( 0, 10 ), HelperBase::cpuCosqLLDP_ );
   events_->l2ProtocolForwardingIs( L2PtProtocol::lldp, ethernet( 0, 10 ), l2PtTrafficTypeAll );
   EXPECT_EQ( lldpQueue( 0, 10 ), std::nullopt );
   EXPECT_EQ( lldpQueue( 0, 11 ), HelperBase::cpuCosqLLDP_ );
   EXPECT_EQ( lldpQueue( 1, 10 ), HelperBase::cpuCosqLLDP_ );  // the other unit's port 10
   EXPECT_TRUE( linkLocalPtpTrapped( 0, 10 ) );  // forwarding LLDP leaves PTP alone
   const TcamEntryRecord* record = s_.sw->l2Manager->record( 0, h().lldpPrioRule( 0 ) );
   ASSERT_TRUE( record && record->pbmp );
   EXPECT_FALSE( BCM_PBMP_MEMBER( record->pbmp->data, 10 ) );
   EXPECT_TRUE( record->pbmp->permanent );
   verifyL2();

   // A port refresh re-applies exactly the recorded bitmap.
   events_->portRemove( 0, 64 );
   events_->portAdd( 0, 64, true );
   EXPECT_EQ( lldpQueue( 0, 10 ), std::nullopt );
   EXPECT_EQ( lldpQueue( 0, 11 ), HelperBase::cpuCosqLLDP_ );
   verifyL2();

   events_->l2ProtocolForwardingDel( L2PtProtocol::lldp, ethernet( 0, 10 ) );
   EXPECT_EQ( lldpQueue( 0, 10 ), HelperBase::cpuCosqLLDP_ );
   verifyL2();

   // Each protocol its own rule: LACP forwarded on unit 1's port 3.
   events_->l2ProtocolForwardingIs( L2PtProtocol::lacp, ethernet( 1, 3 ), l2PtTrafficTypeAll );
   EXPECT_EQ( L3Test::ingress( 1, L3Test::l2Packet( 2, 0x8809, slowMac, 3 ) ).cpuQueue,
              std::nullopt );
   EXPECT_EQ( L3Test::ingress( 0, L3Test::l2Packet( 2, 0x8809, slowMac, 3 ) ).cpuQueue,
              HelperBase::cpuCosqLacp_ );
   EXPECT_EQ( lldpQueue( 1, 3 ), HelperBase::cpuCosqLLDP_ );
   verifyL2();
}

TEST_F( L2ForwardingUpdate, DecapsulatedOnlyChangesTheVxlanCoreVariant ) {
   install( "vxlan-core-l2" );
   events_->l2ProtocolForwardingIs( L2PtProtocol::lldp, ethernet( 0, 12 ), l2PtTrafficTypeVxlanDecap );
   EXPECT_EQ( lldpQueue( 0, 12, true ), std::nullopt );
   EXPECT_EQ( lldpQueue( 0, 12, false ), HelperBase::cpuCosqLLDP_ );
   // The profile's own forwarding stays: all traffic on 5, decapsulated on 7.
   EXPECT_EQ( lldpQueue( 0, 5, false ), std::nullopt );
   EXPECT_EQ( lldpQueue( 0, 7, true ), std::nullopt );
   EXPECT_EQ( lldpQueue( 0, 7, false ), HelperBase::cpuCosqLLDP_ );
   verifyL2();

   // From decapsulated-only to all traffic, then back to trapping.
   events_->l2ProtocolForwardingIs( L2PtProtocol::lldp, ethernet( 0, 12 ), l2PtTrafficTypeAll );
   EXPECT_EQ( lldpQueue( 0, 12, false ), std::nullopt );
   events_->l2ProtocolForwardingDel( L2PtProtocol::lldp, ethernet( 0, 12 ) );
   EXPECT_EQ( lldpQueue( 0, 12, true ), HelperBase::cpuCosqLLDP_ );
   EXPECT_EQ( lldpQueue( 0, 12, false ), HelperBase::cpuCosqLLDP_ );
   verifyL2();
}

// Port-channels are configured through their members; an interface of an
// absent unit has no port here.
TEST_F( L2ForwardingUpdate, InterfacesWithoutAPortOfTheUnitChangeNothing ) {
   install( "default" );
   const std::string before = l2InPorts();
   events_->l2ProtocolForwardingIs( L2PtProtocol::lldp, Wirex::IntfId::portChannel( 9 ),
                                    l2PtTrafficTypeAll );
   events_->l2ProtocolForwardingIs( L2PtProtocol::stp, ethernet( 7, 2 ), l2PtTrafficTypeAll );
   EXPECT_EQ( l2InPorts(), before );
   h().updateInPortForEtherType( 0, Wirex::IntfId::portChannel( 9 ), false );
   h().updateInPortForEtherType( 0, ethernet( 1, 4 ), false );  // unit 1's port
   EXPECT_EQ( l2InPorts(), before );
}

TEST_F( L2ForwardingUpdate, InPortTrappingByEtherTypeAndClass ) {
   install( "vxlan-core-l2" );
   h().updateInPortForEtherType( 0, ethernet( 0, 20 ), false );
   EXPECT_FALSE( linkLocalPtpTrapped( 0, 20 ) );
   EXPECT_TRUE( linkLocalPtpTrapped( 0, 21 ) );
   verifyL2();
   h().updateInPortForEtherType( 0, ethernet( 0, 20 ), true );
   EXPECT_TRUE( linkLocalPtpTrapped( 0, 20 ) );

   h().updateInPortForClassEntry( 0, ethernet( 0, 21 ), false, l2PtTrafficTypeVxlanDecap );
   EXPECT_EQ( lldpQueue( 0, 21, true ), std::nullopt );
   EXPECT_EQ( lldpQueue( 0, 21, false ), HelperBase::cpuCosqLLDP_ );
   h().updateInPortForClassEntry( 0, ethernet( 0, 21 ), false, l2PtTrafficTypeAll );
   EXPECT_EQ( lldpQueue( 0, 21, false ), std::nullopt );
   h().updateInPortForClassEntry( 0, ethernet( 0, 21 ), true, l2PtTrafficTypeAll );
   EXPECT_EQ( lldpQueue( 0, 21, true ), HelperBase::cpuCosqLLDP_ );
   EXPECT_EQ( lldpQueue( 0, 21, false ), HelperBase::cpuCosqLLDP_ );
   verifyL2();

   // Off for the LLDP class: every Ethernet port traps LLDP again, forwarding
   // or not, and the entries follow the port set; on: forwarding applies again.
   h().trapViaInPortForClass( FerroCommon::classLldp(), false );
   EXPECT_EQ( lldpQueue( 0, 5 ), HelperBase::cpuCosqLLDP_ );
   EXPECT_EQ( lldpQueue( 0, 7, true ), HelperBase::cpuCosqLLDP_ );
   const TcamEntryRecord* record = s_.sw->l2Manager->record( 0, h().lldpPrioRule( 0 ) );
   ASSERT_TRUE( record && record->pbmp );
   EXPECT_FALSE( record->pbmp->permanent );
   verifyL2();
   h().trapViaInPortForClass( FerroCommon::classLldp(), true );
   EXPECT_EQ( lldpQueue( 0, 5 ), std::nullopt );
   EXPECT_EQ( lldpQueue( 0, 7, true ), std::nullopt );
   EXPECT_EQ( lldpQueue( 0, 7, false ), HelperBase::cpuCosqLLDP_ );
   EXPECT_TRUE( record->pbmp->permanent );
   verifyL2();

   EXPECT_DEATH( h().trapViaInPortForClass( 4, true ),
                 L3Test::quoted( "Assertion `0 && \"Invalid classId type\"' failed." ) );
}

}  // namespace
