// verifyInstalledAclRules against rules changed behind its back: each change
// must end the process on the assertion that names what was checked.
#include <cstdlib>
#include <functional>
#include <regex>

#include <gtest/gtest.h>

#include "L3TestSupport.h"
#include "FerroTcamSystemAcl/LibraryGlobals.h"
#include "platform/runtime/Trace.h"

namespace {

using FerroTcamSystemAcl::Helper;

using L3Test::assertionIn;
using L3Test::quoted;
const std::string verifyFunction =
   "virtual void FerroTcamSystemAcl::Helper::verifyInstalledAclRules(U16)";

class L3Verification : public testing::Test {
  protected:
   void install( Agent::SwitchConfig config ) { s_ = L3Test::installL3( config ); }
   void SetUp() override { install( L3Test::loadProfile( "default" ) ); }
   Helper& helper() { return *s_.helper; }
   L3Test::InstalledSwitch s_;
   const U16 unit = 0;
};

struct Tamper {
   const char* what;
   std::function<void( Helper&, int unit )> change;
   std::string function;
   std::string assertion;
};

class L3VerificationTamper : public L3Verification,
                             public testing::WithParamInterface<Tamper> {};

TEST_P( L3VerificationTamper, AbortsOnTheNamedAssertion ) {
   const Tamper& t = GetParam();
   helper().verifyInstalledAclRules( unit );
   t.change( helper(), unit );
   EXPECT_DEATH( helper().verifyInstalledAclRules( unit ), assertionIn( t.function, t.assertion ) );
}

const bcm_mac_t isisL1L2 = { 0x01, 0x80, 0xc2, 0x00, 0x00, 0x14 };
const bcm_mac_t exact = { 0xff, 0xff, 0xff, 0xff, 0xff, 0xff };

void replaceQueue( int unit, int entry, uint32 queue ) {
   Shim::sdk_->bcm_field_action_remove( unit, entry, bcmFieldActionCosQCpuNew );
   Shim::sdk_->bcm_field_action_add( unit, entry, bcmFieldActionCosQCpuNew, queue, 0 );
}

INSTANTIATE_TEST_SUITE_P(
   Families, L3VerificationTamper,
   testing::Values(
      Tamper{ "IsisMask",
              []( Helper& h, int u ) {
                 Shim::sdk_->bcm_field_qualify_DstMac( u, h.isisL1L2FpPrioRule( u ), isisL1L2, exact );
              },
              verifyFunction, "wirexMask == TCAM_FIELD_ISIS_L1L2_DSTMAC_MASK" },
      Tamper{ "IsisTrafficClass",
              []( Helper& h, int u ) {
                 const int e = h.isisAllISCpuPrioRule( u );
                 Shim::sdk_->bcm_field_action_remove( u, e, bcmFieldActionPrioIntNew );
                 Shim::sdk_->bcm_field_action_add( u, e, bcmFieldActionPrioIntNew, 5, 0 );
              },
              verifyFunction, "param0 == TC_ISIS" },
      Tamper{ "BgpQueue", []( Helper& h, int u ) { replaceQueue( u, h.bgpRule( u ), 39 ); },
              verifyFunction, "param0 == cpuCosqBGP_" },
      Tamper{ "BgpSourcePortQueue",
              []( Helper& h, int u ) { replaceQueue( u, h.bgpRule( u ) + 1, 42 ); },
              verifyFunction, "param0 == cpuCosqBGP_" },
      Tamper{ "VrrpTtl",
              []( Helper& h, int u ) { Shim::sdk_->bcm_field_qualify_Ttl( u, h.vrrpRule( u ), 254, 0xff ); },
              verifyFunction, "data8 == TCAM_FIELD_VRRP_TTL_DATA" },
      Tamper{ "BfdTtlMask",
              []( Helper& h, int u ) { Shim::sdk_->bcm_field_qualify_Ttl( u, h.bfdRule( u ), 254, 0xff ); },
              verifyFunction, "mask8 == TCAM_FIELD_TTL_BFD_MASK" },
      Tamper{ "PimNullRegisterDscp",
              []( Helper& h, int u ) {
                 Shim::sdk_->bcm_field_qualify_DSCP( u, h.pimNullRegisterRule( u ), 0x80, 0xc0 );
              },
              verifyFunction, "data8 == U8( TCAM_FIELD_L3PRIOHIGHDSCP_DATA )" },
      Tamper{ "OspfIpType",
              []( Helper& h, int u ) {
                 Shim::sdk_->bcm_field_qualify_IpType( u, h.ospfRule( u ), bcmFieldIpTypeIpv4Any );
              },
              verifyFunction, "ip_type == bcmFieldIpTypeIp" },
      Tamper{ "GreIsisQueue",
              []( Helper& h, int u ) { replaceQueue( u, h.ipGreIsisRule( u ), 36 ); },
              verifyFunction, "param0 == cpuCosqOspfIsis_" },
      Tamper{ "ElevatorVlanPriority",
              []( Helper& h, int u ) {
                 Shim::sdk_->bcm_field_qualify_OuterVlanPri( u, h.l3PrioHighCosRule( u ), 6, 7 );
              },
              verifyFunction, "mask8 == TCAM_FIELD_L3PRIOHIGHCOS_OUTERVLANPRI_MASK" },
      Tamper{ "SelfIpClass",
              []( Helper& h, int u ) {
                 Shim::sdk_->bcm_field_qualify_DstClassL3( u, h.l3PrioRule( u ), 2, 1023 );
              },
              "void verifyL3NextHopQualifier(U32, U32, FerroCentral::ChipAttributes::PtrConst, "
              "FerroCommon::L3LookupClassIds)",
              "data == classId" },
      Tamper{ "GleanDrop",
              []( Helper& h, int u ) { Shim::sdk_->bcm_field_qualify_Drop( u, h.gleanRule( u ), 1, 1 ); },
              verifyFunction, "data8 == 0" },
      Tamper{ "L3McCpuOifPorts",
              []( Helper& h, int u ) {
                 bcm_pbmp_t data, mask;
                 Shim::sdk_->bcm_field_qualify_InPorts_get( u, h.l3McCpuOifRule( u ), &data, &mask );
                 BCM_PBMP_PORT_REMOVE( data, 3 );
                 Shim::sdk_->bcm_field_qualify_InPorts( u, h.l3McCpuOifRule( u ), data, mask );
              },
              verifyFunction, "BCM_PBMP_EQ( eBmpData, expDataBmp )" },
      Tamper{ "L3McCpuOifQueue",
              []( Helper& h, int u ) { replaceQueue( u, h.l3McCpuOifRule( u ), 5 ); },
              verifyFunction, "param0 == cpuCosqOther_" } ),
   []( const auto& info ) { return std::string( info.param.what ); } );

TEST_F( L3Verification, MissingRuleAbortsOnItsPresence ) {
   Helper fresh( "no-rules" );
   s_.sw->attach( fresh );
   EXPECT_DEATH( fresh.verifyInstalledAclRules( unit ),
                 assertionIn( verifyFunction, "isisL1L2FpPrioRuleHas( unit )" ) );
}

TEST_F( L3Verification, FailingReadBackTakesTheCheckedCallPath ) {
   Shim::sdk_->bcm_field_action_remove( unit, helper().pimRegisterRule( unit ), bcmFieldActionCopyToCpu );
   EXPECT_DEATH( helper().verifyInstalledAclRules( unit ),
                 quoted( " bcm_field_action_get( unit, entry, bcmFieldActionCopyToCpu, "
                         "&param0, &param1 ) API ERROR:Entry not found (-7)" ) );
}

TEST_F( L3Verification, BlockedBringupPassesWithoutReadingAnything ) {
   Agent::SwitchConfig config = L3Test::loadProfile( "default" );
   for ( auto& u : config.units ) {
      u.bringupStage = FerroCentral::BringupStage::systemAclInstalled;
   }
   install( config );
   Helper fresh( "no-rules" );
   s_.sw->attach( fresh );
   Sim::FieldProcessor::instance().clearJournal();
   fresh.verifyInstalledAclRules( unit );
   EXPECT_TRUE( Sim::FieldProcessor::instance().journal().empty() );
}

// Some chips read the STP-state mask back as the two bits they keep. On models
// 32 to 35 that is reported on trace level 0 once per rule and verification
// goes on, except for PIMV6; on any other model it is fatal.
class StpMaskReadBack : public L3Verification {
  protected:
   void SetUp() override {
      Lumo::traceSinkIs( [ this ]( const Lumo::TraceLine& line ) {
         if ( line.level == 0 ) lines_.push_back( std::string( line.function ) + ": " + line.text );
      } );
      FerroTcamSystemAcl::defaultTrace().levelIs( 0, true );
   }
   void TearDown() override {
      FerroTcamSystemAcl::defaultTrace().levelIs( 0, false );
      Lumo::traceSinkIs( nullptr );
   }
   void installNarrowStpChip( U8 model, bool ipv6Multicast ) {
      Agent::SwitchConfig config = L3Test::loadProfile( "default" );
      config.chips.front().model = model;
      config.chips.front().attributes.stpStateMaskReadBack = 0x03;
      config.chips.front().attributes.ipv6MulticastSupported = ipv6Multicast;
      install( config );
   }
   std::vector<std::string> lines_;
};

TEST_F( StpMaskReadBack, Model33PassesWithOneTraceLinePerRule ) {
   installNarrowStpChip( 33, false );
   helper().verifyInstalledAclRules( unit );
   // IS-IS x4, VRRP, PIM, OSPFv2 and v3 multicast, OSPF ESP multicast, L3MC;
   // the glean rule's mask is not looked at.
   ASSERT_EQ( lines_.size(), 10u );
   for ( const std::string& line : lines_ ) {
      EXPECT_EQ( line, "verifyInstalledAclRules: verifyInstalledAclRules ERROR: mask8 3 vs  "
                       "expected: 255" );
   }
}

TEST_F( StpMaskReadBack, Model33StillAbortsOnPimV6 ) {
   installNarrowStpChip( 33, true );
   EXPECT_DEATH( helper().verifyInstalledAclRules( unit ),
                 assertionIn( verifyFunction, "mask8 == TCAM_FIELD_INGRESS_STP_STATE_MASK" ) );
}

TEST_F( StpMaskReadBack, OtherModelsAbort ) {
   installNarrowStpChip( 31, false );
   EXPECT_DEATH( helper().verifyInstalledAclRules( unit ),
                 assertionIn( verifyFunction, "mask8 == TCAM_FIELD_INGRESS_STP_STATE_MASK" ) );
}

TEST_F( L3Verification, SimulationVmidSkipsPortBitmapsOnlyWhereThePlatformAllowsIt ) {
   Agent::SwitchConfig config = L3Test::loadProfile( "default" );
   config.mayRunAsSimulation = true;
   install( config );
   bcm_pbmp_t data, mask;
   const int entry = helper().isisL1L2FpPrioRule( unit );
   Shim::sdk_->bcm_field_qualify_InPorts_get( unit, entry, &data, &mask );
   BCM_PBMP_PORT_REMOVE( data, 7 );
   Shim::sdk_->bcm_field_qualify_InPorts( unit, entry, data, mask );

   setenv( "SIMULATION_VMID", "1", 1 );
   helper().verifyInstalledAclRules( unit );
   unsetenv( "SIMULATION_VMID" );
   EXPECT_DEATH( helper().verifyInstalledAclRules( unit ),
                 assertionIn( verifyFunction, "BCM_PBMP_EQ( eBmpData, expDataBmp )" ) );
}

}  // namespace
