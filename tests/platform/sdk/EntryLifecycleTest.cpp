// Software and hardware copies of an entry, and which entry a packet hits.
#include <gmock/gmock.h>

#include "tests/platform/sdk/SdkFixture.h"

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;
using namespace SdkTest;

namespace {

using EntryLifecycleTest = SdkFixture;

TEST_F( EntryLifecycleTest, EditsReachLookupOnlyByInstallOrReinstall ) {
   createEntry( 100 );
   ASSERT_EQ( 0, sdk.bcm_field_qualify_L4DstPort( kUnit, 100, 179, 0xffff ) );
   ASSERT_EQ( 0, addAction( 100, bcmFieldActionCosQCpuNew, 38 ) );
   EXPECT_THAT( ingressHits( udpTo( 179 ) ), IsEmpty() );  // never installed

   ASSERT_EQ( 0, sdk.bcm_field_entry_install( kUnit, 100 ) );
   ASSERT_EQ( 0, addAction( 100, bcmFieldActionPrioIntNew, 7 ) );
   ASSERT_EQ( 0, sdk.bcm_field_qualify_L4DstPort( kUnit, 100, 646, 0xffff ) );
   uint32 p0 = 0, p1 = 0;  // read-backs answer from the software copy at once
   ASSERT_EQ(
       0, sdk.bcm_field_action_get( kUnit, 100, bcmFieldActionPrioIntNew, &p0, &p1 ) );
   EXPECT_EQ( 7u, p0 );
   EXPECT_EQ( 38u, ingress( udpTo( 179 ) ).cpuQueue );  // still the installed copy
   EXPECT_FALSE( ingress( udpTo( 179 ) ).internalPriority );
   EXPECT_THAT( ingressHits( udpTo( 646 ) ), IsEmpty() );
   EXPECT_THAT( fp.entry( kUnit, 100 )->hardware.actions, SizeIs( 1 ) );

   ASSERT_EQ( 0, sdk.bcm_field_entry_reinstall( kUnit, 100 ) );
   EXPECT_THAT( ingressHits( udpTo( 179 ) ), IsEmpty() );
   EXPECT_EQ( 7u, ingress( udpTo( 646 ) ).internalPriority );
   EXPECT_EQ( 38u, ingress( udpTo( 646 ) ).cpuQueue );
}

TEST_F( EntryLifecycleTest, DisabledEntryIsNeverHitAndReinstallKeepsItDisabled ) {
   installTrap( 100, 179, 38 );
   ASSERT_EQ( 0, sdk.bcm_field_entry_enable_set( kUnit, 100, 0 ) );
   EXPECT_THAT( ingressHits( udpTo( 179 ) ), IsEmpty() );
   ASSERT_EQ( 0, sdk.bcm_field_entry_reinstall( kUnit, 100 ) );
   EXPECT_THAT( ingressHits( udpTo( 179 ) ), IsEmpty() );
   ASSERT_EQ( 0, sdk.bcm_field_entry_enable_set( kUnit, 100, 1 ) );
   EXPECT_THAT( ingressHits( udpTo( 179 ) ), ElementsAre( 100 ) );

   ASSERT_EQ( 0, sdk.bcm_field_entry_enable_set( kUnit, 100, 0 ) );
   ASSERT_EQ( 0, sdk.bcm_field_entry_install( kUnit, 100 ) );  // turns it back on
   EXPECT_THAT( ingressHits( udpTo( 179 ) ), ElementsAre( 100 ) );
}

TEST_F( EntryLifecycleTest, RemoveEmptiesHardwareCopyAndKeepsSoftwareCopy ) {
   installTrap( 100, 179, 38 );
   ASSERT_EQ( 0, sdk.bcm_field_entry_remove( kUnit, 100 ) );
   EXPECT_THAT( ingressHits( udpTo( 179 ) ), IsEmpty() );
   const auto view = fp.entry( kUnit, 100 );
   EXPECT_FALSE( view->installed );
   EXPECT_THAT( view->hardware.qualifiers, IsEmpty() );
   EXPECT_THAT( view->software.qualifiers, SizeIs( 1 ) );

   EXPECT_EQ( BCM_E_PARAM, sdk.bcm_field_entry_reinstall( kUnit, 100 ) );
   ASSERT_EQ( 0, sdk.bcm_field_entry_install( kUnit, 100 ) );
   EXPECT_EQ( 38u, ingress( udpTo( 179 ) ).cpuQueue );
}

TEST_F( EntryLifecycleTest, DestroyFreesInstalledEntryItsIdAndItsGroup ) {
   installTrap( 100, 179, 38 );
   ASSERT_EQ( 0, sdk.bcm_field_entry_destroy( kUnit, 100 ) );
   EXPECT_THAT( ingressHits( udpTo( 179 ) ), IsEmpty() );
   EXPECT_FALSE( fp.entry( kUnit, 100 ) );
   EXPECT_EQ( 0, sdk.bcm_field_group_destroy( kUnit, kIngress ) );
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
   // A new priority moves an installed entry without a reinstall.
   ASSERT_EQ( 0, sdk.bcm_field_entry_prio_set( kUnit, 10, 100 ) );
   EXPECT_THAT( ingressHits( udpTo( 179 ) ), ElementsAre( 10 ) );
}

TEST_F( EntryLifecycleTest, HigherGroupWinsSingleValuedActionsFlagsAccumulate ) {
   installTrap( 1, 179, 5, kIngress, 1000 );  // low group, however high the entry
   ASSERT_EQ( 0, addAction( 1, bcmFieldActionCopyToCpu ) );
   ASSERT_EQ( 0, addAction( 1, bcmFieldActionPrioIntNew, 3 ) );
   ASSERT_EQ( 0, sdk.bcm_field_entry_reinstall( kUnit, 1 ) );
   installTrap( 2, 179, 40, kIngressHigh, 0 );
   ASSERT_EQ( 0, addAction( 2, bcmFieldActionDrop ) );
   ASSERT_EQ( 0, sdk.bcm_field_entry_reinstall( kUnit, 2 ) );

   const Sim::StageResult r = ingress( udpTo( 179 ) );
   ASSERT_THAT( r.hits, SizeIs( 2 ) );
   EXPECT_EQ( 2, r.hits[0].entry );
   EXPECT_EQ( kIngressHigh, r.hits[0].group );
   EXPECT_EQ( kIngress, r.hits[1].group );
   EXPECT_EQ( 40u, r.cpuQueue );
   EXPECT_EQ( 3u, r.internalPriority );  // only the low group sets it
   EXPECT_TRUE( r.copyToCpu );
   EXPECT_TRUE( r.drop );
}

// The VLAN stage's class is its own field (DstClassField): an ingress entry
// on the L2 destination class reads the L2 table's class, never the VLAN stage's.
TEST_F( EntryLifecycleTest, VlanClassIsItsOwnFieldNotTheL2Class ) {
   const bcm_mac_t mac = { 0x00, 0x1c, 0x73, 0x00, 0x00, 0x01 };
   const bcm_mac_t exact = { 0xff, 0xff, 0xff, 0xff, 0xff, 0xff };
   createEntry( 50, kVlan );
   ASSERT_EQ( 0, sdk.bcm_field_qualify_DstMac( kUnit, 50, mac, exact ) );
   ASSERT_EQ( 0, addAction( 50, bcmFieldActionClassDestSet, 16 ) );
   ASSERT_EQ( 0, sdk.bcm_field_entry_install( kUnit, 50 ) );
   createEntry( 100 );
   ASSERT_EQ( 0, sdk.bcm_field_qualify_DstClassL2( kUnit, 100, 16, 0xff ) );
   ASSERT_EQ( 0, addAction( 100, bcmFieldActionCosQCpuNew, 7 ) );
   ASSERT_EQ( 0, sdk.bcm_field_entry_install( kUnit, 100 ) );
   createEntry( 101, kIngressHigh );
   ASSERT_EQ( 0, sdk.bcm_field_qualify_DstClassField( kUnit, 101, 16, 0xff ) );
   ASSERT_EQ( 0, sdk.bcm_field_entry_install( kUnit, 101 ) );

   Sim::PacketFields packet = udpTo( 80 );
   std::copy( std::begin( mac ), std::end( mac ), packet.dstMac.begin() );
   const Sim::LookupResult r = fp.lookup( kUnit, packet );
   EXPECT_EQ( 16u, r.vlan.classDest );
   EXPECT_THAT( ingressHits( packet ), ElementsAre( 101 ) );
   packet.dstClassL2 = 16;  // the L2 table's class
   EXPECT_THAT( ingressHits( packet ), ElementsAre( 101, 100 ) );
}

TEST_F( EntryLifecycleTest, ViewsListEntriesByIdAndQualifiersInFirstQualifiedOrder ) {
   createEntry( 30 );
   createEntry( 7 );
   ASSERT_EQ( 0, sdk.bcm_field_qualify_L4DstPort( kUnit, 30, 179, 0xffff ) );
   ASSERT_EQ( 0, sdk.bcm_field_qualify_InPorts( kUnit, 30, portRange( 1, 64 ),
                                                portRange( 0, 64 ) ) );
   ASSERT_EQ( 0, sdk.bcm_field_qualify_L4DstPort( kUnit, 30, 180, 0xffff ) );

   const auto all = fp.entries( kUnit );
   ASSERT_THAT( all, SizeIs( 2 ) );
   EXPECT_EQ( 7, all[0].id );
   const auto& q = all[1].software.qualifiers;
   ASSERT_THAT( q, SizeIs( 2 ) );
   EXPECT_EQ( "L4DstPort", q[0].name );
   EXPECT_EQ( ( std::vector<uint8_t>{ 0x00, 0xb4 } ), q[0].data );
   EXPECT_EQ( "InPorts", q[1].name );
   // 65 ports: nine bytes, port 64 alone in the first, the CPU in the last bit.
   EXPECT_EQ(
       ( std::vector<uint8_t>{ 1, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xfe } ),
       q[1].data );
}

TEST_F( EntryLifecycleTest, PortConfigSplitsCpuFromEthernetPorts ) {
   bcm_port_config_t config;
   ASSERT_EQ( 0, sdk.bcm_port_config_get( kUnit, &config ) );
   EXPECT_TRUE( BCM_PBMP_EQ( portRange( 0, 64 ), config.all ) );
   EXPECT_TRUE( BCM_PBMP_EQ( portsOf( { 0 } ), config.cpu ) );
   EXPECT_TRUE( BCM_PBMP_EQ( portRange( 1, 64 ), config.e ) );
   EXPECT_TRUE( BCM_PBMP_EQ( portRange( 0, 64 ), sdk.portBitmapAll( kUnit ) ) );
   EXPECT_EQ( 0, sdk.cpuPort( kUnit ) );
   EXPECT_TRUE( BCM_PBMP_IS_NULL( sdk.portBitmapAll( 7 ) ) );
   EXPECT_EQ( -1, sdk.cpuPort( 7 ) );
}

// A flexed-out port is gone from every port set, refused as in-port data and
// by per-port calls, and takes no packets; masking it stays allowed. Flexed
// back in, it is a port like any other, with its class reset.
TEST_F( EntryLifecycleTest, AbsentPortIsRefusedUntilFlexedBackIn ) {
   installTrap( 7, 179, 30 );
   ASSERT_EQ( 0, sdk.bcm_port_class_set( kUnit, 9, bcmPortClassFieldIngress, 4 ) );
   ASSERT_EQ( 0, fp.portValidIs( kUnit, 9, false ) );

   bcm_port_config_t config;
   ASSERT_EQ( 0, sdk.bcm_port_config_get( kUnit, &config ) );
   bcm_pbmp_t expected = portRange( 1, 64 );
   BCM_PBMP_PORT_REMOVE( expected, 9 );
   EXPECT_TRUE( BCM_PBMP_EQ( expected, config.e ) );
   BCM_PBMP_PORT_ADD( expected, 0 );
   EXPECT_TRUE( BCM_PBMP_EQ( expected, sdk.portBitmapAll( kUnit ) ) );

   uint32 portClass = 0;
   EXPECT_EQ( BCM_E_PORT,
              sdk.bcm_port_class_get( kUnit, 9, bcmPortClassFieldIngress, &portClass ) );
   EXPECT_EQ( BCM_E_PORT,
              sdk.bcm_port_class_set( kUnit, 9, bcmPortClassFieldIngress, 1 ) );
   EXPECT_EQ( BCM_E_PORT, sdk.bcm_field_qualify_InPorts( kUnit, 7, portsOf( { 8, 9 } ),
                                                          portRange( 0, 64 ) ) );
   EXPECT_EQ( 0, sdk.bcm_field_qualify_InPorts( kUnit, 7, portsOf( { 8 } ),
                                                portRange( 0, 64 ) ) );
   ASSERT_EQ( 0, sdk.bcm_field_entry_reinstall( kUnit, 7 ) );
   Sim::PacketFields packet = udpTo( 179 );
   packet.inPort = 8;
   EXPECT_THAT( ingressHits( packet ), ElementsAre( 7 ) );
   packet.inPort = 9;
   EXPECT_THAT( ingressHits( packet ), IsEmpty() );

   EXPECT_EQ( BCM_E_PORT, fp.portValidIs( kUnit, 0, false ) );
   EXPECT_EQ( BCM_E_PORT, fp.portValidIs( kUnit, 65, true ) );
   EXPECT_EQ( BCM_E_UNIT, fp.portValidIs( 7, 9, true ) );
   ASSERT_EQ( 0, fp.portValidIs( kUnit, 9, true ) );
   ASSERT_EQ( 0, sdk.bcm_port_class_get( kUnit, 9, bcmPortClassFieldIngress, &portClass ) );
   EXPECT_EQ( 0u, portClass );
   EXPECT_EQ( 0, sdk.bcm_field_qualify_InPorts( kUnit, 7, portsOf( { 8, 9 } ),
                                                portRange( 0, 64 ) ) );
}

}  // namespace
