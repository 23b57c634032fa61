// Follows one exporter of a flow tracker: every change of one of its collectors
// points the IPFIX rule at that collector's port, or back at the default port,
// disabled, when the collector is gone. An IPv4 collector wins over an IPv6 one
// of the same name.
#pragma once

#include "FerroTcamSystemAcl/IpfixSubscription.h"
#include "FerroTcamSystemAcl/LibraryModule.h"
#include "platform/agent/HelperBase.h"
#include "platform/agent/HwFlowTracking.h"
#include "platform/runtime/TypeRegistry.h"

namespace FerroTcamSystemAcl {

class IpfixPortExporterProgrammerSm : public Lumo::Node {
  public:
   typedef Lumo::Ptr<IpfixPortExporterProgrammerSm> Ptr;
   static constexpr U32 typeIndex = 1;

   // Unsubscribes and lets pending reactions run out; the rule is left as it
   // is: only a collector that goes away, or the tracker's clean-up, resets it.
   ~IpfixPortExporterProgrammerSm() override;

   Lumo::TypeData typeData() const { return { libraryModule, typeIndex }; }
   const Lumo::String& name() const { return name_; }
   const HwFlowTracking::ExporterConfig::Ptr& config() const { return expConfig_; }

   void hasNotificationActiveIs( bool active );

  private:
   friend Ptr ipfixPortExporterProgrammerSmFactory(
      const Lumo::String& name, const HwFlowTracking::ExporterConfig::Ptr& config,
      HelperBase* helperBase );
   IpfixPortExporterProgrammerSm( const Lumo::String& name,
                                  const HwFlowTracking::ExporterConfig::Ptr& config,
                                  HelperBase* helperBase );

   void expConfigDispatch( const Lumo::Notification& notification );
   void handleCollector( const Lumo::String& name );
   // Every IPv4 collector, then every IPv6 one.
   void handleCollector();

   Lumo::String name_;
   HwFlowTracking::ExporterConfig::Ptr expConfig_;
   IpfixSubscription<IpfixPortExporterProgrammerSm,
                     &IpfixPortExporterProgrammerSm::expConfigDispatch>
      expConfigSubscription_{ *this };
   HelperBase* helperBase_;  // not owned: the Helper outlives its machines
};

// Builds the machine, subscribed and caught up with the exporter's collectors.
IpfixPortExporterProgrammerSm::Ptr ipfixPortExporterProgrammerSmFactory(
   const Lumo::String& name, const HwFlowTracking::ExporterConfig::Ptr& config,
   HelperBase* helperBase );

}  // namespace FerroTcamSystemAcl
