// The MACsec EAPoL forward rule: EAPoL frames (0x888E) to one destination MAC
// stay in the data path, their switch-to-CPU cancelled, so that MACsec key
// agreement passes through the switch. The rule is installed disabled at the
// first id of its own manager; whoever turns MACsec on enables it, and may
// move it to another MAC first.
#include "FerroTcamSystemAcl/CheckedCall.h"
#include "FerroTcamSystemAcl/Helper.h"
#include "FerroTcamSystemAcl/LibraryGlobals.h"
#include "FerroTcamSystemAcl/RequestKeys.h"
#include "platform/agent/TcamHelpers.h"

namespace FerroTcamSystemAcl {

namespace {

constexpr Wirex::EthAddr defaultEapolDstMac( 0x01, 0x80, 0xC2, 0x00, 0x00, 0x03 );
constexpr U16 etherTypeEapol = 0x888E;

}  // namespace

void Helper::doInstallEapolFwdRule( U16 unit ) {
   FERRO_TRACE( 5, "doInstallEapolFwdRule" );
   const FerroCentral::ChipAttributes::PtrConst attributes = chipAttributes( unit );
   FERRO_ASSERT( !!macsecEapolFwdTcamEntryManager() &&
                 "MACsec EAPoL Fwd TCAM manager not instantiated!" );
   const FerroBoundedTcamEntryManager::Ptr& manager = macsecEapolFwdTcamEntryManager();
   const U32 entry = manager->baseEntryId();
   manager->getEntry( unit, entry, "MACsec EAPoL Forward", l2CtrlGroupKey() );
   eapolRuleIs( unit, entry );
   updateEapolDstMac( unit, entry, defaultEapolDstMac );
   Ferro::setEtherType( unit, systemAclGroupManager(), entry, attributes->etherTypeChipFlag,
                        etherTypeEapol, 0xFFFF, 8, 15 );
   if ( !smData()->skipInPortQualify ) {
      // Every port but the CPU's: front-panel and fabric ports alike may carry
      // key agreement that is to pass through.
      const bcm_pbmp_t mask = FerroTcam::getPbmpAll( *smData(), unit );
      bcm_pbmp_t data = mask;
      BCM_PBMP_PORT_REMOVE( data, Shim::sdk_->cpuPort( int( unit ) ) );
      if ( manager->supportsAclGroup() ) {
         manager->qualifyPortsClassId( unit, entry, data, true );
      } else {
         qualifyInPorts( int( unit ), int( entry ), data, mask, model( unit ) );
         manager->addInPortsForEntry( unit, entry, data, mask );
         manager->setTcamEntryBcmPbmpPermanent( unit, entry, true );
      }
   }
   BCM_CHECK( bcm_field_action_add( unit, entry, bcmFieldActionSwitchToCpuCancel, 0, 0 ) );
   const int rc = manager->installEntry( unit, entry );
   FERRO_ASSERT( rc == BCM_E_NONE && "installEntry failed" );
   manager->enableEntry( unit, entry, false, BCM_FIELD_ENTRY_ENABLE_STATUS );
}

// Only the qualifier changes: during installation the install that follows
// writes it, afterwards the caller reinstalls or enables the entry.
void Helper::updateEapolDstMac( U32 unit, U32 entry, const Wirex::EthAddr& mac ) {
   FERRO_TRACE( 5, "updateEapolDstMac" << " addr: " << mac );
   bcm_mac_t eapolDMac, eapolMacMask;
   for ( int i = 0; i < 6; ++i ) {
      eapolDMac[ i ] = mac[ i ];
      eapolMacMask[ i ] = 0xFF;
   }
   BCM_CHECK( bcm_field_qualify_DstMac( unit, entry, eapolDMac, eapolMacMask ) );
}

}  // namespace FerroTcamSystemAcl
