// The rule that sends packets the CPU injected, and that the pipeline would
// hand back to the CPU, to the CPU drop queue. With VXLAN on, the rule is taken
// out and its entry left blank, ready to be programmed again.
#include <cassert>

#include "FerroTcamSystemAcl/CheckedCall.h"
#include "FerroTcamSystemAcl/Helper.h"
#include "FerroTcamSystemAcl/LibraryGlobals.h"
#include "FerroTcamSystemAcl/TcamFields.h"
#include "platform/agent/TcamHelpers.h"

namespace FerroTcamSystemAcl {

void Helper::programSourceCpuPortDropRule( U16 unit, U32 entry ) {
   const bool vxlanEnabled = smData()->vxlanEnabled;
   FERRO_TRACE( 5, "programSourceCpuPortDropRule" << " vxlan enable: " << vxlanEnabled );
   const bcm_pbmp_t pbmpAll = FerroTcam::getPbmpAll( *smData(), unit );
   const FerroBoundedTcamEntryManager::Ptr& manager = l3TcamEntryManager();

   if ( vxlanEnabled ) {
      manager->removeEntry( unit, entry );
      BCM_NO_RC_CHECK( bcm_field_qualify_clear( unit, entry ) );
      BCM_NO_RC_CHECK( bcm_field_action_remove_all( unit, entry ) );
      BCM_NO_RC_CHECK( bcm_field_entry_policer_detach_all( unit, entry ) );
      return;
   }

   BCM_CHECK( bcm_field_action_add( unit, entry, bcmFieldActionCosQCpuNew, cpuCosqDrop_, 0 ) );
   if ( manager->supportsAclGroup() ) {
      // ACL-group chips have no in-port bitmap here: the CPU is named as the
      // packet's source (module, port).
      const FerroTypes::FerroPort sp = smData()->firstCpuPort();
      assert( sp != FerroTypes::FerroPort::invalid() && "Expecting cpu port at init time" );
      BCM_CHECK( bcm_field_qualify_SrcPort( unit, entry, sp.modId(), IN_PORT_FULL_MASK, sp.logicalPort(), IN_PORT_FULL_MASK ) );
   } else {
      // The CPU port (every port of the unit that is not an Ethernet port),
      // under the mask of every port of the unit.
      bcm_pbmp_t cpuPbmp = pbmpAll;
      BCM_PBMP_REMOVE( cpuPbmp, FerroTcam::getPbmpEAll( *smData(), unit ) );
      qualifyInPorts( unit, entry, cpuPbmp, pbmpAll, model( unit ) );
      manager->addInPortsForEntry( unit, entry, cpuPbmp, pbmpAll );
   }
   const int rc = manager->installEntry( unit, entry );
   assert( rc == BCM_E_NONE && "installEntry failed" );
}

void Helper::doInstallVxlanCpuPortDropRule() {
   const bool vxlanEnabled = smData()->vxlanEnabled;
   FERRO_TRACE( 2, "doInstallVxlanCpuPortDropRule" << " Handling Vxlan enable: " << vxlanEnabled );
   for ( const FerroModule& module : smData()->modules ) {
      FERRO_TRACE( 8, "doInstallVxlanCpuPortDropRule" << " Configuring module " << module.unit );
      programSourceCpuPortDropRule( module.unit, sourceCpuPortDropRule( module.unit ) );
   }
}

}  // namespace FerroTcamSystemAcl
