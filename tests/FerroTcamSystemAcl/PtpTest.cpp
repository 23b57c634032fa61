// The five PTP rules: what they catch once installed, and what a PTP mode
// change does to them, read back from the simulated chip.
#include <gtest/gtest.h>

#include "L3TestSupport.h"
#include "platform/runtime/Trace.h"

namespace {

using FerroTcamSystemAcl::Helper;
using FerroTcamSystemAcl::HelperBase;

Sim::FieldProcessor& chip() { return Sim::FieldProcessor::instance(); }

class Ptp : public testing::Test {
  protected:
   void SetUp() override { s_ = L3Test::installSystemAcl( L3Test::loadProfile( "default" ) ); }
   Helper& helper() { return *s_.helper; }
   bool enabled( U32 entry ) { return chip().entry( unit, entry )->enabled; }
   // Whether the entry's hardware copy carries `action`.
   bool hardwareHas( U32 entry, Shim::FieldAction action ) {
      const std::optional<Sim::EntryView> view = chip().entry( unit, entry );
      for ( const Sim::ActionView& a : view->hardware.actions ) {
         if ( a.action == action ) {
            return true;
         }
      }
      return false;
   }
   L3Test::InstalledSwitch s_;
   const U16 unit = 0;
};

TEST_F( Ptp, Ipv4RulesCatchIeee1588ByDestination ) {
   Sim::PacketFields ptp = L3Test::ipv4Packet( 0xE0000181, 17 );  // 224.0.1.129
   ptp.l4DstPort = 319;
   ptp.packetRes = Shim::PacketRes::Ieee1588;
   const Sim::StageResult mcast = L3Test::ingress( unit, ptp );
   EXPECT_EQ( L3Test::hitNames( s_, unit, ptp ).front(), "IPV4 MCAST PTP" );
   EXPECT_EQ( mcast.cpuQueue, HelperBase::cpuCosqPtp_ );
   EXPECT_TRUE( mcast.drop );
   ptp.dstIp = 0x0A000202;  // routed through the switch
   EXPECT_EQ( L3Test::hitNames( s_, unit, ptp ).front(), "IPV4 UNICAST FORWARD PTP" );
   EXPECT_TRUE( L3Test::ingress( unit, ptp ).switchToCpuCancel );
   ptp.packetRes = Shim::PacketRes::L3UcKnown;  // not resolved as PTP: none of them
   for ( const std::string& name : L3Test::hitNames( s_, unit, ptp ) ) {
      EXPECT_EQ( name.find( "PTP" ), std::string::npos ) << name;
   }
}

// Each row starts from the state the row before left, as mode changes do.
TEST_F( Ptp, ModesSetEnableStatesAndExtraActions ) {
   struct Row {
      int mode;
      bool flag;
   };
   const Row rows[] = { { 0, false }, { 0, false }, { 1, true }, { 1, false }, { 3, true },
                        { 0, true },  { 7, true },  { 7, false }, { 2, true }, { 3, false } };
   const U32 elevator = helper().ipv4ElevatorPtpRule( unit );
   const U32 ipv4Mcast = helper().ipv4McastPtpRule( unit );
   const U32 ipv4Fwd = helper().ipv4UnicastFwdPtpRule( unit );
   const U32 l2Mcast = helper().l2McastPtpRule( unit );
   const U32 l2Ucast = helper().l2UnicastPtpRule( unit );
   for ( const Row& row : rows ) {
      SCOPED_TRACE( "mode " + std::to_string( row.mode ) + ( row.flag ? " flag" : "" ) );
      helper().configPTPActions( unit, ::Ptp::PtpMode( row.mode ), row.flag );
      const bool on = row.mode != 0;
      const bool strong = on && row.flag;
      EXPECT_EQ( enabled( elevator ), row.mode == 1 || row.mode == 2 || row.mode == 7 );
      EXPECT_EQ( enabled( ipv4Mcast ), strong );
      EXPECT_EQ( enabled( ipv4Fwd ), strong );
      EXPECT_EQ( enabled( l2Mcast ), on );
      EXPECT_EQ( enabled( l2Ucast ), on );
      EXPECT_EQ( hardwareHas( l2Mcast, Shim::FieldAction::Drop ), strong );
      EXPECT_EQ( hardwareHas( l2Ucast, Shim::FieldAction::SwitchToCpuCancel ), strong );
      // The queue action stays whatever the mode.
      EXPECT_TRUE( hardwareHas( l2Mcast, Shim::FieldAction::CosQCpuNew ) );
      helper().verifyInstalledL2TrapRules( unit );
   }
   EXPECT_EQ( chip().failureHookCount(), 0 );
}

TEST_F( Ptp, TapAggregationChangesNothing ) {
   std::vector<std::string> lines;
   Lumo::traceSinkIs( [ & ]( const Lumo::TraceLine& l ) { lines.push_back( std::string( l.text ) ); } );
   Lumo::traceHandle( "FerroTcamSystemAclHelper" ).maskIs( 1 << 2 );
   helper().tapAggregationEnabled = true;
   chip().clearJournal();
   helper().configPTPActions( unit, ::Ptp::PtpMode( 0 ), false );
   Lumo::traceSinkIs( nullptr );
   Lumo::traceHandle( "FerroTcamSystemAclHelper" ).maskIs( 0 );
   EXPECT_TRUE( chip().journal().empty() );
   EXPECT_TRUE( enabled( helper().ipv4McastPtpRule( unit ) ) );
   EXPECT_EQ( lines, std::vector<std::string>{ "PTP Not supported modeTapAgg, returning" } );
}

TEST_F( Ptp, PlainEntryPointsAreInert ) {
   const std::vector<Sim::EntryView> before = chip().entries( unit );
   chip().clearJournal();
   helper().doInstallL2McastPTPRule( unit );
   helper().doInstallL2UnicastPTPRule( unit );
   helper().doInstallIpv4McastPTPRule( unit );
   helper().doInstallIpv4UnicastFwdPTPRule( unit );
   helper().doInstallIpv4ElevatorPTPRule( unit );
   EXPECT_TRUE( chip().journal().empty() );
   EXPECT_EQ( chip().entries( unit ).size(), before.size() );
}

// The IPv4 rules refuse to run without their recorded entry; the L2 ones go on
// with entry 0, which the chip does not have.
TEST( PtpWithoutEntries, Ipv4RulesAssertAndL2RulesProgramEntryZero ) {
   Agent::Switch::Ptr sw = Agent::bringUp( L3Test::loadProfile( "default" ) );
   Helper helper( "ptp-without-entries" );
   sw->attach( helper );
   EXPECT_DEATH( helper.doInstallIpv4McastPTPRuleCommon( 0 ),
                 L3Test::assertionIn( "virtual void FerroTcamSystemAcl::Helper::"
                                      "doInstallIpv4McastPTPRuleCommon(U16)",
                                      "entry" ) );
   EXPECT_DEATH( helper.doInstallIpv4ElevatorPTPRuleCommon( 0 ), "Assertion `entry' failed" );
   EXPECT_DEATH( helper.doInstallL2McastPTPRuleCommon( 0 ),
                 L3Test::quoted( " bcm_field_qualify_PacketRes( unit, entry, "
                                 "BCM_FIELD_PKT_RES_IEEE1588, BCM_FIELD_EXACT_MATCH_MASK ) "
                                 "API ERROR:Entry not found (-7)" ) );
}

}  // namespace
