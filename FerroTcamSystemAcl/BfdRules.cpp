// Single-hop BFD control and echo traps, and the entry shape shared with the
// multihop rule.
#include <cassert>

#include "FerroTcamSystemAcl/CheckedCall.h"
#include "FerroTcamSystemAcl/Helper.h"
#include "FerroTcamSystemAcl/L3NextHop.h"
#include "FerroTcamSystemAcl/LibraryGlobals.h"
#include "FerroTcamSystemAcl/RequestKeys.h"
#include "FerroTcamSystemAcl/TcamFields.h"
#include "platform/agent/TcamHelpers.h"

namespace FerroTcamSystemAcl {

namespace {

constexpr U16 bfdControlPort = 3784;
constexpr U16 bfdEchoPort = 3785;
// One bit short of exact, so that the control match also covers the echo port.
constexpr U16 bfdPortMask = 0xFFFE;
constexpr U32 bfdControlSelector = 5;
constexpr U32 bfdEchoSelector = 6;

}  // namespace

void Helper::programBfdRules( U16 unit, const FerroCentral::ChipAttributes::PtrConst& attributes,
                              const FerroTcamGroupManager::Ptr& groupManager,
                              bcm_field_entry_t entry, U16 port, U16 portMask,
                              U32 selector ) {
   setL3NextHopQualifier( unit, entry, attributes, FerroCommon::selfIpClassId_,
                          FerroCommon::selfIpNextHopTcamId_ );
   BCM_CHECK( bcm_field_qualify_IpType( unit, entry, bcmFieldIpTypeIp ) );
   Ferro::setIpProtocol( unit, groupManager, entry, IPPROTO_UDP, 255, 2, 15 );
   // When the echo port will share this entry, the control port must stay
   // beside it in the compressed field rather than replace what is there.
   if ( attributes->bfdEchoCheckEnabled && attributes->bfdEchoRuleSuppressed &&
        attributes->bfdEchoSupported && selector == bfdControlSelector ) {
      Ferro::setL4DstPort( unit, groupManager, entry, port, portMask, bfdControlSelector, 15 );
   } else {
      Ferro::releaseOldAndSetL4DstPort( unit, groupManager, entry, port, portMask, selector,
                                        15 );
   }
   BCM_CHECK( bcm_field_action_add( unit, entry, bcmFieldActionCosQCpuNew, cpuCosqBFD_, 0 ) );
}

U16 Helper::programBfdControlAndEchoRules( U16 unit, bcm_field_entry_t entry ) {
   const FerroCentral::ChipAttributes::PtrConst attributes = chipAttributes( unit );
   FERRO_TRACE( 5, "Helper::" << "programBfdControlAndEchoRules" << " unit:" << unit );
   const FerroBoundedTcamEntryManager::Ptr& manager = l3TcamEntryManager();
   const FerroTcamGroupManager::Ptr& groupManager = systemAclGroupManager();

   manager->getEntry( unit, entry, "BFD", l2CtrlGroupKey() );
   programBfdRules( unit, attributes, groupManager, entry, bfdControlPort, bfdPortMask,
                    bfdControlSelector );
   BCM_CHECK( bcm_field_qualify_Ttl( unit, entry, TCAM_FIELD_BFD_TTL_DATA, TCAM_FIELD_TTL_BFD_MASK ) );
   int rc = manager->installEntry( unit, entry );
   assert( rc == BCM_E_NONE && "BFD Control installEntry failed" );
   bfdRuleIs( unit, entry );

   if ( !( attributes->bfdEchoCheckEnabled && attributes->bfdEchoSupported ) ) {
      return 1;
   }
   if ( attributes->bfdEchoRuleSuppressed ) {
      // One entry serves control and echo.
      Ferro::setL4DstPort( unit, groupManager, entry, bfdEchoPort, bfdPortMask,
                           bfdControlSelector, 15 );
      return 1;
   }
   const bcm_field_entry_t bfdEchoEntry = entry + 1;
   manager->getEntry( unit, bfdEchoEntry, "BFD Echo", l2CtrlGroupKey() );
   programBfdRules( unit, attributes, groupManager, bfdEchoEntry, bfdEchoPort, bfdPortMask,
                    bfdEchoSelector );
   BCM_CHECK( bcm_field_qualify_Ttl( unit, bfdEchoEntry, TCAM_FIELD_BFD_TTL_DATA, TCAM_FIELD_TTL_BFD_MASK ) );
   rc = manager->installEntry( unit, bfdEchoEntry );
   assert( rc == BCM_E_NONE && "BFD Echo installEntry failed" );
   bfdEchoRuleIs( unit, bfdEchoEntry );
   return 2;
}

}  // namespace FerroTcamSystemAcl
