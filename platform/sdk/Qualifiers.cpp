// Plain qualifiers of an entry's software copy and their read-backs.
//
// Every qualifier is checked the way the SDK checks it: the unit, then the
// arguments (data wider than the field is refused, a wider mask is cut to the
// field), then the entry, then the group's qualifier set. Data is stored as
// data & mask, so a read-back returns the canonical value, as the chip does.
#include "platform/sdk/SimState.h"

namespace Sim {

namespace {

int checkData( const Unit& unit, bcm_field_qualify_t q, uint64_t data, uint64_t& mask,
               SdkVersion version ) {
   switch ( fieldKind( q ) ) {
      case FieldKind::StpState:
         if ( data != BCM_STG_STP_DISABLE && data != BCM_STG_STP_BLOCK &&
              data != BCM_STG_STP_LEARN && data != BCM_STG_STP_FORWARD ) {
            return BCM_E_PARAM;
         }
         break;
      case FieldKind::PacketRes:
         // An enumerated code: a value outside the version's set is no code at all.
         if ( !decodePacketRes( version, static_cast<uint32_t>( data ) ) ) {
            return BCM_E_PARAM;
         }
         break;
      case FieldKind::Ternary:
      case FieldKind::ModulePort:
         if ( data > fieldMax( unit, q ) ) {
            return BCM_E_PARAM;
         }
         break;
      case FieldKind::Stage:
      case FieldKind::PortBitmap:
      case FieldKind::Ip6:
      case FieldKind::IpType:
         return BCM_E_INTERNAL;  // these have calls of their own
   }
   mask &= fieldMax( unit, q );
   return 0;
}

}  // namespace

// The entry a qualifier call edits, or the code why there is none.
Entry* FieldProcessor::State::callEntry( int unit, bcm_field_entry_t entry, int& rc,
                                         bool outputsGiven ) {
   Unit* u = findUnit( unit );
   if ( u == nullptr ) {
      rc = BCM_E_UNIT;
      return nullptr;
   }
   if ( !outputsGiven ) {
      rc = BCM_E_PARAM;
      return nullptr;
   }
   Entry* e = u->findEntry( entry );
   if ( e == nullptr ) {
      rc = BCM_E_NOT_FOUND;
   }
   return e;
}

Entry* FieldProcessor::State::qualifiedEntry( Unit& unit, bcm_field_entry_t entry,
                                              bcm_field_qualify_t q, int& rc ) {
   Entry* e = unit.findEntry( entry );
   if ( e == nullptr ) {
      rc = BCM_E_NOT_FOUND;
      return nullptr;
   }
   if ( !groupHas( *e->group, q ) ) {
      rc = BCM_E_NOT_FOUND;
      return nullptr;
   }
   return e;
}

int FieldProcessor::State::qualifyWord( int unit, bcm_field_entry_t entry,
                                        bcm_field_qualify_t q, uint64_t data,
                                        uint64_t mask ) {
   Unit* u = findUnit( unit );
   if ( u == nullptr ) {
      return BCM_E_UNIT;
   }
   if ( int rc = checkData( *u, q, data, mask, version ); rc != 0 ) {
      return rc;
   }
   int rc = 0;
   Entry* e = qualifiedEntry( *u, entry, q, rc );
   if ( e == nullptr ) {
      return rc;
   }
   e->software.fields[q] = Ternary{ data & mask, mask };
   e->software.notePlain( q );
   return 0;
}

// Reads a qualifier back from the software copy. A field of the group's set
// that the entry never qualified reads as don't-care (0/0).
int FieldProcessor::State::readWord( int unit, bcm_field_entry_t entry,
                                     bcm_field_qualify_t q, const void* out0,
                                     const void* out1, Ternary& value ) {
   Unit* u = findUnit( unit );
   if ( u == nullptr ) {
      return BCM_E_UNIT;
   }
   if ( out0 == nullptr || out1 == nullptr ) {
      return BCM_E_PARAM;
   }
   int rc = 0;
   const Entry* e = qualifiedEntry( *u, entry, q, rc );
   if ( e == nullptr ) {
      return rc;
   }
   value = e->software.fields[q];
   if ( q == bcmFieldQualifyIngressStpState ) {
      value.mask &= u->config.stpStateMaskReadBack;
   }
   return 0;
}

int FieldProcessor::bcm_field_qualify_clear( int unit, bcm_field_entry_t entry ) {
   State& s = *state_;
   return s.entryCall(
       "bcm_field_qualify_clear", unit, entry,
       [&]() -> int {
          int rc = 0;
          Entry* e = s.callEntry( unit, entry, rc );
          if ( e == nullptr ) {
             return rc;
          }
          e->software.clearQualifiers();
          return 0;
       },
       [&]( ArgWriter& w ) { w.dec( unit ).dec( entry ); } );
}

int FieldProcessor::bcm_field_qualify_IpType( int unit, bcm_field_entry_t entry,
                                              bcm_field_IpType_t type ) {
   State& s = *state_;
   return s.entryCall(
       "bcm_field_qualify_IpType", unit, entry,
       [&]() -> int {
          Unit* u = s.findUnit( unit );
          if ( u == nullptr ) {
             return BCM_E_UNIT;
          }
          if ( !decodeIpType( s.version, type ) ) {
             return BCM_E_PARAM;
          }
          int rc = 0;
          Entry* e = State::qualifiedEntry( *u, entry, bcmFieldQualifyIpType, rc );
          if ( e == nullptr ) {
             return rc;
          }
          // Kept as the SDK value; lookup decodes it into its meaning.
          e->software.fields[bcmFieldQualifyIpType] =
              Ternary{ static_cast<uint64_t>( static_cast<uint32_t>( type ) ), 0xff };
          e->software.notePlain( bcmFieldQualifyIpType );
          return 0;
       },
       [&]( ArgWriter& w ) {
          w.dec( unit ).dec( entry ).fieldData( bcmFieldQualifyIpType,
                                                static_cast<uint32_t>( type ) );
       } );
}

int FieldProcessor::bcm_field_qualify_IpType_get( int unit, bcm_field_entry_t entry,
                                                  bcm_field_IpType_t* type ) {
   State& s = *state_;
   return s.entryCall(
       "bcm_field_qualify_IpType_get", unit, entry,
       [&]() -> int {
          Ternary value;
          if ( int rc =
                   s.readWord( unit, entry, bcmFieldQualifyIpType, type, type, value );
               rc != 0 ) {
             return rc;
          }
          const Entry* e = s.findUnit( unit )->findEntry( entry );
          *type = e->software.hasPlain( bcmFieldQualifyIpType )
                      ? static_cast<bcm_field_IpType_t>( value.data )
                      : ipTypeValue( s.version, Shim::FieldIpType::Any );
          return 0;
       },
       [&]( ArgWriter& w ) { w.dec( unit ).dec( entry ).out( type, "type" ); } );
}

// The fields that fit one machine word, each with data and mask of one type.
#define FERRO_SIM_QUALIFIER( NAME, TYPE )                                              \
   int FieldProcessor::bcm_field_qualify_##NAME( int unit, bcm_field_entry_t entry,    \
                                                 TYPE data, TYPE mask ) {              \
      State& s = *state_;                                                              \
      return s.entryCall(                                                              \
          "bcm_field_qualify_" #NAME, unit, entry,                                     \
          [&] {                                                                        \
             return s.qualifyWord( unit, entry, bcmFieldQualify##NAME, data, mask );   \
          },                                                                           \
          [&]( ArgWriter& w ) {                                                        \
             w.dec( unit )                                                             \
                 .dec( entry )                                                         \
                 .fieldData( bcmFieldQualify##NAME, data )                             \
                 .hex( mask );                                                         \
          } );                                                                         \
   }                                                                                   \
   int FieldProcessor::bcm_field_qualify_##NAME##_get(                                 \
       int unit, bcm_field_entry_t entry, TYPE* data, TYPE* mask ) {                   \
      State& s = *state_;                                                              \
      return s.entryCall(                                                              \
          "bcm_field_qualify_" #NAME "_get", unit, entry,                              \
          [&]() -> int {                                                               \
             Ternary value;                                                            \
             if ( int rc = s.readWord( unit, entry, bcmFieldQualify##NAME, data, mask, \
                                       value );                                        \
                  rc != 0 ) {                                                          \
                return rc;                                                             \
             }                                                                         \
             *data = static_cast<TYPE>( value.data );                                  \
             *mask = static_cast<TYPE>( value.mask );                                  \
             return 0;                                                                 \
          },                                                                           \
          [&]( ArgWriter& w ) {                                                        \
             w.dec( unit ).dec( entry ).out( data, "data" ).out( mask, "mask" );       \
          } );                                                                         \
   }
FERRO_SIM_QUALIFIER( IpProtocol, uint8 )
FERRO_SIM_QUALIFIER( ExtensionHeaderType, uint8 )
FERRO_SIM_QUALIFIER( L4SrcPort, bcm_l4_port_t )
FERRO_SIM_QUALIFIER( L4DstPort, bcm_l4_port_t )
FERRO_SIM_QUALIFIER( EtherType, uint16 )
FERRO_SIM_QUALIFIER( Ttl, uint8 )
FERRO_SIM_QUALIFIER( DSCP, uint8 )
FERRO_SIM_QUALIFIER( OuterVlanPri, uint8 )
FERRO_SIM_QUALIFIER( Drop, uint8 )
FERRO_SIM_QUALIFIER( IngressStpState, uint8 )
FERRO_SIM_QUALIFIER( HiGig, uint8 )
FERRO_SIM_QUALIFIER( L2CacheHit, uint8 )
FERRO_SIM_QUALIFIER( L3Routable, uint8 )
FERRO_SIM_QUALIFIER( InterfaceClassL2, uint32 )
FERRO_SIM_QUALIFIER( InterfaceClassVPort, uint32 )
FERRO_SIM_QUALIFIER( InterfaceClassPort, uint32 )
FERRO_SIM_QUALIFIER( DstClassL2, uint32 )
FERRO_SIM_QUALIFIER( DstClassL3, uint32 )
FERRO_SIM_QUALIFIER( DstClassField, uint32 )
FERRO_SIM_QUALIFIER( DstL3EgressNextHops, uint32 )
FERRO_SIM_QUALIFIER( PacketRes, uint32 )
#undef FERRO_SIM_QUALIFIER

}  // namespace Sim
