#include "platform/agent/SystemAclEvents.h"

namespace Agent {

SystemAclEvents::SystemAclEvents( Switch::Ptr sw, FerroTcamSystemAcl::HelperBase& helper )
      : switch_( std::move( sw ) ), helper_( helper ) {
   notifierIs( &switch_->l2ProtocolFwd->publisher() );
}

void SystemAclEvents::l2ProtocolForwardingIs( Lamo::L2Pt::L2PtProtocol protocol,
                                              Wirex::IntfId intf,
                                              Lamo::L2Pt::L2PtTrafficType trafficType ) {
   switch_->l2ProtocolFwd->intfIs( protocol, intf, trafficType );
}

void SystemAclEvents::l2ProtocolForwardingDel( Lamo::L2Pt::L2PtProtocol protocol,
                                               Wirex::IntfId intf ) {
   switch_->l2ProtocolFwd->intfDel( protocol, intf );
}

Wirex::IntfId SystemAclEvents::portAdd( U16 unit, U16 port, bool mesaFabric ) {
   const Wirex::IntfId intf = switch_->ethernetPortAdd( unit, port, mesaFabric );
   helper_.updatePbmpEAllSystemAclRules( unit, intf );
   return intf;
}

Wirex::IntfId SystemAclEvents::portRemove( U16 unit, U16 port ) {
   const Wirex::IntfId intf = switch_->ethernetPortRemove( unit, port );
   helper_.updatePbmpEAllSystemAclRules( unit, intf );
   // Only now: while the rules were refreshed, the fabric table still named
   // the interface, so that the forwarding trap rules let its port go.
   switch_->smData->mesaFabricIntfToPort.erase( intf );
   return intf;
}

void SystemAclEvents::onAttributeChange( const Lumo::Notification& notification ) {
   if ( notification.attribute == FerroCommon::FerroL2ProtocolFwd::attrFwdInfo ) {
      helper_.updateL2ProtoFwdRules();
   }
}

}  // namespace Agent
