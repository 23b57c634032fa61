// verifyInstalledL2TrapRules: reads every L2 trap rule of a unit back from the
// chip and aborts on the first difference: the elevators, the link-local PTP
// rules with their VXLAN-core variants, and the qualifiers of the two L2 PTP
// entries (their actions and enable state follow the PTP mode and are not
// compared). The expected in-ports are the bitmap recorded for the entry: the
// installer, the forwarding and in-port updates and the port refresh each
// record what they program, so it is the entry's intended value however the
// ports got there.
#include "FerroTcamSystemAcl/CheckedCall.h"
#include "FerroTcamSystemAcl/Helper.h"
#include "FerroTcamSystemAcl/LibraryGlobals.h"
#include "FerroTcamSystemAcl/VerifyActions.h"
#include "platform/agent/TcamHelpers.h"

namespace FerroTcamSystemAcl {

namespace {

using Lamo::L2Pt::L2PtProtocol;

constexpr U8 platformCodeCopyToCpu = 7;

}  // namespace

void Helper::verifyL2RulePorts( U16 unit, U32 entry, const char* checkedCallOperation ) {
   if ( smData()->skipInPortQualify || !comparePortBitmaps() ) {
      return;
   }
   const FerroBoundedTcamEntryManager::Ptr& manager = l2TcamEntryManager();
   if ( manager->supportsAclGroup() ) {
      // Bound by a port class: the entry matches exactly its class bit.
      const TcamEntryRecord* record = manager->record( unit, entry );
      FERRO_ASSERT( record && record->portClassId );
      uint32 data32 = 0, mask32 = 0;
      BCM_CHECK( bcm_field_qualify_InterfaceClassPort_get( unit, entry, &data32, &mask32 ) );
      FERRO_ASSERT( data32 == *record->portClassId );
      FERRO_ASSERT( mask32 == *record->portClassId );
      return;
   }
   const TcamEntryRecord* record = manager->record( unit, entry );
   FERRO_ASSERT( record && record->pbmp );
   const bcm_pbmp_t expDataBmp = record->pbmp->data;
   const bcm_pbmp_t expMaskBmp = record->pbmp->mask;
   bcm_pbmp_t dataPbmp, maskPbmp;
   const U32 tcamEntryId = manager->getHardwareEntryId( unit, entry, 0, 0 );
   BCM_CHECK( bcm_field_qualify_InPorts_get( unit, tcamEntryId, &dataPbmp, &maskPbmp ) );
   FERRO_ASSERT( BCM_PBMP_EQ( dataPbmp, expDataBmp ) );
   FERRO_ASSERT( BCM_PBMP_EQ( maskPbmp, expMaskBmp ) );
}

void Helper::verifyL2ControlSystemTcamEntry( U16 unit, int entry, U32 dstClassId,
                                             U32 dstClassIdMask, U32 newTc, U32 newCpuQ,
                                             Lamo::L2Pt::L2PtProtocol protocol ) {
   FERRO_TRACE( 6, "Helper::" << "verifyL2ControlSystemTcamEntry" << " unit: " << unit
                              << " entry: " << entry << " protocol: "
                              << Lamo::L2Pt::name( protocol ) );
   const FerroCentral::ChipAttributes::PtrConst attributes = chipAttributes( unit );
   uint32 data32 = 0, mask32 = 0;
   BCM_CHECK( bcm_field_qualify_DstClassL2_get( unit, entry, &data32, &mask32 ) );
   FERRO_ASSERT( data32 == dstClassId );
   FERRO_ASSERT( mask32 == dstClassIdMask );
   if ( attributes->l2CacheHitSupported ) {
      uint8 data8 = 0, mask8 = 0;
      BCM_CHECK( bcm_field_qualify_L2CacheHit_get( unit, entry, &data8, &mask8 ) );
      FERRO_ASSERT( data8 == 1 );
      FERRO_ASSERT( mask8 == 1 );
   }
   VERIFY_TC( newTc );
   VERIFY_CPU_QUEUE( newCpuQ );
   if ( smData()->platformCode == platformCodeCopyToCpu ) {
      VERIFY_COPY_TO_CPU();
   }
   verifyL2RulePorts( unit, U32( entry ), __PRETTY_FUNCTION__ );
}

void Helper::verifyInstalledL2TrapRules( U16 unit ) {
   // Some checks below run in lambdas; their failures and trace lines belong
   // to this operation.
   const char* const checkedCallOperation = __PRETTY_FUNCTION__;
   const char* const checkedCallFunction = __func__;
   FERRO_TRACE( 5, "Helper::" << "verifyInstalledL2TrapRules" << " unit:" << unit );
   const FerroCentral::ChipInfo chipInfo = smData()->chipInfo( unit );
   if ( verificationSkipped( chipInfo ) ) {
      return;
   }
   const FerroCentral::ChipAttributes::PtrConst attributes = chipAttributes( unit );
   const FerroTcamGroupManager::Ptr& gm = systemAclGroupManager();
   U32 entry = 0;

   FERRO_TRACE( 6, "Helper::Checking BPDU rules" );
   FERRO_ASSERT( bpduPrioRuleHas( unit ) );
   verifyL2ControlSystemTcamEntry( unit, int( bpduPrioRule( unit ) ), 1, 15, 15, 47, L2PtProtocol::stp );
   FERRO_TRACE( 6, "Helper::Checking LACPDU rules" );
   FERRO_ASSERT( lacpPrioRuleHas( unit ) );
   verifyL2ControlSystemTcamEntry( unit, int( lacpPrioRule( unit ) ), 2, 15, 14, 46, L2PtProtocol::lacp );
   if ( reducedL2TrapsA || reducedL2TrapsB ) {
      FERRO_TRACE( 6, "Helper::Checking reduced L2 traps" );
      FERRO_ASSERT( !l2McastPtpRuleHas( unit ) );
      FERRO_ASSERT( !linkLocalPtpRuleHas( unit ) );
      FERRO_ASSERT( !microBfdPrioRuleHas( unit ) );
      FERRO_ASSERT( !lldpPrioRuleHas( unit ) );
      return;
   }

   FERRO_TRACE( 6, "Helper::Checking L2 PTP rules" );
   for ( const bool multicast : { true, false } ) {
      FERRO_ASSERT( multicast ? l2McastPtpRuleHas( unit ) : l2UnicastPtpRuleHas( unit ) );
      entry = multicast ? l2McastPtpRule( unit ) : l2UnicastPtpRule( unit );
      uint32 data32 = 0, mask32 = 0;
      BCM_CHECK( bcm_field_qualify_PacketRes_get( unit, entry, &data32, &mask32 ) );
      FERRO_ASSERT( data32 == BCM_FIELD_PKT_RES_IEEE1588 );
      FERRO_ASSERT( mask32 == BCM_FIELD_EXACT_MATCH_MASK );
      bcm_mac_t destMac, destMacMask;
      BCM_CHECK( bcm_field_qualify_DstMac_get( unit, entry, &destMac, &destMacMask ) );
      const Wirex::EthAddr mac( destMac[ 0 ], destMac[ 1 ], destMac[ 2 ], destMac[ 3 ], destMac[ 4 ], destMac[ 5 ] );
      const Wirex::EthAddr macMask( destMacMask[ 0 ], destMacMask[ 1 ], destMacMask[ 2 ], destMacMask[ 3 ], destMacMask[ 4 ], destMacMask[ 5 ] );
      if ( multicast ) {
         FERRO_ASSERT( mac == Wirex::EthAddr( 0x01, 0, 0, 0, 0, 0 ) );
         FERRO_ASSERT( macMask == Wirex::EthAddr( 0xFF, 0, 0, 0, 0, 0 ) );
      } else {
         FERRO_ASSERT( mac == Wirex::EthAddr( 0, 0, 0, 0, 0, 0 ) );
         FERRO_ASSERT( macMask == Wirex::EthAddr( 0x01, 0, 0, 0, 0, 0 ) );
      }
      FERRO_ASSERT( Ferro::verifyEtherType( unit, gm, entry, 0x88F7, 0xFFFF ) );
   }

   // Each VXLAN-core split rule carries the interface class of its variant.
   const bool vxlanCore = attributes->hasVxlanCoreProtocol( Lamo::L2Pt::lldp() );
   auto verifyVPort = [ & ]( uint32 expected ) {
      uint32 data32 = 0, mask32 = 0;
      BCM_CHECK( bcm_field_qualify_InterfaceClassVPort_get( unit, entry, &data32, &mask32 ) );
      FERRO_ASSERT( data32 == expected );
      FERRO_ASSERT( mask32 == 1 );
   };
   auto verifyLinkLocalPtp = [ & ]() {
      bcm_mac_t destMac, destMacMask;
      BCM_CHECK( bcm_field_qualify_DstMac_get( unit, entry, &destMac, &destMacMask ) );
      const Wirex::EthAddr mac( destMac[ 0 ], destMac[ 1 ], destMac[ 2 ], destMac[ 3 ], destMac[ 4 ], destMac[ 5 ] );
      const Wirex::EthAddr macMask( destMacMask[ 0 ], destMacMask[ 1 ], destMacMask[ 2 ], destMacMask[ 3 ], destMacMask[ 4 ], destMacMask[ 5 ] );
      FERRO_ASSERT( mac == Wirex::EthAddr( 0x01, 0x80, 0xC2, 0x00, 0x00, 0x0E ) );
      FERRO_ASSERT( macMask == Wirex::EthAddr( 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF ) );
      FERRO_ASSERT( Ferro::verifyEtherType( unit, gm, entry, 0x88F7, 0xFFFF ) );
      uint32 data32 = 0, mask32 = 0;
      BCM_CHECK( bcm_field_qualify_DstClassL2_get( unit, entry, &data32, &mask32 ) );
      FERRO_ASSERT( data32 == FerroCommon::classLldp() );
      FERRO_ASSERT( mask32 == FerroCommon::classL2Mask() );
      if ( attributes->l2CacheHitSupported ) {
         uint8 data8 = 0, mask8 = 0;
         BCM_CHECK( bcm_field_qualify_L2CacheHit_get( unit, entry, &data8, &mask8 ) );
         FERRO_ASSERT( data8 == 1 );
         FERRO_ASSERT( mask8 == 1 );
      }
      verifyL2RulePorts( unit, entry, checkedCallOperation );
      VERIFY_CPU_QUEUE( cpuCosqLLDP_ );
      VERIFY_TC( TC_LLDP_DOT1X );
      VERIFY_FLAG_ACTION( bcmFieldActionDrop );
      VERIFY_COPY_TO_CPU();
   };
   if ( attributes->linkLocalPtpSupported ) {
      FERRO_TRACE( 6, "Helper::Checking Link-local PTP rules" );
      FERRO_ASSERT( linkLocalPtpRuleHas( unit ) );
      entry = linkLocalPtpRule( unit );
      verifyLinkLocalPtp();
      if ( vxlanCore ) {
         verifyVPort( 1 );
         FERRO_ASSERT( vxlanCoreLinkLocalPtpRuleHas( unit ) );
         entry = vxlanCoreLinkLocalPtpRule( unit );
         verifyLinkLocalPtp();
         verifyVPort( 0 );
      }
   } else {
      FERRO_ASSERT( !linkLocalPtpRuleHas( unit ) );
   }

   FERRO_TRACE( 6, "Helper::Checking MicroBfdPdu rules" );
   FERRO_ASSERT( microBfdPrioRuleHas( unit ) );
   verifyL2ControlSystemTcamEntry( unit, int( microBfdPrioRule( unit ) ), 8, 15, 9, 45, L2PtProtocol::microBfd );

   FERRO_TRACE( 6, "Helper::Checking LLDPDU rules" );
   FERRO_ASSERT( lldpPrioRuleHas( unit ) );
   entry = lldpPrioRule( unit );
   verifyL2ControlSystemTcamEntry( unit, int( entry ), FerroCommon::classLldp(), FerroCommon::classL2Mask(), TC_LLDP_DOT1X, cpuCosqLLDP_, Lamo::L2Pt::lldp() );
   if ( attributes->linkLocalPtpSupported ) {
      FERRO_ASSERT( Ferro::verifyEtherType( unit, gm, entry, 0, 16 ) );
   }
   if ( vxlanCore ) {
      verifyVPort( 1 );
      FERRO_ASSERT( vxlanCoreLldpPrioRuleHas( unit ) );
      entry = vxlanCoreLldpPrioRule( unit );
      verifyL2ControlSystemTcamEntry( unit, int( entry ), FerroCommon::classLldp(), FerroCommon::classL2Mask(), TC_LLDP_DOT1X, cpuCosqLLDP_, Lamo::L2Pt::lldp() );
      if ( attributes->linkLocalPtpSupported ) {
         FERRO_ASSERT( Ferro::verifyEtherType( unit, gm, entry, 0, 16 ) );
      }
      verifyVPort( 0 );
   } else {
      FERRO_ASSERT( !vxlanCoreLldpPrioRuleHas( unit ) );
   }
}

}  // namespace FerroTcamSystemAcl
