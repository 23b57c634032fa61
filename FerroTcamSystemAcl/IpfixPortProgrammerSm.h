// The top IPFIX port programmer: one per Helper, following the agent's
// flow-tracking configuration with one tracker machine per flow tracker. A
// changed tracker, or a change of software export, rebuilds tracker machines
// from scratch: each teardown resets the IPFIX rule before the new machine
// programs it again.
#pragma once

#include "FerroTcamSystemAcl/IpfixPortFlowTrackerProgrammerSm.h"

namespace FerroTcamSystemAcl {

class IpfixPortProgrammerSm : public Lumo::Node {
  public:
   typedef Lumo::Ptr<IpfixPortProgrammerSm> Ptr;
   typedef Lumo::HashMap<Lumo::String, IpfixPortFlowTrackerProgrammerSm::Ptr>
      HN_IpfixFtProgrammerSm;
   static constexpr U32 typeIndex = 3;

   // Builds the machine, subscribed and caught up with the configuration.
   // `helperBase` must outlive it: the Helper that holds it.
   static Ptr IpfixPortProgrammerSmIs( const HwFlowTracking::Config::Ptr& config,
                                       HelperBase* helperBase );
   ~IpfixPortProgrammerSm() override;

   Lumo::TypeData typeData() const { return { libraryModule, typeIndex }; }
   const HwFlowTracking::Config::Ptr& config() const { return config_; }
   HelperBase* helperBase() const { return helperBase_; }

   // Tracker machines by flow-tracker name; Is replaces any machine of that name.
   const HN_IpfixFtProgrammerSm& ipfixFtProgrammerSm() const { return ipfixFtProgrammerSm_; }
   IpfixPortFlowTrackerProgrammerSm::Ptr ipfixFtProgrammerSmIs(
      const Lumo::String& name, const HwFlowTracking::FtConfig::Ptr& ftConfig,
      bool swExport, HelperBase* helperBase );
   void ipfixFtProgrammerSmDel( const Lumo::String& name );
   void ipfixFtProgrammerSmDelAll();

   // Subscribes or unsubscribes this machine and every machine below it.
   void hasNotificationActiveIs( bool active );
   bool hasNotificationActive() const { return notificationActive_; }

  private:
   friend Ptr ipfixPortProgrammerSmFactory( const HwFlowTracking::Config::Ptr& config,
                                            HelperBase* helperBase );
   IpfixPortProgrammerSm( const HwFlowTracking::Config::Ptr& config, HelperBase* helperBase );

   void hwConfigDispatch( const Lumo::Notification& notification );
   void handleFtConfig( const Lumo::String& name );
   void handleFtConfig();
   void handleSwExport();

   HwFlowTracking::Config::Ptr config_;
   IpfixSubscription<IpfixPortProgrammerSm, &IpfixPortProgrammerSm::hwConfigDispatch>
      configSubscription_{ *this };
   HelperBase* helperBase_;  // not owned: the Helper owns this machine
   HN_IpfixFtProgrammerSm ipfixFtProgrammerSm_;
   bool notificationActive_ = false;
};

IpfixPortProgrammerSm::Ptr ipfixPortProgrammerSmFactory(
   const HwFlowTracking::Config::Ptr& config, HelperBase* helperBase );

}  // namespace FerroTcamSystemAcl
