// doInstallAclRules: the L3 control-plane traps of a unit, from the IS-IS
// rules to IS-IS over GRE, then the reservation of the IPv4 PTP entries. The
// elevators, glean and IPv6 rules that follow in the same call are in
// L3ElevatorRules.cpp. Entry ids run up from the L3 control group's base; a
// lower id wins within the group, so the order below is the priority order.
#include <cstring>

#include "FerroTcamSystemAcl/CheckedCall.h"
#include "FerroTcamSystemAcl/Helper.h"
#include "FerroTcamSystemAcl/L3NextHop.h"
#include "FerroTcamSystemAcl/L3RuleAddresses.h"
#include "FerroTcamSystemAcl/LibraryGlobals.h"
#include "FerroTcamSystemAcl/RequestKeys.h"
#include "FerroTcamSystemAcl/TcamFields.h"
#include "platform/agent/TcamHelpers.h"

namespace FerroTcamSystemAcl {

namespace {

// The agent's chip type of the one family that does not trap PIM for IPv6.
constexpr U32 chipTypeWithoutIpv6Pim = 22;

}  // namespace

void Helper::installL3Rule( U16 unit, U32 entry, void ( HelperBase::*setter )( U32, U32 ),
                            const char* checkedCallOperation ) {
   const int rc = l3TcamEntryManager()->installEntry( unit, entry );
   FERRO_ASSERT( rc == BCM_E_NONE && "installEntry failed" );
   if ( setter ) {
      ( this->*setter )( unit, entry );
   }
}

void Helper::bindToEthernetPorts( U16 unit, U32 entry, bool permanent ) {
   const FerroBoundedTcamEntryManager::Ptr& manager = l3TcamEntryManager();
   if ( !manager->supportsAclGroup() ) {
      manager->addInPortsForEntry( unit, entry, FerroTcam::getPbmpEAll( *smData(), unit ),
                                   FerroTcam::getPbmpAll( *smData(), unit ) );
      if ( permanent ) {
         manager->setTcamEntryBcmPbmpPermanent( unit, entry, true );
      }
   }
}

void Helper::doInstallAclRules( U16 unit ) {
   FERRO_TRACE( 5, "Helper::" << "doInstallAclRules" << " unit:" << unit );
   const char* const operation = __PRETTY_FUNCTION__;
   const FerroBoundedTcamEntryManager::Ptr& manager = l3TcamEntryManager();
   const FerroTcamGroupManager::Ptr& gm = systemAclGroupManager();
   const FerroCentral::ChipAttributes::PtrConst attributes = chipAttributes( unit );
   const FerroCentral::ChipInfo chipInfo = smData()->chipInfo( unit );
   const FerroTcam::RequestKey key = l2CtrlGroupKey();
   const bool ipv6Pim = chipInfo.chipType != chipTypeWithoutIpv6Pim;
   U32 ipv4Class = 0, ipv4ClassMask = 0, ipv6Class = 0, ipv6ClassMask = 0;
   FerroTcam::getTranslatedIpClassId( *smData(), 4, 15, &ipv4Class, &ipv4ClassMask );
   FerroTcam::getTranslatedIpClassId( *smData(), 6, 15, &ipv6Class, &ipv6ClassMask );

   U32 entry = manager->baseEntryId();
   bcm_mac_t destAddr, destMask;

   // IS-IS from the front-panel ports is trapped with its priority raised; IS-IS
   // the CPU itself sends only gets the priority.
   struct IsisRule {
      const char* fpName;
      const char* cpuName;
      const Wirex::EthAddr* data;
      const Wirex::EthAddr* mask;
      void ( HelperBase::*fpSetter )( U32, U32 );
      void ( HelperBase::*cpuSetter )( U32, U32 );
   };
   const IsisRule isisRules[] = {
      { "ISIS IS-L1L2 Entry Fp Ports", "ISIS IS-L1L2 Entry CPU Port",
        &TCAM_FIELD_ISIS_L1L2_DSTMAC_DATA, &TCAM_FIELD_ISIS_L1L2_DSTMAC_MASK,
        &HelperBase::isisL1L2FpPrioRuleIs, &HelperBase::isisL1L2CpuPrioRuleIs },
      { "ISIS ALL-IS Entry Fp Ports", "ISIS ALL-IS Entry Cpu Ports",
        &TCAM_FIELD_ISIS_ALL_DSTMAC_DATA, &TCAM_FIELD_ISIS_ALL_DSTMAC_MASK,
        &HelperBase::isisAllISFpPrioRuleIs, &HelperBase::isisAllISCpuPrioRuleIs },
   };
   for ( const IsisRule& isis : isisRules ) {
      std::memcpy( destAddr, isis.data->bytes(), sizeof destAddr );
      std::memcpy( destMask, isis.mask->bytes(), sizeof destMask );

      manager->getEntry( unit, entry, isis.fpName, key );
      BCM_CHECK( bcm_field_qualify_Drop( unit, entry, TCAM_FIELD_DROP_DATA, TCAM_FIELD_DROP_MASK ) );
      BCM_CHECK( bcm_field_qualify_DstMac( unit, entry, destAddr, destMask ) );
      bindToEthernetPorts( unit, entry );
      BCM_CHECK( bcm_field_qualify_IngressStpState( unit, entry, BCM_STG_STP_FORWARD, TCAM_FIELD_INGRESS_STP_STATE_MASK ) );
      BCM_CHECK( bcm_field_qualify_HiGig( unit, entry, 0, 0xff ) );
      BCM_CHECK( bcm_field_qualify_InterfaceClassL2( unit, entry, FerroCommon::VlanClassIds::classSviConfigured_, FerroCommon::VlanClassIds::classSviConfigured_ ) );
      BCM_CHECK( bcm_field_action_add( unit, entry, bcmFieldActionPrioIntNew, TC_ISIS, 0 ) );
      BCM_CHECK( bcm_field_action_add( unit, entry, bcmFieldActionCosQCpuNew, cpuCosqOspfIsis_, 0 ) );
      BCM_CHECK( bcm_field_action_add( unit, entry, bcmFieldActionCopyToCpu, 0, 0 ) );
      installL3Rule( unit, entry, isis.fpSetter, operation );

      ++entry;
      manager->getEntry( unit, entry, isis.cpuName, key );
      BCM_CHECK( bcm_field_qualify_Drop( unit, entry, TCAM_FIELD_DROP_DATA, TCAM_FIELD_DROP_MASK ) );
      BCM_CHECK( bcm_field_qualify_DstMac( unit, entry, destAddr, destMask ) );
      bindToEthernetPorts( unit, entry );
      const FerroTypes::FerroPort sp = smData()->firstCpuPort();
      FERRO_ASSERT( sp != FerroTypes::FerroPort::invalid() && "Expecting cpu port at init time" );
      BCM_CHECK( bcm_field_qualify_SrcPort( unit, entry, sp.modId(), IN_PORT_FULL_MASK, sp.logicalPort(), IN_PORT_FULL_MASK ) );
      BCM_CHECK( bcm_field_qualify_IngressStpState( unit, entry, BCM_STG_STP_FORWARD, TCAM_FIELD_INGRESS_STP_STATE_MASK ) );
      BCM_CHECK( bcm_field_qualify_HiGig( unit, entry, 0, 0xff ) );
      BCM_CHECK( bcm_field_action_add( unit, entry, bcmFieldActionPrioIntNew, TC_ISIS, 0 ) );
      installL3Rule( unit, entry, isis.cpuSetter, operation );
      ++entry;
   }

   manager->getEntry( unit, entry, "Redirect packets from CPU to CPU drop queue", key );
   programSourceCpuPortDropRule( unit, entry );
   sourceCpuPortDropRuleIs( unit, entry );
   // MVRP keeps its place in the table; the rule itself is not programmed.
   mvrpRuleIs( unit, ++entry );

   ++entry;
   manager->getEntry( unit, entry, "BGP - Dst Port", key );
   setL3NextHopQualifier( unit, entry, attributes, FerroCommon::selfIpClassId_, FerroCommon::selfIpNextHopTcamId_ );
   Ferro::releaseOldAndSetL4DstPort( unit, gm, entry, BGP_PORT, 0xFFFF, 3, 15 );
   Ferro::setIpProtocol( unit, gm, entry, IPPROTO_TCP, 0xFF, 1, 15 );
   BCM_CHECK( bcm_field_action_add( unit, entry, bcmFieldActionCosQCpuNew, cpuCosqBGP_, 0 ) );
   installL3Rule( unit, entry, &HelperBase::bgpRuleIs, operation );

   // The reply direction of a session; it is not recorded in any table.
   ++entry;
   manager->getEntry( unit, entry, "BGP - Src Port", key );
   setL3NextHopQualifier( unit, entry, attributes, FerroCommon::selfIpClassId_, FerroCommon::selfIpNextHopTcamId_ );
   Ferro::releaseOldAndSetL4SrcPort( unit, gm, entry, BGP_PORT, 0xFFFF, 3, 15 );
   Ferro::setIpProtocol( unit, gm, entry, IPPROTO_TCP, 0xFF, 1, 15 );
   BCM_CHECK( bcm_field_action_add( unit, entry, bcmFieldActionCosQCpuNew, cpuCosqBGP_, 0 ) );
   installL3Rule( unit, entry, nullptr, operation );

   ++entry;
   manager->getEntry( unit, entry, "VRRP", key );
   BCM_CHECK( bcm_field_qualify_IpType( unit, entry, bcmFieldIpTypeIp ) );
   Ferro::setIpProtocol( unit, gm, entry, IPPROTO_VRRP, 0xFF, 4, 15 );
   BCM_CHECK( bcm_field_qualify_Ttl( unit, entry, TCAM_FIELD_VRRP_TTL_DATA, TCAM_FIELD_TTL_MASK ) );
   BCM_CHECK( bcm_field_qualify_IngressStpState( unit, entry, BCM_STG_STP_FORWARD, TCAM_FIELD_INGRESS_STP_STATE_MASK ) );
   BCM_CHECK( bcm_field_action_add( unit, entry, bcmFieldActionCosQCpuNew, cpuCosqVRRP_, 0 ) );
   installL3Rule( unit, entry, &HelperBase::vrrpRuleIs, operation );

   // The BFD entries are programmed whole by the BFD installer, which binds no
   // ports: BFD sessions may run on any interface, the CPU's included.
   ++entry;
   entry += programBfdControlAndEchoRules( unit, entry );

   manager->getEntry( unit, entry, "BFD Multihop", key );
   programBfdRules( unit, attributes, gm, entry, 4784, 0xFFFF, 7 );
   installL3Rule( unit, entry, &HelperBase::multihopBfdRuleIs, operation );

   ++entry;
   manager->getEntry( unit, entry, "PIM", key );
   Ferro::setDstIPv4( unit, gm, entry, TCAM_FIELD_PIM_MCASTIP_DATA, TCAM_FIELD_PIM_MCASTIP_MASK, ipv4Class, ipv4ClassMask );
   Ferro::setDstIPv6ClassOrDstMac( unit, gm, entry, anyIp6, anyIp6, ipv6Class, ipv6ClassMask,
                                   pimIpv4Mac, exactMac );
   Ferro::setIpProtocol( unit, gm, entry, IPPROTO_PIM, 0xFF, 5, 15 );
   BCM_CHECK( bcm_field_qualify_IpType( unit, entry, bcmFieldIpTypeIpv4Any ) );
   BCM_CHECK( bcm_field_qualify_IngressStpState( unit, entry, BCM_STG_STP_FORWARD, TCAM_FIELD_INGRESS_STP_STATE_MASK ) );
   // Port refreshes of the manager must keep the PIM rule on every port.
   bindToEthernetPorts( unit, entry, true );
   BCM_CHECK( bcm_field_action_add( unit, entry, bcmFieldActionCosQCpuNew, cpuCosqPIM_, 0 ) );
   installL3Rule( unit, entry, &HelperBase::pimRuleIs, operation );

   if ( ipv6Pim ) {
      ++entry;
      manager->getEntry( unit, entry, "PIMV6", key );
      Ferro::setDstIPv6ClassOrDstMac( unit, gm, entry, pimIpv6, exactIp6, ipv6Class,
                                      ipv6ClassMask, pimIpv6Mac, exactMac );
      Ferro::setIpProtocol( unit, gm, entry, IPPROTO_PIM, 0xFF, 5, 15 );
      BCM_CHECK( bcm_field_qualify_IpType( unit, entry, bcmFieldIpTypeIpv6 ) );
      BCM_CHECK( bcm_field_qualify_IngressStpState( unit, entry, BCM_STG_STP_FORWARD, TCAM_FIELD_INGRESS_STP_STATE_MASK ) );
      BCM_CHECK( bcm_field_action_add( unit, entry, bcmFieldActionCosQCpuNew, cpuCosqPIM_, 0 ) );
      installL3Rule( unit, entry, &HelperBase::pimV6RuleIs, operation );
   }

   ++entry;
   manager->getEntry( unit, entry, "PIM Null Register", key );
   setL3NextHopQualifier( unit, entry, attributes, FerroCommon::selfIpClassId_, FerroCommon::selfIpNextHopTcamId_ );
   Ferro::setIpProtocol( unit, gm, entry, IPPROTO_PIM, 0xFF, 5, 15 );
   BCM_CHECK( bcm_field_qualify_DSCP( unit, entry, TCAM_FIELD_L3PRIOHIGHDSCP_DATA, TCAM_FIELD_L3PRIOHIGHDSCP_MASK ) );
   BCM_CHECK( bcm_field_action_add( unit, entry, bcmFieldActionCosQCpuNew, cpuCosqPIM_, 0 ) );
   installL3Rule( unit, entry, &HelperBase::pimNullRegisterRuleIs, operation );

   ++entry;
   manager->getEntry( unit, entry, "PIM Register", key );
   setL3NextHopQualifier( unit, entry, attributes, FerroCommon::selfIpClassId_, FerroCommon::selfIpNextHopTcamId_ );
   Ferro::setIpProtocol( unit, gm, entry, IPPROTO_PIM, 0xFF, 5, 15 );
   BCM_CHECK( bcm_field_action_add( unit, entry, bcmFieldActionCosQCpuNew, cpuCosqL3SlowPath_, 0 ) );
   BCM_CHECK( bcm_field_action_add( unit, entry, bcmFieldActionCopyToCpu, 0, 0 ) );
   installL3Rule( unit, entry, &HelperBase::pimRegisterRuleIs, operation );

   ++entry;
   manager->getEntry( unit, entry, "OSPF - unicast", key );
   BCM_CHECK( bcm_field_qualify_IpType( unit, entry, bcmFieldIpTypeIp ) );
   setL3NextHopQualifier( unit, entry, attributes, FerroCommon::selfIpClassId_, FerroCommon::selfIpNextHopTcamId_ );
   Ferro::setIpProtocol( unit, gm, entry, IPPROTO_OSPF, 0xFF, 6, 15 );
   BCM_CHECK( bcm_field_action_add( unit, entry, bcmFieldActionCosQCpuNew, cpuCosqOspfIsis_, 0 ) );
   installL3Rule( unit, entry, &HelperBase::ospfRuleIs, operation );

   ++entry;
   manager->getEntry( unit, entry, "OSPFv2 - Multicast", key );
   Ferro::setDstIPv4( unit, gm, entry, TCAM_FIELD_OSPF_MCASTIP_DATA, TCAM_FIELD_OSPF_MCASTIP_MASK, ipv4Class, ipv4ClassMask );
   Ferro::setIpProtocol( unit, gm, entry, IPPROTO_OSPF, 0xFF, 6, 15 );
   BCM_CHECK( bcm_field_qualify_IngressStpState( unit, entry, BCM_STG_STP_FORWARD, TCAM_FIELD_INGRESS_STP_STATE_MASK ) );
   BCM_CHECK( bcm_field_action_add( unit, entry, bcmFieldActionCosQCpuNew, cpuCosqOspfIsis_, 0 ) );
   installL3Rule( unit, entry, &HelperBase::ospfMcastRuleIs, operation );

   ++entry;
   manager->getEntry( unit, entry, "OSPFv3 - Multicast", key );
   Ferro::setDstIPv6ClassOrDstMac( unit, gm, entry, ospfv3Ip6, ospfv3Ip6Mask, ipv6Class,
                                   ipv6ClassMask, ospfv3Mac, ospfv3MacMask );
   Ferro::setIpProtocol( unit, gm, entry, IPPROTO_OSPF, 0xFF, 6, 15 );
   BCM_CHECK( bcm_field_qualify_IngressStpState( unit, entry, BCM_STG_STP_FORWARD, TCAM_FIELD_INGRESS_STP_STATE_MASK ) );
   BCM_CHECK( bcm_field_action_add( unit, entry, bcmFieldActionCosQCpuNew, cpuCosqOspfIsis_, 0 ) );
   installL3Rule( unit, entry, &HelperBase::ospfV3RuleIs, operation );

   // OSPFv3 authenticated with ESP: the same groups, carried in ESP. The egress
   // class keeps the packets away from the ESP workaround of later stages.
   ++entry;
   manager->getEntry( unit, entry, "OSPF Auth ESP - Multicast", key );
   Ferro::setDstIPv6ClassOrDstMac( unit, gm, entry, ospfv3Ip6, ospfv3Ip6Mask, ipv6Class,
                                   ipv6ClassMask, ospfv3Mac, ospfv3MacMask );
   BCM_CHECK( bcm_field_qualify_IpType( unit, entry, bcmFieldIpTypeIp ) );
   Ferro::setIpProtocol( unit, gm, entry, IPPROTO_ESP, 0xFF, 7, 15 );
   BCM_CHECK( bcm_field_qualify_IngressStpState( unit, entry, BCM_STG_STP_FORWARD, TCAM_FIELD_INGRESS_STP_STATE_MASK ) );
   BCM_CHECK( bcm_field_action_add( unit, entry, bcmFieldActionCosQCpuNew, cpuCosqOspfIsis_, 0 ) );
   BCM_CHECK( bcm_field_action_add( unit, entry, bcmFieldActionEgressClassSelect, BCM_FIELD_EGRESS_CLASS_SELECT_NEW, 0 ) );
   BCM_CHECK( bcm_field_action_add( unit, entry, bcmFieldActionNewClassId, FerroCommon::ifpClassEspWar_, 0 ) );
   installL3Rule( unit, entry, &HelperBase::ospfAuthEspMcastRuleIs, operation );

   ++entry;
   manager->getEntry( unit, entry, "OSPF Auth ESP - Unicast", key );
   BCM_CHECK( bcm_field_qualify_IpType( unit, entry, bcmFieldIpTypeIp ) );
   setL3NextHopQualifier( unit, entry, attributes, FerroCommon::selfIpClassId_, FerroCommon::selfIpNextHopTcamId_ );
   Ferro::setIpProtocol( unit, gm, entry, IPPROTO_ESP, 0xFF, 7, 15 );
   BCM_CHECK( bcm_field_action_add( unit, entry, bcmFieldActionCosQCpuNew, cpuCosqOspfIsis_, 0 ) );
   BCM_CHECK( bcm_field_action_add( unit, entry, bcmFieldActionEgressClassSelect, BCM_FIELD_EGRESS_CLASS_SELECT_NEW, 0 ) );
   BCM_CHECK( bcm_field_action_add( unit, entry, bcmFieldActionNewClassId, FerroCommon::ifpClassEspWar_, 0 ) );
   installL3Rule( unit, entry, &HelperBase::ospfAuthEspUcastRuleIs, operation );

   // IS-IS tunnelled in GRE: the GRE payload type (0x00FE) sits where the L4
   // destination port would.
   ++entry;
   manager->getEntry( unit, entry, "IP packets with GRE type and ISIS protocol", key );
   setL3NextHopQualifier( unit, entry, attributes, FerroCommon::selfIpClassId_, FerroCommon::selfIpNextHopTcamId_ );
   Ferro::releaseOldAndSetL4DstPort( unit, gm, entry, 254, 0xFFFF, 4, 15 );
   Ferro::setIpProtocol( unit, gm, entry, IPPROTO_GRE, 0xFF, 3, 15 );
   BCM_CHECK( bcm_field_action_add( unit, entry, bcmFieldActionCosQCpuNew, cpuCosqOspfIsis_, 0 ) );
   installL3Rule( unit, entry, &HelperBase::ipGreIsisRuleIs, operation );

   // The IPv4 PTP rules keep these three places; they are programmed by the
   // PTP installers.
   ipv4McastPtpRuleIs( unit, ++entry );
   doInstallIpv4McastPTPRule( unit );
   ipv4UnicastFwdPtpRuleIs( unit, ++entry );
   doInstallIpv4UnicastFwdPTPRule( unit );
   ipv4ElevatorPtpRuleIs( unit, ++entry );
   doInstallIpv4ElevatorPTPRule( unit );

   L3InstallState state{ unit, entry, attributes, key, ipv6Pim };
   installL3ElevatorAndIpv6Rules( state, operation );
}

}  // namespace FerroTcamSystemAcl
