// verifyInstalledAclRules: reads every recorded L3 rule of a unit back from the
// chip and aborts on the first difference. The one tolerated difference is the
// STP-state mask on chip models 32 to 35, which read it back narrower than it
// was written.
#include <cstdlib>

#include "FerroTcamSystemAcl/CheckedCall.h"
#include "FerroTcamSystemAcl/Helper.h"
#include "FerroTcamSystemAcl/L3NextHop.h"
#include "FerroTcamSystemAcl/LibraryGlobals.h"
#include "FerroTcamSystemAcl/TcamFields.h"
#include "FerroTcamSystemAcl/VerifyActions.h"
#include "platform/agent/TcamHelpers.h"

namespace FerroTcamSystemAcl {

namespace {

bool looseStpMaskModel( U8 model ) { return model >= 32 && model <= 35; }

}  // namespace

void Helper::verifyInstalledAclRules( U16 unit ) {
   // The checks below run partly in lambdas; their failures and trace lines
   // belong to this operation.
   const char* const checkedCallOperation = __PRETTY_FUNCTION__;
   const char* const checkedCallFunction = __func__;
   const FerroCentral::ChipInfo chipInfo = smData()->chipInfo( unit );
   const U8 chipModel = model( unit );
   FERRO_TRACE( 5, "Helper::" << "verifyInstalledAclRules" << " unit:" << unit );
   if ( verificationSkipped( chipInfo ) ) {
      return;
   }
   const FerroCentral::ChipAttributes::PtrConst attributes = chipAttributes( unit );
   const FerroBoundedTcamEntryManager::Ptr& manager = l3TcamEntryManager();
   U32 entry = 0;
   uint8 data8 = 0, mask8 = 0;

   auto verifyDrop = [ & ]() {
      BCM_CHECK( bcm_field_qualify_Drop_get( unit, entry, &data8, &mask8 ) );
      FERRO_ASSERT( data8 == TCAM_FIELD_DROP_DATA );
      FERRO_ASSERT( mask8 == TCAM_FIELD_DROP_MASK );
   };
   auto verifyStp = [ & ]( bool strictMask ) {
      BCM_CHECK( bcm_field_qualify_IngressStpState_get( unit, entry, &data8, &mask8 ) );
      FERRO_ASSERT( data8 == BCM_STG_STP_FORWARD );
      if ( !strictMask && looseStpMaskModel( chipModel ) ) {
         if ( mask8 != TCAM_FIELD_INGRESS_STP_STATE_MASK ) {
            FERRO_TRACE( 0, "verifyInstalledAclRules" << " ERROR: mask8 " << unsigned( mask8 )
                                                      << " vs " << " expected: " << 255 );
         }
         return;
      }
      FERRO_ASSERT( mask8 == TCAM_FIELD_INGRESS_STP_STATE_MASK );
   };
   auto verifyNextHop = [ & ]() {
      verifyL3NextHopQualifier( unit, entry, attributes, FerroCommon::selfIpClassId_ );
   };
   // What the installer bound the rule to: all Ethernet ports, unless port
   // classes bind it instead.
   bcm_pbmp_t expDataBmp, expMaskBmp;
   BCM_PBMP_CLEAR( expDataBmp );
   BCM_PBMP_CLEAR( expMaskBmp );
   if ( !manager->supportsAclGroup() ) {
      expDataBmp = FerroTcam::getPbmpEAll( *smData(), unit );
      expMaskBmp = FerroTcam::getPbmpAll( *smData(), unit );
   }
   bcm_pbmp_t dataPbmp, maskPbmp;
   auto readInPorts = [ & ]() {
      const U32 tcamEntryId = manager->getHardwareEntryId( unit, entry, 0, 0 );
      BCM_CHECK( bcm_field_qualify_InPorts_get( unit, tcamEntryId, &dataPbmp, &maskPbmp ) );
   };
   bcm_mac_t destAddr, destMask;
   auto readDstMac = [ & ]() {
      BCM_CHECK( bcm_field_qualify_DstMac_get( unit, entry, &destAddr, &destMask ) );
   };
   auto verifyCpuSource = [ & ]() {
      bcm_module_t modid = 0, mod_mask = 0;
      bcm_port_t port = -1, port_mask = 0;
      BCM_CHECK( bcm_field_qualify_SrcPort_get( unit, entry, &modid, &mod_mask, &port, &port_mask ) );
      FERRO_ASSERT( port == CPU_IN_PORT_NUM );
      FERRO_ASSERT( port_mask == CPU_IN_PORT_MASK );
   };

   FERRO_TRACE( 6, "Helper::Checking ISIS rules" );
   for ( const bool allIs : { false, true } ) {
      FERRO_TRACE( 6, ( allIs ? "Helper::Checking ISIS ALL-IS" : "Helper::Checking ISIS IS-L1L2" ) );
      if ( allIs ) {
         FERRO_ASSERT( isisAllISFpPrioRuleHas( unit ) );
         entry = isisAllISFpPrioRule( unit );
      } else {
         FERRO_ASSERT( isisL1L2FpPrioRuleHas( unit ) );
         entry = isisL1L2FpPrioRule( unit );
      }
      auto verifyIsisDstMac = [ & ]() {
         readDstMac();
         const Wirex::EthAddr wirexAddr( destAddr[ 0 ], destAddr[ 1 ], destAddr[ 2 ],
                                         destAddr[ 3 ], destAddr[ 4 ], destAddr[ 5 ] );
         const Wirex::EthAddr wirexMask( destMask[ 0 ], destMask[ 1 ], destMask[ 2 ],
                                         destMask[ 3 ], destMask[ 4 ], destMask[ 5 ] );
         if ( allIs ) {
            FERRO_ASSERT( wirexAddr == TCAM_FIELD_ISIS_ALL_DSTMAC_DATA );
            FERRO_ASSERT( wirexMask == TCAM_FIELD_ISIS_ALL_DSTMAC_MASK );
         } else {
            FERRO_ASSERT( wirexAddr == TCAM_FIELD_ISIS_L1L2_DSTMAC_DATA );
            FERRO_ASSERT( wirexMask == TCAM_FIELD_ISIS_L1L2_DSTMAC_MASK );
         }
      };
      verifyDrop();
      verifyIsisDstMac();
      if ( comparePortBitmaps() ) {
         readInPorts();
         const bcm_pbmp_t eBmpData = dataPbmp, eBmpMask = maskPbmp;
         FERRO_ASSERT( BCM_PBMP_EQ( eBmpData, expDataBmp ) );
         FERRO_ASSERT( BCM_PBMP_EQ( eBmpMask, expMaskBmp ) );
      }
      verifyStp( false );
      VERIFY_CPU_QUEUE( cpuCosqOspfIsis_ );
      VERIFY_TC( TC_ISIS );

      if ( allIs ) {
         FERRO_TRACE( 6, "Helper::Checking ISIS ALL-IS for Cpu Port" );
         FERRO_ASSERT( isisAllISCpuPrioRuleHas( unit ) );
         entry = isisAllISCpuPrioRule( unit );
      } else {
         FERRO_TRACE( 6, "Helper::Checking ISIS IS-L1L2 for Cpu Ports" );
         FERRO_ASSERT( isisL1L2CpuPrioRuleHas( unit ) );
         entry = isisL1L2CpuPrioRule( unit );
      }
      verifyDrop();
      verifyIsisDstMac();
      verifyCpuSource();
      if ( comparePortBitmaps() ) {
         readInPorts();
         const bcm_pbmp_t cpuBmpData = dataPbmp, cpuBmpMask = maskPbmp;
         FERRO_ASSERT( BCM_PBMP_EQ( cpuBmpData, expDataBmp ) );
         FERRO_ASSERT( BCM_PBMP_EQ( cpuBmpMask, expMaskBmp ) );
      }
      verifyStp( false );
      VERIFY_TC( TC_ISIS );
   }

   FERRO_TRACE( 6, "Helper::Checking BGP rules" );
   FERRO_ASSERT( bgpRuleHas( unit ) );
   entry = bgpRule( unit );
   verifyNextHop();
   VERIFY_CPU_QUEUE( cpuCosqBGP_ );
   // The source-port rule is not recorded: it is the entry after the
   // destination-port rule.
   entry = bgpRule( unit ) + 1;
   verifyNextHop();
   VERIFY_CPU_QUEUE( cpuCosqBGP_ );

   bcm_field_IpType_t ipType = 0;
   FERRO_TRACE( 6, "Helper::Checking VRRP rules" );
   FERRO_ASSERT( vrrpRuleHas( unit ) );
   entry = vrrpRule( unit );
   BCM_CHECK( bcm_field_qualify_IpType_get( unit, entry, &ipType ) );
   FERRO_ASSERT( ipType == bcmFieldIpTypeIp );
   BCM_CHECK( bcm_field_qualify_Ttl_get( unit, entry, &data8, &mask8 ) );
   FERRO_ASSERT( data8 == TCAM_FIELD_VRRP_TTL_DATA );
   FERRO_ASSERT( mask8 == TCAM_FIELD_TTL_MASK );
   verifyStp( false );
   VERIFY_CPU_QUEUE( cpuCosqVRRP_ );

   FERRO_TRACE( 6, "Helper::Checking BFD rules" );
   FERRO_ASSERT( bfdRuleHas( unit ) );
   entry = bfdRule( unit );
   BCM_CHECK( bcm_field_qualify_IpType_get( unit, entry, &ipType ) );
   FERRO_ASSERT( ipType == bcmFieldIpTypeIp );
   verifyNextHop();
   BCM_CHECK( bcm_field_qualify_Ttl_get( unit, entry, &data8, &mask8 ) );
   FERRO_ASSERT( data8 == TCAM_FIELD_BFD_TTL_DATA );
   FERRO_ASSERT( mask8 == TCAM_FIELD_TTL_BFD_MASK );
   VERIFY_CPU_QUEUE( cpuCosqBFD_ );
   if ( attributes->bfdEchoCheckEnabled ) {
      if ( attributes->bfdEchoRuleSuppressed ) {
         FERRO_ASSERT( !bfdEchoRuleHas( unit ) );
      } else {
         FERRO_ASSERT( bfdEchoRuleHas( unit ) );
      }
   }

   FERRO_TRACE( 6, "Helper::Checking Multihop BFD rules" );
   FERRO_ASSERT( multihopBfdRuleHas( unit ) );
   entry = multihopBfdRule( unit );
   BCM_CHECK( bcm_field_qualify_IpType_get( unit, entry, &ipType ) );
   FERRO_ASSERT( ipType == bcmFieldIpTypeIp );
   verifyNextHop();
   VERIFY_CPU_QUEUE( cpuCosqBFD_ );

   FERRO_TRACE( 6, "Helper::Checking PIM rules" );
   FERRO_ASSERT( pimRuleHas( unit ) );
   entry = pimRule( unit );
   verifyStp( false );
   VERIFY_CPU_QUEUE( cpuCosqPIM_ );

   if ( attributes->ipv6MulticastSupported ) {
      FERRO_TRACE( 6, "Helper::Checking PIMV6 rules" );
      FERRO_ASSERT( pimV6RuleHas( unit ) );
      entry = pimV6Rule( unit );
      verifyStp( true );
      VERIFY_CPU_QUEUE( cpuCosqPIM_ );
   }

   FERRO_TRACE( 6, "Helper::Checking PIM Null Register rules" );
   FERRO_ASSERT( pimNullRegisterRuleHas( unit ) );
   entry = pimNullRegisterRule( unit );
   verifyNextHop();
   BCM_CHECK( bcm_field_qualify_DSCP_get( unit, entry, &data8, &mask8 ) );
   FERRO_ASSERT( data8 == U8( TCAM_FIELD_L3PRIOHIGHDSCP_DATA ) );
   FERRO_ASSERT( mask8 == TCAM_FIELD_L3PRIOHIGHDSCP_MASK );
   VERIFY_CPU_QUEUE( cpuCosqPIM_ );

   FERRO_TRACE( 6, "Helper::Checking PIM rules" );
   FERRO_ASSERT( pimRegisterRuleHas( unit ) );
   entry = pimRegisterRule( unit );
   verifyNextHop();
   VERIFY_CPU_QUEUE( cpuCosqL3SlowPath_ );
   VERIFY_COPY_TO_CPU();

   bcm_field_IpType_t ip_type = 0;
   FERRO_TRACE( 6, "Helper::Checking OSPF rules" );
   FERRO_ASSERT( ospfRuleHas( unit ) );
   entry = ospfRule( unit );
   BCM_CHECK( bcm_field_qualify_IpType_get( unit, entry, &ip_type ) );
   FERRO_ASSERT( ip_type == bcmFieldIpTypeIp );
   verifyNextHop();
   VERIFY_CPU_QUEUE( cpuCosqOspfIsis_ );
   FERRO_ASSERT( ospfMcastRuleHas( unit ) );
   entry = ospfMcastRule( unit );
   verifyStp( false );
   VERIFY_CPU_QUEUE( cpuCosqOspfIsis_ );

   FERRO_TRACE( 6, "Helper::Checking OSPF3 Multicast rules" );
   entry = ospfV3Rule( unit );
   verifyStp( false );
   VERIFY_CPU_QUEUE( cpuCosqOspfIsis_ );

   FERRO_TRACE( 6, "Helper::Checking OSPF Auth ESP Multicast rules" );
   entry = ospfAuthEspMcastRule( unit );
   BCM_CHECK( bcm_field_qualify_IpType_get( unit, entry, &ip_type ) );
   FERRO_ASSERT( ip_type == bcmFieldIpTypeIp );
   verifyStp( false );
   VERIFY_CPU_QUEUE( cpuCosqOspfIsis_ );

   FERRO_TRACE( 6, "Helper::Checking OSPF Auth ESP unicast rules" );
   FERRO_ASSERT( ospfRuleHas( unit ) );
   entry = ospfAuthEspUcastRule( unit );
   BCM_CHECK( bcm_field_qualify_IpType_get( unit, entry, &ip_type ) );
   FERRO_ASSERT( ip_type == bcmFieldIpTypeIp );
   verifyNextHop();
   VERIFY_CPU_QUEUE( cpuCosqOspfIsis_ );

   FERRO_TRACE( 6, "Helper::Checking IP-GRE-ISIS rules" );
   FERRO_ASSERT( ipGreIsisRuleHas( unit ) );
   entry = ipGreIsisRule( unit );
   verifyNextHop();
   VERIFY_CPU_QUEUE( cpuCosqOspfIsis_ );

   FERRO_TRACE( 6, "Helper::Checking L3 rules" );
   FERRO_ASSERT( l3PrioHighCosRuleHas( unit ) );
   entry = l3PrioHighCosRule( unit );
   verifyNextHop();
   BCM_CHECK( bcm_field_qualify_OuterVlanPri_get( unit, entry, &data8, &mask8 ) );
   FERRO_ASSERT( data8 == TCAM_FIELD_L3PRIOHIGHCOS_OUTERVLANPRI_DATA );
   FERRO_ASSERT( mask8 == TCAM_FIELD_L3PRIOHIGHCOS_OUTERVLANPRI_MASK );
   VERIFY_CPU_QUEUE( cpuCosqSelfIpTc6To7_ );
   FERRO_ASSERT( l3PrioHighDscpRuleHas( unit ) );
   entry = l3PrioHighDscpRule( unit );
   verifyNextHop();
   BCM_CHECK( bcm_field_qualify_DSCP_get( unit, entry, &data8, &mask8 ) );
   FERRO_ASSERT( data8 == U8( TCAM_FIELD_L3PRIOHIGHDSCP_DATA ) );
   FERRO_ASSERT( mask8 == TCAM_FIELD_L3PRIOHIGHDSCP_MASK );
   VERIFY_CPU_QUEUE( cpuCosqSelfIpTc6To7_ );
   FERRO_ASSERT( l3PrioRuleHas( unit ) );
   entry = l3PrioRule( unit );
   verifyNextHop();
   VERIFY_CPU_QUEUE( cpuCosqSelfIp_ );

   if ( attributes->gleanViaNextHopToCpu ) {
      if ( !smData()->nextHopToCpuGleanDisabled ) {
         bcm_module_t modId = 0, modIdMask = 0;
         bcm_port_t portId = 0, portIdMask = 0;
         FERRO_ASSERT( icmpv6GleanExcludeRuleHas( unit ) );
         entry = icmpv6GleanExcludeRule( unit );
         BCM_CHECK( bcm_field_qualify_DstPort_get( unit, entry, &modId, &modIdMask, &portId, &portIdMask ) );
         FERRO_ASSERT( modId == FerroCommon::cpuNhInvalidModId_ );
         FERRO_ASSERT( modIdMask == FerroCommon::maskModId_ );
         FERRO_ASSERT( gleanRuleHas( unit ) );
         entry = gleanRule( unit );
         BCM_CHECK( bcm_field_qualify_DstPort_get( unit, entry, &modId, &modIdMask, &portId, &portIdMask ) );
         FERRO_ASSERT( modId == FerroCommon::cpuNhInvalidModId_ );
         FERRO_ASSERT( modIdMask == FerroCommon::maskModId_ );
         VERIFY_CPU_QUEUE( cpuCosqGlean_ );
      }
   } else if ( attributes->gleanClassIdSupported ) {
      FERRO_ASSERT( gleanRuleHas( unit ) );
      entry = gleanRule( unit );
      // Only the state is compared: the glean rule's mask is not checked.
      BCM_CHECK( bcm_field_qualify_IngressStpState_get( unit, entry, &data8, &mask8 ) );
      FERRO_ASSERT( data8 == BCM_STG_STP_FORWARD );
      BCM_CHECK( bcm_field_qualify_Drop_get( unit, entry, &data8, &mask8 ) );
      FERRO_ASSERT( data8 == 0 );
      FERRO_ASSERT( mask8 == 1 );
      VERIFY_CPU_QUEUE( cpuCosqGlean_ );
   }

   FERRO_ASSERT( l3McCpuOifRuleHas( unit ) );
   entry = l3McCpuOifRule( unit );
   if ( comparePortBitmaps() ) {
      readInPorts();
      const bcm_pbmp_t eBmpData = dataPbmp, eBmpMask = maskPbmp;
      FERRO_ASSERT( BCM_PBMP_EQ( eBmpData, expDataBmp ) );
      FERRO_ASSERT( BCM_PBMP_EQ( eBmpMask, expMaskBmp ) );
   }
   if ( attributes->dstClassL3Supported ) {
      uint32 data32 = 0, mask32 = 0;
      BCM_CHECK( bcm_field_qualify_DstClassL3_get( unit, entry, &data32, &mask32 ) );
      FERRO_ASSERT( data32 == FerroCommon::classMcastCpuOif_ );
      FERRO_ASSERT( mask32 == FerroCommon::l3LookupClassIdMax_ );
   }
   verifyStp( false );
   verifyDrop();
   VERIFY_COPY_TO_CPU();
   if ( attributes->l3McCpuOifCosqSupported ) {
      uint32 param0 = 0, param1 = 1;
      BCM_CHECK( bcm_field_action_get( unit, entry, bcmFieldActionCosQCpuNew, &param0, &param1 ) );
      FERRO_ASSERT( param0 == cpuCosqOther_ );
      FERRO_ASSERT( param1 == 0 );
   }
}

}  // namespace FerroTcamSystemAcl
