// Every misuse gets the SDK's code, and a refused call changes nothing.
#include <functional>

#include "tests/platform/sdk/SdkFixture.h"

using namespace SdkTest;

namespace {

// Entries the cases work on.
constexpr bcm_field_entry_t kEntry = 100;   // ingress, CopyToCpu (0) and L4DstPort 179
constexpr bcm_field_entry_t kCancel = 101;  // ingress, SwitchToCpuCancel
constexpr bcm_field_entry_t kVlanEntry = 200;
constexpr bcm_field_entry_t kNarrowEntry = 300;
constexpr bcm_field_entry_t kMissing = 999;
constexpr int kOtherUnit = 1;  // 8 ports, no NewClassId, no TTL qualifier
constexpr int kNoUnit = 7;

struct MisuseCase {
   const char* name;
   std::function<int( Shim::Sdk& )> call;
   int rc;
};

std::string caseName( const ::testing::TestParamInfo<MisuseCase>& info ) {
   return info.param.name;
}

class MisuseTest : public SdkFixture, public ::testing::WithParamInterface<MisuseCase> {
 protected:
   void SetUp() override {
      SdkFixture::SetUp();
      Sim::UnitConfig small;
      small.portCount = 8;
      small.unsupportedActions = { Shim::FieldAction::NewClassId };
      small.unsupportedQualifiers = { bcmFieldQualifyTtl };
      ASSERT_EQ( 0, fp.attachUnit( kOtherUnit, small ) );
      ASSERT_EQ( 0, sdk.bcm_field_group_create_id(
                        kOtherUnit, qsetOf( { bcmFieldQualifyStageIngress } ), 1, 1 ) );
      ASSERT_EQ( 0, sdk.bcm_field_entry_create_id( kOtherUnit, 1, kEntry ) );
      installTrap( kEntry, 179, 38 );
      ASSERT_EQ(
          0, sdk.bcm_field_action_add( kUnit, kEntry, bcmFieldActionCopyToCpu, 0, 0 ) );
      createEntry( kCancel );
      ASSERT_EQ( 0, sdk.bcm_field_action_add( kUnit, kCancel,
                                              bcmFieldActionSwitchToCpuCancel, 0, 0 ) );
      createEntry( kVlanEntry, kVlan );
      createEntry( kNarrowEntry, kNarrow );
   }
};

constexpr bcm_mac_t kMac = { 1, 2, 3, 4, 5, 6 };
constexpr bcm_ip6_t kIp6 = {};

int actionAdd( Shim::Sdk& s, bcm_field_entry_t entry, bcm_field_action_t action,
               uint32 p0 = 0 ) {
   return s.bcm_field_action_add( kUnit, entry, action, p0, 0 );
}

Shim::FieldBytes bytesOf( std::initializer_list<uint8_t> values ) {
   Shim::FieldBytes b;
   std::copy( values.begin(), values.end(), b.bytes.begin() );
   return b;
}

const MisuseCase kCases[] = {
    // Units.
    { "UnknownUnitAction",
      []( Shim::Sdk& s ) {
         return s.bcm_field_action_add( kNoUnit, kEntry, bcmFieldActionDrop, 0, 0 );
      },
      BCM_E_UNIT },
    { "UnknownUnitQualify",
      []( Shim::Sdk& s ) { return s.bcm_field_qualify_Ttl( kNoUnit, kEntry, 1, 0xff ); },
      BCM_E_UNIT },
    { "UnknownUnitNullPointer",
      []( Shim::Sdk& s ) {
         return s.bcm_field_entry_prio_get( kNoUnit, kEntry, nullptr );
      },
      BCM_E_UNIT },
    { "UnknownUnitGroup",
      []( Shim::Sdk& s ) {
         return s.bcm_field_group_create_id( kNoUnit, ingressQset(), 1, 9 );
      },
      BCM_E_UNIT },
    { "UnknownUnitPorts",
      []( Shim::Sdk& s ) {
         bcm_port_config_t c;
         return s.bcm_port_config_get( kNoUnit, &c );
      },
      BCM_E_UNIT },
    // Output pointers, checked before the entry.
    { "NullPrio",
      []( Shim::Sdk& s ) {
         return s.bcm_field_entry_prio_get( kUnit, kMissing, nullptr );
      },
      BCM_E_PARAM },
    { "NullEnable",
      []( Shim::Sdk& s ) {
         return s.bcm_field_entry_enable_get( kUnit, kEntry, nullptr );
      },
      BCM_E_PARAM },
    { "NullActionParam",
      []( Shim::Sdk& s ) {
         uint32 p = 0;
         return s.bcm_field_action_get( kUnit, kEntry, bcmFieldActionCopyToCpu, &p,
                                        nullptr );
      },
      BCM_E_PARAM },
    { "NullQualifierMask",
      []( Shim::Sdk& s ) {
         bcm_l4_port_t d;
         return s.bcm_field_qualify_L4DstPort_get( kUnit, kEntry, &d, nullptr );
      },
      BCM_E_PARAM },
    { "NullSrcPortModid",
      []( Shim::Sdk& s ) {
         bcm_port_t p, m;
         return s.bcm_field_qualify_SrcPort_get( kUnit, kEntry, nullptr, nullptr, &p,
                                                 &m );
      },
      BCM_E_PARAM },
    { "NullCompressedCount",
      []( Shim::Sdk& s ) {
         return s.bcm_field_qualify_compressed_get(
             kUnit, kEntry, Shim::CompressedField::L4DstPort, nullptr, 0, nullptr );
      },
      BCM_E_PARAM },
    { "NullPortConfig",
      []( Shim::Sdk& s ) { return s.bcm_port_config_get( kUnit, nullptr ); },
      BCM_E_PARAM },
    // Unknown entries.
    { "MissingInstall",
      []( Shim::Sdk& s ) { return s.bcm_field_entry_install( kUnit, kMissing ); },
      BCM_E_NOT_FOUND },
    { "MissingReinstall",
      []( Shim::Sdk& s ) { return s.bcm_field_entry_reinstall( kUnit, kMissing ); },
      BCM_E_NOT_FOUND },
    { "MissingRemove",
      []( Shim::Sdk& s ) { return s.bcm_field_entry_remove( kUnit, kMissing ); },
      BCM_E_NOT_FOUND },
    { "MissingDestroy",
      []( Shim::Sdk& s ) { return s.bcm_field_entry_destroy( kUnit, kMissing ); },
      BCM_E_NOT_FOUND },
    { "MissingEnable",
      []( Shim::Sdk& s ) { return s.bcm_field_entry_enable_set( kUnit, kMissing, 1 ); },
      BCM_E_NOT_FOUND },
    { "MissingPrio",
      []( Shim::Sdk& s ) { return s.bcm_field_entry_prio_set( kUnit, kMissing, 1 ); },
      BCM_E_NOT_FOUND },
    { "MissingAction",
      []( Shim::Sdk& s ) { return actionAdd( s, kMissing, bcmFieldActionDrop ); },
      BCM_E_NOT_FOUND },
    { "MissingQualify",
      []( Shim::Sdk& s ) {
         return s.bcm_field_qualify_DstMac( kUnit, kMissing, kMac, kMac );
      },
      BCM_E_NOT_FOUND },
    { "MissingQualifyClear",
      []( Shim::Sdk& s ) { return s.bcm_field_qualify_clear( kUnit, kMissing ); },
      BCM_E_NOT_FOUND },
    { "MissingRemoveAll",
      []( Shim::Sdk& s ) { return s.bcm_field_action_remove_all( kUnit, kMissing ); },
      BCM_E_NOT_FOUND },
    { "MissingPolicer",
      []( Shim::Sdk& s ) {
         return s.bcm_field_entry_policer_detach_all( kUnit, kMissing );
      },
      BCM_E_NOT_FOUND },
    { "MissingCompressed",
      []( Shim::Sdk& s ) {
         return s.bcm_field_qualify_compressed_clear( kUnit, kMissing,
                                                      Shim::CompressedField::DstIp );
      },
      BCM_E_NOT_FOUND },
    // Groups and entries.
    { "GroupWithoutStage",
      []( Shim::Sdk& s ) {
         return s.bcm_field_group_create_id( kUnit, qsetOf( { bcmFieldQualifyTtl } ), 1,
                                             9 );
      },
      BCM_E_PARAM },
    { "GroupWithBothStages",
      []( Shim::Sdk& s ) {
         return s.bcm_field_group_create_id(
             kUnit, qsetOf( { bcmFieldQualifyStageIngress, bcmFieldQualifyStageLookup } ),
             1, 9 );
      },
      BCM_E_PARAM },
    { "GroupWithUnsupportedQualifier",
      []( Shim::Sdk& s ) {
         return s.bcm_field_group_create_id(
             kOtherUnit, qsetOf( { bcmFieldQualifyStageIngress, bcmFieldQualifyTtl } ), 1,
             9 );
      },
      BCM_E_UNAVAIL },
    { "GroupExists",
      []( Shim::Sdk& s ) {
         return s.bcm_field_group_create_id( kUnit, ingressQset(), 1, kIngress );
      },
      BCM_E_EXISTS },
    { "GroupBusy",
      []( Shim::Sdk& s ) { return s.bcm_field_group_destroy( kUnit, kIngress ); },
      BCM_E_BUSY },
    { "GroupMissing",
      []( Shim::Sdk& s ) { return s.bcm_field_group_destroy( kUnit, 77 ); },
      BCM_E_NOT_FOUND },
    { "EntryInMissingGroup",
      []( Shim::Sdk& s ) { return s.bcm_field_entry_create_id( kUnit, 77, 5 ); },
      BCM_E_NOT_FOUND },
    { "EntryExists",
      []( Shim::Sdk& s ) {
         return s.bcm_field_entry_create_id( kUnit, kNarrow, kEntry );
      },
      BCM_E_EXISTS },
    { "ReinstallNeverInstalled",
      []( Shim::Sdk& s ) { return s.bcm_field_entry_reinstall( kUnit, kCancel ); },
      BCM_E_PARAM },
    { "EnableNeverInstalled",
      []( Shim::Sdk& s ) { return s.bcm_field_entry_enable_set( kUnit, kCancel, 0 ); },
      BCM_E_PARAM },
    { "RemoveNotInstalled",
      []( Shim::Sdk& s ) { return s.bcm_field_entry_remove( kUnit, kCancel ); },
      BCM_E_PARAM },
    // Actions.
    { "DuplicateAction",
      []( Shim::Sdk& s ) { return actionAdd( s, kEntry, bcmFieldActionCosQCpuNew, 9 ); },
      BCM_E_CONFIG },
    { "CancelAfterCopy",
      []( Shim::Sdk& s ) {
         return actionAdd( s, kEntry, bcmFieldActionSwitchToCpuCancel );
      },
      BCM_E_CONFIG },
    { "CopyAfterCancel",
      []( Shim::Sdk& s ) { return actionAdd( s, kCancel, bcmFieldActionCopyToCpu ); },
      BCM_E_CONFIG },
    { "RemoveAbsentAction",
      []( Shim::Sdk& s ) {
         return s.bcm_field_action_remove( kUnit, kEntry, bcmFieldActionDrop );
      },
      BCM_E_NOT_FOUND },
    { "GetAbsentAction",
      []( Shim::Sdk& s ) {
         uint32 p0, p1;
         return s.bcm_field_action_get( kUnit, kEntry, bcmFieldActionDrop, &p0, &p1 );
      },
      BCM_E_NOT_FOUND },
    { "RemoveAllWithoutActions",
      []( Shim::Sdk& s ) { return s.bcm_field_action_remove_all( kUnit, kNarrowEntry ); },
      0 },
    { "DetachWithoutPolicer",
      []( Shim::Sdk& s ) {
         return s.bcm_field_entry_policer_detach_all( kUnit, kEntry );
      },
      0 },
    { "VlanStageCpuQueue",
      []( Shim::Sdk& s ) {
         return actionAdd( s, kVlanEntry, bcmFieldActionCosQCpuNew, 1 );
      },
      BCM_E_UNAVAIL },
    { "VlanStageDrop",
      []( Shim::Sdk& s ) { return actionAdd( s, kVlanEntry, bcmFieldActionDrop ); }, 0 },
    { "IngressClassDest",
      []( Shim::Sdk& s ) {
         return actionAdd( s, kEntry, bcmFieldActionClassDestSet, 1 );
      },
      BCM_E_UNAVAIL },
    { "ChipWithoutAction",
      []( Shim::Sdk& s ) {
         return s.bcm_field_action_add( kOtherUnit, kEntry, bcmFieldActionNewClassId, 1,
                                        0 );
      },
      BCM_E_UNAVAIL },
    { "PositionIsNoActionValue",
      []( Shim::Sdk& s ) { return actionAdd( s, kNarrowEntry, 1 ); }, BCM_E_PARAM },
    { "RemovePositionValue",
      []( Shim::Sdk& s ) { return s.bcm_field_action_remove( kUnit, kEntry, 0 ); },
      BCM_E_PARAM },
    { "LastCpuQueue",
      []( Shim::Sdk& s ) {
         return actionAdd( s, kNarrowEntry, bcmFieldActionCosQCpuNew, 47 );
      },
      0 },
    { "CpuQueueTooHigh",
      []( Shim::Sdk& s ) {
         return actionAdd( s, kNarrowEntry, bcmFieldActionCosQCpuNew, 48 );
      },
      BCM_E_PARAM },
    { "PrioInt15",
      []( Shim::Sdk& s ) {
         return actionAdd( s, kNarrowEntry, bcmFieldActionPrioIntNew, 15 );
      },
      0 },
    { "PrioIntTooHigh",
      []( Shim::Sdk& s ) {
         return actionAdd( s, kNarrowEntry, bcmFieldActionPrioIntNew, 16 );
      },
      BCM_E_PARAM },
    { "NewClassTooWide",
      []( Shim::Sdk& s ) {
         return actionAdd( s, kNarrowEntry, bcmFieldActionNewClassId, 256 );
      },
      BCM_E_PARAM },
    { "ClassDestTooWide",
      []( Shim::Sdk& s ) {
         return actionAdd( s, kVlanEntry, bcmFieldActionClassDestSet, 256 );
      },
      BCM_E_PARAM },
    // Qualifiers.
    { "QualifierOutsideQset",
      []( Shim::Sdk& s ) {
         return s.bcm_field_qualify_DstMac( kUnit, kNarrowEntry, kMac, kMac );
      },
      BCM_E_NOT_FOUND },
    { "ReadBackOutsideQset",
      []( Shim::Sdk& s ) {
         uint8 d, m;
         return s.bcm_field_qualify_Ttl_get( kUnit, kNarrowEntry, &d, &m );
      },
      BCM_E_NOT_FOUND },
    { "Ip6OutsideQset",
      []( Shim::Sdk& s ) {
         return s.bcm_field_qualify_DstIp6( kUnit, kVlanEntry, kIp6, kIp6 );
      },
      BCM_E_NOT_FOUND },
    { "CompressedOutsideQset",
      []( Shim::Sdk& s ) {
         return s.bcm_field_qualify_compressed_add(
             kUnit, kNarrowEntry, Shim::CompressedField::DstIp, bytesOf( { 10 } ),
             bytesOf( { 255 } ), 1, 1 );
      },
      BCM_E_NOT_FOUND },
    { "CompressedDataTooWide",
      []( Shim::Sdk& s ) {
         return s.bcm_field_qualify_compressed_add(
             kUnit, kEntry, Shim::CompressedField::L4DstPort, bytesOf( { 0, 1, 1 } ),
             bytesOf( { 255, 255 } ), 1, 1 );
      },
      BCM_E_PARAM },
    { "VlanPri7",
      []( Shim::Sdk& s ) {
         return s.bcm_field_qualify_OuterVlanPri( kUnit, kEntry, 7, 7 );
      },
      0 },
    { "VlanPriTooWide",
      []( Shim::Sdk& s ) {
         return s.bcm_field_qualify_OuterVlanPri( kUnit, kEntry, 8, 7 );
      },
      BCM_E_PARAM },
    { "DropFlagTooWide",
      []( Shim::Sdk& s ) { return s.bcm_field_qualify_Drop( kUnit, kEntry, 2, 1 ); },
      BCM_E_PARAM },
    { "HiGigTooWide",
      []( Shim::Sdk& s ) { return s.bcm_field_qualify_HiGig( kUnit, kEntry, 2, 1 ); },
      BCM_E_PARAM },
    { "L3RoutableTooWide",
      []( Shim::Sdk& s ) {
         return s.bcm_field_qualify_L3Routable( kUnit, kEntry, 3, 1 );
      },
      BCM_E_PARAM },
    { "StpLearn",
      []( Shim::Sdk& s ) {
         return s.bcm_field_qualify_IngressStpState( kUnit, kEntry, 3, 0xff );
      },
      0 },
    { "StpNoState",
      []( Shim::Sdk& s ) {
         return s.bcm_field_qualify_IngressStpState( kUnit, kEntry, 2, 0xff );
      },
      BCM_E_PARAM },
    { "StpBeyondStates",
      []( Shim::Sdk& s ) {
         return s.bcm_field_qualify_IngressStpState( kUnit, kEntry, 5, 0xff );
      },
      BCM_E_PARAM },
    { "ClassL2TooWide",
      []( Shim::Sdk& s ) {
         return s.bcm_field_qualify_InterfaceClassL2( kUnit, kEntry, 256, 0xff );
      },
      BCM_E_PARAM },
    { "PortClassTooWide",
      []( Shim::Sdk& s ) {
         return s.bcm_field_qualify_InterfaceClassPort( kUnit, kEntry, 300, 0xff );
      },
      BCM_E_PARAM },
    { "DstClassL3Widest",
      []( Shim::Sdk& s ) {
         return s.bcm_field_qualify_DstClassL3( kUnit, kEntry, 1023, ~0u );
      },
      0 },
    { "DstClassL3TooWide",
      []( Shim::Sdk& s ) {
         return s.bcm_field_qualify_DstClassL3( kUnit, kEntry, 1024, ~0u );
      },
      BCM_E_PARAM },
    { "SrcModidTooWide",
      []( Shim::Sdk& s ) {
         return s.bcm_field_qualify_SrcPort( kUnit, kEntry, 256, ~0, 1, ~0 );
      },
      BCM_E_PARAM },
    { "DstPortTooWide",
      []( Shim::Sdk& s ) {
         return s.bcm_field_qualify_DstPort( kUnit, kEntry, 0, ~0, 256, ~0 );
      },
      BCM_E_PARAM },
    { "PacketResPosition",
      []( Shim::Sdk& s ) {
         return s.bcm_field_qualify_PacketRes( kUnit, kEntry, 4, ~0u );
      },
      BCM_E_PARAM },
    { "PacketResIsNoBitMask",
      []( Shim::Sdk& s ) {
         return s.bcm_field_qualify_PacketRes(
             kUnit, kEntry, BCM_FIELD_PKT_RES_CONTROL | BCM_FIELD_PKT_RES_L3MCUNKNOWN,
             ~0u );
      },
      BCM_E_PARAM },
    { "IpTypePosition",
      []( Shim::Sdk& s ) { return s.bcm_field_qualify_IpType( kUnit, kEntry, 99 ); },
      BCM_E_PARAM },
    { "InPortsDataBeyondUnit",
      []( Shim::Sdk& s ) {
         return s.bcm_field_qualify_InPorts( kUnit, kEntry, portsOf( { 65 } ),
                                             portsOf( {} ) );
      },
      BCM_E_PORT },
    { "InPortsMaskBeyondUnit",
      []( Shim::Sdk& s ) {
         return s.bcm_field_qualify_InPorts( kUnit, kEntry, portsOf( {} ),
                                             portRange( 0, 65 ) );
      },
      BCM_E_PORT },
    // Ports.
    { "PortClassValueTooWide",
      []( Shim::Sdk& s ) {
         return s.bcm_port_class_set( kUnit, 1, bcmPortClassFieldIngress, 256 );
      },
      BCM_E_PARAM },
    { "PortClassPortBeyondUnit",
      []( Shim::Sdk& s ) {
         return s.bcm_port_class_set( kOtherUnit, 8, bcmPortClassFieldIngress, 1 );
      },
      BCM_E_PORT },
    { "PortClassGetNegativePort",
      []( Shim::Sdk& s ) {
         uint32 c;
         return s.bcm_port_class_get( kUnit, -1, bcmPortClassFieldIngress, &c );
      },
      BCM_E_PORT },
};

TEST_P( MisuseTest, ReturnsSdkCodeAndChangesNothingOnFailure ) {
   const std::string before =
       describe( fp.entries( kUnit ) ) + describe( fp.entries( kOtherUnit ) );
   const int rc = GetParam().call( sdk );
   EXPECT_EQ( GetParam().rc, rc ) << sdk.bcm_errmsg( rc );
   if ( rc < 0 ) {
      EXPECT_EQ( before,
                 describe( fp.entries( kUnit ) ) + describe( fp.entries( kOtherUnit ) ) );
   }
}

INSTANTIATE_TEST_SUITE_P( Sdk, MisuseTest, ::testing::ValuesIn( kCases ), caseName );

// The refused duplicate must not have replaced the first value.
TEST_F( SdkFixture, DuplicateActionKeepsFirstParameters ) {
   installTrap( kEntry, 179, 38 );
   EXPECT_EQ( BCM_E_CONFIG,
              sdk.bcm_field_action_add( kUnit, kEntry, bcmFieldActionCosQCpuNew, 9, 0 ) );
   uint32 p0 = 0, p1 = 0;
   ASSERT_EQ(
       0, sdk.bcm_field_action_get( kUnit, kEntry, bcmFieldActionCosQCpuNew, &p0, &p1 ) );
   EXPECT_EQ( 38u, p0 );
}

}  // namespace
