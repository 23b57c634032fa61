// L2 protocol forwarding: on the interfaces where the user asked for a
// protocol to be forwarded rather than trapped, that protocol's trap entries
// must not cover the interface's port. Forwarding applies per physical port;
// a port-channel is configured through its members.
//
// The trap entries of each protocol, on every unit that has them:
//   stp       "BPDU Priority Elevator"
//   lacp      "LACPDU Priority Elevator"
//   microBfd  "MicroBfdPdu Priority Elevator"
//   lldp      the LLDPDU elevator, and on VXLAN-core chips its VXLAN-core
//             variant, which alone lets a port go for decapsulated traffic
#include "FerroTcamSystemAcl/CheckedCall.h"
#include "FerroTcamSystemAcl/Helper.h"
#include "FerroTcamSystemAcl/LibraryGlobals.h"
#include "platform/agent/TcamHelpers.h"

namespace FerroTcamSystemAcl {

bool Helper::removeL2ForwardingPorts( U16 unit, int entry,
                                      Lamo::L2Pt::L2PtProtocol protocol,
                                      bcm_pbmp_t& data ) const {
   const FerroCommon::FerroL2ProtocolFwdInfo* info =
      l2ProtocolFwd() ? l2ProtocolFwd()->info( protocol ) : nullptr;
   if ( info == nullptr ) {
      return false;
   }
   const bool perDevice = chipAttributes( unit )->l2PfDevicePbmpSupported != 0;
   for ( const auto& [ intf, trafficType ] : info->intf ) {
      if ( FerroTcam::isPortChannel( intf ) ) {
         continue;
      }
      const FerroTypes::FerroPort port = FerroTcam::intfToPort( *smData(), intf );
      if ( port == FerroTypes::FerroPort::invalid() || port.unit() != unit ) {
         continue;
      }
      if ( perDevice ) {
         data = updateDevicePortBitmapForTcamEntry( unit, entry, data, port, trafficType,
                                                    protocol );
      } else {
         BCM_PBMP_PORT_REMOVE( data, port.logicalPort() );
      }
   }
   return true;
}

// Only LLDP has a VXLAN-core variant, so forwarding of decapsulated traffic
// alone is meaningful for LLDP only, and then only the VXLAN-core entry lets
// the port go; the plain L2 traffic of the port is still trapped.
bcm_pbmp_t Helper::updateDevicePortBitmapForTcamEntry(
   U16 unit, int entry, const bcm_pbmp_t& pbmp, const FerroTypes::FerroPort& port,
   Lamo::L2Pt::L2PtTrafficType trafficType, Lamo::L2Pt::L2PtProtocol protocol ) const {
   bcm_pbmp_t result = pbmp;
   switch ( trafficType ) {
      case Lamo::L2Pt::l2PtTrafficTypeAll:
         BCM_PBMP_PORT_REMOVE( result, port.logicalPort() );
         return result;
      case Lamo::L2Pt::l2PtTrafficTypeVxlanDecap: {
         const Lamo::L2Pt::L2PtProtocol forwardingProtocol = protocol;
         FERRO_ASSERT( forwardingProtocol == Lamo::L2Pt::lldp() );
         const bool isVxlanEntry =
            vxlanCoreLldpPrioRuleHas( unit ) && U32( entry ) == vxlanCoreLldpPrioRule( unit );
         const bool isNonVxlanEntry =
            lldpPrioRuleHas( unit ) && U32( entry ) == lldpPrioRule( unit );
         FERRO_ASSERT( ( isVxlanEntry || isNonVxlanEntry ) && "Update Tcam entry failed" );
         if ( isVxlanEntry ) {
            BCM_PBMP_PORT_REMOVE( result, port.logicalPort() );
         }
         return result;
      }
   }
   FERRO_ASSERT( 0 && "Invalid L2PtTrafficType" );
   return result;
}

// Rebuilds one trap entry's ports from the forwarding configuration as it
// stands: every Ethernet port of the unit but those forwarding the protocol.
// The bitmap is recorded and kept per entry, so a later port refresh
// re-applies exactly it. Port classes (ACL-group managers) carry no
// forwarding exclusions, as at installation, and are left alone.
void Helper::updateL2ProtoFwdRule( U32 unit, U32 entry, Lamo::L2Pt::L2PtProtocol protocol ) {
   FERRO_TRACE( 2, "updateL2ProtoFwdRule" << " unit: " << unit << " entry: " << entry
                                          << " protocol: " << Lamo::L2Pt::name( protocol ) );
   if ( entry == 0 || smData()->skipInPortQualify ) {
      return;
   }
   const FerroTcamEntryManager::Ptr entryManager =
      systemAclGroupManager()->managerForEntry( entry );
   FERRO_ASSERT( !!entryManager && "Not able to identify the entryManager for the entry" );
   if ( entryManager->supportsAclGroup() ) {
      return;
   }
   bcm_pbmp_t data = FerroTcam::getPbmpEAll( *smData(), unit );
   const bcm_pbmp_t mask = FerroTcam::getPbmpAll( *smData(), unit );
   removeL2ForwardingPorts( U16( unit ), int( entry ), protocol, data );
   BCM_CHECK( bcm_field_qualify_InPorts( unit, entry, data, mask ) );
   entryManager->addInPortsForEntry( unit, entry, data, mask );
   trapViaInPortForEntryInt( U16( unit ), entry, true );
   const int rc = entryManager->reinstallEntry( unit, entry );
   FERRO_ASSERT( rc == BCM_E_NONE && "reinstallEntry failed" );
}

// The forwarding configuration changed: every unit's trap entries follow it.
void Helper::updateL2ProtoFwdRules() {
   FERRO_TRACE( 2, "updateL2ProtoFwdRules" );
   using Lamo::L2Pt::L2PtProtocol;
   for ( const FerroModule& module : smData()->modules ) {
      const U32 unit = module.unit;
      updateL2ProtoFwdRule( unit, bpduPrioRule( unit ), L2PtProtocol::stp );
      updateL2ProtoFwdRule( unit, lacpPrioRule( unit ), L2PtProtocol::lacp );
      updateL2ProtoFwdRule( unit, microBfdPrioRule( unit ), L2PtProtocol::microBfd );
      updateL2ProtoFwdRule( unit, lldpPrioRule( unit ), L2PtProtocol::lldp );
      updateL2ProtoFwdRule( unit, vxlanCoreLldpPrioRule( unit ), L2PtProtocol::lldp );
   }
}

// An entry that traps by in-port keeps its own bitmap in its manager: the
// manager's refreshes of all-port entries must leave it alone. Switched off,
// the entry is one of those again.
void Helper::trapViaInPortForEntryInt( U16 unit, U32 entry, bool enable ) {
   FERRO_TRACE( 2, "Helper::" << "trapViaInPortForEntryInt" << " unit: " << unit
                              << " entry: " << entry << " enable: " << enable );
   const FerroTcamEntryManager::Ptr manager = systemAclGroupManager()->managerForEntry( entry );
   FERRO_ASSERT( !!manager && "Not able to identify the entryManager for the entry" );
   manager->setTcamEntryBcmPbmpPermanent( unit, entry, enable );
}

}  // namespace FerroTcamSystemAcl
