// The agent's reactions that reach the system ACL once a switch is up: a
// change of the L2 protocol forwarding configuration refreshes every unit's
// forwarding trap entries, and a front-panel port coming or going re-binds the
// system rules of its unit. Tests and tools drive the helper through this, as
// the forwarding agent's reactors would.
#pragma once

#include "platform/agent/HelperBase.h"
#include "platform/agent/SwitchBringup.h"
#include "platform/runtime/Publisher.h"

namespace Agent {

class SystemAclEvents : public Lumo::Reactor {
  public:
   // Subscribes to the switch's forwarding configuration; the helper must
   // outlive this object.
   SystemAclEvents( Switch::Ptr sw, FerroTcamSystemAcl::HelperBase& helper );

   // Forwarding of `protocol` on `intf`, for `trafficType` or (Del) not at all.
   void l2ProtocolForwardingIs( Lamo::L2Pt::L2PtProtocol protocol, Wirex::IntfId intf,
                                Lamo::L2Pt::L2PtTrafficType trafficType );
   void l2ProtocolForwardingDel( Lamo::L2Pt::L2PtProtocol protocol, Wirex::IntfId intf );

   // A port change of the switch (see Switch::ethernetPortAdd), then the
   // refresh of the unit's system rules; returns the port's interface.
   Wirex::IntfId portAdd( U16 unit, U16 port, bool mesaFabric );
   Wirex::IntfId portRemove( U16 unit, U16 port );

   void onAttributeChange( const Lumo::Notification& notification ) override;

  private:
   Switch::Ptr switch_;
   FerroTcamSystemAcl::HelperBase& helper_;
};

}  // namespace Agent
