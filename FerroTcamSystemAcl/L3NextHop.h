// The self-IP / glean next-hop qualifier. Chips tell traffic routed to the
// switch itself either by a destination L3 class id or by an egress next-hop
// id; these two hide which one a chip uses from every rule that needs it.
#pragma once

#include "platform/agent/FerroCentral.h"
#include "platform/agent/FerroCommon.h"
#include "platform/runtime/IntTypes.h"

// Private to the library: not exported from the shared object.
[[gnu::visibility( "hidden" )]] void setL3NextHopQualifier( U32 unit, U32 entry,
                            FerroCentral::ChipAttributes::PtrConst chipAttributes,
                            FerroCommon::L3LookupClassIds classId,
                            FerroCommon::L3NextHopTcamId nextHopId );

// Only ever asked about the self-IP pairing, so the next-hop id it expects is
// the self-IP one.
[[gnu::visibility( "hidden" )]] void verifyL3NextHopQualifier( U32 unit, U32 entry,
                               FerroCentral::ChipAttributes::PtrConst chipAttributes,
                               FerroCommon::L3LookupClassIds classId );
