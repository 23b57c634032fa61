// Port helpers of the TCAM library: the agent's port sets and interface map.
#include "platform/agent/TcamHelpers.h"

namespace FerroTcam {

namespace {

const FerroUnitPorts* unitPorts( const FerroCommonSmData& smData, U32 unit ) {
   auto it = smData.unitPorts.find( unit );
   return it == smData.unitPorts.end() ? nullptr : &it->second;
}

}  // namespace

bcm_pbmp_t getPbmpAll( const FerroCommonSmData& smData, U32 unit ) {
   const FerroUnitPorts* ports = unitPorts( smData, unit );
   return ports ? ports->pbmpAll : bcm_pbmp_t{};
}

bcm_pbmp_t getPbmpEAll( const FerroCommonSmData& smData, U32 unit ) {
   const FerroUnitPorts* ports = unitPorts( smData, unit );
   return ports ? ports->pbmpEAll : bcm_pbmp_t{};
}

bcm_pbmp_t getActivePorts( const FerroCommonSmData& smData, U32 unit ) {
   const FerroUnitPorts* ports = unitPorts( smData, unit );
   return ports ? ports->activePorts : bcm_pbmp_t{};
}

FerroTypes::FerroPort intfToPort( const FerroCommonSmData& smData, Wirex::IntfId intf ) {
   auto it = smData.intfToPort.find( intf );
   return it == smData.intfToPort.end() ? FerroTypes::FerroPort::invalid() : it->second;
}

bool isPortChannel( Wirex::IntfId intf ) { return intf.isPortChannel(); }

}  // namespace FerroTcam
