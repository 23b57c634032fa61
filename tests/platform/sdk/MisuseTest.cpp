// Every misuse gets the SDK's code, and a refused call changes nothing.
#include "tests/platform/sdk/SdkFixture.h"

using namespace SdkTest;
using CF = Shim::CompressedField;

namespace {

constexpr bcm_field_entry_t kEntry = 100;   // installed; CosQCpuNew 38 and CopyToCpu
constexpr bcm_field_entry_t kCancel = 101;  // not installed: SwitchToCpuCancel
constexpr bcm_field_entry_t kVlanEntry = 200;
constexpr bcm_field_entry_t kNarrowEntry = 300;
constexpr bcm_field_entry_t kMissing = 999;
constexpr int kSmall = 1;  // 8 ports, no NewClassId, no TTL; entry kEntry in group 1
constexpr int kNoUnit = 7;

constexpr bcm_mac_t kMac = { 1, 2, 3, 4, 5, 6 };
// Places for the outputs of read-backs that are refused anyway.
uint32 u32;
uint8 u8;
bcm_l4_port_t l4;
bcm_port_t port;

Shim::FieldBytes bytesOf( std::initializer_list<uint8_t> values ) {
   Shim::FieldBytes b;
   std::copy( values.begin(), values.end(), b.bytes.begin() );
   return b;
}

struct MisuseCase {
   const char* name;
   int rc;
   int ( *call )( Shim::Sdk& s );
};

// clang-format off
#define ROW( NAME, RC, ... ) \
   { #NAME, RC, []( Shim::Sdk& s ) -> int { return s.__VA_ARGS__; } }
// clang-format on
const MisuseCase kCases[] = {
    // Units: checked before anything else.
    ROW( UnknownUnitQualify, BCM_E_UNIT,
         bcm_field_qualify_Ttl( kNoUnit, kEntry, 1, 0xff ) ),
    ROW( UnknownUnitBeforeNullOutput, BCM_E_UNIT,
         bcm_field_entry_prio_get( kNoUnit, 1, nullptr ) ),
    ROW( UnknownUnitGroup, BCM_E_UNIT,
         bcm_field_group_create_id( kNoUnit, ingressQset(), 1, 9 ) ),
    // Output pointers: checked before the entry.
    ROW( NullPrio, BCM_E_PARAM, bcm_field_entry_prio_get( kUnit, kMissing, nullptr ) ),
    ROW( NullActionParam, BCM_E_PARAM,
         bcm_field_action_get( kUnit, kEntry, bcmFieldActionCopyToCpu, &u32, nullptr ) ),
    ROW( NullQualifierMask, BCM_E_PARAM,
         bcm_field_qualify_L4DstPort_get( kUnit, kEntry, &l4, nullptr ) ),
    ROW( NullModid, BCM_E_PARAM,
         bcm_field_qualify_SrcPort_get( kUnit, kEntry, nullptr, nullptr, &port, &port ) ),
    ROW( NullCompressedCount, BCM_E_PARAM,
         bcm_field_qualify_compressed_get( kUnit, kEntry, CF::L4DstPort, nullptr, 0,
                                           nullptr ) ),
    ROW( NullPortConfig, BCM_E_PARAM, bcm_port_config_get( kUnit, nullptr ) ),
    // Unknown entries.
    ROW( MissingInstall, BCM_E_NOT_FOUND, bcm_field_entry_install( kUnit, kMissing ) ),
    ROW( MissingReinstall, BCM_E_NOT_FOUND,
         bcm_field_entry_reinstall( kUnit, kMissing ) ),
    ROW( MissingDestroy, BCM_E_NOT_FOUND, bcm_field_entry_destroy( kUnit, kMissing ) ),
    ROW( MissingAction, BCM_E_NOT_FOUND,
         bcm_field_action_add( kUnit, kMissing, bcmFieldActionDrop, 0, 0 ) ),
    ROW( MissingQualify, BCM_E_NOT_FOUND,
         bcm_field_qualify_DstMac( kUnit, kMissing, kMac, kMac ) ),
    ROW( MissingPolicer, BCM_E_NOT_FOUND,
         bcm_field_entry_policer_detach_all( kUnit, kMissing ) ),
    ROW( MissingCompressed, BCM_E_NOT_FOUND,
         bcm_field_qualify_compressed_clear( kUnit, kMissing, CF::DstIp ) ),
    // Groups and entries.
    ROW( GroupWithoutStage, BCM_E_PARAM,
         bcm_field_group_create_id( kUnit, qsetOf( { bcmFieldQualifyTtl } ), 1, 9 ) ),
    ROW( GroupWithBothStages, BCM_E_PARAM,
         bcm_field_group_create_id(
             kUnit, qsetOf( { bcmFieldQualifyStageIngress, bcmFieldQualifyStageLookup } ),
             1, 9 ) ),
    ROW( GroupWithQualifierChipLacks, BCM_E_UNAVAIL,
         bcm_field_group_create_id(
             kSmall, qsetOf( { bcmFieldQualifyStageIngress, bcmFieldQualifyTtl } ), 1,
             9 ) ),
    ROW( GroupExists, BCM_E_EXISTS,
         bcm_field_group_create_id( kUnit, ingressQset(), 1, kIngress ) ),
    ROW( GroupWithEntries, BCM_E_BUSY, bcm_field_group_destroy( kUnit, kIngress ) ),
    ROW( GroupMissing, BCM_E_NOT_FOUND, bcm_field_group_destroy( kUnit, 77 ) ),
    ROW( EntryInMissingGroup, BCM_E_NOT_FOUND,
         bcm_field_entry_create_id( kUnit, 77, 5 ) ),
    ROW( EntryIdTakenInOtherGroup, BCM_E_EXISTS,
         bcm_field_entry_create_id( kUnit, kNarrow, kEntry ) ),
    ROW( ReinstallNeverInstalled, BCM_E_PARAM,
         bcm_field_entry_reinstall( kUnit, kCancel ) ),
    ROW( EnableNeverInstalled, BCM_E_PARAM,
         bcm_field_entry_enable_set( kUnit, kCancel, 0 ) ),
    ROW( RemoveNeverInstalled, BCM_E_PARAM, bcm_field_entry_remove( kUnit, kCancel ) ),
    // Actions.
    ROW( DuplicateAction, BCM_E_CONFIG,
         bcm_field_action_add( kUnit, kEntry, bcmFieldActionCosQCpuNew, 9, 0 ) ),
    ROW( CancelAfterCopy, BCM_E_CONFIG,
         bcm_field_action_add( kUnit, kEntry, bcmFieldActionSwitchToCpuCancel, 0, 0 ) ),
    ROW( CopyAfterCancel, BCM_E_CONFIG,
         bcm_field_action_add( kUnit, kCancel, bcmFieldActionCopyToCpu, 0, 0 ) ),
    ROW( RemoveAbsentAction, BCM_E_NOT_FOUND,
         bcm_field_action_remove( kUnit, kEntry, bcmFieldActionDrop ) ),
    ROW( GetAbsentAction, BCM_E_NOT_FOUND,
         bcm_field_action_get( kUnit, kEntry, bcmFieldActionDrop, &u32, &u32 ) ),
    ROW( DetachWithoutPolicer, 0, bcm_field_entry_policer_detach_all( kUnit, kEntry ) ),
    ROW( VlanStageCpuQueue, BCM_E_UNAVAIL,
         bcm_field_action_add( kUnit, kVlanEntry, bcmFieldActionCosQCpuNew, 1, 0 ) ),
    ROW( VlanStageDrop, 0,
         bcm_field_action_add( kUnit, kVlanEntry, bcmFieldActionDrop, 0, 0 ) ),
    ROW( IngressClassDest, BCM_E_UNAVAIL,
         bcm_field_action_add( kUnit, kEntry, bcmFieldActionClassDestSet, 1, 0 ) ),
    ROW( ActionChipLacks, BCM_E_UNAVAIL,
         bcm_field_action_add( kSmall, kEntry, bcmFieldActionNewClassId, 1, 0 ) ),
    ROW( PositionIsNoActionValue, BCM_E_PARAM,
         bcm_field_action_add( kUnit, kNarrowEntry, 1, 0, 0 ) ),
    ROW( RemoveByPosition, BCM_E_PARAM, bcm_field_action_remove( kUnit, kEntry, 0 ) ),
    ROW( LastCpuQueue, 0,
         bcm_field_action_add( kUnit, kNarrowEntry, bcmFieldActionCosQCpuNew, 47, 0 ) ),
    ROW( CpuQueueBeyondLast, BCM_E_PARAM,
         bcm_field_action_add( kUnit, kNarrowEntry, bcmFieldActionCosQCpuNew, 48, 0 ) ),
    ROW( PrioInt15, 0,
         bcm_field_action_add( kUnit, kNarrowEntry, bcmFieldActionPrioIntNew, 15, 0 ) ),
    ROW( PrioIntBeyond15, BCM_E_PARAM,
         bcm_field_action_add( kUnit, kNarrowEntry, bcmFieldActionPrioIntNew, 16, 0 ) ),
    ROW( NewClassWiderThanClassIds, BCM_E_PARAM,
         bcm_field_action_add( kUnit, kNarrowEntry, bcmFieldActionNewClassId, 256, 0 ) ),
    // Qualifiers.
    ROW( QualifierOutsideQset, BCM_E_NOT_FOUND,
         bcm_field_qualify_DstMac( kUnit, kNarrowEntry, kMac, kMac ) ),
    ROW( ReadBackOutsideQset, BCM_E_NOT_FOUND,
         bcm_field_qualify_Ttl_get( kUnit, kNarrowEntry, &u8, &u8 ) ),
    ROW(
        CompressedOutsideQset, BCM_E_NOT_FOUND,
        bcm_field_qualify_compressed_add( kUnit, kNarrowEntry, CF::DstIp,
                                          bytesOf( { 10 } ), bytesOf( { 255 } ), 1, 1 ) ),
    ROW( CompressedDataTooWide, BCM_E_PARAM,
         bcm_field_qualify_compressed_add( kUnit, kEntry, CF::L4DstPort,
                                           bytesOf( { 0, 1, 1 } ),
                                           bytesOf( { 255, 255 } ), 1, 1 ) ),
    ROW( VlanPri7, 0, bcm_field_qualify_OuterVlanPri( kUnit, kEntry, 7, 7 ) ),
    ROW( VlanPri8, BCM_E_PARAM, bcm_field_qualify_OuterVlanPri( kUnit, kEntry, 8, 7 ) ),
    ROW( ClassL2WiderThanClassIds, BCM_E_PARAM,
         bcm_field_qualify_InterfaceClassL2( kUnit, kEntry, 256, 0xff ) ),
    ROW( DstClassL3Widest, 0, bcm_field_qualify_DstClassL3( kUnit, kEntry, 1023, ~0u ) ),
    ROW( DstClassL3TooWide, BCM_E_PARAM,
         bcm_field_qualify_DstClassL3( kUnit, kEntry, 1024, ~0u ) ),
    ROW( StpLearn, 0, bcm_field_qualify_IngressStpState( kUnit, kEntry, 3, 0xff ) ),
    ROW( StpNoState, BCM_E_PARAM,
         bcm_field_qualify_IngressStpState( kUnit, kEntry, 2, 0xff ) ),
    ROW( DstPortTooWide, BCM_E_PARAM,
         bcm_field_qualify_DstPort( kUnit, kEntry, 0, ~0, 256, ~0 ) ),
    ROW( PacketResPosition, BCM_E_PARAM,
         bcm_field_qualify_PacketRes( kUnit, kEntry, 4, ~0u ) ),
    ROW( PacketResIsNoBitMask, BCM_E_PARAM,
         bcm_field_qualify_PacketRes(
             kUnit, kEntry, BCM_FIELD_PKT_RES_CONTROL | BCM_FIELD_PKT_RES_L3MCUNKNOWN,
             ~0u ) ),
    ROW( IpTypeUnknown, BCM_E_PARAM, bcm_field_qualify_IpType( kUnit, kEntry, 99 ) ),
    ROW( InPortsDataBeyondUnit, BCM_E_PORT,
         bcm_field_qualify_InPorts( kUnit, kEntry, portsOf( { 65 } ), portsOf( {} ) ) ),
    ROW( InPortsMaskBeyondUnit, BCM_E_PORT,
         bcm_field_qualify_InPorts( kUnit, kEntry, portsOf( {} ), portRange( 0, 65 ) ) ),
    // Ports.
    ROW( PortClassTooWide, BCM_E_PARAM,
         bcm_port_class_set( kUnit, 1, bcmPortClassFieldIngress, 256 ) ),
    ROW( PortClassPortBeyondUnit, BCM_E_PORT,
         bcm_port_class_set( kSmall, 8, bcmPortClassFieldIngress, 1 ) ),
    ROW( PortClassNegativePort, BCM_E_PORT,
         bcm_port_class_get( kUnit, -1, bcmPortClassFieldIngress, &u32 ) ),
};
#undef ROW

class MisuseTest : public SdkFixture, public ::testing::WithParamInterface<MisuseCase> {
 protected:
   void SetUp() override {
      SdkFixture::SetUp();
      Sim::UnitConfig small;
      small.portCount = 8;
      small.unsupportedActions = { Shim::FieldAction::NewClassId };
      small.unsupportedQualifiers = { bcmFieldQualifyTtl };
      ASSERT_EQ( 0, fp.attachUnit( kSmall, small ) );
      ASSERT_EQ( 0, sdk.bcm_field_group_create_id(
                        kSmall, qsetOf( { bcmFieldQualifyStageIngress } ), 1, 1 ) );
      ASSERT_EQ( 0, sdk.bcm_field_entry_create_id( kSmall, 1, kEntry ) );
      installTrap( kEntry, 179, 38 );
      ASSERT_EQ( 0, addAction( kEntry, bcmFieldActionCopyToCpu ) );
      createEntry( kCancel );
      ASSERT_EQ( 0, addAction( kCancel, bcmFieldActionSwitchToCpuCancel ) );
      createEntry( kVlanEntry, kVlan );
      createEntry( kNarrowEntry, kNarrow );
   }
};

TEST_P( MisuseTest, ReturnsSdkCodeAndChangesNothingOnFailure ) {
   const std::string before = describe( kUnit ) + describe( kSmall );
   const int rc = GetParam().call( sdk );
   EXPECT_EQ( GetParam().rc, rc ) << sdk.bcm_errmsg( rc );
   if ( rc < 0 ) {
      EXPECT_EQ( before, describe( kUnit ) + describe( kSmall ) );
   }
}

INSTANTIATE_TEST_SUITE_P( Sdk, MisuseTest, ::testing::ValuesIn( kCases ), RowName() );

}  // namespace
