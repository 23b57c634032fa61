#include "FerroTcamSystemAcl/IpfixPortProgrammerSm.h"

#include <vector>

#include "FerroTcamSystemAcl/LibraryGlobals.h"

namespace FerroTcamSystemAcl {

IpfixPortProgrammerSm::Ptr ipfixPortProgrammerSmFactory(
   const HwFlowTracking::Config::Ptr& config, HelperBase* helperBase ) {
   return IpfixPortProgrammerSm::Ptr( new IpfixPortProgrammerSm( config, helperBase ) );
}

IpfixPortProgrammerSm::Ptr IpfixPortProgrammerSm::IpfixPortProgrammerSmIs(
   const HwFlowTracking::Config::Ptr& config, HelperBase* helperBase ) {
   return ipfixPortProgrammerSmFactory( config, helperBase );
}

IpfixPortProgrammerSm::IpfixPortProgrammerSm( const HwFlowTracking::Config::Ptr& config,
                                              HelperBase* helperBase )
      : config_( config ), helperBase_( helperBase ) {
   hasNotificationActiveIs( true );
   // A helper that was never given a flow-tracking configuration still
   // installs its L3 rules; its machine has nothing to follow.
   if ( config_ ) {
      handleFtConfig();
   }
}

// The tracker machines go last: each resets the rule in its own teardown.
IpfixPortProgrammerSm::~IpfixPortProgrammerSm() {
   beingDestroyedIs( true );
   hasNotificationActiveIs( false );
   Lumo::flushZombieReactors();
   configSubscription_.notifierIs( nullptr );
   ipfixFtProgrammerSmDelAll();
   config_.reset();
}

void IpfixPortProgrammerSm::hasNotificationActiveIs( bool active ) {
   notificationActive_ = active;
   configSubscription_.notifierIs( active && config_ ? &config_->publisher() : nullptr );
   for ( const auto& child : ipfixFtProgrammerSm_ ) {
      child.second->hasNotificationActiveIs( active );
   }
}

// The old machine is torn down before the new one is built, so that its reset
// of the rule comes before the new machine's programming, not after it.
IpfixPortFlowTrackerProgrammerSm::Ptr IpfixPortProgrammerSm::ipfixFtProgrammerSmIs(
   const Lumo::String& name, const HwFlowTracking::FtConfig::Ptr& ftConfig, bool swExport,
   HelperBase* helperBase ) {
   ipfixFtProgrammerSmDel( name );
   IpfixPortFlowTrackerProgrammerSm::Ptr child =
      ipfixPortFlowTrackerProgrammerSmFactory( name, ftConfig, swExport, helperBase );
   ipfixFtProgrammerSm_[ name ] = child;
   return child;
}

// A child is released only once it is out of the map: its teardown runs
// pending reactions, which may come back to this map.
void IpfixPortProgrammerSm::ipfixFtProgrammerSmDel( const Lumo::String& name ) {
   auto it = ipfixFtProgrammerSm_.find( name );
   if ( it == ipfixFtProgrammerSm_.end() ) {
      return;
   }
   IpfixPortFlowTrackerProgrammerSm::Ptr child = std::move( it->second );
   ipfixFtProgrammerSm_.erase( it );
}

void IpfixPortProgrammerSm::ipfixFtProgrammerSmDelAll() {
   HN_IpfixFtProgrammerSm children;
   children.swap( ipfixFtProgrammerSm_ );
   children.clear();
}

void IpfixPortProgrammerSm::hwConfigDispatch( const Lumo::Notification& n ) {
   switch ( n.attribute ) {
      case HwFlowTracking::Config::attrHwFtConfig:
         if ( n.key ) {
            handleFtConfig( *n.key );
         } else {
            handleFtConfig();
         }
         return;
      case HwFlowTracking::Config::attrSwExport:
         handleSwExport();
         return;
   }
}

void IpfixPortProgrammerSm::handleFtConfig( const Lumo::String& name ) {
   FERRO_TRACE( 2, "IpfixPortProgrammerSm::" << "handleFtConfig" );
   ipfixFtProgrammerSmDel( name );
   const auto& trackers = config_->hwFtConfig();
   if ( auto it = trackers.find( name ); it != trackers.end() ) {
      FERRO_TRACE( 2, "creating: " << name );
      FERRO_TRACE( 2, "swExport is : " << config_->swExport() );
      const HwFlowTracking::FtConfig::Ptr ftConfig = it->second;
      ipfixFtProgrammerSmIs( name, ftConfig, config_->swExport(), helperBase_ );
   } else {
      FERRO_TRACE( 2, "deleting: " << name );
      ipfixFtProgrammerSmDel( name );
   }
}

void IpfixPortProgrammerSm::handleFtConfig() {
   FERRO_TRACE( 2, "IpfixPortProgrammerSm::" << "handleFtConfig" );
   // Names first: every rebuild runs pending reactions, which may change the
   // tracker map under a running walk.
   std::vector<Lumo::String> names;
   for ( const auto& tracker : config_->hwFtConfig() ) {
      names.push_back( tracker.first );
   }
   for ( const Lumo::String& name : names ) {
      handleFtConfig( name );
   }
}

void IpfixPortProgrammerSm::handleSwExport() {
   FERRO_TRACE( 2, "IpfixPortProgrammerSm::" << "handleSwExport" );
   handleFtConfig();
}

}  // namespace FerroTcamSystemAcl
