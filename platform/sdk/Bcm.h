// Field-processor types and constants of the switch SDK, as its C headers spell
// them. Values that differ between SDK versions (action, IP-type and
// packet-resolution enumerations, BCM_E_NONE) are not here: they are handed
// out at run time by Shim::sdk_ (see Shim.h).
#pragma once

#include <cstdint>
#include <cstring>

typedef uint8_t uint8;
typedef uint16_t uint16;
typedef uint32_t uint32;

typedef int bcm_field_entry_t;
typedef int bcm_field_group_t;
typedef int bcm_port_t;
typedef int bcm_module_t;
typedef uint16_t bcm_l4_port_t;
typedef uint16_t bcm_ethertype_t;
typedef uint32_t bcm_ip_t;
typedef uint8_t bcm_mac_t[6];
typedef uint8_t bcm_ip6_t[16];

// Enumerations whose numeric values the SDK hands out at run time.
typedef int bcm_field_action_t;
typedef int bcm_field_IpType_t;

// Return codes. BCM_E_NONE is obtained at run time (Shim.h); the failures are
// fixed across SDK versions.
enum bcm_error_e : int {
   BCM_E_INTERNAL = -1,
   BCM_E_MEMORY = -2,
   BCM_E_UNIT = -3,
   BCM_E_PARAM = -4,
   BCM_E_EMPTY = -5,
   BCM_E_FULL = -6,
   BCM_E_NOT_FOUND = -7,
   BCM_E_EXISTS = -8,
   BCM_E_TIMEOUT = -9,
   BCM_E_BUSY = -10,
   BCM_E_FAIL = -11,
   BCM_E_DISABLED = -12,
   BCM_E_BADID = -13,
   BCM_E_RESOURCE = -14,
   BCM_E_CONFIG = -15,
   BCM_E_UNAVAIL = -16,
   BCM_E_INIT = -17,
   BCM_E_PORT = -18,
   BCM_E_IO = -19,
   BCM_E_ACCESS = -20,
   BCM_E_NO_HANDLER = -21,
   BCM_E_PARTIAL = -22,
};
#define BCM_SUCCESS( rc ) ( ( rc ) >= 0 )
#define BCM_FAILURE( rc ) ( ( rc ) < 0 )

// Spanning-tree states as the ingress STP-state qualifier takes them.
enum bcm_stg_stp_e : uint8_t {
   BCM_STG_STP_DISABLE = 0,
   BCM_STG_STP_BLOCK = 1,
   BCM_STG_STP_LEARN = 3,
   BCM_STG_STP_FORWARD = 4,
};

// A constant rather than a macro, so that call texts keep its name.
inline constexpr uint32_t BCM_FIELD_EXACT_MATCH_MASK = ~0u;

// Field stages. A group is created in exactly one of them.
enum bcm_field_stage_t : int {
   bcmFieldStageIngress = 0,
   bcmFieldStageLookup = 1,  // the VLAN (pre-lookup) stage
};

// Qualifiers a group can be created with. Stable across SDK versions.
enum bcm_field_qualify_t : int {
   bcmFieldQualifyStageIngress,
   bcmFieldQualifyStageLookup,
   bcmFieldQualifyInPorts,
   bcmFieldQualifySrcPort,
   bcmFieldQualifyDstPort,
   bcmFieldQualifyDstMac,
   bcmFieldQualifyEtherType,
   bcmFieldQualifyIpType,
   bcmFieldQualifyDstIp,
   bcmFieldQualifyDstIp6,
   bcmFieldQualifyIpProtocol,
   bcmFieldQualifyExtensionHeaderType,
   bcmFieldQualifyL4SrcPort,
   bcmFieldQualifyL4DstPort,
   bcmFieldQualifyTtl,
   bcmFieldQualifyDSCP,
   bcmFieldQualifyOuterVlanPri,
   bcmFieldQualifyDrop,
   bcmFieldQualifyIngressStpState,
   bcmFieldQualifyHiGig,
   bcmFieldQualifyInterfaceClassL2,
   bcmFieldQualifyInterfaceClassVPort,
   bcmFieldQualifyInterfaceClassPort,
   bcmFieldQualifyDstClassL2,
   bcmFieldQualifyDstClassL3,
   bcmFieldQualifyDstClassField,  // the class the VLAN stage wrote (ClassDestSet)
   bcmFieldQualifyDstL3EgressNextHops,
   bcmFieldQualifyL2CacheHit,
   bcmFieldQualifyL3Routable,
   bcmFieldQualifyPacketRes,
   bcmFieldQualifyCount
};

struct bcm_field_qset_t {
   uint64_t w[ 1 ];
};
#define BCM_FIELD_QSET_INIT( qset ) ( ( qset ).w[ 0 ] = 0 )
#define BCM_FIELD_QSET_ADD( qset, q ) ( ( qset ).w[ 0 ] |= ( uint64_t{ 1 } << ( q ) ) )
#define BCM_FIELD_QSET_REMOVE( qset, q ) ( ( qset ).w[ 0 ] &= ~( uint64_t{ 1 } << ( q ) ) )
#define BCM_FIELD_QSET_TEST( qset, q ) ( ( ( qset ).w[ 0 ] >> ( q ) ) & 1 )

// Port bitmap: one bit per logical port of a unit, 256 ports. Port 0 is the CPU.
#define BCM_PBMP_PORT_MAX 256
#define BCM_PBMP_WORD_WIDTH 32
#define BCM_PBMP_WORD_MAX ( BCM_PBMP_PORT_MAX / BCM_PBMP_WORD_WIDTH )
struct bcm_pbmp_t {
   uint32_t pbits[ BCM_PBMP_WORD_MAX ];
};

inline void bcm_pbmp_clear( bcm_pbmp_t& p ) { std::memset( p.pbits, 0, sizeof p.pbits ); }
inline bool bcm_pbmp_member( const bcm_pbmp_t& p, int port ) {
   return port >= 0 && port < BCM_PBMP_PORT_MAX &&
          ( ( p.pbits[ port / 32 ] >> ( port % 32 ) ) & 1 );
}
inline void bcm_pbmp_port_add( bcm_pbmp_t& p, int port ) {
   if ( port >= 0 && port < BCM_PBMP_PORT_MAX ) {
      p.pbits[ port / 32 ] |= 1u << ( port % 32 );
   }
}
inline void bcm_pbmp_port_remove( bcm_pbmp_t& p, int port ) {
   if ( port >= 0 && port < BCM_PBMP_PORT_MAX ) {
      p.pbits[ port / 32 ] &= ~( 1u << ( port % 32 ) );
   }
}
inline bool bcm_pbmp_eq( const bcm_pbmp_t& a, const bcm_pbmp_t& b ) {
   return std::memcmp( a.pbits, b.pbits, sizeof a.pbits ) == 0;
}
inline bool bcm_pbmp_is_null( const bcm_pbmp_t& p ) {
   for ( uint32_t w : p.pbits ) {
      if ( w ) {
         return false;
      }
   }
   return true;
}
inline int bcm_pbmp_count( const bcm_pbmp_t& p ) {
   int n = 0;
   for ( uint32_t w : p.pbits ) {
      n += __builtin_popcount( w );
   }
   return n;
}
inline void bcm_pbmp_and( bcm_pbmp_t& a, const bcm_pbmp_t& b ) {
   for ( int i = 0; i < BCM_PBMP_WORD_MAX; ++i ) a.pbits[ i ] &= b.pbits[ i ];
}
inline void bcm_pbmp_or( bcm_pbmp_t& a, const bcm_pbmp_t& b ) {
   for ( int i = 0; i < BCM_PBMP_WORD_MAX; ++i ) a.pbits[ i ] |= b.pbits[ i ];
}
inline void bcm_pbmp_remove( bcm_pbmp_t& a, const bcm_pbmp_t& b ) {
   for ( int i = 0; i < BCM_PBMP_WORD_MAX; ++i ) a.pbits[ i ] &= ~b.pbits[ i ];
}
inline void bcm_pbmp_negate( bcm_pbmp_t& a, const bcm_pbmp_t& b ) {
   for ( int i = 0; i < BCM_PBMP_WORD_MAX; ++i ) a.pbits[ i ] = ~b.pbits[ i ];
}

#define BCM_PBMP_CLEAR( p ) bcm_pbmp_clear( p )
#define BCM_PBMP_MEMBER( p, port ) bcm_pbmp_member( ( p ), ( port ) )
#define BCM_PBMP_PORT_ADD( p, port ) bcm_pbmp_port_add( ( p ), ( port ) )
#define BCM_PBMP_PORT_REMOVE( p, port ) bcm_pbmp_port_remove( ( p ), ( port ) )
#define BCM_PBMP_EQ( a, b ) bcm_pbmp_eq( ( a ), ( b ) )
#define BCM_PBMP_NEQ( a, b ) ( !bcm_pbmp_eq( ( a ), ( b ) ) )
#define BCM_PBMP_IS_NULL( p ) bcm_pbmp_is_null( p )
#define BCM_PBMP_NOT_NULL( p ) ( !bcm_pbmp_is_null( p ) )
#define BCM_PBMP_COUNT( p, n ) ( ( n ) = bcm_pbmp_count( p ) )
#define BCM_PBMP_AND( a, b ) bcm_pbmp_and( ( a ), ( b ) )
#define BCM_PBMP_OR( a, b ) bcm_pbmp_or( ( a ), ( b ) )
#define BCM_PBMP_REMOVE( a, b ) bcm_pbmp_remove( ( a ), ( b ) )
#define BCM_PBMP_NEGATE( a, b ) bcm_pbmp_negate( ( a ), ( b ) )
#define BCM_PBMP_ASSIGN( a, b ) ( ( a ) = ( b ) )
#define BCM_PBMP_ITER( p, port )                                                  \
   for ( ( port ) = 0; ( port ) < BCM_PBMP_PORT_MAX; ( port )++ )                 \
      if ( bcm_pbmp_member( ( p ), ( port ) ) )

// What bcm_port_config_get reports for a unit.
struct bcm_port_config_t {
   bcm_pbmp_t all;  // every port, CPU included
   bcm_pbmp_t e;    // front-panel Ethernet ports
   bcm_pbmp_t cpu;  // the CPU port
};

// Port class kinds for bcm_port_class_set.
enum bcm_port_class_t : int {
   bcmPortClassFieldIngress = 0,  // matched by the InterfaceClassPort qualifier
};
