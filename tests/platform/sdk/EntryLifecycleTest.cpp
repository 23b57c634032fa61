// Software and hardware copies of an entry, and which entry a packet hits.
#include <gmock/gmock.h>

#include "tests/platform/sdk/SdkFixture.h"

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using namespace SdkTest;

namespace {

class EntryLifecycleTest : public SdkFixture {};

TEST_F( EntryLifecycleTest, EditWithoutReinstallKeepsOldBehaviourUntilReinstall ) {
   installTrap( 100, 179, 38 );
   ASSERT_EQ( 0, sdk.bcm_field_action_add( kUnit, 100, bcmFieldActionPrioIntNew, 7, 0 ) );
   ASSERT_EQ( 0, sdk.bcm_field_qualify_L4DstPort( kUnit, 100, 646, 0xffff ) );

   // Read-backs answer from the software copy at once...
   uint32 p0 = 0, p1 = 0;
   ASSERT_EQ(
       0, sdk.bcm_field_action_get( kUnit, 100, bcmFieldActionPrioIntNew, &p0, &p1 ) );
   EXPECT_EQ( 7u, p0 );
   // ...while the chip keeps forwarding by the installed copy.
   EXPECT_EQ( 38u, ingress( udpTo( 179 ) ).cpuQueue );
   EXPECT_FALSE( ingress( udpTo( 179 ) ).internalPriority );
   EXPECT_THAT( ingressHits( udpTo( 646 ) ), IsEmpty() );

   ASSERT_EQ( 0, sdk.bcm_field_entry_reinstall( kUnit, 100 ) );
   EXPECT_THAT( ingressHits( udpTo( 179 ) ), IsEmpty() );
   EXPECT_EQ( 7u, ingress( udpTo( 646 ) ).internalPriority );
   EXPECT_EQ( 38u, ingress( udpTo( 646 ) ).cpuQueue );
}

TEST_F( EntryLifecycleTest, HardwareViewFollowsInstallNotEdits ) {
   installTrap( 100, 179, 38 );
   ASSERT_EQ( 0, sdk.bcm_field_action_remove( kUnit, 100, bcmFieldActionCosQCpuNew ) );
   const auto view = fp.entry( kUnit, 100 );
   ASSERT_TRUE( view );
   EXPECT_THAT( view->software.actions, IsEmpty() );
   ASSERT_EQ( 1u, view->hardware.actions.size() );
   EXPECT_EQ( "CosQCpuNew", view->hardware.actions[0].name );
   EXPECT_EQ( 38u, view->hardware.actions[0].param0 );
}

TEST_F( EntryLifecycleTest, DisabledEntryIsNeverHitAndReinstallKeepsItDisabled ) {
   installTrap( 100, 179, 38 );
   ASSERT_EQ( 0, sdk.bcm_field_entry_enable_set( kUnit, 100, 0 ) );
   EXPECT_THAT( ingressHits( udpTo( 179 ) ), IsEmpty() );
   int enabled = -1;
   ASSERT_EQ( 0, sdk.bcm_field_entry_enable_get( kUnit, 100, &enabled ) );
   EXPECT_EQ( 0, enabled );

   ASSERT_EQ( 0, sdk.bcm_field_entry_reinstall( kUnit, 100 ) );
   EXPECT_THAT( ingressHits( udpTo( 179 ) ), IsEmpty() );

   ASSERT_EQ( 0, sdk.bcm_field_entry_enable_set( kUnit, 100, 1 ) );
   EXPECT_THAT( ingressHits( udpTo( 179 ) ), ElementsAre( 100 ) );

   // Installing again turns a disabled entry back on.
   ASSERT_EQ( 0, sdk.bcm_field_entry_enable_set( kUnit, 100, 0 ) );
   ASSERT_EQ( 0, sdk.bcm_field_entry_install( kUnit, 100 ) );
   EXPECT_THAT( ingressHits( udpTo( 179 ) ), ElementsAre( 100 ) );
}

TEST_F( EntryLifecycleTest, RemoveTakesEntryOutOfHardwareButKeepsSoftwareCopy ) {
   installTrap( 100, 179, 38 );
   ASSERT_EQ( 0, sdk.bcm_field_entry_remove( kUnit, 100 ) );
   EXPECT_THAT( ingressHits( udpTo( 179 ) ), IsEmpty() );
   const auto view = fp.entry( kUnit, 100 );
   ASSERT_TRUE( view );
   EXPECT_FALSE( view->installed );
   EXPECT_THAT( view->hardware.qualifiers, IsEmpty() );
   EXPECT_EQ( 1u, view->software.qualifiers.size() );

   EXPECT_EQ( BCM_E_PARAM, sdk.bcm_field_entry_reinstall( kUnit, 100 ) );
   ASSERT_EQ( 0, sdk.bcm_field_entry_install( kUnit, 100 ) );
   EXPECT_EQ( 38u, ingress( udpTo( 179 ) ).cpuQueue );
}

TEST_F( EntryLifecycleTest, NeverInstalledEntryIsNotHit ) {
   createEntry( 100 );
   ASSERT_EQ( 0, sdk.bcm_field_qualify_L4DstPort( kUnit, 100, 179, 0xffff ) );
   ASSERT_EQ( 0, sdk.bcm_field_action_add( kUnit, 100, bcmFieldActionDrop, 0, 0 ) );
   EXPECT_FALSE( ingress( udpTo( 179 ) ).drop );
}

TEST_F( EntryLifecycleTest, DestroyFreesInstalledEntryAndItsId ) {
   installTrap( 100, 179, 38 );
   EXPECT_EQ( BCM_E_BUSY, sdk.bcm_field_group_destroy( kUnit, kIngress ) );
   ASSERT_EQ( 0, sdk.bcm_field_entry_destroy( kUnit, 100 ) );
   EXPECT_THAT( ingressHits( udpTo( 179 ) ), IsEmpty() );
   EXPECT_FALSE( fp.entry( kUnit, 100 ) );
   EXPECT_EQ( 0, sdk.bcm_field_group_destroy( kUnit, kIngress ) );
   // The id is free again, in another group.
   installTrap( 100, 179, 9, kIngressHigh );
   EXPECT_EQ( 9u, ingress( udpTo( 179 ) ).cpuQueue );
}

TEST_F( EntryLifecycleTest, ClearedEntryMatchesEverythingAfterReinstall ) {
   installTrap( 100, 179, 38 );
   ASSERT_EQ( 0, sdk.bcm_field_qualify_clear( kUnit, 100 ) );
   EXPECT_THAT( ingressHits( udpTo( 53 ) ), IsEmpty() );
   ASSERT_EQ( 0, sdk.bcm_field_entry_reinstall( kUnit, 100 ) );
   EXPECT_THAT( ingressHits( udpTo( 53 ) ), ElementsAre( 100 ) );
   ASSERT_EQ( 0, sdk.bcm_field_action_remove_all( kUnit, 100 ) );
   ASSERT_EQ( 0, sdk.bcm_field_entry_reinstall( kUnit, 100 ) );
   EXPECT_FALSE( ingress( udpTo( 53 ) ).cpuQueue );
}

TEST_F( EntryLifecycleTest, HighestPriorityWinsInGroupLowerIdOnTie ) {
   installTrap( 12, 179, 3, kIngress, 9 );
   installTrap( 11, 179, 2, kIngress, 9 );
   installTrap( 10, 179, 1, kIngress, 5 );
   EXPECT_THAT( ingressHits( udpTo( 179 ) ), ElementsAre( 11 ) );
   EXPECT_EQ( 2u, ingress( udpTo( 179 ) ).cpuQueue );

   // A priority change moves an installed entry without a reinstall.
   ASSERT_EQ( 0, sdk.bcm_field_entry_prio_set( kUnit, 10, 100 ) );
   EXPECT_THAT( ingressHits( udpTo( 179 ) ), ElementsAre( 10 ) );
   int prio = 0;
   ASSERT_EQ( 0, sdk.bcm_field_entry_prio_get( kUnit, 10, &prio ) );
   EXPECT_EQ( 100, prio );
}

TEST_F( EntryLifecycleTest, HigherGroupWinsSingleValuedActionsFlagsAccumulate ) {
   installTrap( 1, 179, 5, kIngress, 1000 );  // low group, however high the entry
   ASSERT_EQ( 0, sdk.bcm_field_action_add( kUnit, 1, bcmFieldActionCopyToCpu, 0, 0 ) );
   ASSERT_EQ( 0, sdk.bcm_field_action_add( kUnit, 1, bcmFieldActionPrioIntNew, 3, 0 ) );
   ASSERT_EQ( 0, sdk.bcm_field_entry_reinstall( kUnit, 1 ) );
   installTrap( 2, 179, 40, kIngressHigh, 0 );
   ASSERT_EQ( 0, sdk.bcm_field_action_add( kUnit, 2, bcmFieldActionDrop, 0, 0 ) );
   ASSERT_EQ( 0, sdk.bcm_field_entry_reinstall( kUnit, 2 ) );

   const Sim::StageResult r = ingress( udpTo( 179 ) );
   ASSERT_EQ( 2u, r.hits.size() );
   EXPECT_EQ( kIngressHigh, r.hits[0].group );
   EXPECT_EQ( 2, r.hits[0].entry );
   EXPECT_EQ( kIngress, r.hits[1].group );
   EXPECT_EQ( 40u, r.cpuQueue );
   EXPECT_EQ( 3u, r.internalPriority );  // only the low group sets it
   EXPECT_TRUE( r.copyToCpu );
   EXPECT_TRUE( r.drop );
}

TEST_F( EntryLifecycleTest, VlanClassFeedsIngressDstClassL2OnlyWithoutL2Class ) {
   const bcm_mac_t mac = { 0x00, 0x1c, 0x73, 0x00, 0x00, 0x01 };
   const bcm_mac_t exact = { 0xff, 0xff, 0xff, 0xff, 0xff, 0xff };
   createEntry( 50, kVlan );
   ASSERT_EQ( 0, sdk.bcm_field_qualify_DstMac( kUnit, 50, mac, exact ) );
   ASSERT_EQ( 0,
              sdk.bcm_field_action_add( kUnit, 50, bcmFieldActionClassDestSet, 16, 0 ) );
   createEntry( 100 );
   ASSERT_EQ( 0, sdk.bcm_field_qualify_DstClassL2( kUnit, 100, 16, 0xff ) );
   ASSERT_EQ( 0, sdk.bcm_field_action_add( kUnit, 100, bcmFieldActionCosQCpuNew, 7, 0 ) );
   ASSERT_EQ( 0, sdk.bcm_field_entry_install( kUnit, 100 ) );

   Sim::PacketFields packet = udpTo( 80 );
   std::copy( std::begin( mac ), std::end( mac ), packet.dstMac.begin() );
   EXPECT_THAT( ingressHits( packet ), IsEmpty() );  // VLAN entry not installed yet

   ASSERT_EQ( 0, sdk.bcm_field_entry_install( kUnit, 50 ) );
   const Sim::LookupResult r = fp.lookup( kUnit, packet );
   EXPECT_EQ( 16u, r.vlan.classDest );
   ASSERT_EQ( 1u, r.vlan.hits.size() );
   EXPECT_EQ( 50, r.vlan.hits[0].entry );
   EXPECT_EQ( 7u, r.ingress.cpuQueue );

   packet.dstClassL2 = 3;  // the L2 lookup's class takes precedence
   EXPECT_THAT( ingressHits( packet ), IsEmpty() );
}

TEST_F( EntryLifecycleTest, EntriesAreListedByIdWithQualifiersInFirstQualifiedOrder ) {
   createEntry( 30 );
   createEntry( 7 );
   ASSERT_EQ( 0, sdk.bcm_field_qualify_L4DstPort( kUnit, 30, 179, 0xffff ) );
   ASSERT_EQ( 0, sdk.bcm_field_qualify_InPorts( kUnit, 30, portRange( 1, 64 ),
                                                portRange( 0, 64 ) ) );
   ASSERT_EQ( 0, sdk.bcm_field_qualify_SrcPort( kUnit, 30, 2, ~0, 5, ~0 ) );
   ASSERT_EQ( 0, sdk.bcm_field_qualify_L4DstPort( kUnit, 30, 180, 0xffff ) );

   const auto all = fp.entries( kUnit );
   ASSERT_EQ( 2u, all.size() );
   EXPECT_EQ( 7, all[0].id );
   const auto& q = all[1].software.qualifiers;
   ASSERT_EQ( 3u, q.size() );
   EXPECT_EQ( "L4DstPort", q[0].name );
   EXPECT_EQ( ( std::vector<uint8_t>{ 0x00, 0xb4 } ), q[0].data );
   EXPECT_EQ( "InPorts", q[1].name );
   // 65 ports: nine bytes, port 64 alone in the first, the CPU in the last bit.
   EXPECT_EQ(
       ( std::vector<uint8_t>{ 1, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xfe } ),
       q[1].data );
   EXPECT_EQ(
       ( std::vector<uint8_t>{ 1, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff } ),
       q[1].mask );
   EXPECT_EQ( "SrcPort", q[2].name );
   EXPECT_EQ( ( std::vector<uint8_t>{ 2, 5 } ), q[2].data );
   EXPECT_EQ( ( std::vector<uint8_t>{ 0xff, 0xff } ), q[2].mask );
}

TEST_F( EntryLifecycleTest, ResetForgetsUnitsAndUnknownUnitFailsEveryCall ) {
   installTrap( 100, 179, 38 );
   fp.reset();
   EXPECT_FALSE( fp.unitExists( kUnit ) );
   EXPECT_THAT( fp.entries( kUnit ), IsEmpty() );
   EXPECT_EQ( BCM_E_UNIT, sdk.bcm_field_entry_install( kUnit, 100 ) );
   EXPECT_THAT( fp.lookup( kUnit, udpTo( 179 ) ).ingress.hits, IsEmpty() );
}

TEST_F( EntryLifecycleTest, PortConfigSplitsCpuFromEthernetPorts ) {
   bcm_port_config_t config;
   ASSERT_EQ( 0, sdk.bcm_port_config_get( kUnit, &config ) );
   EXPECT_TRUE( BCM_PBMP_EQ( portRange( 0, 64 ), config.all ) );
   EXPECT_TRUE( BCM_PBMP_EQ( portsOf( { 0 } ), config.cpu ) );
   EXPECT_TRUE( BCM_PBMP_EQ( portRange( 1, 64 ), config.e ) );
}

}  // namespace
