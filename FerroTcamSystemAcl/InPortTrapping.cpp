// Trapping by in-port: an L2 trap entry that traps by in-port covers only the
// ports in its own bitmap, kept per entry by its manager, and that bitmap is
// changed one interface at a time. An interface is a physical port here: a
// port-channel, an interface without a port or one of another unit changes
// nothing. On ACL-group managers the entry's port class is re-bound instead.
//
// Which entries each operation touches, on the units named:
//   trapViaInPortForClass      every unit; the trap entries of one L2 class:
//                              1 "BPDU Priority Elevator", 2 "LACPDU Priority
//                              Elevator", 3 the LLDPDU elevator and its
//                              VXLAN-core variant, 8 "MicroBfdPdu Priority
//                              Elevator"
//   updateInPortForClassEntry  the LLDPDU elevators, the only L2 class whose
//                              entries split by traffic type: both for all
//                              traffic, the VXLAN-core variant alone for
//                              decapsulated traffic
//   updateInPortForEtherType   the entries matched by ether type alone: the
//                              link-local PTP rule (0x88F7) and its
//                              VXLAN-core variant
#include <array>

#include "FerroTcamSystemAcl/CheckedCall.h"
#include "FerroTcamSystemAcl/Helper.h"
#include "FerroTcamSystemAcl/LibraryGlobals.h"
#include "platform/agent/TcamHelpers.h"

namespace FerroTcamSystemAcl {

namespace {

using Lamo::L2Pt::L2PtProtocol;

// A class's trap entries on a unit (0 where the unit has none) and the
// protocol whose forwarding narrows them.
struct ClassEntries {
   std::array<U32, 2> entries;
   L2PtProtocol protocol;
};

ClassEntries classEntries( const Helper& helper, U32 classId, U32 unit,
                           const char* checkedCallOperation ) {
   switch ( classId ) {
      case FerroCommon::classBpdu_:
         return { { helper.bpduPrioRule( unit ), 0 }, L2PtProtocol::stp };
      case FerroCommon::classLacp_:
         return { { helper.lacpPrioRule( unit ), 0 }, L2PtProtocol::lacp };
      case FerroCommon::classLldp_:
         return { { helper.lldpPrioRule( unit ), helper.vxlanCoreLldpPrioRule( unit ) },
                  L2PtProtocol::lldp };
      case FerroCommon::classMicroBfd_:
         return { { helper.microBfdPrioRule( unit ), 0 }, L2PtProtocol::microBfd };
   }
   FERRO_ASSERT( 0 && "Invalid classId type" );
   return {};
}

}  // namespace

// On: the class's entries trap on every Ethernet port but those forwarding
// the class's protocol, and keep that bitmap per entry. Off: they trap on
// every Ethernet port, forwarding or not, and follow the unit's port set.
void Helper::trapViaInPortForClass( U32 classId, bool enable ) {
   FERRO_TRACE( 2, "trapViaInPortForClass" << " class: " << classId << " enable: " << enable );
   const char* const checkedCallOperation = __PRETTY_FUNCTION__;
   for ( const FerroModule& module : smData()->modules ) {
      const U32 unit = module.unit;
      const ClassEntries classed = classEntries( *this, classId, unit, checkedCallOperation );
      for ( const U32 entry : classed.entries ) {
         if ( enable ) {
            updateL2ProtoFwdRule( unit, entry, classed.protocol );
            continue;
         }
         if ( entry == 0 || smData()->skipInPortQualify ) {
            continue;
         }
         const FerroTcamEntryManager::Ptr manager =
            systemAclGroupManager()->managerForEntry( entry );
         FERRO_ASSERT( !!manager && "Not able to identify the entryManager for the entry" );
         if ( manager->supportsAclGroup() ) {
            continue;
         }
         const bcm_pbmp_t data = FerroTcam::getPbmpEAll( *smData(), unit );
         const bcm_pbmp_t mask = FerroTcam::getPbmpAll( *smData(), unit );
         BCM_CHECK( bcm_field_qualify_InPorts( unit, entry, data, mask ) );
         manager->addInPortsForEntry( unit, entry, data, mask );
         trapViaInPortForEntryInt( U16( unit ), entry, false );
         const int rc = manager->reinstallEntry( unit, entry );
         FERRO_ASSERT( rc == BCM_E_NONE && "reinstallEntry failed" );
      }
   }
}

void Helper::updateInPortForClassEntry( U32 unit, Wirex::IntfId intf, bool enable,
                                        Lamo::L2Pt::L2PtTrafficType trafficType ) {
   FERRO_TRACE( 2, "updateInPortForClassEntry" << " unit: " << unit << " intf: " << intf
                                               << " enable: " << enable << " traffic: "
                                               << Lamo::L2Pt::name( trafficType ) );
   const FerroTcamEntryManager::Ptr& manager = l2TcamEntryManager();
   switch ( trafficType ) {
      case Lamo::L2Pt::l2PtTrafficTypeAll:
         updateInPortsForEntryHelper( unit, intf, enable, lldpPrioRule( unit ), manager );
         updateInPortsForEntryHelper( unit, intf, enable, vxlanCoreLldpPrioRule( unit ),
                                      manager );
         return;
      case Lamo::L2Pt::l2PtTrafficTypeVxlanDecap:
         updateInPortsForEntryHelper( unit, intf, enable, vxlanCoreLldpPrioRule( unit ),
                                      manager );
         return;
   }
   FERRO_ASSERT( 0 && "Invalid L2PtTrafficType" );
}

void Helper::updateInPortForEtherType( U32 unit, Wirex::IntfId intf, bool enable ) {
   FERRO_TRACE( 2, "updateInPortForEtherType" << " unit: " << unit << " intf: " << intf
                                              << " enable: " << enable );
   const FerroTcamEntryManager::Ptr& manager = l2TcamEntryManager();
   updateInPortsForEntryHelper( unit, intf, enable, linkLocalPtpRule( unit ), manager );
   updateInPortsForEntryHelper( unit, intf, enable, vxlanCoreLinkLocalPtpRule( unit ),
                                manager );
}

// Adds (enable) or takes out the interface's port on the entry's recorded
// bitmap, programs it and reinstalls the entry.
void Helper::updateInPortsForEntryHelper( U32 unit, Wirex::IntfId intf, bool enable,
                                          U32 entryId,
                                          const FerroTcamEntryManager::Ptr& manager ) {
   FERRO_TRACE( 2, "updateInPortsForEntryHelper" << " unit: " << unit << " intf: " << intf
                                                 << " enable: " << enable
                                                 << " entry: " << entryId );
   if ( entryId == 0 || smData()->skipInPortQualify || FerroTcam::isPortChannel( intf ) ) {
      return;
   }
   FERRO_ASSERT( !!manager && "Not able to identify the entryManager for the entry" );
   const FerroTypes::FerroPort port = FerroTcam::intfToPort( *smData(), intf );
   if ( port == FerroTypes::FerroPort::invalid() || port.unit() != unit ) {
      return;
   }
   const TcamEntryRecord* record = manager->record( unit, entryId );
   FERRO_ASSERT( record && record->pbmp && "No port bitmap recorded for the entry" );
   // A port the unit no longer has may linger in the record of a rule the
   // port refresh leaves alone; the chip would refuse it.
   bcm_pbmp_t data = record->pbmp->data;
   BCM_PBMP_AND( data, Shim::sdk_->portBitmapAll( int( unit ) ) );
   if ( enable ) {
      BCM_PBMP_PORT_ADD( data, port.logicalPort() );
   } else {
      BCM_PBMP_PORT_REMOVE( data, port.logicalPort() );
   }
   if ( manager->supportsAclGroup() ) {
      const int rc = manager->qualifyPortsClassId( unit, entryId, data, true );
      FERRO_ASSERT( rc == BCM_E_NONE && "qualifyPortsClassId failed" );
   } else {
      const bcm_pbmp_t mask = FerroTcam::getPbmpAll( *smData(), unit );
      BCM_CHECK( bcm_field_qualify_InPorts( unit, entryId, data, mask ) );
      manager->addInPortsForEntry( unit, entryId, data, mask );
   }
   const int rc = manager->reinstallEntry( unit, entryId );
   FERRO_ASSERT( rc == BCM_E_NONE && "reinstallEntry failed" );
}

}  // namespace FerroTcamSystemAcl
