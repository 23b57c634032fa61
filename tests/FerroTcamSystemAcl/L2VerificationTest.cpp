// verifyInstalledL2TrapRules: passes on what the installers and the PTP mode
// changes left, and ends the process on the assertion that names what was
// checked when a rule is changed behind its back.
#include <cstdlib>
#include <functional>

#include <gtest/gtest.h>

#include "L3TestSupport.h"

namespace {

using FerroTcamSystemAcl::Helper;
using L3Test::assertionIn;
using L3Test::quoted;

const std::string verifyFunction =
   "virtual void FerroTcamSystemAcl::Helper::verifyInstalledL2TrapRules(U16)";
const std::string entryFunction =
   "virtual void FerroTcamSystemAcl::Helper::verifyL2ControlSystemTcamEntry(U16, int, U32, "
   "U32, U32, U32, Lamo::L2Pt::L2PtProtocol)";

class L2VerificationPasses : public testing::TestWithParam<std::string> {};

TEST_P( L2VerificationPasses, AfterInstallAndEveryPtpMode ) {
   const Agent::SwitchConfig config = L3Test::loadProfile( GetParam() );
   L3Test::InstalledSwitch s = L3Test::installSystemAcl( config );
   const bool reduced = config.reducedL2TrapsA || config.reducedL2TrapsB;
   for ( const Agent::UnitSpec& unit : config.units ) {
      s.helper->verifyInstalledL2TrapRules( unit.unit );
      if ( reduced ) {
         continue;  // no L2 PTP entries to configure
      }
      for ( int mode : { 1, 0, 7 } ) {
         s.helper->configPTPActions( unit.unit, Ptp::PtpMode( mode ), mode == 1 );
         s.helper->verifyInstalledL2TrapRules( unit.unit );
         s.helper->verifyInstalledAclRules( unit.unit );
      }
   }
   EXPECT_EQ( Sim::FieldProcessor::instance().failureHookCount(), 0 );
}

INSTANTIATE_TEST_SUITE_P( Profiles, L2VerificationPasses,
                          testing::ValuesIn( L3Test::profileNames() ),
                          []( const auto& info ) {
                             std::string name = info.param;
                             std::replace( name.begin(), name.end(), '-', '_' );
                             return name;
                          } );

struct Tamper {
   const char* what;
   const char* profile;
   std::function<void( Helper&, int unit )> change;
   std::string function;
   std::string assertion;  // a glibc assertion, or the SDK error line when function is ""
};

void replaceAction( int unit, U32 entry, bcm_field_action_t action, uint32 value ) {
   Shim::sdk_->bcm_field_action_remove( unit, entry, action );
   Shim::sdk_->bcm_field_action_add( unit, entry, action, value, 0 );
}

void dropPort( int unit, U32 entry, int port ) {
   bcm_pbmp_t data, mask;
   Shim::sdk_->bcm_field_qualify_InPorts_get( unit, entry, &data, &mask );
   BCM_PBMP_PORT_REMOVE( data, port );
   Shim::sdk_->bcm_field_qualify_InPorts( unit, entry, data, mask );
}

class L2VerificationTamper : public testing::TestWithParam<Tamper> {};

TEST_P( L2VerificationTamper, AbortsOnTheNamedAssertion ) {
   const Tamper& t = GetParam();
   L3Test::InstalledSwitch s = L3Test::installSystemAcl( L3Test::loadProfile( t.profile ) );
   const int unit = 0;
   s.helper->verifyInstalledL2TrapRules( unit );
   t.change( *s.helper, unit );
   EXPECT_DEATH( s.helper->verifyInstalledL2TrapRules( unit ),
                 t.function.empty() ? quoted( t.assertion )
                                    : assertionIn( t.function, t.assertion ) );
}

const Tamper tampers[] = {
   { "BpduQueue", "default",
     []( Helper& h, int u ) { replaceAction( u, h.bpduPrioRule( u ), bcmFieldActionCosQCpuNew, 5 ); },
     entryFunction, "param0 == newCpuQ" },
   { "LldpTrafficClass", "default",
     []( Helper& h, int u ) { replaceAction( u, h.lldpPrioRule( u ), bcmFieldActionPrioIntNew, 3 ); },
     entryFunction, "param0 == newTc" },
   { "MicroBfdClass", "default",
     []( Helper& h, int u ) {
        Shim::sdk_->bcm_field_qualify_DstClassL2( u, h.microBfdPrioRule( u ), 9, 15 );
     },
     entryFunction, "data32 == dstClassId" },
   { "LacpPorts", "default",
     []( Helper& h, int u ) { dropPort( u, h.lacpPrioRule( u ), 9 ); },
     entryFunction, "BCM_PBMP_EQ( dataPbmp, expDataBmp )" },
   { "ForwardedPortBackInLldp", "vxlan-core-l2",
     []( Helper& h, int u ) {
        bcm_pbmp_t data, mask;
        Shim::sdk_->bcm_field_qualify_InPorts_get( u, h.lldpPrioRule( u ), &data, &mask );
        BCM_PBMP_PORT_ADD( data, 5 );
        Shim::sdk_->bcm_field_qualify_InPorts( u, h.lldpPrioRule( u ), data, mask );
     },
     entryFunction, "BCM_PBMP_EQ( dataPbmp, expDataBmp )" },
   { "VxlanCoreLldpInterfaceClass", "vxlan-core-l2",
     []( Helper& h, int u ) {
        Shim::sdk_->bcm_field_qualify_InterfaceClassVPort( u, h.vxlanCoreLldpPrioRule( u ), 1, 1 );
     },
     verifyFunction, "data32 == expected" },
   { "LinkLocalPtpMac", "default",
     []( Helper& h, int u ) {
        const bcm_mac_t mac = { 0x01, 0x80, 0xC2, 0x00, 0x00, 0x0F }, mask = { 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF };
        Shim::sdk_->bcm_field_qualify_DstMac( u, h.linkLocalPtpRule( u ), mac, mask );
     },
     verifyFunction, "mac == Wirex::EthAddr( 0x01, 0x80, 0xC2, 0x00, 0x00, 0x0E )" },
   { "LinkLocalPtpDropRemoved", "default",
     []( Helper& h, int u ) {
        Shim::sdk_->bcm_field_action_remove( u, h.linkLocalPtpRule( u ), bcmFieldActionDrop );
     },
     "", " bcm_field_action_get( unit, entry, bcmFieldActionDrop, &param0, &param1 ) API ERROR:Entry not found (-7)" },
   { "L2McastPtpMask", "default",
     []( Helper& h, int u ) {
        const bcm_mac_t mac = { 0x01, 0, 0, 0, 0, 0 }, mask = { 0x01, 0, 0, 0, 0, 0 };
        Shim::sdk_->bcm_field_qualify_DstMac( u, h.l2McastPtpRule( u ), mac, mask );
     },
     verifyFunction, "macMask == Wirex::EthAddr( 0xFF, 0, 0, 0, 0, 0 )" },
   { "BpduPortClass", "nexthop-glean-aclgroup",
     []( Helper& h, int u ) {
        Shim::sdk_->bcm_field_qualify_InterfaceClassPort( u, h.bpduPrioRule( u ), 0x80, 0x80 );
     },
     entryFunction, "data32 == *record->portClassId" },
};

INSTANTIATE_TEST_SUITE_P( Rules, L2VerificationTamper, testing::ValuesIn( tampers ),
                          []( const auto& info ) { return std::string( info.param.what ); } );

TEST( L2VerificationSkips, UnrecordedRulesAbortAndSimulationBitmapsAreNotCompared ) {
   Agent::SwitchConfig config = L3Test::loadProfile( "default" );
   config.mayRunAsSimulation = true;
   L3Test::InstalledSwitch s = L3Test::installSystemAcl( config );
   dropPort( 0, s.helper->bpduPrioRule( 0 ), 9 );
   ::setenv( "SIMULATION_VMID", "7", 1 );
   s.helper->verifyInstalledL2TrapRules( 0 );
   ::unsetenv( "SIMULATION_VMID" );
   EXPECT_DEATH( s.helper->verifyInstalledL2TrapRules( 0 ),
                 assertionIn( entryFunction, "BCM_PBMP_EQ( dataPbmp, expDataBmp )" ) );
   // Not-to-verify flags and an early bring-up stage check nothing.
   s.helper->aclVerificationDisabled = true;
   s.helper->verifyInstalledL2TrapRules( 0 );

   Helper fresh( "nothing-installed" );
   s.sw->attach( fresh );
   EXPECT_DEATH( fresh.verifyInstalledL2TrapRules( 0 ),
                 assertionIn( verifyFunction, "bpduPrioRuleHas( unit )" ) );
}

}  // namespace
