// The names of CPU reasons and deliveries, and the decision that turns the
// chip's reasons and the field processor's actions into a packet's fate.
#include "pipeline/Fate.h"

#include <algorithm>

namespace Pipeline {

const char* cpuReasonName( CpuReason reason ) {
   switch ( reason ) {
      case CpuReason::ReservedMac:
         return "reserved MAC";
      case CpuReason::RouterMacNonIp:
         return "router MAC, not IP";
      case CpuReason::Broadcast:
         return "broadcast on a routed VLAN";
      case CpuReason::SelfIp:
         return "self IP";
      case CpuReason::Glean:
         return "glean";
      case CpuReason::TtlExpired:
         return "TTL expired";
      case CpuReason::LinkLocalMulticast:
         return "link-local multicast on a routed VLAN";
      case CpuReason::MulticastCpuOif:
         return "multicast CPU OIF";
      case CpuReason::IgmpSnooping:
         return "IGMP snooping";
      case CpuReason::MldSnooping:
         return "MLD snooping";
      case CpuReason::Ieee1588:
         return "IEEE 1588";
      case CpuReason::AclCopy:
         return "ACL copy";
   }
   return "?";
}

bool isTrap( CpuReason reason ) {
   switch ( reason ) {
      case CpuReason::Broadcast:
      case CpuReason::LinkLocalMulticast:
      case CpuReason::MulticastCpuOif:
      case CpuReason::AclCopy:
         return false;
      default:
         return true;
   }
}

const char* deliveryName( CpuDelivery delivery ) {
   switch ( delivery ) {
      case CpuDelivery::None:
         return "none";
      case CpuDelivery::Trap:
         return "trap";
      case CpuDelivery::Copy:
         return "copy";
   }
   return "?";
}

Fate decideFate( const ChipVerdict& chip, const Sim::LookupResult& lookup,
                 uint32_t defaultCpuQueue ) {
   const Sim::StageResult& ingress = lookup.ingress;
   Fate fate;
   // SwitchToCpuCancel takes back what the switch itself decided to send to
   // the CPU, never a copy the field processor asks for.
   const bool cancel = ingress.switchToCpuCancel || lookup.vlan.switchToCpuCancel;
   ( cancel ? fate.cancelled : fate.reasons ) = chip.reasons;
   if ( ingress.copyToCpu || lookup.vlan.copyToCpu ) {
      fate.reasons.push_back( CpuReason::AclCopy );
   }
   const bool trap = std::any_of( fate.reasons.begin(), fate.reasons.end(), isTrap );
   fate.toCpu = trap                  ? CpuDelivery::Trap
                : fate.reasons.empty() ? CpuDelivery::None
                                       : CpuDelivery::Copy;
   // A CPU queue alone sends nothing to the CPU; it only says where a packet
   // that goes there waits.
   if ( fate.toCpu != CpuDelivery::None ) {
      fate.cpuQueue = ingress.cpuQueue.value_or( defaultCpuQueue );
   }
   fate.trafficClass = ingress.internalPriority;
   // The field processor's drop keeps the packet off the front-panel ports;
   // its CPU copy or trap still goes.
   if ( !chip.dropReason.empty() ) {
      fate.dropReason = chip.dropReason;
   } else if ( ingress.drop || lookup.vlan.drop ) {
      fate.dropReason = "ACL drop";
   }
   fate.dropped = !fate.dropReason.empty();
   fate.forwarded = !fate.dropped && !trap;
   fate.classDest = lookup.vlan.classDest;
   fate.newClassId = ingress.newClassId;
   fate.egressClassSelect = ingress.egressClassSelect;
   return fate;
}

}  // namespace Pipeline
