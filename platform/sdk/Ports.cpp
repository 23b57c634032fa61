// Ports of a unit: the port configuration and the per-port field class.
#include "platform/sdk/SimState.h"

namespace Sim {

int FieldProcessor::bcm_port_config_get( int unit, bcm_port_config_t* config ) {
   State& s = *state_;
   return s.unitCall(
       "bcm_port_config_get", unit,
       [&]() -> int {
          const Unit* u = s.findUnit( unit );
          if ( u == nullptr ) {
             return BCM_E_UNIT;
          }
          if ( config == nullptr ) {
             return BCM_E_PARAM;
          }
          config->all = u->validPorts;
          bcm_pbmp_clear( config->cpu );
          bcm_pbmp_port_add( config->cpu, cpuPortNumber );
          config->e = config->all;
          bcm_pbmp_remove( config->e, config->cpu );
          return 0;
       },
       [&]( ArgWriter& w ) { w.dec( unit ).out( config, "config" ); } );
}

int FieldProcessor::bcm_port_class_set( int unit, bcm_port_t port,
                                        bcm_port_class_t pclass, uint32 classId ) {
   State& s = *state_;
   return s.unitCall(
       "bcm_port_class_set", unit,
       [&]() -> int {
          Unit* u = s.findUnit( unit );
          if ( u == nullptr ) {
             return BCM_E_UNIT;
          }
          if ( pclass != bcmPortClassFieldIngress || classId > u->classIdMax ) {
             return BCM_E_PARAM;
          }
          if ( !u->portValid( port ) ) {
             return BCM_E_PORT;
          }
          u->portClass[static_cast<size_t>( port )] = classId;
          return 0;
       },
       [&]( ArgWriter& w ) { w.dec( unit ).dec( port ).dec( pclass ).dec( classId ); } );
}

int FieldProcessor::bcm_port_class_get( int unit, bcm_port_t port,
                                        bcm_port_class_t pclass, uint32* classId ) {
   State& s = *state_;
   return s.unitCall(
       "bcm_port_class_get", unit,
       [&]() -> int {
          const Unit* u = s.findUnit( unit );
          if ( u == nullptr ) {
             return BCM_E_UNIT;
          }
          if ( pclass != bcmPortClassFieldIngress || classId == nullptr ) {
             return BCM_E_PARAM;
          }
          if ( !u->portValid( port ) ) {
             return BCM_E_PORT;
          }
          *classId = u->portClass[static_cast<size_t>( port )];
          return 0;
       },
       [&]( ArgWriter& w ) {
          w.dec( unit ).dec( port ).dec( pclass ).out( classId, "classId" );
       } );
}

}  // namespace Sim
