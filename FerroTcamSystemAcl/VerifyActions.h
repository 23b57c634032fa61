// What the verification operations share: whether port bitmaps are compared,
// and action read-backs, each asserting the value the action was programmed
// with. The read-backs expect `unit` and `entry` in scope and name the
// enclosing operation when they fail.
#pragma once

#include <cstdlib>

#include "FerroTcamSystemAcl/CheckedCall.h"
#include "platform/agent/FerroCentral.h"

// On a platform that may run as a simulation with SIMULATION_VMID set, the
// port bitmaps are the simulator's and are not compared.
inline bool comparePortBitmaps() {
   return !( FerroCentral::ferroAttributes()->mayRunAsSimulation &&
             std::getenv( "SIMULATION_VMID" ) );
}

#define VERIFY_CPU_QUEUE( expected )                                                \
   do {                                                                             \
      uint32 param0 = 0, param1 = 0;                                                \
      BCM_CHECK( bcm_field_action_get( unit, entry, bcmFieldActionCosQCpuNew, &param0, &param1 ) ); \
      FERRO_ASSERT( param0 == expected );                                           \
   } while ( 0 )
#define VERIFY_TC( expected )                                                       \
   do {                                                                             \
      uint32 param0 = 0, param1 = 0;                                                \
      BCM_CHECK( bcm_field_action_get( unit, entry, bcmFieldActionPrioIntNew, &param0, &param1 ) ); \
      FERRO_ASSERT( param0 == expected );                                           \
   } while ( 0 )
// An action without parameters: present, and added with zeros.
#define VERIFY_FLAG_ACTION( action )                                                \
   do {                                                                             \
      uint32 param0 = 1, param1 = 1;                                                \
      BCM_CHECK( bcm_field_action_get( unit, entry, action, &param0, &param1 ) );   \
      FERRO_ASSERT( param0 == 0 );                                                  \
      FERRO_ASSERT( param1 == 0 );                                                  \
   } while ( 0 )
#define VERIFY_COPY_TO_CPU() VERIFY_FLAG_ACTION( bcmFieldActionCopyToCpu )
