#include "FerroTcamSystemAcl/IpfixPortFlowTrackerProgrammerSm.h"

#include <vector>

#include "FerroTcamSystemAcl/LibraryGlobals.h"

namespace FerroTcamSystemAcl {

IpfixPortFlowTrackerProgrammerSm::Ptr ipfixPortFlowTrackerProgrammerSmFactory(
   const Lumo::String& name, const HwFlowTracking::FtConfig::Ptr& ftConfig, bool swExport,
   HelperBase* helperBase ) {
   return IpfixPortFlowTrackerProgrammerSm::Ptr(
      new IpfixPortFlowTrackerProgrammerSm( name, ftConfig, swExport, helperBase ) );
}

IpfixPortFlowTrackerProgrammerSm::IpfixPortFlowTrackerProgrammerSm(
   const Lumo::String& name, const HwFlowTracking::FtConfig::Ptr& ftConfig, bool swExport,
   HelperBase* helperBase )
      : name_( name ), ftConfig_( ftConfig ), swExport_( swExport ),
        helperBase_( helperBase ) {
   hasNotificationActiveIs( true );
   handleExporterConfig();
   localCollectorConfigIs( ftConfig_->localCollectorConfig() );
}

// Unsubscribed first, so that nothing reacts to the clean-up or to the pending
// reactions run after it; the exporters go last, once nothing can reach them.
IpfixPortFlowTrackerProgrammerSm::~IpfixPortFlowTrackerProgrammerSm() {
   beingDestroyedIs( true );
   hasNotificationActiveIs( false );
   doCleanup();
   Lumo::flushZombieReactors();
   ftConfigSubscription_.notifierIs( nullptr );
   localCollectorConfigDel();
   collProgrammerSmDelAll();
   ftConfig_.reset();
}

void IpfixPortFlowTrackerProgrammerSm::hasNotificationActiveIs( bool active ) {
   notificationActive_ = active;
   ftConfigSubscription_.notifierIs( active ? &ftConfig_->publisher() : nullptr );
   localCollectorSubscription_.notifierIs(
      active && localCollectorConfig_ ? &localCollectorConfig_->publisher() : nullptr );
   for ( const auto& child : collProgrammerSm_ ) {
      child.second->hasNotificationActiveIs( active );
   }
}

IpfixPortExporterProgrammerSm::Ptr IpfixPortFlowTrackerProgrammerSm::collProgrammerSmIs(
   const Lumo::String& name, const HwFlowTracking::ExporterConfig::Ptr& exporterConfig,
   HelperBase* helperBase ) {
   auto it = collProgrammerSm_.find( name );
   if ( it != collProgrammerSm_.end() && it->second->config() == exporterConfig ) {
      return it->second;
   }
   collProgrammerSmDel( name );
   IpfixPortExporterProgrammerSm::Ptr child =
      ipfixPortExporterProgrammerSmFactory( name, exporterConfig, helperBase );
   collProgrammerSm_[ name ] = child;
   return child;
}

// A child is released only once it is out of the map: its teardown runs
// pending reactions, which may come back to this map.
void IpfixPortFlowTrackerProgrammerSm::collProgrammerSmDel( const Lumo::String& name ) {
   auto it = collProgrammerSm_.find( name );
   if ( it == collProgrammerSm_.end() ) {
      return;
   }
   IpfixPortExporterProgrammerSm::Ptr child = std::move( it->second );
   collProgrammerSm_.erase( it );
}

void IpfixPortFlowTrackerProgrammerSm::collProgrammerSmDelAll() {
   HN_CollProgrammerSm children;
   children.swap( collProgrammerSm_ );
   children.clear();
}

void IpfixPortFlowTrackerProgrammerSm::localCollectorConfigIs(
   const HwFlowTracking::LocalCollectorConfig::Ptr& config ) {
   if ( config == localCollectorConfig_ ) {
      return;
   }
   localCollectorConfigDel();
   localCollectorConfig_ = config;
   if ( notificationActive_ && localCollectorConfig_ ) {
      localCollectorSubscription_.notifierIs( &localCollectorConfig_->publisher() );
   }
   handleLocalCollConfig();
}

HwFlowTracking::LocalCollectorConfig::Ptr
IpfixPortFlowTrackerProgrammerSm::localCollectorConfigDel() {
   localCollectorSubscription_.notifierIs( nullptr );
   return std::move( localCollectorConfig_ );
}

void IpfixPortFlowTrackerProgrammerSm::doCleanup() {
   FERRO_TRACE( 2, "IpfixPortFlowTrackerProgrammerSm::" << "doCleanup" );
   helperBase_->doInstallIpFixPort( 0, false );
}

void IpfixPortFlowTrackerProgrammerSm::hwFtConfigDispatch( const Lumo::Notification& n ) {
   switch ( n.attribute ) {
      case HwFlowTracking::FtConfig::attrExpConfig:
         if ( n.key ) {
            handleExporterConfig( *n.key );
         } else {
            handleExporterConfig();
         }
         return;
      case HwFlowTracking::FtConfig::attrLocalCollectorConfig:
         localCollectorConfigIs( ftConfig_->localCollectorConfig() );
         return;
   }
}

void IpfixPortFlowTrackerProgrammerSm::localCollectorConfigDispatch(
   const Lumo::Notification& n ) {
   if ( n.attribute == HwFlowTracking::LocalCollectorConfig::attrConfig ) {
      handleLocalCollConfig();
   }
}

void IpfixPortFlowTrackerProgrammerSm::handleExporterConfig( const Lumo::String& name ) {
   FERRO_TRACE( 2, "IpfixPortFlowTrackerProgrammerSm::" << "handleExporterConfig" );
   if ( swExport_ ) {
      FERRO_TRACE( 2, "SwExport is true, skip." );
      return;
   }
   const auto& exporters = ftConfig_->expConfig();
   if ( auto it = exporters.find( name ); it != exporters.end() ) {
      FERRO_TRACE( 2, "creating collProgrammerSm: " << name );
      collProgrammerSmIs( name, it->second, helperBase_ );
   } else {
      FERRO_TRACE( 2, "deleting collProgrammerSm: " << name );
      collProgrammerSmDel( name );
   }
}

void IpfixPortFlowTrackerProgrammerSm::handleExporterConfig() {
   FERRO_TRACE( 2, "IpfixPortFlowTrackerProgrammerSm::" << "handleExporterConfig" );
   // Names first: rebuilding an exporter runs pending reactions, which may
   // change the exporter map under a running walk.
   std::vector<Lumo::String> names;
   for ( const auto& exporter : ftConfig_->expConfig() ) {
      names.push_back( exporter.first );
   }
   for ( const Lumo::String& name : names ) {
      handleExporterConfig( name );
   }
}

void IpfixPortFlowTrackerProgrammerSm::handleLocalCollConfig() {
   FERRO_TRACE( 2, "IpfixPortFlowTrackerProgrammerSm::" << "handleLocalCollConfig" );
   if ( !swExport_ ) {
      FERRO_TRACE( 2, "swExport is disabled" );
      return;
   }
   const bool add = localCollectorConfig_ && localCollectorConfig_->add();
   const U16 port = localCollectorConfig_ ? localCollectorConfig_->port() : 0;
   FERRO_TRACE( 2, "add:" << add );
   helperBase_->doInstallIpFixPort( port, add );
}

}  // namespace FerroTcamSystemAcl
