// doInstallTH3SystemAclRule: the VLAN-stage class rules of chips that classify
// control packets before any lookup. Each rule writes a destination class that
// the ingress rules match on; it traps nothing itself. Within the group a lower
// entry id wins, so where two rules overlap (OSPF to 224.0.0.5 is also in the
// IGMP link-local range) the earlier rule below decides the class.
#include "FerroTcamSystemAcl/CheckedCall.h"
#include "FerroTcamSystemAcl/Helper.h"
#include "FerroTcamSystemAcl/LibraryGlobals.h"
#include "FerroTcamSystemAcl/TcamFields.h"

namespace FerroTcamSystemAcl {

void Helper::doInstallTH3SystemAclRule( U16 unit ) {
   FERRO_TRACE( 5, "Helper::" << "doInstallTH3SystemAclRule" << " unit:" << unit );
   // Failures and trace lines of the lambdas below belong to the operation.
   const char* const checkedCallOperation = __PRETTY_FUNCTION__;
   const char* const checkedCallFunction = __func__;

   // OSPFv3 AllSPFRouters and AllDRouters (33:33:00:00:00:05 and :06) under one mask.
   const bcm_mac_t destMac = { 0x33, 0x33, 0x00, 0x00, 0x00, 0x04 };
   const bcm_mac_t destMacMask = { 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFC };
   // Every IPv4 multicast MAC: 01:00:5E with the top bit of the group cleared.
   const bcm_mac_t mcastMacBase = { 0x01, 0x00, 0x5E, 0x00, 0x00, 0x00 };
   const bcm_mac_t mcastMacMask = { 0xFF, 0xFF, 0xFF, 0x80, 0x00, 0x00 };

   const FerroBoundedTcamEntryManager::Ptr& manager = vlanTcamEntryManager();
   const FerroTcam::RequestKey key = FerroTcam::RequestKey::defaultKey();
   U32 entry = 0;

   // The id is read from the manager before every rule rather than counted
   // here: the manager is shared, and it alone knows what it has handed out.
   auto nextRule = [ & ]( const char* name ) {
      entry = manager->nextEntryId( unit );
      manager->getEntry( unit, entry, name, key );
   };
   auto install = [ & ]() {
      const int rc = manager->installEntry( unit, entry );
      FERRO_ASSERT( rc == BCM_E_NONE && "installEntry failed" );
   };
   auto kixRule = [ & ]( const char* name, bcm_l4_port_t kixPort ) {
      nextRule( name );
      BCM_CHECK( bcm_field_qualify_IpProtocol( unit, entry, IPPROTO_TCP, TCAM_FIELD_IPPROTO_MASK ) );
      BCM_CHECK( bcm_field_qualify_L4SrcPort( unit, entry, kixPort, 0xffff ) );
   };
   // The chip presents ICMPv6 type and code as the L4 source port, type in the
   // high byte: the rules match the type and any code.
   auto icmpv6Rule = [ & ]( const char* name, bcm_l4_port_t icmpData ) {
      const bcm_l4_port_t icmpMask = 0xFF00;
      nextRule( name );
      BCM_CHECK( bcm_field_qualify_IpType( unit, entry, bcmFieldIpTypeIpv6 ) );
      BCM_CHECK( bcm_field_qualify_IpProtocol( unit, entry, IPPROTO_ICMPV6, TCAM_FIELD_IPPROTO_MASK ) );
      BCM_CHECK( bcm_field_qualify_L4SrcPort( unit, entry, icmpData, icmpMask ) );
   };

   nextRule( "OSPF Multicast MAC" );
   BCM_CHECK( bcm_field_qualify_DstMac( unit, entry, destMac, destMacMask ) );
   BCM_CHECK( bcm_field_qualify_IpType( unit, entry, bcmFieldIpTypeIpv6 ) );
   BCM_CHECK( bcm_field_qualify_IpProtocol( unit, entry, IPPROTO_OSPF, TCAM_FIELD_IPPROTO_MASK ) );
   BCM_CHECK( bcm_field_action_add( unit, entry, bcmFieldActionClassDestSet, FerroCommon::classOspfMulticastMac_, 0 ) );
   install();

   nextRule( "PIM Multicast IP" );
   BCM_CHECK( bcm_field_qualify_DstIp( unit, entry, TCAM_FIELD_PIM_MCASTIP_DATA, TCAM_FIELD_PIM_MCASTIP_MASK ) );
   BCM_CHECK( bcm_field_qualify_IpProtocol( unit, entry, IPPROTO_PIM, TCAM_FIELD_IPPROTO_MASK ) );
   BCM_CHECK( bcm_field_action_add( unit, entry, bcmFieldActionClassDestSet, FerroCommon::classPimMulticastIp_, 0 ) );
   install();

   // The OSPF groups are requested under the PIM rule's name on purpose: the
   // manager keeps both entries side by side, told apart by their ids.
   nextRule( "PIM Multicast IP" );
   BCM_CHECK( bcm_field_qualify_DstIp( unit, entry, TCAM_FIELD_OSPF_MCASTIP_DATA, TCAM_FIELD_OSPF_MCASTIP_MASK ) );
   BCM_CHECK( bcm_field_qualify_IpProtocol( unit, entry, IPPROTO_OSPF, TCAM_FIELD_IPPROTO_MASK ) );
   BCM_CHECK( bcm_field_action_add( unit, entry, bcmFieldActionClassDestSet, FerroCommon::classOspfMulticastIp_, 0 ) );
   install();

   if ( !chipAttributes( unit )->igmpVlanClassRulesSuppressed ) {
      const bcm_ip_t ip = 0xE0000000;      // 224.0.0.0/24: link-local multicast
      const bcm_ip_t ipMask = 0xFFFFFF00;
      nextRule( "IGMP Flood Link Local" );
      BCM_CHECK( bcm_field_qualify_DstIp( unit, entry, ip, ipMask ) );
      BCM_CHECK( bcm_field_action_add( unit, entry, bcmFieldActionClassDestSet, FerroCommon::classIgmpFloodLLMIp_, 0 ) );
      install();

      nextRule( "IGMP Multicast MAC" );
      BCM_CHECK( bcm_field_qualify_DstMac( unit, entry, mcastMacBase, mcastMacMask ) );
      BCM_CHECK( bcm_field_action_add( unit, entry, bcmFieldActionClassDestSet, FerroCommon::classIgmpPtpIpMulticastMac_, 0 ) );
      install();
   }

   // MLAG peers talk over both TCP and UDP from the same port.
   nextRule( "MLAG L4 Source Port" );
   BCM_CHECK( bcm_field_qualify_L4SrcPort( unit, entry, MLAG_L4_PORT, 0xffff ) );
   BCM_CHECK( bcm_field_action_add( unit, entry, bcmFieldActionClassDestSet, FerroCommon::classMlagPort_, 0 ) );
   install();

   kixRule( "KIX Heartbeat L4 Source Port", KIX_HB_PORT );
   BCM_CHECK( bcm_field_action_add( unit, entry, bcmFieldActionClassDestSet, FerroCommon::classKixHBPort_, 0 ) );
   install();

   kixRule( "KIX Controller L4 Source Port", KIX_CONTROLLER_PORT );
   BCM_CHECK( bcm_field_action_add( unit, entry, bcmFieldActionClassDestSet, FerroCommon::classKixControllerAttrLogPort_, 0 ) );
   install();

   kixRule( "KIX Client L4 Source Port", KIX_CLIENT_PORT );
   BCM_CHECK( bcm_field_action_add( unit, entry, bcmFieldActionClassDestSet, FerroCommon::classKixClientAttrLogPort_, 0 ) );
   install();

   nextRule( "BGP L4 Source Port" );
   BCM_CHECK( bcm_field_qualify_IpProtocol( unit, entry, IPPROTO_TCP, TCAM_FIELD_IPPROTO_MASK ) );
   BCM_CHECK( bcm_field_qualify_L4SrcPort( unit, entry, BGP_PORT, 0xffff ) );
   BCM_CHECK( bcm_field_action_add( unit, entry, bcmFieldActionClassDestSet, FerroCommon::classBgpPort_, 0 ) );
   install();

   nextRule( "DHCPv4 Server L4 Source Port" );
   BCM_CHECK( bcm_field_qualify_IpType( unit, entry, bcmFieldIpTypeIpv4Any ) );
   BCM_CHECK( bcm_field_qualify_IpProtocol( unit, entry, IPPROTO_UDP, TCAM_FIELD_IPPROTO_MASK ) );
   BCM_CHECK( bcm_field_qualify_L4SrcPort( unit, entry, 67, 0xffff ) );
   BCM_CHECK( bcm_field_action_add( unit, entry, bcmFieldActionClassDestSet, FerroCommon::classDhcpV4ServerPort_, 0 ) );
   install();

   nextRule( "DHCPv6 Server L4 Source Port" );
   BCM_CHECK( bcm_field_qualify_IpType( unit, entry, bcmFieldIpTypeIpv6 ) );
   BCM_CHECK( bcm_field_qualify_IpProtocol( unit, entry, IPPROTO_UDP, TCAM_FIELD_IPPROTO_MASK ) );
   BCM_CHECK( bcm_field_qualify_L4SrcPort( unit, entry, 547, 0xffff ) );
   BCM_CHECK( bcm_field_action_add( unit, entry, bcmFieldActionClassDestSet, FerroCommon::classDhcpV6ServerPort_, 0 ) );
   install();

   nextRule( "DHCPv4 Client L4 Source Port" );
   BCM_CHECK( bcm_field_qualify_IpType( unit, entry, bcmFieldIpTypeIpv4Any ) );
   BCM_CHECK( bcm_field_qualify_IpProtocol( unit, entry, IPPROTO_UDP, TCAM_FIELD_IPPROTO_MASK ) );
   BCM_CHECK( bcm_field_qualify_L4SrcPort( unit, entry, 68, 0xffff ) );
   BCM_CHECK( bcm_field_action_add( unit, entry, bcmFieldActionClassDestSet, FerroCommon::classDhcpV4ClientPort_, 0 ) );
   install();

   icmpv6Rule( "ICMPv6 ND Solicit", 0x8700 );
   BCM_CHECK( bcm_field_action_add( unit, entry, bcmFieldActionClassDestSet, FerroCommon::classNeighborSolicitation_, 0 ) );
   install();

   icmpv6Rule( "ICMPv6 ND Advertisement", 0x8800 );
   BCM_CHECK( bcm_field_action_add( unit, entry, bcmFieldActionClassDestSet, FerroCommon::classNeighborAdvertisement_, 0 ) );
   install();

   struct MldRule {
      const char* name;
      bcm_l4_port_t icmpData;
   };
   const MldRule mldRules[] = {
      { "MLD Listener Query", 0x8200 },
      { "MLD V1 Report", 0x8300 },
      { "MLD Listener Done", 0x8400 },
      { "MLD V2 Report", 0x8F00 },
   };
   for ( const MldRule& mld : mldRules ) {
      icmpv6Rule( mld.name, mld.icmpData );
      BCM_CHECK( bcm_field_action_add( unit, entry, bcmFieldActionClassDestSet, FerroCommon::classMldSubTypes_, 0 ) );
      install();
   }
}

}  // namespace FerroTcamSystemAcl
