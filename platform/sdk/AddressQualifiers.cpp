// Address qualifiers: destination MAC, IPv4 and IPv6 address.
#include "platform/sdk/SimState.h"

namespace Sim {

namespace {

uint64_t packMac( const uint8_t* mac ) {
   uint64_t value = 0;
   for ( int i = 0; i < 6; ++i ) {
      value = ( value << 8 ) | mac[i];
   }
   return value;
}
void unpackMac( uint64_t value, uint8_t* mac ) {
   for ( int i = 5; i >= 0; --i, value >>= 8 ) {
      mac[i] = static_cast<uint8_t>( value );
   }
}

}  // namespace

int FieldProcessor::bcm_field_qualify_DstMac( int unit, bcm_field_entry_t entry,
                                              const bcm_mac_t data,
                                              const bcm_mac_t mask ) {
   State& s = *state_;
   return s.entryCall(
       "bcm_field_qualify_DstMac", unit, entry,
       [&] {
          return s.qualifyWord( unit, entry, bcmFieldQualifyDstMac, packMac( data ),
                                packMac( mask ) );
       },
       [&]( ArgWriter& w ) { w.dec( unit ).dec( entry ).mac( data ).mac( mask ); } );
}

int FieldProcessor::bcm_field_qualify_DstMac_get( int unit, bcm_field_entry_t entry,
                                                  bcm_mac_t* data, bcm_mac_t* mask ) {
   State& s = *state_;
   return s.entryCall(
       "bcm_field_qualify_DstMac_get", unit, entry,
       [&]() -> int {
          Ternary value;
          if ( int rc =
                   s.readWord( unit, entry, bcmFieldQualifyDstMac, data, mask, value );
               rc != 0 ) {
             return rc;
          }
          unpackMac( value.data, *data );
          unpackMac( value.mask, *mask );
          return 0;
       },
       [&]( ArgWriter& w ) {
          w.dec( unit ).dec( entry ).out( data, "data" ).out( mask, "mask" );
       } );
}

int FieldProcessor::bcm_field_qualify_DstIp( int unit, bcm_field_entry_t entry,
                                             bcm_ip_t data, bcm_ip_t mask ) {
   State& s = *state_;
   return s.entryCall(
       "bcm_field_qualify_DstIp", unit, entry,
       [&] { return s.qualifyWord( unit, entry, bcmFieldQualifyDstIp, data, mask ); },
       [&]( ArgWriter& w ) { w.dec( unit ).dec( entry ).ip4( data ).ip4( mask ); } );
}

int FieldProcessor::bcm_field_qualify_DstIp_get( int unit, bcm_field_entry_t entry,
                                                 bcm_ip_t* data, bcm_ip_t* mask ) {
   State& s = *state_;
   return s.entryCall(
       "bcm_field_qualify_DstIp_get", unit, entry,
       [&]() -> int {
          Ternary value;
          if ( int rc =
                   s.readWord( unit, entry, bcmFieldQualifyDstIp, data, mask, value );
               rc != 0 ) {
             return rc;
          }
          *data = static_cast<bcm_ip_t>( value.data );
          *mask = static_cast<bcm_ip_t>( value.mask );
          return 0;
       },
       [&]( ArgWriter& w ) {
          w.dec( unit ).dec( entry ).out( data, "data" ).out( mask, "mask" );
       } );
}

int FieldProcessor::bcm_field_qualify_DstIp6( int unit, bcm_field_entry_t entry,
                                              const bcm_ip6_t data,
                                              const bcm_ip6_t mask ) {
   State& s = *state_;
   return s.entryCall(
       "bcm_field_qualify_DstIp6", unit, entry,
       [&]() -> int {
          Unit* u = s.findUnit( unit );
          if ( u == nullptr ) {
             return BCM_E_UNIT;
          }
          int rc = 0;
          Entry* e = State::qualifiedEntry( *u, entry, bcmFieldQualifyDstIp6, rc );
          if ( e == nullptr ) {
             return rc;
          }
          for ( int i = 0; i < 16; ++i ) {
             e->software.ip6Data[i] = data[i] & mask[i];
             e->software.ip6Mask[i] = mask[i];
          }
          e->software.notePlain( bcmFieldQualifyDstIp6 );
          return 0;
       },
       [&]( ArgWriter& w ) { w.dec( unit ).dec( entry ).ip6( data ).ip6( mask ); } );
}

int FieldProcessor::bcm_field_qualify_DstIp6_get( int unit, bcm_field_entry_t entry,
                                                  bcm_ip6_t* data, bcm_ip6_t* mask ) {
   State& s = *state_;
   return s.entryCall(
       "bcm_field_qualify_DstIp6_get", unit, entry,
       [&]() -> int {
          Ternary unused;
          if ( int rc =
                   s.readWord( unit, entry, bcmFieldQualifyDstIp6, data, mask, unused );
               rc != 0 ) {
             return rc;
          }
          const Entry* e = s.findUnit( unit )->findEntry( entry );
          for ( int i = 0; i < 16; ++i ) {
             ( *data )[i] = e->software.ip6Data[i];
             ( *mask )[i] = e->software.ip6Mask[i];
          }
          return 0;
       },
       [&]( ArgWriter& w ) {
          w.dec( unit ).dec( entry ).out( data, "data" ).out( mask, "mask" );
       } );
}

}  // namespace Sim
