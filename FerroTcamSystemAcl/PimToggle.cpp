// Switches the installed PIM trap between sending PIM to the CPU and not, by
// editing its actions in place and reinstalling it. The entry's action list is
// the only record of the setting.
#include <cassert>

#include "FerroTcamSystemAcl/CheckedCall.h"
#include "FerroTcamSystemAcl/Helper.h"
#include "FerroTcamSystemAcl/LibraryGlobals.h"

namespace FerroTcamSystemAcl {

void Helper::updateCopyPimToCpuTcam( U16 unit, bool copyToCpu ) {
   FERRO_TRACE( 3, __PRETTY_FUNCTION__ );
   if ( !pimRuleHas( unit ) ) {
      return;
   }
   const U32 entry = pimRule( unit );
   if ( copyToCpu ) {
      // Removing both first makes a repeated call leave exactly one of each,
      // whatever the entry held; the removals fail harmlessly when absent.
      BCM_NO_RC_CHECK( bcm_field_action_remove( unit, entry, bcmFieldActionCosQCpuNew ) );
      BCM_NO_RC_CHECK( bcm_field_action_remove( unit, entry, bcmFieldActionCopyToCpu ) );
      BCM_CHECK( bcm_field_action_add( unit, entry, bcmFieldActionCopyToCpu, 0, 0 ) );
      BCM_CHECK( bcm_field_action_add( unit, entry, bcmFieldActionCosQCpuNew, cpuCosqPIM_, 0 ) );
   } else {
      // The queue action is left: without the copy it has no effect, and the
      // next switch on replaces it.
      BCM_NO_RC_CHECK( bcm_field_action_remove( unit, entry, bcmFieldActionCopyToCpu ) );
   }
   const int rc = systemAclTcamEntryManager()->reinstallEntry( unit, entry );
   assert( rc == BCM_E_NONE && "reinstallEntry failed" );
}

}  // namespace FerroTcamSystemAcl
