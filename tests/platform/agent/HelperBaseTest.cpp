#include <any>
#include <cstring>

#include "AgentTestSupport.h"
#include "platform/agent/HelperBase.h"

using namespace AgentTest;
using FerroTcamSystemAcl::HelperBase;

namespace {

// HelperBase with every helper operation left empty: these tests look at
// what HelperBase itself keeps and answers.
class BareHelper : public HelperBase {
  public:
   using HelperBase::HelperBase;
   Lumo::TypeData typeData() const override { return { "agent_test", 0 }; }
   void doInstallMvrpRule( U16 ) override {}
   void doInstallAclRules( U16 ) override {}
   void doInstallL2TrapRules( U16 ) override {}
   void doInstallTH3SystemAclRule( U16 ) override {}
   void programSourceCpuPortDropRule( U16, U32 ) override {}
   void doInstallL2McastPTPRule( U16 ) override {}
   void doInstallL2McastPTPRuleCommon( U16 ) override {}
   void doInstallL2UnicastPTPRule( U16 ) override {}
   void doInstallL2UnicastPTPRuleCommon( U16 ) override {}
   void doInstallLinkLocalPTPRule( U16, U32, const Lumo::String& ) override {}
   void doInstallEapolFwdRule( U16 ) override {}
   void doInstallIpv4McastPTPRule( U16 ) override {}
   void doInstallIpv4McastPTPRuleCommon( U16 ) override {}
   void doInstallIpv4UnicastFwdPTPRule( U16 ) override {}
   void doInstallIpv4UnicastFwdPTPRuleCommon( U16 ) override {}
   void doInstallIpv4ElevatorPTPRule( U16 ) override {}
   void doInstallIpv4ElevatorPTPRuleCommon( U16 ) override {}
   void updateInPortForClassEntry( U32, Wirex::IntfId, bool,
                                   Lamo::L2Pt::L2PtTrafficType ) override {}
   void updateInPortForEtherType( U32, Wirex::IntfId, bool ) override {}
   void trapViaInPortForClass( U32, bool ) override {}
   void configIpv4McastPTP( U16, Ptp::PtpMode, bool ) override {}
   void configIpv4UnicastFwdPTP( U16, Ptp::PtpMode, bool ) override {}
   void configureL2McastPTP( U16, Ptp::PtpMode, bool ) override {}
   void configureL2UnicastPTP( U16, Ptp::PtpMode, bool ) override {}
   void configPTPElevatorCosq( U16, Ptp::PtpMode ) override {}
   void configPTPActions( U16, Ptp::PtpMode, bool ) override {}
   void configureCosQueueMap( U16 ) override {}
   void configureMvrpTrapToCpuAction( U16, bool ) override {}
   void updateL2ProtoFwdRule( U32, U32, Lamo::L2Pt::L2PtProtocol ) override {}
   void updateL2ProtoFwdRules() override {}
   void updateL2PfRule( U32, U32, Wirex::IntfId ) override {}
   void updateNonL2PfRule( U32, U32 ) override {}
   void updatePbmpEAllSystemAclRules( U32, Wirex::IntfId ) override {}
   void doInstallVxlanCpuPortDropRule() override {}
   void verifyInstalledAclRules( U16 ) override {}
   void verifyInstalledL2TrapRules( U16 ) override {}
   void doInstallIpFixPort( U16, bool ) override {}
   void doCollectorDbConfig() override {}
   void updateCopyPimToCpuTcam( U16, bool ) override {}
   void updateCopyToCpuCancelLLMcastTcam( U16, bool ) override {}
   bool l2ProtocolFwdSupported() const override { return false; }
   void updateEapolDstMac( U32, U32, const Wirex::EthAddr& ) override {}
   bcm_pbmp_t updateDevicePortBitmapForTcamEntry(
      U16, int, const bcm_pbmp_t& pbmp, const FerroTypes::FerroPort&,
      Lamo::L2Pt::L2PtTrafficType, Lamo::L2Pt::L2PtProtocol ) const override {
      return pbmp;
   }
   void installL2ControlSystemTcamEntry( U16, const FerroBoundedTcamEntryManager::Ptr&,
                                         int, const Lumo::String&, U32, U32, U32, U32,
                                         Lamo::L2Pt::L2PtProtocol ) override {}
   void verifyL2ControlSystemTcamEntry( U16, int, U32, U32, U32, U32,
                                        Lamo::L2Pt::L2PtProtocol ) override {}
};

class HelperBaseTest : public SwitchTest {
  protected:
   static constexpr const char* name = "FerroTcamSystemAclHelper";
   Lumo::Ptr<BareHelper> helper_ = Lumo::makePtr<BareHelper>( name );
};

}  // namespace

TEST_F( HelperBaseTest, RuleTablesKeepTheLatestEntryPerUnit ) {
   HelperBase& h = *helper_;
   EXPECT_EQ( h.bgpRule( 0 ), 0u );
   EXPECT_FALSE( h.bgpRuleHas( 0 ) );
   h.bgpRuleIs( 0, 1030 );
   h.bgpRuleIs( 0, 1031 );
   h.bgpRuleIs( 1, 1040 );
   EXPECT_EQ( h.bgpRule( 0 ), 1031u );
   EXPECT_EQ( h.bgpRule( 1 ), 1040u );
   EXPECT_EQ( h.vrrpRule( 0 ), 0u );  // the tables are distinct

   const auto tables = h.ruleTables();
   ASSERT_EQ( tables.size(), 43u );
   EXPECT_STREQ( tables.front().first, "isisL1L2FpPrioRule" );
   EXPECT_STREQ( tables.back().first, "ipv4ElevatorPtpRule" );
   for ( const auto& [ name, table ] : tables ) {
      const bool isBgp = std::strcmp( name, "bgpRule" ) == 0;
      EXPECT_EQ( table->size(), isBgp ? 2u : 0u ) << name;
   }
}

TEST_F( HelperBaseTest, ReflectsItsNameReadOnly ) {
   const struct {
      Lumo::AttributeId attribute;
      Lumo::ReflectAccess access;
      Lumo::ReflectResult expected;
   } rows[] = {
      { 1, Lumo::ReflectAccess::read, Lumo::ReflectResult::ok },
      { 1, Lumo::ReflectAccess::set, Lumo::ReflectResult::accessRefused },
      { 1, Lumo::ReflectAccess::call, Lumo::ReflectResult::accessRefused },
      { 2, Lumo::ReflectAccess::read, Lumo::ReflectResult::unknownAttribute },
      { HelperBase::firstHelperAttribute, Lumo::ReflectAccess::read,
        Lumo::ReflectResult::unknownAttribute },
   };
   for ( const auto& row : rows ) {
      SCOPED_TRACE( row.attribute );
      Lumo::ReflectIo io;
      EXPECT_EQ( helper_->inspectOperation( row.attribute, row.access, io ),
                 row.expected );
      const bool answered = row.expected == Lumo::ReflectResult::ok;
      ASSERT_EQ( io.result.has_value(), answered );
      if ( answered ) {
         EXPECT_EQ( std::any_cast<Lumo::String>( io.result ), name );
      }
   }
}

TEST_F( HelperBaseTest, AttachHandsOverTheSwitch ) {
   Agent::SwitchConfig config = Agent::defaultSwitchConfig();
   config.reducedL2TrapsB = true;
   config.tapAggregationEnabled = true;
   bringUp( config );
   sw_->attach( *helper_ );
   EXPECT_EQ( helper_->l3TcamEntryManager(), sw_->l3Manager );
   EXPECT_EQ( helper_->l2TcamEntryManager(), sw_->l2Manager );
   EXPECT_EQ( helper_->vlanTcamEntryManager(), sw_->vlanManager );
   EXPECT_EQ( helper_->macsecEapolFwdTcamEntryManager(), sw_->eapolManager );
   EXPECT_EQ( helper_->systemAclGroupManager(), sw_->groupManager );
   EXPECT_EQ( helper_->smData(), sw_->smData );
   EXPECT_EQ( helper_->hwFlowTrackingConfig(), sw_->flowTracking );
   EXPECT_EQ( helper_->l2ProtocolFwd(), sw_->l2ProtocolFwd );
   EXPECT_FALSE( helper_->reducedL2TrapsA );
   EXPECT_TRUE( helper_->reducedL2TrapsB );
   EXPECT_TRUE( helper_->tapAggregationEnabled );
}
