// Switches the switch-to-CPU cancellation of the "Link Local Mcast V6" rule,
// which keeps link-local IPv6 multicast on VLANs without an SVI off the CPU.
// The action on the entry is the only record of the setting. Switching it on
// adds the action without removing it first, so switching on twice is refused
// by the SDK as a duplicate action and aborts; switching off twice is harmless.
#include "FerroTcamSystemAcl/CheckedCall.h"
#include "FerroTcamSystemAcl/Helper.h"
#include "FerroTcamSystemAcl/LibraryGlobals.h"

namespace FerroTcamSystemAcl {

void Helper::updateCopyToCpuCancelLLMcastTcam( U16 unit, bool add ) {
   FERRO_TRACE( 8, "updateCopyToCpuCancelLLMcastTcam" << " add " << add );
   const HN_LinkLocalMcastRule& rules = linkLocalMcastRuleTable();
   const auto it = rules.find( unit );
   if ( it == rules.end() ) {
      return;
   }
   const U32 entry = it->second;
   if ( add ) {
      BCM_CHECK( bcm_field_action_add( unit, entry, bcmFieldActionSwitchToCpuCancel, 0, 0 ) );
   } else {
      BCM_NO_RC_CHECK( bcm_field_action_remove( unit, entry, bcmFieldActionSwitchToCpuCancel ) );
   }
   const int rc = systemAclTcamEntryManager()->reinstallEntry( unit, entry );
   FERRO_ASSERT( rc == BCM_E_NONE && "reinstallEntry failed" );
}

}  // namespace FerroTcamSystemAcl
