// Retargets the IPFIX trap that the L3 installer reserved on every unit: at the
// collector's UDP port, or back at the IANA port and disabled when export is
// off. Enabling does not switch the entry back on; a reinstall keeps whatever
// enable state the entry has.
#include <cassert>

#include "FerroTcamSystemAcl/Helper.h"
#include "platform/agent/TcamHelpers.h"
#include "platform/sdk/Shim.h"

namespace FerroTcamSystemAcl {

namespace {

constexpr U16 defaultIpfixPort = 4739;
// The compressed class the L3 installer gave the port; kept on every change.
constexpr U32 ipfixPortClass = 14;
constexpr U32 ipfixPortClassMask = 15;

}  // namespace

void Helper::doInstallIpFixPort( U16 port, bool enable ) {
   if ( !smData() ) {
      return;
   }
   const FerroTcamGroupManager::Ptr& groupManager = systemAclGroupManager();
   const FerroBoundedTcamEntryManager::Ptr& entryManager = systemAclTcamEntryManager();
   const U16 programmedPort = enable ? port : defaultIpfixPort;
   for ( const FerroModule& module : smData()->modules ) {
      const U32 unit = module.unit;
      const U32 entry = ipfixRule( unit );
      // Unchecked, as when the L3 installer first set the port.
      if ( groupManager ) {
         Ferro::releaseOldAndSetL4DstPort( unit, groupManager, entry, programmedPort, 0xFFFF,
                                           ipfixPortClass, ipfixPortClassMask );
      }
      if ( entryManager ) {
         const int rc = entryManager->reinstallEntry( unit, entry );
         assert( rc == BCM_E_NONE && "reinstallEntry failed" );
         if ( !enable ) {
            entryManager->enableEntry( unit, entry, false, BCM_FIELD_ENTRY_ENABLE_STATUS );
         }
      }
   }
}

}  // namespace FerroTcamSystemAcl
