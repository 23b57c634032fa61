#include <gtest/gtest.h>

#include "platform/agent/HelperBase.h"

using FerroTcamSystemAcl::HelperBase;

namespace {

using Mode = Ptp::PtpMode;
using Proto = Lamo::L2Pt::L2PtProtocol;
using Traffic = Lamo::L2Pt::L2PtTrafficType;

// HelperBase with every helper operation empty: what is left is HelperBase's own.
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
   void updateInPortForClassEntry( U32, Wirex::IntfId, bool, Traffic ) override {}
   void updateInPortForEtherType( U32, Wirex::IntfId, bool ) override {}
   void trapViaInPortForClass( U32, bool ) override {}
   void configIpv4McastPTP( U16, Mode, bool ) override {}
   void configIpv4UnicastFwdPTP( U16, Mode, bool ) override {}
   void configureL2McastPTP( U16, Mode, bool ) override {}
   void configureL2UnicastPTP( U16, Mode, bool ) override {}
   void configPTPElevatorCosq( U16, Mode ) override {}
   void configPTPActions( U16, Mode, bool ) override {}
   void configureCosQueueMap( U16 ) override {}
   void configureMvrpTrapToCpuAction( U16, bool ) override {}
   void updateL2ProtoFwdRule( U32, U32, Proto ) override {}
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
   bcm_pbmp_t updateDevicePortBitmapForTcamEntry( U16, int, const bcm_pbmp_t& p,
      const FerroTypes::FerroPort&, Traffic, Proto ) const override { return p; }
   void installL2ControlSystemTcamEntry( U16, const FerroBoundedTcamEntryManager::Ptr&, int,
      const Lumo::String&, U32, U32, U32, U32, Proto ) override {}
   void verifyL2ControlSystemTcamEntry( U16, int, U32, U32, U32, U32, Proto ) override {}
};

}  // namespace

// Every table, through its accessors and through ruleTables(): 0 for a unit
// without an entry, the later entry replaces the earlier, no storage shared.
TEST( HelperBaseTest, RuleTablesAnswerZeroWhenAbsentAndKeepTheLatestEntry ) {
   BareHelper helper( "helper" );
   U32 entry = 1000;
#define FERRO_TEST_TABLE( lower, Upper )                                           \
   EXPECT_EQ( helper.lower##Rule( 1 ), 0u ) << #lower;                             \
   helper.lower##RuleIs( 1, 1 );                                                   \
   helper.lower##RuleIs( 1, ++entry );                                             \
   EXPECT_EQ( helper.lower##Rule( 1 ), entry ) << #lower;                          \
   EXPECT_TRUE( helper.lower##RuleHas( 1 ) && !helper.lower##RuleHas( 0 ) ) << #lower;
   FERRO_RULE_TABLES( FERRO_TEST_TABLE )
#undef FERRO_TEST_TABLE
   const U32 last = entry;
   entry = 1000;
   for ( const auto& [ name, table ] : helper.ruleTables() ) {
      EXPECT_EQ( *table, ( FerroTcamSystemAcl::RuleTable{ { 1, ++entry } } ) ) << name;
   }
   EXPECT_EQ( entry, last );
}
