// Front-panel ports coming and going on a running switch: the chip, the
// shared state's port sets and interface maps change together, so that the
// helper's refresh of the system rules sees one consistent picture.
#include <stdexcept>
#include <string>

#include "platform/agent/SwitchBringup.h"
#include "platform/sdk/Simulator.h"

namespace Agent {

namespace {

constexpr U32 ethernetPerUnit = 1000;  // unit u's port p is Ethernet(u * 1000 + p)

[[noreturn]] void invalid( const std::string& message ) {
   throw std::invalid_argument( message );
}

}  // namespace

Wirex::IntfId Switch::ethernetIntf( U16 unit, U16 port ) {
   return Wirex::IntfId::ethernet( unit * ethernetPerUnit + port );
}

namespace {

// The unit's port sets after checking that `port` can change on it.
FerroUnitPorts& portsOf( const Switch& sw, U16 unit, U16 port ) {
   const ChipProfile* chip = sw.chip( unit );
   auto ports = sw.smData->unitPorts.find( unit );
   if ( chip == nullptr || ports == sw.smData->unitPorts.end() ) {
      invalid( "unit " + std::to_string( unit ) + " does not exist" );
   }
   if ( port < 1 || port >= chip->attributes.portCount ) {
      invalid( "unit " + std::to_string( unit ) + " port " + std::to_string( port ) +
               ": expected a front-panel port 1.." +
               std::to_string( chip->attributes.portCount - 1 ) );
   }
   return ports->second;
}

void flex( U16 unit, U16 port, bool valid ) {
   const int rc = Sim::FieldProcessor::instance().portValidIs( unit, port, valid );
   if ( BCM_FAILURE( rc ) ) {
      throw std::runtime_error( "unit " + std::to_string( unit ) + " port " +
                                std::to_string( port ) + ": the chip refused the change (" +
                                std::to_string( rc ) + ")" );
   }
}

}  // namespace

Wirex::IntfId Switch::ethernetPortAdd( U16 unit, U16 port, bool mesaFabric ) {
   FerroUnitPorts& ports = portsOf( *this, unit, port );
   if ( BCM_PBMP_MEMBER( ports.pbmpEAll, port ) ) {
      invalid( "unit " + std::to_string( unit ) + " port " + std::to_string( port ) +
               " is present; expected a port that was removed" );
   }
   flex( unit, port, true );
   const Wirex::IntfId intf = ethernetIntf( unit, port );
   const FerroModule* module = smData->module( unit );
   const FerroTypes::FerroPort chipPort( module->modId, unit, port );
   BCM_PBMP_PORT_ADD( ports.pbmpAll, port );
   BCM_PBMP_PORT_ADD( ports.pbmpEAll, port );
   BCM_PBMP_PORT_ADD( ports.activePorts, port );
   smData->intfToPort[ intf ] = chipPort;
   if ( mesaFabric ) {
      smData->mesaFabricIntfToPort[ intf ] = chipPort;
   }
   return intf;
}

Wirex::IntfId Switch::ethernetPortRemove( U16 unit, U16 port ) {
   FerroUnitPorts& ports = portsOf( *this, unit, port );
   if ( !BCM_PBMP_MEMBER( ports.pbmpEAll, port ) ) {
      invalid( "unit " + std::to_string( unit ) + " port " + std::to_string( port ) +
               " is absent; expected a present port" );
   }
   flex( unit, port, false );
   const Wirex::IntfId intf = ethernetIntf( unit, port );
   BCM_PBMP_PORT_REMOVE( ports.pbmpAll, port );
   BCM_PBMP_PORT_REMOVE( ports.pbmpEAll, port );
   BCM_PBMP_PORT_REMOVE( ports.activePorts, port );
   smData->intfToPort.erase( intf );
   return intf;
}

}  // namespace Agent
