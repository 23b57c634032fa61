// How a manager binds its entries to ports: in-port bitmaps, or, for ACL-group
// managers, a port class that exactly the bound ports carry.
#include "platform/agent/TcamEntryManager.h"
#include "platform/sdk/Shim.h"

int FerroTcamEntryManager::addInPortsForEntry( U32 unit, U32 entry,
                                               const bcm_pbmp_t& data,
                                               const bcm_pbmp_t& mask ) {
   const int rc = Shim::sdk_->bcm_field_qualify_InPorts( unit, entry, data, mask );
   if ( BCM_FAILURE( rc ) ) {
      return rc;
   }
   TcamEntryRecord& r = recordIs( unit, entry );
   const bool permanent = r.pbmp && r.pbmp->permanent;
   r.pbmp = TcamEntryBcmPbmp{ data, mask, permanent };
   return rc;
}

int FerroTcamEntryManager::updateInPortsForEntry( U32 unit, U32 entry,
                                                  const FerroTypes::FerroPortList& ports,
                                                  bool enable, bool reinstall ) {
   TcamEntryBcmPbmp pbmp;
   if ( const TcamEntryRecord* r = record( unit, entry ); r && r->pbmp ) {
      pbmp = *r->pbmp;
   } else {
      // Nothing bound yet: start from no port, compared on every port of the
      // unit, so that the entry matches exactly the ports added here.
      bcm_port_config_t config;
      const int rc = Shim::sdk_->bcm_port_config_get( unit, &config );
      if ( BCM_FAILURE( rc ) ) {
         return rc;
      }
      pbmp.mask = config.all;
   }
   for ( const FerroTypes::FerroPort& port : ports ) {
      if ( port.unit() != unit ) {
         continue;  // a port of another chip: that unit's entry covers it
      }
      if ( enable ) {
         BCM_PBMP_PORT_ADD( pbmp.data, port.logicalPort() );
      } else {
         BCM_PBMP_PORT_REMOVE( pbmp.data, port.logicalPort() );
      }
   }
   int rc = Shim::sdk_->bcm_field_qualify_InPorts( unit, entry, pbmp.data, pbmp.mask );
   if ( BCM_FAILURE( rc ) ) {
      return rc;
   }
   recordIs( unit, entry ).pbmp = pbmp;
   if ( reinstall ) {
      rc = reinstallEntry( unit, entry );
   }
   return rc;
}

int FerroTcamEntryManager::qualifyPortsClassId( U32 unit, U32 entry,
                                                const bcm_pbmp_t& ports,
                                                bool permanent ) {
   if ( !supportsAclGroup_ ) {
      return BCM_E_UNAVAIL;
   }
   auto& table = groupManager_ ? groupManager_->portClasses() : portClasses_;
   auto& classes = table[ unit ];
   U32 classBit = 0;
   for ( const auto& [ pbmp, bit ] : classes ) {
      if ( BCM_PBMP_EQ( pbmp, ports ) ) {
         classBit = bit;
         break;
      }
   }
   if ( classBit == 0 ) {
      // One bit per port set, so that a port in several sets carries all their
      // bits and each entry matches on its own bit alone.
      const int classIdBits = groupManager_
                                 ? groupManager_->chipAttributes( unit )->classIdBits
                                 : FerroCentral::ChipCapabilities{}.classIdBits;
      if ( classes.size() >= size_t( classIdBits ) || classes.size() >= 32 ) {
         return BCM_E_RESOURCE;
      }
      classBit = U32( 1 ) << classes.size();
      classes.emplace_back( ports, classBit );
   }
   // Written for a reused bit too: it is idempotent, and repairs a set whose
   // earlier programming failed part way.
   int port;
   BCM_PBMP_ITER( ports, port ) {
      uint32 portClass = 0;
      int rc = Shim::sdk_->bcm_port_class_get( unit, port, bcmPortClassFieldIngress,
                                              &portClass );
      if ( BCM_SUCCESS( rc ) && ( portClass & classBit ) == 0 ) {
         rc = Shim::sdk_->bcm_port_class_set( unit, port, bcmPortClassFieldIngress,
                                             portClass | classBit );
      }
      if ( BCM_FAILURE( rc ) ) {
         return rc;
      }
   }
   const int rc =
      Shim::sdk_->bcm_field_qualify_InterfaceClassPort( unit, entry, classBit, classBit );
   if ( BCM_FAILURE( rc ) ) {
      return rc;
   }
   TcamEntryRecord& r = recordIs( unit, entry );
   r.portClassId = classBit;
   r.pbmp = TcamEntryBcmPbmp{ ports, ports, permanent };
   return rc;
}

void FerroTcamEntryManager::setTcamEntryBcmPbmpPermanent( U32 unit, U32 entry,
                                                          bool permanent ) {
   // Only entries the manager knows: a record made up here would pass an
   // entry that was never created for one that exists. Without a bitmap yet
   // the flag is kept on an empty one, which the next binding inherits.
   if ( record( unit, entry ) == nullptr ) {
      return;
   }
   TcamEntryRecord& r = recordIs( unit, entry );
   if ( !r.pbmp ) {
      r.pbmp = TcamEntryBcmPbmp{};
   }
   r.pbmp->permanent = permanent;
}

bcm_pbmp_t FerroTcamEntryManager::tcamEntryBcmPbmp( U32 unit, U32 entry ) const {
   const TcamEntryRecord* r = record( unit, entry );
   return r && r->pbmp ? r->pbmp->data : bcm_pbmp_t{};
}

bcm_pbmp_t FerroTcamEntryManager::getProgrammedIpbm( U32 unit, U32 entry ) {
   bcm_pbmp_t data{};
   bcm_pbmp_t mask{};
   if ( BCM_FAILURE( Shim::sdk_->bcm_field_qualify_InPorts_get( unit, entry, &data,
                                                                &mask ) ) ) {
      return bcm_pbmp_t{};
   }
   return data;
}
