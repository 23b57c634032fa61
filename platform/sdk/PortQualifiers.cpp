// Port qualifiers: the in-port bitmap and the (module, port) pairs of the
// source and destination.
#include "platform/sdk/SimState.h"

namespace Sim {

namespace {

using State = FieldProcessor::State;

bool portsBeyond( const bcm_pbmp_t& bitmap, int portCount ) {
   for ( int port = portCount; port < BCM_PBMP_PORT_MAX; ++port ) {
      if ( bcm_pbmp_member( bitmap, port ) ) {
         return true;
      }
   }
   return false;
}

// A port that has been flexed out cannot be matched on; masking it is harmless.
bool absentPortsIn( const bcm_pbmp_t& data, const bcm_pbmp_t& validPorts ) {
   bcm_pbmp_t absent = data;
   bcm_pbmp_remove( absent, validPorts );
   return !bcm_pbmp_is_null( absent );
}

// Module id and port each take 8 bits; the pair is kept as one 16-bit field.
int setModulePort( State& s, int unit, bcm_field_entry_t entry, bcm_field_qualify_t q,
                   bcm_module_t dataModid, bcm_module_t maskModid, bcm_port_t dataPort,
                   bcm_port_t maskPort ) {
   if ( s.findUnit( unit ) == nullptr ) {
      return BCM_E_UNIT;
   }
   if ( dataModid < 0 || dataModid > 0xff || dataPort < 0 || dataPort > 0xff ) {
      return BCM_E_PARAM;
   }
   const uint64_t data = ( static_cast<uint64_t>( dataModid ) << 8 ) | dataPort;
   const uint64_t mask = ( ( static_cast<uint32_t>( maskModid ) & 0xff ) << 8 ) |
                         ( static_cast<uint32_t>( maskPort ) & 0xff );
   return s.qualifyWord( unit, entry, q, data, mask );
}

int getModulePort( State& s, int unit, bcm_field_entry_t entry, bcm_field_qualify_t q,
                   bcm_module_t* dataModid, bcm_module_t* maskModid, bcm_port_t* dataPort,
                   bcm_port_t* maskPort ) {
   if ( dataModid == nullptr || maskModid == nullptr ) {
      return s.findUnit( unit ) == nullptr ? BCM_E_UNIT : BCM_E_PARAM;
   }
   Ternary value;
   if ( int rc = s.readWord( unit, entry, q, dataPort, maskPort, value ); rc != 0 ) {
      return rc;
   }
   *dataModid = static_cast<bcm_module_t>( value.data >> 8 );
   *maskModid = static_cast<bcm_module_t>( value.mask >> 8 );
   *dataPort = static_cast<bcm_port_t>( value.data & 0xff );
   *maskPort = static_cast<bcm_port_t>( value.mask & 0xff );
   return 0;
}

}  // namespace

int FieldProcessor::bcm_field_qualify_InPorts( int unit, bcm_field_entry_t entry,
                                               bcm_pbmp_t data, bcm_pbmp_t mask ) {
   State& s = *state_;
   return s.entryCall(
       "bcm_field_qualify_InPorts", unit, entry,
       [&]() -> int {
          Unit* u = s.findUnit( unit );
          if ( u == nullptr ) {
             return BCM_E_UNIT;
          }
          if ( portsBeyond( mask, u->config.portCount ) ||
               absentPortsIn( data, u->validPorts ) ) {
             return BCM_E_PORT;
          }
          int rc = 0;
          Entry* e = State::qualifiedEntry( *u, entry, bcmFieldQualifyInPorts, rc );
          if ( e == nullptr ) {
             return rc;
          }
          e->software.inPortsData = data;
          bcm_pbmp_and( e->software.inPortsData, mask );
          e->software.inPortsMask = mask;
          e->software.notePlain( bcmFieldQualifyInPorts );
          return 0;
       },
       [&]( ArgWriter& w ) { w.dec( unit ).dec( entry ).ports( data ).ports( mask ); } );
}

int FieldProcessor::bcm_field_qualify_InPorts_get( int unit, bcm_field_entry_t entry,
                                                   bcm_pbmp_t* data, bcm_pbmp_t* mask ) {
   State& s = *state_;
   return s.entryCall(
       "bcm_field_qualify_InPorts_get", unit, entry,
       [&]() -> int {
          Ternary unused;
          if ( int rc =
                   s.readWord( unit, entry, bcmFieldQualifyInPorts, data, mask, unused );
               rc != 0 ) {
             return rc;
          }
          const Entry* e = s.findUnit( unit )->findEntry( entry );
          *data = e->software.inPortsData;
          *mask = e->software.inPortsMask;
          return 0;
       },
       [&]( ArgWriter& w ) {
          w.dec( unit ).dec( entry ).out( data, "data" ).out( mask, "mask" );
       } );
}

// Source and destination (module, port) pairs share their shape and checks.
#define FERRO_SIM_MODULE_PORT_QUALIFIER( NAME )                                          \
   int FieldProcessor::bcm_field_qualify_##NAME(                                         \
       int unit, bcm_field_entry_t entry, bcm_module_t dataModid, bcm_module_t maskModid, \
       bcm_port_t dataPort, bcm_port_t maskPort ) {                                      \
      State& s = *state_;                                                                \
      return s.entryCall(                                                                \
          "bcm_field_qualify_" #NAME, unit, entry,                                       \
          [&] {                                                                          \
             return setModulePort( s, unit, entry, bcmFieldQualify##NAME, dataModid,     \
                                   maskModid, dataPort, maskPort );                      \
          },                                                                             \
          [&]( ArgWriter& w ) {                                                          \
             w.dec( unit ).dec( entry ).dec( dataModid ).hex(                            \
                 static_cast<uint32_t>( maskModid ) );                                   \
             w.dec( dataPort ).hex( static_cast<uint32_t>( maskPort ) );                 \
          } );                                                                           \
   }                                                                                     \
   int FieldProcessor::bcm_field_qualify_##NAME##_get(                                   \
       int unit, bcm_field_entry_t entry, bcm_module_t* dataModid,                       \
       bcm_module_t* maskModid, bcm_port_t* dataPort, bcm_port_t* maskPort ) {           \
      State& s = *state_;                                                                \
      return s.entryCall(                                                                \
          "bcm_field_qualify_" #NAME "_get", unit, entry,                                \
          [&] {                                                                          \
             return getModulePort( s, unit, entry, bcmFieldQualify##NAME, dataModid,     \
                                   maskModid, dataPort, maskPort );                      \
          },                                                                             \
          [&]( ArgWriter& w ) {                                                          \
             w.dec( unit ).dec( entry ).out( dataModid, "dataModid" ).out(               \
                 maskModid, "maskModid" );                                               \
             w.out( dataPort, "dataPort" ).out( maskPort, "maskPort" );                  \
          } );                                                                           \
   }
FERRO_SIM_MODULE_PORT_QUALIFIER( SrcPort )
FERRO_SIM_MODULE_PORT_QUALIFIER( DstPort )
#undef FERRO_SIM_MODULE_PORT_QUALIFIER

}  // namespace Sim
