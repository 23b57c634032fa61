// doInstallL2TrapRules: the L2 control traps of a unit. The L2 table gives the
// reserved destination MACs of BPDUs, LACPDUs, LLDPDUs and micro-BFD their L2
// class; these rules give the packets of each class their traffic class and
// CPU queue. Every rule sits at a fixed place in the L2 manager's block, so a
// second run rebinds the same entries; a lower id wins within the group.
#include "FerroTcamSystemAcl/CheckedCall.h"
#include "FerroTcamSystemAcl/Helper.h"
#include "FerroTcamSystemAcl/LibraryGlobals.h"
#include "FerroTcamSystemAcl/RequestKeys.h"
#include "platform/agent/TcamHelpers.h"

namespace FerroTcamSystemAcl {

namespace {

using Lamo::L2Pt::L2PtProtocol;

// Ether type 0 under mask 0x0010: LLDP (0x88CC) has that bit clear, PTP
// (0x88F7) has it set, so the LLDP elevators leave link-local PTP to its own
// rule. The compressed class pair is the LLDP one.
constexpr U16 LLDP_ETHER_TYPE = 0;
constexpr U16 LLDP_ETHER_TYPE_MASK = 16;
constexpr U32 LLDP_ETHER_TYPE_CLASS = 0;
constexpr U32 LLDP_ETHER_TYPE_CLASS_MASK = 4;

constexpr U8 platformCodeCopyToCpu = 7;

}  // namespace

void Helper::doInstallL2TrapRules( U16 unit ) {
   FERRO_TRACE( 5, "Helper::" << "doInstallL2TrapRules" << " unit:" << unit );
   FERRO_ASSERT( !!l2TcamEntryManager() && "L2 TCAM manager not instantiated!" );
   const FerroBoundedTcamEntryManager::Ptr& manager = l2TcamEntryManager();
   const U32 base = manager->baseEntryId();
   const FerroCentral::ChipAttributes::PtrConst attributes = chipAttributes( unit );
   // With per-device port bitmaps the forwarding walk asks the tables which
   // variant an entry is, so the entry is recorded before it is installed.
   const bool setterFirst = attributes->l2PfDevicePbmpSupported != 0;
   auto elevator = [ & ]( U32 entry, const char* name, U32 dstClassId, U32 newTc,
                          U32 newCpuQ, L2PtProtocol protocol,
                          void ( HelperBase::*setter )( U32, U32 ) ) {
      if ( setterFirst ) {
         ( this->*setter )( unit, entry );
      }
      installL2ControlSystemTcamEntry( unit, manager, int( entry ), name, dstClassId, 15,
                                       newTc, newCpuQ, protocol );
      if ( !setterFirst ) {
         ( this->*setter )( unit, entry );
      }
   };

   elevator( base, "BPDU Priority Elevator", 1, 15, 47, L2PtProtocol::stp,
             &HelperBase::bpduPrioRuleIs );
   elevator( base + 1, "LACPDU Priority Elevator", 2, 14, 46, L2PtProtocol::lacp,
             &HelperBase::lacpPrioRuleIs );
   if ( reducedL2TrapsA || reducedL2TrapsB ) {
      return;
   }

   // The PTP installers fill these two later.
   l2McastPtpRuleIs( unit, base + 2 );
   doInstallL2McastPTPRule( unit );
   l2UnicastPtpRuleIs( unit, base + 3 );
   doInstallL2UnicastPTPRule( unit );
   U32 c = base + 3;

   // VXLAN-core chips split LLDP and link-local PTP by interface class: 1 for
   // traffic from a plain L2 interface, 0 for traffic decapsulated from a
   // tunnel, so that each variant can carry its own ports.
   const bool vxlanCore = attributes->hasVxlanCoreProtocol( Lamo::L2Pt::lldp() );
   uint32 nonVxlanData = 1, vxlanData = 0, mask = 1;
   if ( attributes->linkLocalPtpSupported ) {
      if ( vxlanCore ) {
         U32 entry = base + 4;
         linkLocalPtpRuleIs( unit, entry );
         BCM_CHECK( bcm_field_qualify_InterfaceClassVPort( unit, entry, nonVxlanData, mask ) );
         doInstallLinkLocalPTPRule( unit, entry, "Non Vxlan Core Link-local PTP" );
         entry = base + 5;
         vxlanCoreLinkLocalPtpRuleIs( unit, entry );
         BCM_CHECK( bcm_field_qualify_InterfaceClassVPort( unit, entry, vxlanData, mask ) );
         doInstallLinkLocalPTPRule( unit, entry, "Vxlan Core Link-local PTP" );
         c = base + 5;
      } else {
         linkLocalPtpRuleIs( unit, base + 4 );
         doInstallLinkLocalPTPRule( unit, base + 4, "Link-local PTP" );
         c = base + 4;
      }
   }

   elevator( c + 1, "MicroBfdPdu Priority Elevator", 8, 9, 45, L2PtProtocol::microBfd,
             &HelperBase::microBfdPrioRuleIs );

   auto lldpEtherType = [ & ]( U32 entry ) {
      if ( attributes->linkLocalPtpSupported ) {
         Ferro::setEtherType( unit, systemAclGroupManager(), entry,
                              attributes->etherTypeChipFlag, LLDP_ETHER_TYPE,
                              LLDP_ETHER_TYPE_MASK, LLDP_ETHER_TYPE_CLASS,
                              LLDP_ETHER_TYPE_CLASS_MASK );
      }
   };
   if ( !vxlanCore ) {
      U32 entry = c + 2;
      if ( setterFirst ) {
         lldpPrioRuleIs( unit, entry );
      }
      installL2ControlSystemTcamEntry( unit, manager, int( entry ), "LLDPDU Priority Elevator",
                                       FerroCommon::classLldp(), FerroCommon::classL2Mask(),
                                       TC_LLDP_DOT1X, cpuCosqLLDP_, Lamo::L2Pt::lldp() );
      lldpEtherType( entry );
      if ( !setterFirst ) {
         lldpPrioRuleIs( unit, entry );
      }
      return;
   }
   U32 entry = c + 2;
   lldpPrioRuleIs( unit, entry );
   BCM_CHECK( bcm_field_qualify_InterfaceClassVPort( unit, entry, nonVxlanData, mask ) );
   installL2ControlSystemTcamEntry( unit, manager, int( entry ),
                                    "Non Vxlan Core LLDPDU Priority Elevator",
                                    FerroCommon::classLldp(), FerroCommon::classL2Mask(),
                                    TC_LLDP_DOT1X, cpuCosqLLDP_, Lamo::L2Pt::lldp() );
   lldpEtherType( entry );
   entry = c + 3;
   vxlanCoreLldpPrioRuleIs( unit, entry );
   BCM_CHECK( bcm_field_qualify_InterfaceClassVPort( unit, entry, vxlanData, mask ) );
   installL2ControlSystemTcamEntry( unit, manager, int( entry ),
                                    "Vxlan Core LLDPDU Priority Elevator",
                                    FerroCommon::classLldp(), FerroCommon::classL2Mask(),
                                    TC_LLDP_DOT1X, cpuCosqLLDP_, Lamo::L2Pt::lldp() );
   lldpEtherType( entry );
}

void Helper::installL2ControlSystemTcamEntry(
   U16 unit, const FerroBoundedTcamEntryManager::Ptr& entryManager, int entry,
   const Lumo::String& name, U32 dstClassId, U32 dstClassIdMask, U32 newTc, U32 newCpuQ,
   Lamo::L2Pt::L2PtProtocol protocol ) {
   FERRO_TRACE( 2, "Helper::" << "installL2ControlSystemTcamEntry" << "entry " << name );
   const FerroCentral::ChipAttributes::PtrConst attributes = chipAttributes( unit );
   const FerroTcam::RequestKey requestKey = getRequestKeyForProtocol( dstClassId );
   const int entryId = int( entryManager->getEntry( unit, U32( entry ), name, requestKey ) );
   FERRO_ASSERT( entryId == entry );
   BCM_CHECK( bcm_field_qualify_DstClassL2( unit, entry, dstClassId, dstClassIdMask ) );
   if ( attributes->l2CacheHitSupported ) {
      BCM_CHECK( bcm_field_qualify_L2CacheHit( unit, entry, 1, 1 ) );
   }
   BCM_CHECK( bcm_field_action_add( unit, entry, bcmFieldActionPrioIntNew, newTc, 0 ) );
   BCM_CHECK( bcm_field_action_add( unit, entry, bcmFieldActionCosQCpuNew, newCpuQ, 0 ) );
   if ( smData()->platformCode == platformCodeCopyToCpu ) {
      BCM_CHECK( bcm_field_action_add( unit, entry, bcmFieldActionCopyToCpu, 0, 0 ) );
   }
   if ( !smData()->skipInPortQualify ) {
      bcm_pbmp_t data = FerroTcam::getPbmpEAll( *smData(), unit );
      const bcm_pbmp_t mask = FerroTcam::getPbmpAll( *smData(), unit );
      if ( removeL2ForwardingPorts( unit, entry, protocol, data ) ) {
         trapViaInPortForEntryInt( unit, U32( entry ), true );
      }
      if ( entryManager->supportsAclGroup() ) {
         if ( !requestKey.isEq( FerroTcam::RequestKey::defaultKey() ) ) {
            entryManager->qualifyPortsClassId(
               unit, U32( entry ), FerroTcam::getActivePorts( *smData(), unit ), false );
         }
      } else {
         qualifyInPorts( unit, entry, data, mask, model( unit ) );
         entryManager->addInPortsForEntry( unit, U32( entry ), data, mask );
         // Port refreshes of the manager must keep what forwarding took out.
         entryManager->setTcamEntryBcmPbmpPermanent( unit, U32( entry ), true );
      }
   }
   const int rc = entryManager->installEntry( unit, U32( entry ) );
   FERRO_ASSERT( rc == BCM_E_NONE && "installEntry failed" );
}

void Helper::doInstallLinkLocalPTPRule( U16 unit, U32 entry, const Lumo::String& name ) {
   const FerroCentral::ChipAttributes::PtrConst attributes = chipAttributes( unit );
   const FerroBoundedTcamEntryManager::Ptr& manager = l2TcamEntryManager();
   manager->getEntry( unit, entry, name, l2CtrlGroupKey() );
   // 01:80:c2:00:00:0e, the nearest-bridge group that peer-delay PTP uses.
   bcm_mac_t destMac, destMacMask;
   const U8 address[ 6 ] = { 0x01, 0x80, 0xC2, 0x00, 0x00, 0x0E };
   for ( int i = 0; i < 6; ++i ) {
      destMac[ i ] = address[ i ];
      destMacMask[ i ] = 0xFF;
   }
   BCM_CHECK( bcm_field_qualify_DstMac( unit, entry, destMac, destMacMask ) );
   Ferro::setEtherType( unit, systemAclGroupManager(), entry, attributes->etherTypeChipFlag,
                        0x88F7, 0xFFFF, 5, 15 );
   BCM_CHECK( bcm_field_qualify_DstClassL2( unit, entry, FerroCommon::classLldp(), FerroCommon::classL2Mask() ) );
   if ( attributes->l2CacheHitSupported ) {
      BCM_CHECK( bcm_field_qualify_L2CacheHit( unit, entry, 1, 1 ) );
   }
   // Forwarding of LLDP does not apply to PTP: every Ethernet port traps it.
   if ( !smData()->skipInPortQualify ) {
      const bcm_pbmp_t data = FerroTcam::getPbmpEAll( *smData(), unit );
      const bcm_pbmp_t mask = FerroTcam::getPbmpAll( *smData(), unit );
      if ( manager->supportsAclGroup() ) {
         manager->qualifyPortsClassId( unit, entry, data, true );
      } else {
         qualifyInPorts( int( unit ), int( entry ), data, mask, model( unit ) );
         manager->addInPortsForEntry( unit, entry, data, mask );
         manager->setTcamEntryBcmPbmpPermanent( unit, entry, true );
      }
   }
   // Queue before priority here, unlike the elevators. Dropped and copied:
   // the packet is trapped, only the CPU copy survives.
   BCM_CHECK( bcm_field_action_add( unit, entry, bcmFieldActionCosQCpuNew, cpuCosqLLDP_, 0 ) );
   BCM_CHECK( bcm_field_action_add( unit, entry, bcmFieldActionPrioIntNew, TC_LLDP_DOT1X, 0 ) );
   BCM_CHECK( bcm_field_action_add( unit, entry, bcmFieldActionDrop, 0, 0 ) );
   BCM_CHECK( bcm_field_action_add( unit, entry, bcmFieldActionCopyToCpu, 0, 0 ) );
   const int rc = manager->installEntry( unit, entry );
   FERRO_ASSERT( rc == BCM_E_NONE && "installEntry failed" );
}

}  // namespace FerroTcamSystemAcl
