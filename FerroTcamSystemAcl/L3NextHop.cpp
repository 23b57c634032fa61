#include "FerroTcamSystemAcl/L3NextHop.h"

#include <cassert>

#include "FerroTcamSystemAcl/CheckedCall.h"

// The class id is matched under the widest class (10 bits); the next-hop id
// under all 32 bits. The asymmetry is the chips': class ids are a 10-bit field.
void setL3NextHopQualifier( U32 unit, U32 entry,
                            FerroCentral::ChipAttributes::PtrConst chipAttributes,
                            FerroCommon::L3LookupClassIds classId,
                            FerroCommon::L3NextHopTcamId nextHopId ) {
   if ( chipAttributes->dstClassL3Supported ) {
      BCM_CHECK( bcm_field_qualify_DstClassL3( unit, entry, classId, FerroCommon::l3LookupClassIdMax_ ) );
   } else {
      BCM_CHECK( bcm_field_qualify_DstL3EgressNextHops( unit, entry, nextHopId, ~0 ) );
   }
}

void verifyL3NextHopQualifier( U32 unit, U32 entry,
                               FerroCentral::ChipAttributes::PtrConst chipAttributes,
                               FerroCommon::L3LookupClassIds classId ) {
   uint32 data = 0;
   uint32 mask = 0;
   if ( chipAttributes->dstClassL3Supported ) {
      BCM_CHECK( bcm_field_qualify_DstClassL3_get( unit, entry, &data, &mask ) );
      assert( data == classId );
      assert( mask == FerroCommon::l3LookupClassIdMax_ );
   } else {
      // Chips differ in what they read back as the mask of a next-hop match;
      // only the id is meaningful.
      BCM_CHECK( bcm_field_qualify_DstL3EgressNextHops_get( unit, entry, &data, &mask ) );
      assert( data == FerroCommon::selfIpNextHopTcamId_ );
   }
}
