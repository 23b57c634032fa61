// Follows one flow tracker. With hardware export it keeps one exporter machine
// per exporter of the tracker; with software export (fixed for the machine's
// life: a change rebuilds the tracker) exporters are not followed and only the
// local collector's port and add flag program the IPFIX rule. Its teardown puts
// the rule back on the default port, disabled.
#pragma once

#include "FerroTcamSystemAcl/IpfixPortExporterProgrammerSm.h"
#include "platform/runtime/Containers.h"

namespace FerroTcamSystemAcl {

class IpfixPortFlowTrackerProgrammerSm : public Lumo::Node {
  public:
   typedef Lumo::Ptr<IpfixPortFlowTrackerProgrammerSm> Ptr;
   typedef Lumo::HashMap<Lumo::String, IpfixPortExporterProgrammerSm::Ptr>
      HN_CollProgrammerSm;
   static constexpr U32 typeIndex = 2;

   ~IpfixPortFlowTrackerProgrammerSm() override;

   Lumo::TypeData typeData() const { return { libraryModule, typeIndex }; }
   const Lumo::String& name() const { return name_; }
   const HwFlowTracking::FtConfig::Ptr& config() const { return ftConfig_; }
   bool swExport() const { return swExport_; }

   // Exporter machines by exporter name. A child that already follows
   // `exporterConfig` is kept; one that follows another object is rebuilt.
   const HN_CollProgrammerSm& collProgrammerSm() const { return collProgrammerSm_; }
   IpfixPortExporterProgrammerSm::Ptr collProgrammerSmIs(
      const Lumo::String& name, const HwFlowTracking::ExporterConfig::Ptr& exporterConfig,
      HelperBase* helperBase );
   void collProgrammerSmDel( const Lumo::String& name );
   void collProgrammerSmDelAll();

   // Follows `config` (null: none) and programs the rule from it, unless it is
   // the one followed already. An absent collector reads as "not added".
   const HwFlowTracking::LocalCollectorConfig::Ptr& localCollectorConfig() const {
      return localCollectorConfig_;
   }
   void localCollectorConfigIs( const HwFlowTracking::LocalCollectorConfig::Ptr& config );
   // Stops following the local collector and hands it back.
   HwFlowTracking::LocalCollectorConfig::Ptr localCollectorConfigDel();

   // Subscribes or unsubscribes this machine and every exporter machine.
   void hasNotificationActiveIs( bool active );

   // Puts the IPFIX rule back on the default port, disabled.
   void doCleanup();

  private:
   friend Ptr ipfixPortFlowTrackerProgrammerSmFactory(
      const Lumo::String& name, const HwFlowTracking::FtConfig::Ptr& ftConfig,
      bool swExport, HelperBase* helperBase );
   IpfixPortFlowTrackerProgrammerSm( const Lumo::String& name,
                                     const HwFlowTracking::FtConfig::Ptr& ftConfig,
                                     bool swExport, HelperBase* helperBase );

   void hwFtConfigDispatch( const Lumo::Notification& notification );
   void localCollectorConfigDispatch( const Lumo::Notification& notification );
   void handleExporterConfig( const Lumo::String& name );
   void handleExporterConfig();
   void handleLocalCollConfig();

   Lumo::String name_;
   HwFlowTracking::FtConfig::Ptr ftConfig_;
   IpfixSubscription<IpfixPortFlowTrackerProgrammerSm,
                     &IpfixPortFlowTrackerProgrammerSm::hwFtConfigDispatch>
      ftConfigSubscription_{ *this };
   bool swExport_;
   HelperBase* helperBase_;  // not owned: the Helper outlives its machines
   HN_CollProgrammerSm collProgrammerSm_;
   HwFlowTracking::LocalCollectorConfig::Ptr localCollectorConfig_;
   IpfixSubscription<IpfixPortFlowTrackerProgrammerSm,
                     &IpfixPortFlowTrackerProgrammerSm::localCollectorConfigDispatch>
      localCollectorSubscription_{ *this };
   bool notificationActive_ = false;
};

// Builds the machine, subscribed and caught up with the tracker's exporters and
// local collector.
IpfixPortFlowTrackerProgrammerSm::Ptr ipfixPortFlowTrackerProgrammerSmFactory(
   const Lumo::String& name, const HwFlowTracking::FtConfig::Ptr& ftConfig, bool swExport,
   HelperBase* helperBase );

}  // namespace FerroTcamSystemAcl
