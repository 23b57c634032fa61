// When a unit's front-panel ports change (a port comes or goes, an interface
// of the Mesa fabric among them), the in-port bitmaps of the system rules that
// carry one follow. Rules that L2 protocol forwarding may narrow get back the
// bitmap recorded for them, limited to the ports the unit still has; the
// others are bound to every Ethernet port again. Port classes, which replace
// in-port bitmaps on ACL-group managers, are not refreshed here: meeting such
// a manager is fatal.
#include "FerroTcamSystemAcl/CheckedCall.h"
#include "FerroTcamSystemAcl/Helper.h"
#include "FerroTcamSystemAcl/LibraryGlobals.h"
#include "platform/agent/TcamHelpers.h"

namespace FerroTcamSystemAcl {

void Helper::updatePbmpEAllSystemAclRules( U32 unit, Wirex::IntfId intf ) {
   FERRO_TRACE( 2, "updatePbmpEAllSystemAclRules" << " unit: " << unit << " intf: " << intf );
   updateL2PfRule( unit, eapolRule( unit ), intf );
   updateL2PfRule( unit, bpduPrioRule( unit ), intf );
   updateL2PfRule( unit, lacpPrioRule( unit ), intf );
   updateL2PfRule( unit, linkLocalPtpRule( unit ), intf );
   // One of the L2 traps, but never narrowed by forwarding on refresh.
   updateNonL2PfRule( unit, microBfdPrioRule( unit ) );
   updateL2PfRule( unit, lldpPrioRule( unit ), intf );
   updateL2PfRule( unit, vxlanCoreLldpPrioRule( unit ), intf );
   updateNonL2PfRule( unit, isisL1L2FpPrioRule( unit ) );
   updateNonL2PfRule( unit, isisAllISFpPrioRule( unit ) );
   updateNonL2PfRule( unit, pimRule( unit ) );
   updateNonL2PfRule( unit, l3McCpuOifRule( unit ) );
}

// Only an interface of the Mesa fabric re-applies the recorded bitmap; any
// other leaves the rule as it is.
void Helper::updateL2PfRule( U32 unit, U32 entry, Wirex::IntfId intf ) {
   FERRO_TRACE( 2, "updateL2PfRule" << " unit: " << unit << " entry: " << entry
                                    << " intf: " << intf );
   // 0 is a rule the unit does not have: there is nothing to look up.
   if ( entry == 0 ) {
      return;
   }
   const FerroTcamEntryManager::Ptr entryManager =
      systemAclGroupManager()->managerForEntry( entry );
   FERRO_ASSERT( !!entryManager && "Not able to identify the entryManager for the entry" );
   FERRO_ASSERT( !entryManager->supportsAclGroup() &&
                 "MESA is not supported on chips that support aclGroup" );
   const auto& mesaIntfs = smData()->mesaFabricIntfToPort;
   if ( mesaIntfs.find( intf ) == mesaIntfs.end() ) {
      return;
   }
   const bcm_pbmp_t pbmp = getPbmpForL2ProfileRule( unit, entry );
   const bcm_pbmp_t mask = FerroTcam::getPbmpAll( *smData(), unit );
   BCM_CHECK( bcm_field_qualify_InPorts( unit, entry, pbmp, mask ) );
   entryManager->addInPortsForEntry( unit, entry, pbmp, mask );
   const int rc = entryManager->reinstallEntry( unit, entry );
   FERRO_ASSERT( rc == BCM_E_NONE && "installEntry failed" );
}

void Helper::updateNonL2PfRule( U32 unit, U32 entry ) {
   FERRO_TRACE( 2, "updateNonL2PfRule" << " unit: " << unit << " entry: " << entry );
   if ( entry == 0 ) {
      return;
   }
   const FerroTcamEntryManager::Ptr entryManager =
      systemAclGroupManager()->managerForEntry( entry );
   FERRO_ASSERT( !!entryManager && "Not able to identify the entryManager for the entry" );
   FERRO_ASSERT( !entryManager->supportsAclGroup() &&
                 "MESA is not supported on chips that support aclGroup" );
   const bcm_pbmp_t pbmp = FerroTcam::getPbmpEAll( *smData(), unit );
   const bcm_pbmp_t mask = Shim::sdk_->portBitmapAll( int( unit ) );
   BCM_CHECK( bcm_field_qualify_InPorts( unit, entry, pbmp, mask ) );
   entryManager->addInPortsForEntry( unit, entry, pbmp, mask );
   const int rc = entryManager->reinstallEntry( unit, entry );
   FERRO_ASSERT( rc == BCM_E_NONE && "installEntry failed" );
}

// The bitmap recorded for the entry, without the ports the unit no longer
// has; the record itself is left as it is.
bcm_pbmp_t Helper::getPbmpForL2ProfileRule( U32 unit, U32 entry ) {
   FERRO_TRACE( 2, "getPbmpForL2ProfileRule" << " unit: " << unit << " entry: " << entry );
   const FerroTcamEntryManager::Ptr entryManager =
      systemAclGroupManager()->managerForEntry( entry );
   FERRO_ASSERT( !!entryManager && "Not able to identify the entryManager for the entry" );
   const auto& units = entryManager->internalUnitEntry();
   const auto unitEntries = units.find( unit );
   const InternalUnitEntry* entries =
      unitEntries == units.end() ? nullptr : unitEntries->second.get();
   FERRO_ASSERT( !!entries );
   FERRO_ASSERT( entries->tcamEntryBcmPbmp( entry ) );
   bcm_pbmp_t pbmp = entries->tcamEntryBcmPbmp( entry )->data;
   BCM_PBMP_AND( pbmp, Shim::sdk_->portBitmapAll( int( unit ) ) );
   return pbmp;
}

}  // namespace FerroTcamSystemAcl
