// The MACsec EAPoL forward rule and the link-local multicast copy-cancel,
// through the simulated chip: what an EAPoL frame or a link-local IPv6
// multicast packet gets, before and after each operation.
#include <gtest/gtest.h>

#include "L3TestSupport.h"
#include "platform/agent/HelperBase.h"
#include "platform/agent/TcamHelpers.h"

namespace {

using FerroTcamSystemAcl::Helper;
using L3Test::ingress;

Sim::FieldProcessor& chip() { return Sim::FieldProcessor::instance(); }

const Wirex::EthAddr eapolMac( 0x01, 0x80, 0xC2, 0x00, 0x00, 0x03 );
const Wirex::EthAddr nearestBridgeMac( 0x01, 0x80, 0xC2, 0x00, 0x00, 0x0E );

Sim::PacketFields eapolFrame( const Wirex::EthAddr& mac, bcm_port_t inPort = 1 ) {
   return L3Test::l2Packet( 0, 0x888E, mac, inPort );
}

// ff02::1 on a VLAN without an SVI, in both forms the chips match it.
Sim::PacketFields linkLocalMcast() {
   Sim::PacketFields p;
   p.inPort = 1;
   p.etherType = 0x86DD;
   p.ipType = Shim::FieldIpType::Ipv6;
   p.dstMac = { 0x33, 0x33, 0x00, 0x00, 0x00, 0x01 };
   p.dstIp6 = { 0xff, 0x02, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0x01 };
   p.ipProtocol = 58;
   return p;
}

class EapolRule : public testing::TestWithParam<std::string> {
  protected:
   void SetUp() override {
      config_ = L3Test::loadProfile( GetParam() );
      s_ = L3Test::installSystemAcl( config_ );
   }
   Agent::SwitchConfig config_;
   L3Test::InstalledSwitch s_;
};

TEST_P( EapolRule, InstalledDisabledThenCancelsTheCpuSendOnceEnabled ) {
   for ( const Agent::UnitSpec& spec : config_.units ) {
      const U16 unit = spec.unit;
      SCOPED_TRACE( "unit " + std::to_string( unit ) );
      const Helper& h = *s_.helper;
      const U32 entry = Agent::ManagerLayout::eapolBase;
      ASSERT_EQ( h.eapolRule( unit ), entry );
      const std::optional<Sim::EntryView> view = chip().entry( unit, int( entry ) );
      ASSERT_TRUE( view );
      EXPECT_TRUE( view->installed );
      EXPECT_FALSE( view->enabled );
      EXPECT_EQ( s_.sw->eapolManager->record( unit, entry )->ruleName, "MACsec EAPoL Forward" );
      EXPECT_FALSE( ingress( unit, eapolFrame( eapolMac ) ).switchToCpuCancel );

      ASSERT_EQ( s_.sw->eapolManager->enableEntry( unit, entry, true,
                                                   BCM_FIELD_ENTRY_ENABLE_STATUS ),
                 0 );
      const Sim::StageResult hit = ingress( unit, eapolFrame( eapolMac ) );
      EXPECT_TRUE( hit.switchToCpuCancel );
      EXPECT_EQ( hit.cpuQueue, std::nullopt );
      // Exactly 0x888E to exactly that MAC.
      Sim::PacketFields other = eapolFrame( eapolMac );
      other.etherType = 0x88CC;
      EXPECT_FALSE( ingress( unit, other ).switchToCpuCancel );
      EXPECT_FALSE( ingress( unit, eapolFrame( nearestBridgeMac ) ).switchToCpuCancel );

      // Every port but the CPU's, unless port classes bind the rule or the
      // switch qualifies no ports at all.
      if ( !s_.sw->eapolManager->supportsAclGroup() && !config_.skipInPortQualify ) {
         bcm_pbmp_t data, mask;
         ASSERT_EQ( Shim::sdk_->bcm_field_qualify_InPorts_get( unit, int( entry ), &data, &mask ), 0 );
         bcm_pbmp_t expected = FerroTcam::getPbmpAll( *s_.sw->smData, unit );
         EXPECT_TRUE( BCM_PBMP_EQ( mask, expected ) );
         BCM_PBMP_PORT_REMOVE( expected, 0 );
         EXPECT_TRUE( BCM_PBMP_EQ( data, expected ) );
         EXPECT_FALSE( ingress( unit, eapolFrame( eapolMac, 0 ) ).switchToCpuCancel );
      }
   }
}

// The MAC changes in software only; the caller's reinstall writes it.
TEST_P( EapolRule, NewDestinationMacTakesEffectOnReinstall ) {
   const U16 unit = config_.units.front().unit;
   Helper& h = *s_.helper;
   const U32 entry = h.eapolRule( unit );
   ASSERT_EQ( s_.sw->eapolManager->enableEntry( unit, entry, true, BCM_FIELD_ENTRY_ENABLE_STATUS ), 0 );
   h.updateEapolDstMac( unit, entry, nearestBridgeMac );
   EXPECT_TRUE( ingress( unit, eapolFrame( eapolMac ) ).switchToCpuCancel );
   EXPECT_FALSE( ingress( unit, eapolFrame( nearestBridgeMac ) ).switchToCpuCancel );
   ASSERT_EQ( s_.sw->eapolManager->reinstallEntry( unit, entry ), 0 );
   EXPECT_FALSE( ingress( unit, eapolFrame( eapolMac ) ).switchToCpuCancel );
   EXPECT_TRUE( ingress( unit, eapolFrame( nearestBridgeMac ) ).switchToCpuCancel );
}

TEST_P( EapolRule, LinkLocalMulticastCopyCancelSwitchesOnAndOff ) {
   const U16 unit = config_.units.front().unit;
   Helper& h = *s_.helper;
   ASSERT_TRUE( h.linkLocalMcastRuleHas( unit ) );
   const U32 entry = h.linkLocalMcastRule( unit );
   ASSERT_EQ( L3Test::hitNames( s_, unit, linkLocalMcast() ),
              std::vector<std::string>{ "Link Local Mcast V6" } );
   EXPECT_FALSE( ingress( unit, linkLocalMcast() ).switchToCpuCancel );

   h.updateCopyToCpuCancelLLMcastTcam( unit, true );
   EXPECT_TRUE( ingress( unit, linkLocalMcast() ).switchToCpuCancel );

   // Off twice: the second removal finds nothing and is ignored; the entry is
   // reinstalled both times.
   for ( int time = 0; time < 2; ++time ) {
      chip().clearJournal();
      h.updateCopyToCpuCancelLLMcastTcam( unit, false );
      EXPECT_FALSE( ingress( unit, linkLocalMcast() ).switchToCpuCancel );
      std::vector<std::string> calls;
      for ( const Sim::JournalEntry& call : chip().journal() ) {
         calls.push_back( std::string( call.function ) + " rc " + std::to_string( call.rc ) );
      }
      const std::string removeRc = time == 0 ? "0" : std::to_string( BCM_E_NOT_FOUND );
      EXPECT_EQ( calls, ( std::vector<std::string>{ "bcm_field_action_remove rc " + removeRc,
                                                    "bcm_field_entry_reinstall rc 0" } ) )
         << entry;
   }
}

INSTANTIATE_TEST_SUITE_P( Profiles, EapolRule, testing::ValuesIn( L3Test::profileNames() ),
                          []( const testing::TestParamInfo<std::string>& info ) {
                             std::string name = info.param;
                             std::replace( name.begin(), name.end(), '-', '_' );
                             return name;
                          } );

class EapolFaults : public testing::Test {
  protected:
   void SetUp() override { s_ = L3Test::installSystemAcl( L3Test::loadProfile( "default" ) ); }
   L3Test::InstalledSwitch s_;
};

// Switched on twice, the add is not preceded by a removal: the chip refuses
// the duplicate action and the checked call aborts.
TEST_F( EapolFaults, CopyCancelOnTwiceTakesTheCheckedCallFailurePath ) {
   Helper& h = *s_.helper;
   h.updateCopyToCpuCancelLLMcastTcam( 0, true );
   const std::string errorLine =
      "LinkLocalMcastCancel.cpp:[0-9]+ " +
      L3Test::quoted( "bcm_field_action_add( unit, entry, bcmFieldActionSwitchToCpuCancel, 0, 0 ) "
                      "API ERROR:" +
                      std::string( Shim::sdk_->bcm_errmsg( BCM_E_CONFIG ) ) + " (" +
                      std::to_string( BCM_E_CONFIG ) + ")" ) +
      "\n(.|\n)*" +
      L3Test::assertionIn( "virtual void FerroTcamSystemAcl::Helper::"
                           "updateCopyToCpuCancelLLMcastTcam(U16, bool)",
                           "0" );
   EXPECT_DEATH( h.updateCopyToCpuCancelLLMcastTcam( 0, true ), errorLine );
}

TEST_F( EapolFaults, UnitWithoutTheRuleMakesNoSdkCall ) {
   chip().clearJournal();
   s_.helper->updateCopyToCpuCancelLLMcastTcam( 7, true );
   s_.helper->updateCopyToCpuCancelLLMcastTcam( 7, false );
   EXPECT_TRUE( chip().journal().empty() );
}

// The installer runs once per unit: a second run would add the cancel action
// again, so these start from a switch without the rule.
TEST( EapolInstallFaults, AbortsOnTheNamedAssertions ) {
   Agent::Switch::Ptr sw = Agent::bringUp( L3Test::loadProfile( "default" ) );
   Helper h( "eapol-faults" );
   sw->attach( h );
   const std::string install = "virtual void FerroTcamSystemAcl::Helper::doInstallEapolFwdRule(U16)";
   EXPECT_DEATH(
      {
         chip().injectFault( { "bcm_field_entry_install", 0, {}, 1, BCM_E_FULL, true } );
         h.doInstallEapolFwdRule( 0 );
      },
      L3Test::assertionIn( install, "rc == BCM_E_NONE && \"installEntry failed\"" ) );
   EXPECT_DEATH(
      {
         h.macsecEapolFwdTcamEntryManagerIs( nullptr );
         h.doInstallEapolFwdRule( 0 );
      },
      L3Test::assertionIn( install, "!!macsecEapolFwdTcamEntryManager() && \"MACsec EAPoL Fwd "
                                    "TCAM manager not instantiated!\"" ) );
}

TEST_F( EapolFaults, AbortsOnTheNamedAssertions ) {
   Helper& h = *s_.helper;
   EXPECT_DEATH(
      {
         chip().injectFault( { "bcm_field_entry_reinstall", 0, {}, 1, BCM_E_FULL, true } );
         h.updateCopyToCpuCancelLLMcastTcam( 0, false );
      },
      L3Test::assertionIn(
         "virtual void FerroTcamSystemAcl::Helper::updateCopyToCpuCancelLLMcastTcam(U16, bool)",
         "rc == BCM_E_NONE && \"reinstallEntry failed\"" ) );
   EXPECT_DEATH(
      {
         chip().injectFault( { "bcm_field_qualify_DstMac", 0, {}, 1, BCM_E_PARAM, true } );
         h.updateEapolDstMac( 0, h.eapolRule( 0 ), nearestBridgeMac );
      },
      "EapolForwarding.cpp:[0-9]+ " +
         L3Test::quoted( "bcm_field_qualify_DstMac( unit, entry, eapolDMac, eapolMacMask ) "
                         "API ERROR:Invalid parameter (-4)" ) );
}

}  // namespace
