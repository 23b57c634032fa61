// Field helpers of the agent's TCAM library. Fields that the chip compresses
// (IP protocol, L4 ports, ether type, IPv4/IPv6 destination, destination MAC)
// are programmed through the SDK's field compression: every value set on an
// entry is matched, and the releaseOldAndSet forms drop the earlier values
// first. The trailing (class, class mask) pair of every setter is the
// compressed class the value is given. Setters return the SDK's code.
#pragma once

#include "platform/agent/FerroCommon.h"
#include "platform/agent/FerroTypes.h"
#include "platform/agent/TcamEntryManager.h"
#include "platform/sdk/Bcm.h"

namespace Ferro {

using GroupManager = FerroTcamGroupManager::Ptr;

int setEtherType( U32 unit, const GroupManager& gm, U32 entry, U8 chipFlag,
                  U16 etherType, U16 etherTypeMask, U32 classId, U32 classMask );
int setIpProtocol( U32 unit, const GroupManager& gm, U32 entry, U8 protocol,
                   U8 protocolMask, U32 classId, U32 classMask );
int setL4SrcPort( U32 unit, const GroupManager& gm, U32 entry, U16 port, U16 portMask,
                  U32 classId, U32 classMask );
int setL4DstPort( U32 unit, const GroupManager& gm, U32 entry, U16 port, U16 portMask,
                  U32 classId, U32 classMask );
int releaseOldAndSetL4SrcPort( U32 unit, const GroupManager& gm, U32 entry, U16 port,
                               U16 portMask, U32 classId, U32 classMask );
int releaseOldAndSetL4DstPort( U32 unit, const GroupManager& gm, U32 entry, U16 port,
                               U16 portMask, U32 classId, U32 classMask );
int setDstIPv4( U32 unit, const GroupManager& gm, U32 entry, bcm_ip_t ip, bcm_ip_t ipMask,
                U32 classId, U32 classMask );
// On chips with the IPv6 destination class the IPv6 address is matched; on the
// others the destination MAC stands in for it.
int setDstIPv6ClassOrDstMac( U32 unit, const GroupManager& gm, U32 entry,
                             const bcm_ip6_t ip6, const bcm_ip6_t ip6Mask, U32 classId,
                             U32 classMask, const bcm_mac_t mac, const bcm_mac_t macMask );

// Read-back forms: true when the entry matches exactly the one value given.
bool verifyEtherType( U32 unit, const GroupManager& gm, U32 entry, U16 etherType,
                      U16 etherTypeMask );
bool verifyIpProtocol( U32 unit, const GroupManager& gm, U32 entry, U8 protocol,
                       U8 protocolMask );
bool verifyL4SrcPort( U32 unit, const GroupManager& gm, U32 entry, U16 port, U16 portMask );
bool verifyL4DstPort( U32 unit, const GroupManager& gm, U32 entry, U16 port, U16 portMask );
bool verifyDstIPv4( U32 unit, const GroupManager& gm, U32 entry, bcm_ip_t ip,
                    bcm_ip_t ipMask );
bool verifyDstIPv6ClassOrDstMac( U32 unit, const GroupManager& gm, U32 entry,
                                 const bcm_ip6_t ip6, const bcm_ip6_t ip6Mask,
                                 const bcm_mac_t mac, const bcm_mac_t macMask );

// Translates a logical IP class id and mask into the chip's values.
void getTranslatedIpClassId( const FerroCommonSmData& smData, U32 classValue,
                             U32 classMask, U32* data, U32* mask );

}  // namespace Ferro

namespace FerroTcam {

using Ferro::getTranslatedIpClassId;

bcm_pbmp_t getPbmpAll( const FerroCommonSmData& smData, U32 unit );
bcm_pbmp_t getPbmpEAll( const FerroCommonSmData& smData, U32 unit );
bcm_pbmp_t getActivePorts( const FerroCommonSmData& smData, U32 unit );
// The chip port of an interface; FerroPort::invalid() when it has none.
FerroTypes::FerroPort intfToPort( const FerroCommonSmData& smData, Wirex::IntfId intf );
bool isPortChannel( Wirex::IntfId intf );

}  // namespace FerroTcam
