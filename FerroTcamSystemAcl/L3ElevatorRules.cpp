// The second half of doInstallAclRules: priority elevators for traffic to the
// switch's own addresses, the IPFIX trap, glean, L3 multicast with the CPU as
// an outgoing interface, MLD, link-local IPv6 multicast and the ESP/WESP
// classification. Failures are reported as doInstallAclRules'.
#include "FerroTcamSystemAcl/CheckedCall.h"
#include "FerroTcamSystemAcl/Helper.h"
#include "FerroTcamSystemAcl/L3NextHop.h"
#include "FerroTcamSystemAcl/L3RuleAddresses.h"
#include "FerroTcamSystemAcl/RequestKeys.h"
#include "FerroTcamSystemAcl/TcamFields.h"
#include "platform/agent/TcamHelpers.h"

namespace FerroTcamSystemAcl {

namespace {

constexpr U16 ipfixPort = 4739;

}  // namespace

void Helper::installL3ElevatorAndIpv6Rules( L3InstallState& state,
                                            const char* checkedCallOperation ) {
   // Trace lines of the helpers and lambdas below belong to the operation.
   const char* const checkedCallFunction = "doInstallAclRules";
   const U16 unit = state.unit;
   U32& entry = state.entry;
   const FerroCentral::ChipAttributes& attrs = *state.attributes;
   const FerroBoundedTcamEntryManager::Ptr& manager = l3TcamEntryManager();
   const FerroTcamGroupManager::Ptr& gm = systemAclGroupManager();

   // The next rule: the next entry id, bound to its name.
   auto nextRule = [ & ]( const char* name ) {
      ++entry;
      manager->getEntry( unit, entry, name, state.key );
   };
   auto selfIp = [ & ]() {
      setL3NextHopQualifier( unit, entry, state.attributes, FerroCommon::selfIpClassId_,
                             FerroCommon::selfIpNextHopTcamId_ );
   };
   // WESP is an IPv6 extension header on chips that can match one; elsewhere
   // it is matched as the IP protocol.
   auto wespMatch = [ & ]() {
      if ( attrs.extensionHeaderTypeQualifierSupported ) {
         BCM_CHECK( bcm_field_qualify_ExtensionHeaderType( unit, entry, IPPROTO_WESP, TCAM_FIELD_IPPROTO_MASK ) );
      } else {
         Ferro::setIpProtocol( unit, gm, entry, IPPROTO_WESP, 0xFF, 10, 0xF );
      }
   };
   auto espMatch = [ & ]() { Ferro::setIpProtocol( unit, gm, entry, IPPROTO_ESP, 0xFF, 7, 0xF ); };
   auto wespClass = [ & ]() {
      BCM_CHECK( bcm_field_action_add( unit, entry, bcmFieldActionEgressClassSelect, BCM_FIELD_EGRESS_CLASS_SELECT_NEW, 0 ) );
      BCM_CHECK( bcm_field_action_add( unit, entry, bcmFieldActionNewClassId, FerroCommon::ifpClassWespWar_, 0 ) );
   };
   auto espClass = [ & ]() {
      BCM_CHECK( bcm_field_action_add( unit, entry, bcmFieldActionEgressClassSelect, BCM_FIELD_EGRESS_CLASS_SELECT_NEW, 0 ) );
      BCM_CHECK( bcm_field_action_add( unit, entry, bcmFieldActionNewClassId, FerroCommon::ifpClassEspWar_, 0 ) );
   };
   auto vlanPriority67 = [ & ]() {
      BCM_CHECK( bcm_field_qualify_OuterVlanPri( unit, entry, TCAM_FIELD_L3PRIOHIGHCOS_OUTERVLANPRI_DATA, TCAM_FIELD_L3PRIOHIGHCOS_OUTERVLANPRI_MASK ) );
   };
   auto dscp48To63 = [ & ]() {
      BCM_CHECK( bcm_field_qualify_DSCP( unit, entry, TCAM_FIELD_L3PRIOHIGHDSCP_DATA, TCAM_FIELD_L3PRIOHIGHDSCP_MASK ) );
   };
   auto queueSelfIpTc6To7 = [ & ]() {
      BCM_CHECK( bcm_field_action_add( unit, entry, bcmFieldActionCosQCpuNew, cpuCosqSelfIpTc6To7_, 0 ) );
   };
   auto install = [ & ]( void ( HelperBase::*setter )( U32, U32 ) ) {
      installL3Rule( unit, entry, setter, checkedCallOperation );
   };

   // The workaround elevators come first so that ESP and WESP packets take them
   // (and their egress class) rather than the plain elevator.
   if ( attrs.espWarRequired ) {
      nextRule( "RouterL3 Vlan Priority 6,7 Elevator WESP WAR" );
      wespMatch();
      selfIp();
      vlanPriority67();
      wespClass();
      queueSelfIpTc6To7();
      install( nullptr );

      nextRule( "RouterL3 Vlan Priority 6,7 Elevator ESP WAR" );
      espMatch();
      selfIp();
      vlanPriority67();
      espClass();
      queueSelfIpTc6To7();
      install( nullptr );
   }

   nextRule( "RouterL3 Vlan Priority 6,7 Elevator" );
   selfIp();
   vlanPriority67();
   queueSelfIpTc6To7();
   install( &HelperBase::l3PrioHighCosRuleIs );

   if ( attrs.espWarRequired ) {
      nextRule( "RouterL3 DSCP 48-63 Elevator WESP WAR" );
      wespMatch();
      selfIp();
      dscp48To63();
      wespClass();
      queueSelfIpTc6To7();
      install( nullptr );

      nextRule( "RouterL3 DSCP 48-63 Elevator ESP WAR" );
      espMatch();
      selfIp();
      dscp48To63();
      espClass();
      queueSelfIpTc6To7();
      install( nullptr );
   }

   // IPFIX export arriving on the collector-facing port; it stands between the
   // DSCP workaround rules and the plain DSCP elevator on purpose.
   if ( attrs.ipfixSupported ) {
      nextRule( "Ipfix Dst Port" );
      bcm_pbmp_t ports;
      BCM_PBMP_CLEAR( ports );
      BCM_PBMP_PORT_ADD( ports, attrs.ipfixInPort );
      manager->addInPortsForEntry( unit, entry, ports, FerroTcam::getPbmpAll( *smData(), unit ) );
      BCM_CHECK( bcm_field_qualify_L3Routable( unit, entry, 1, 1 ) );
      Ferro::releaseOldAndSetL4DstPort( unit, gm, entry, ipfixPort, 0xFFFF, 14, 0xF );
      BCM_CHECK( bcm_field_action_add( unit, entry, bcmFieldActionCosQCpuNew, cpuCosqIpfix_, 0 ) );
      install( &HelperBase::ipfixRuleIs );
      ipfixPortProgrammerSmIs( hwFlowTrackingConfig(), this );
   }

   nextRule( "RouterL3 DSCP 48-63 Elevator" );
   selfIp();
   dscp48To63();
   queueSelfIpTc6To7();
   install( &HelperBase::l3PrioHighDscpRuleIs );

   // Installed after the two high-priority elevators, it takes the rest of the
   // traffic to the switch's own addresses on the lower queue.
   nextRule( "RouterL3 Priority Elevator" );
   selfIp();
   BCM_CHECK( bcm_field_action_add( unit, entry, bcmFieldActionCosQCpuNew, cpuCosqSelfIp_, 0 ) );
   install( &HelperBase::l3PrioRuleIs );

   if ( attrs.gleanViaNextHopToCpu ) {
      if ( !smData()->nextHopToCpuGleanDisabled ) {
         // Neighbour discovery towards the CPU next hop must not be taken for
         // glean: this do-nothing entry wins over the glean entry below it.
         nextRule( "ICMPv6 NextHopToCpu, Glean exclude" );
         BCM_CHECK( bcm_field_qualify_DstPort( unit, entry, FerroCommon::cpuNhInvalidModId_, FerroCommon::maskModId_, 0, 0 ) );
         Ferro::setIpProtocol( unit, gm, entry, IPPROTO_ICMPV6, 0xFF, 9, 0xF );
         install( &HelperBase::icmpv6GleanExcludeRuleIs );

         nextRule( "NextHopToCpu, Glean" );
         BCM_CHECK( bcm_field_qualify_DstPort( unit, entry, FerroCommon::cpuNhInvalidModId_, FerroCommon::maskModId_, 0, 0 ) );
         BCM_CHECK( bcm_field_action_add( unit, entry, bcmFieldActionCosQCpuNew, cpuCosqGlean_, 0 ) );
         install( &HelperBase::gleanRuleIs );
      }
   } else if ( attrs.gleanClassIdSupported ) {
      nextRule( "Glean packets to CPU" );
      setL3NextHopQualifier( unit, entry, state.attributes, FerroCommon::gleanClassId_,
                             FerroCommon::gleanNextHopTcamId_ );
      BCM_CHECK( bcm_field_qualify_IngressStpState( unit, entry, BCM_STG_STP_FORWARD, 0xff ) );
      BCM_CHECK( bcm_field_qualify_Drop( unit, entry, 0, 1 ) );
      BCM_CHECK( bcm_field_action_add( unit, entry, bcmFieldActionCosQCpuNew, cpuCosqGlean_, 0 ) );
      install( &HelperBase::gleanRuleIs );
   }

   {
      ++entry;
      manager->getEntry( unit, entry, "L3MC Cpu OIF", l3CtrlGroupKey() );
      const bcm_pbmp_t pbmpEAll = FerroTcam::getPbmpEAll( *smData(), unit );
      const bcm_pbmp_t pbmpAll = FerroTcam::getPbmpAll( *smData(), unit );
      if ( manager->supportsAclGroup() ) {
         manager->qualifyPortsClassId( unit, entry, pbmpEAll, true );
      } else {
         qualifyInPorts( unit, entry, pbmpEAll, pbmpAll, model( unit ) );
         manager->addInPortsForEntry( unit, entry, pbmpEAll, pbmpAll );
      }
      BCM_CHECK( bcm_field_qualify_DstClassL3( unit, entry, FerroCommon::classMcastCpuOif_, FerroCommon::l3LookupClassIdMax_ ) );
      BCM_CHECK( bcm_field_qualify_IngressStpState( unit, entry, BCM_STG_STP_FORWARD, TCAM_FIELD_INGRESS_STP_STATE_MASK ) );
      BCM_CHECK( bcm_field_qualify_Drop( unit, entry, TCAM_FIELD_DROP_DATA, TCAM_FIELD_DROP_MASK ) );
      BCM_CHECK( bcm_field_action_add( unit, entry, bcmFieldActionCopyToCpu, 0, 0 ) );
      if ( attrs.l3McCpuOifCosqSupported ) {
         BCM_CHECK( bcm_field_action_add( unit, entry, bcmFieldActionCosQCpuNew, cpuCosqOther_, 0 ) );
      }
      install( &HelperBase::l3McCpuOifRuleIs );
   }

   // MLD query, v1 report, done and v2 report: the ICMPv6 type sits in the
   // high byte of the L4 source-port field. The entry only marks MLD; it has
   // no action of its own.
   if ( attrs.ipv6MulticastSupported && state.ipv6Pim ) {
      nextRule( "ICMPv6 MLD Messages" );
      Ferro::releaseOldAndSetL4SrcPort( unit, gm, entry, 0x8200, 0xFFFF, 10, 0xF );
      Ferro::setL4SrcPort( unit, gm, entry, 0x8300, 0xFFFF, 10, 0xF );
      Ferro::setL4SrcPort( unit, gm, entry, 0x8400, 0xFFFF, 10, 0xF );
      Ferro::setL4SrcPort( unit, gm, entry, 0x8F00, 0xFFFF, 10, 0xF );
      Ferro::setIpProtocol( unit, gm, entry, IPPROTO_ICMPV6, 0xFF, 9, 0xF );
      install( &HelperBase::icmpV6MldRuleIs );
   }

   // Link-local IPv6 multicast on VLANs without an SVI; its copy-to-CPU
   // cancellation is switched at run time.
   {
      nextRule( "Link Local Mcast V6" );
      U32 classId = 0, classMask = 0;
      FerroTcam::getTranslatedIpClassId( *smData(), 6, 15, &classId, &classMask );
      BCM_CHECK( bcm_field_qualify_InterfaceClassL2( unit, entry, 0x0, FerroCommon::VlanClassIds::classSviConfigured_ ) );
      Ferro::setDstIPv6ClassOrDstMac( unit, gm, entry, linkLocalMcastIp6, linkLocalMcastIp6Mask,
                                      classId, classMask, ipv6McastMac, ipv6McastMacMask );
      BCM_CHECK( bcm_field_qualify_IngressStpState( unit, entry, BCM_STG_STP_FORWARD, TCAM_FIELD_INGRESS_STP_STATE_MASK ) );
      install( &HelperBase::linkLocalMcastRuleIs );
   }

   if ( attrs.espWarRequired ) {
      nextRule( "WESP Protocol Match" );
      wespMatch();
      wespClass();
      install( nullptr );

      nextRule( "ESP Protocol Match" );
      espMatch();
      espClass();
      install( nullptr );
   }
}

}  // namespace FerroTcamSystemAcl
