#include "FerroTcamSystemAcl/IpfixPortExporterProgrammerSm.h"

#include "FerroTcamSystemAcl/LibraryGlobals.h"

namespace FerroTcamSystemAcl {

IpfixPortExporterProgrammerSm::Ptr ipfixPortExporterProgrammerSmFactory(
   const Lumo::String& name, const HwFlowTracking::ExporterConfig::Ptr& config,
   HelperBase* helperBase ) {
   return IpfixPortExporterProgrammerSm::Ptr(
      new IpfixPortExporterProgrammerSm( name, config, helperBase ) );
}

IpfixPortExporterProgrammerSm::IpfixPortExporterProgrammerSm(
   const Lumo::String& name, const HwFlowTracking::ExporterConfig::Ptr& config,
   HelperBase* helperBase )
      : name_( name ), expConfig_( config ), helperBase_( helperBase ) {
   hasNotificationActiveIs( true );
   handleCollector();
}

IpfixPortExporterProgrammerSm::~IpfixPortExporterProgrammerSm() {
   beingDestroyedIs( true );
   hasNotificationActiveIs( false );
   Lumo::flushZombieReactors();
   expConfigSubscription_.notifierIs( nullptr );
   expConfig_.reset();
   name_.clear();
}

void IpfixPortExporterProgrammerSm::hasNotificationActiveIs( bool active ) {
   expConfigSubscription_.notifierIs( active ? &expConfig_->publisher() : nullptr );
}

void IpfixPortExporterProgrammerSm::expConfigDispatch( const Lumo::Notification& n ) {
   switch ( n.attribute ) {
      case HwFlowTracking::ExporterConfig::attrCollectorIpAndPort:
      case HwFlowTracking::ExporterConfig::attrCollectorIp6AndPort:
         if ( n.key ) {
            handleCollector( *n.key );
         } else {
            handleCollector();
         }
         return;
   }
}

void IpfixPortExporterProgrammerSm::handleCollector( const Lumo::String& name ) {
   FERRO_TRACE( 2, "IpfixPortExporterProgrammerSm::" << "handleCollector" );
   const auto& v4 = expConfig_->collectorIpAndPort();
   const auto& v6 = expConfig_->collectorIp6AndPort();
   if ( auto it = v4.find( name ); it != v4.end() ) {
      const U16 port = it->second.port;
      FERRO_TRACE( 2, "ipv4 dstPort: " << port );
      helperBase_->doInstallIpFixPort( port, true );
   } else if ( auto it6 = v6.find( name ); it6 != v6.end() ) {
      const U16 port = it6->second.port;
      FERRO_TRACE( 2, "ipv6 dstPort: " << port );
      helperBase_->doInstallIpFixPort( port, true );
   } else {
      FERRO_TRACE( 2, "Deleting " << name );
      helperBase_->doInstallIpFixPort( 0, false );
   }
}

void IpfixPortExporterProgrammerSm::handleCollector() {
   FERRO_TRACE( 2, "IpfixPortExporterProgrammerSm::" << "handleCollector" );
   // Nothing here tears a machine down, so no reaction can change the maps
   // under the walk.
   for ( const auto& collector : expConfig_->collectorIpAndPort() ) {
      handleCollector( collector.first );
   }
   for ( const auto& collector : expConfig_->collectorIp6AndPort() ) {
      handleCollector( collector.first );
   }
}

}  // namespace FerroTcamSystemAcl
