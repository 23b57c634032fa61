// The top IPFIX port programmer: one per Helper, following the agent's
// flow-tracking configuration. For now it only holds the configuration it
// follows and the helper it programs through; the reactions to the
// configuration are added with the IPFIX port rule.
#pragma once

#include "platform/agent/HelperBase.h"
#include "platform/agent/HwFlowTracking.h"
#include "platform/runtime/Ptr.h"

namespace FerroTcamSystemAcl {

class IpfixPortProgrammerSm : public Lumo::Node {
  public:
   typedef Lumo::Ptr<IpfixPortProgrammerSm> Ptr;
   static constexpr U32 typeIndex = 3;

   static Ptr IpfixPortProgrammerSmIs( const HwFlowTracking::Config::Ptr& config,
                                       HelperBase* helperBase );

   const HwFlowTracking::Config::Ptr& config() const { return config_; }
   HelperBase* helperBase() const { return helperBase_; }
   void hasNotificationActiveIs( bool active ) { notificationActive_ = active; }
   bool hasNotificationActive() const { return notificationActive_; }

  private:
   IpfixPortProgrammerSm( const HwFlowTracking::Config::Ptr& config, HelperBase* helperBase )
         : config_( config ), helperBase_( helperBase ) {}

   HwFlowTracking::Config::Ptr config_;
   HelperBase* helperBase_;  // not owned: the Helper owns this machine
   bool notificationActive_ = false;
};

}  // namespace FerroTcamSystemAcl
