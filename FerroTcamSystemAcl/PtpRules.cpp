// The five PTP rules. Their entries are reserved and recorded by the L2 and L3
// installers; the ...Common operations only fill the recorded entry and
// install it. The two L2 rules go on with entry 0 when nothing was recorded
// (the chip then refuses the first qualifier), the three IPv4 rules refuse to.
#include "FerroTcamSystemAcl/CheckedCall.h"
#include "FerroTcamSystemAcl/Helper.h"
#include "FerroTcamSystemAcl/LibraryGlobals.h"
#include "FerroTcamSystemAcl/TcamFields.h"
#include "platform/agent/TcamHelpers.h"

namespace FerroTcamSystemAcl {

namespace {

// PTP over Ethernet, in the compressed class 5 of the ether-type field.
constexpr U16 PTP_ETHER_TYPE = 0x88F7;
constexpr U16 PTP_ETHER_TYPE_MASK = 0xFFFF;
constexpr U32 PTP_ETHER_TYPE_CLASS = 5;
constexpr U32 PTP_ETHER_TYPE_CLASS_MASK = 15;

}  // namespace

// The L2 rules differ only in name and destination MAC. The multicast mask
// covers the whole first octet, the unicast one only the group bit.
void Helper::installL2PtpRule( U16 unit, U32 entry, const char* name,
                               const U8 ( &mac )[ 6 ], const U8 ( &macMask )[ 6 ],
                               const char* checkedCallOperation ) {
   const FerroBoundedTcamEntryManager::Ptr& manager = l2TcamEntryManager();
   manager->getEntry( unit, entry, name, FerroTcam::RequestKey::defaultKey() );
   bcm_mac_t destMac, destMacMask;
   for ( int i = 0; i < 6; ++i ) {
      destMac[ i ] = mac[ i ];
      destMacMask[ i ] = macMask[ i ];
   }
   BCM_CHECK( bcm_field_qualify_PacketRes( unit, entry, BCM_FIELD_PKT_RES_IEEE1588, BCM_FIELD_EXACT_MATCH_MASK ) );
   BCM_CHECK( bcm_field_qualify_DstMac( unit, entry, destMac, destMacMask ) );
   Ferro::setEtherType( unit, systemAclGroupManager(), entry,
                        chipAttributes( unit )->etherTypeChipFlag, PTP_ETHER_TYPE,
                        PTP_ETHER_TYPE_MASK, PTP_ETHER_TYPE_CLASS, PTP_ETHER_TYPE_CLASS_MASK );
   BCM_CHECK( bcm_field_action_add( unit, entry, bcmFieldActionCosQCpuNew, cpuCosqPtp_, 0 ) );
   const int rc = manager->installEntry( unit, entry );
   FERRO_ASSERT( rc == BCM_E_NONE && "installEntry failed" );
}

void Helper::doInstallL2McastPTPRuleCommon( U16 unit ) {
   static constexpr U8 mac[ 6 ] = { 0x01, 0x00, 0x00, 0x00, 0x00, 0x00 };
   static constexpr U8 mask[ 6 ] = { 0xFF, 0x00, 0x00, 0x00, 0x00, 0x00 };
   installL2PtpRule( unit, l2McastPtpRule( unit ), "L2 Mcast PTP", mac, mask,
                     __PRETTY_FUNCTION__ );
}

void Helper::doInstallL2UnicastPTPRuleCommon( U16 unit ) {
   static constexpr U8 mac[ 6 ] = { 0x00, 0x00, 0x00, 0x00, 0x00, 0x00 };
   static constexpr U8 mask[ 6 ] = { 0x01, 0x00, 0x00, 0x00, 0x00, 0x00 };
   installL2PtpRule( unit, l2UnicastPtpRule( unit ), "L2 Unicast PTP", mac, mask,
                     __PRETTY_FUNCTION__ );
}

void Helper::doInstallIpv4McastPTPRuleCommon( U16 unit ) {
   FERRO_TRACE( 8, "doInstallIpv4McastPTPRuleCommon" << " unit: " << unit );
   const U32 entry = ipv4McastPtpRule( unit );
   FERRO_ASSERT( entry );
   const FerroBoundedTcamEntryManager::Ptr& manager = l3TcamEntryManager();
   manager->getEntry( unit, entry, "IPV4 MCAST PTP", FerroTcam::RequestKey::defaultKey() );
   U32 data = 0, mask = 0;
   FerroTcam::getTranslatedIpClassId( *smData(), 4, 15, &data, &mask );
   Ferro::setDstIPv4( unit, systemAclGroupManager(), entry, 0xE0000000, 0xF0000000, data, mask );
   BCM_CHECK( bcm_field_qualify_PacketRes( unit, entry, BCM_FIELD_PKT_RES_IEEE1588, BCM_FIELD_EXACT_MATCH_MASK ) );
   BCM_CHECK( bcm_field_qualify_IpType( unit, entry, bcmFieldIpTypeIp ) );
   BCM_CHECK( bcm_field_action_add( unit, entry, bcmFieldActionCosQCpuNew, cpuCosqPtp_, 0 ) );
   // Dropped from hardware forwarding; the CPU copy still goes to the PTP queue.
   BCM_CHECK( bcm_field_action_add( unit, entry, bcmFieldActionDrop, 0, 0 ) );
   const int rc = manager->installEntry( unit, entry );
   FERRO_ASSERT( rc == BCM_E_NONE && "installEntry failed" );
}

void Helper::doInstallIpv4UnicastFwdPTPRuleCommon( U16 unit ) {
   FERRO_TRACE( 8, "doInstallIpv4UnicastFwdPTPRuleCommon" << " unit: " << unit );
   const U32 entry = ipv4UnicastFwdPtpRule( unit );
   FERRO_ASSERT( entry );
   const FerroBoundedTcamEntryManager::Ptr& manager = l3TcamEntryManager();
   manager->getEntry( unit, entry, "IPV4 UNICAST FORWARD PTP",
                      FerroTcam::RequestKey::defaultKey() );
   BCM_CHECK( bcm_field_qualify_PacketRes( unit, entry, BCM_FIELD_PKT_RES_IEEE1588, BCM_FIELD_EXACT_MATCH_MASK ) );
   BCM_CHECK( bcm_field_qualify_IpType( unit, entry, bcmFieldIpTypeIp ) );
   // Unicast PTP routed through the switch is not the CPU's business.
   BCM_CHECK( bcm_field_action_add( unit, entry, bcmFieldActionSwitchToCpuCancel, 0, 0 ) );
   const int rc = manager->installEntry( unit, entry );
   FERRO_ASSERT( rc == BCM_E_NONE && "installEntry failed" );
}

void Helper::doInstallIpv4ElevatorPTPRuleCommon( U16 unit ) {
   FERRO_TRACE( 8, "doInstallIpv4ElevatorPTPRuleCommon" << " unit: " << unit );
   const U32 entry = ipv4ElevatorPtpRule( unit );
   FERRO_ASSERT( entry );
   const FerroBoundedTcamEntryManager::Ptr& manager = l3TcamEntryManager();
   manager->getEntry( unit, entry, "IPV4 PTP", FerroTcam::RequestKey::defaultKey() );
   BCM_CHECK( bcm_field_qualify_PacketRes( unit, entry, BCM_FIELD_PKT_RES_IEEE1588, BCM_FIELD_EXACT_MATCH_MASK ) );
   BCM_CHECK( bcm_field_qualify_IpType( unit, entry, bcmFieldIpTypeIp ) );
   BCM_CHECK( bcm_field_action_add( unit, entry, bcmFieldActionCosQCpuNew, cpuCosqPtp_, 0 ) );
   const int rc = manager->installEntry( unit, entry );
   FERRO_ASSERT( rc == BCM_E_NONE && "installEntry failed" );
}

}  // namespace FerroTcamSystemAcl
