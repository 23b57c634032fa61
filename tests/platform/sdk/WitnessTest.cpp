// witness(): a packet that hits one entry. Every packet it gives must hit
// that entry in lookup; when it gives none, it must name what stands in the way.
#include <gmock/gmock.h>

#include <random>

#include "tests/platform/sdk/SdkFixture.h"

namespace SdkTest {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class WitnessTest : public SdkFixture {
  protected:
   // The entry of `group` that the witness packet of `entry` hits.
   std::optional<bcm_field_entry_t> hitBy( bcm_field_entry_t entry, bcm_field_group_t group ) {
      const Sim::WitnessResult w = fp.witness( kUnit, entry );
      if ( !w.packet ) {
         return std::nullopt;
      }
      for ( const Sim::StageHit& hit : fp.lookup( kUnit, *w.packet ).ingress.hits ) {
         if ( hit.group == group ) {
            return hit.entry;
         }
      }
      return bcm_field_entry_t( -1 );
   }
};

TEST_F( WitnessTest, MissesEveryEntryLookedAtFirst ) {
   createEntry( 10, kIngress, 30 );
   ASSERT_EQ( 0, sdk.bcm_field_qualify_L4DstPort( kUnit, 10, 179, 0xffff ) );
   ASSERT_EQ( 0, sdk.bcm_field_qualify_IpProtocol( kUnit, 10, 6, 0xff ) );
   ASSERT_EQ( 0, sdk.bcm_field_entry_install( kUnit, 10 ) );
   createEntry( 11, kIngress, 20 );
   ASSERT_EQ( 0, sdk.bcm_field_qualify_InPorts( kUnit, 11, portsOf( { 5, 6 } ), portRange( 0, 64 ) ) );
   ASSERT_EQ( 0, sdk.bcm_field_qualify_L4DstPort( kUnit, 11, 179, 0xffff ) );
   ASSERT_EQ( 0, sdk.bcm_field_entry_install( kUnit, 11 ) );
   // Compressed values, one of them taken by an exact entry before it.
   installTrap( 12, 22, 1, kIngress, 15 );
   createEntry( 13, kIngress, 14 );
   for ( uint16_t port : { 22, 23 } ) {
      ASSERT_EQ( 0, sdk.bcm_field_qualify_compressed_add( kUnit, 13, Shim::CompressedField::L4DstPort,
                                                         be16( port ), be16( 0xffff ), 1, 0xf ) );
   }
   ASSERT_EQ( 0, sdk.bcm_field_entry_install( kUnit, 13 ) );

   const Sim::WitnessResult w = fp.witness( kUnit, 11 );
   ASSERT_TRUE( w.packet );
   EXPECT_EQ( w.packet->l4DstPort, 179 );
   EXPECT_NE( w.packet->ipProtocol, 6 );
   EXPECT_TRUE( w.packet->inPort == 5 || w.packet->inPort == 6 );
   EXPECT_EQ( hitBy( 11, kIngress ), 11 );
   EXPECT_EQ( hitBy( 10, kIngress ), 10 );
   EXPECT_EQ( hitBy( 13, kIngress ), 13 );
   EXPECT_EQ( fp.witness( kUnit, 13 ).packet->l4DstPort, 23 );
}

TEST_F( WitnessTest, NamesTheShadowerOrTheContradiction ) {
   installTrap( 20, 179, 1, kIngress, 5 );
   createEntry( 21, kIngress, 6 );  // before it, and wider
   ASSERT_EQ( 0, sdk.bcm_field_qualify_L4DstPort( kUnit, 21, 0, 0xff00 ) );
   ASSERT_EQ( 0, sdk.bcm_field_entry_install( kUnit, 21 ) );
   const Sim::WitnessResult shadowed = fp.witness( kUnit, 20 );
   EXPECT_FALSE( shadowed.packet );
   EXPECT_THAT( shadowed.shadowers, ElementsAre( 21 ) );
   EXPECT_THAT( shadowed.contradictions, IsEmpty() );

   // A disabled entry shadows nothing.
   ASSERT_EQ( 0, sdk.bcm_field_entry_enable_set( kUnit, 21, 0 ) );
   EXPECT_TRUE( fp.witness( kUnit, 20 ).packet );

   // No port in the data under a mask of every port: nothing can match.
   createEntry( 22, kIngressHigh, 1 );
   ASSERT_EQ( 0, sdk.bcm_field_qualify_InPorts( kUnit, 22, portsOf( {} ), portRange( 0, 64 ) ) );
   ASSERT_EQ( 0, sdk.bcm_field_entry_install( kUnit, 22 ) );
   const Sim::WitnessResult none = fp.witness( kUnit, 22 );
   EXPECT_FALSE( none.packet );
   EXPECT_THAT( none.contradictions, ElementsAre( "InPorts" ) );
}

// Random groups of entries over a few narrow fields: every witness found must
// hit its entry; an entry with none must really be unreachable by any packet
// of the (small, enumerated) space.
TEST_F( WitnessTest, SoundAndCompleteOnRandomGroups ) {
   std::mt19937 random( 11 );
   for ( int round = 0; round < 30; ++round ) {
      bringUp();
      const int count = 3 + int( random() % 6 );
      for ( int i = 0; i < count; ++i ) {
         const bcm_field_entry_t id = 100 + i;
         createEntry( id, kIngress, int( random() % 8 ) );
         if ( random() % 3 ) {
            ASSERT_EQ( 0, sdk.bcm_field_qualify_OuterVlanPri( kUnit, id, uint8( random() % 8 ),
                                                              uint8( random() % 8 ) ) );
         }
         if ( random() % 3 ) {
            ASSERT_EQ( 0, sdk.bcm_field_qualify_Ttl( kUnit, id, uint8( random() % 4 ),
                                                     uint8( random() % 4 ) ) );
         }
         ASSERT_EQ( 0, sdk.bcm_field_entry_install( kUnit, id ) );
      }
      for ( int i = 0; i < count; ++i ) {
         const bcm_field_entry_t id = 100 + i;
         const Sim::WitnessResult w = fp.witness( kUnit, id );
         bool reachable = false;
         for ( int pri = 0; pri < 8 && !reachable; ++pri ) {
            for ( int ttl = 0; ttl < 4 && !reachable; ++ttl ) {
               Sim::PacketFields p;
               p.outerVlanPri = uint8_t( pri );
               p.ttl = uint8_t( ttl );
               reachable = ingressHits( p ) == std::vector<bcm_field_entry_t>{ id };
            }
         }
         SCOPED_TRACE( testing::Message() << "round " << round << " entry " << id );
         EXPECT_EQ( bool( w.packet ), reachable );
         if ( w.packet ) {
            EXPECT_EQ( ingressHits( *w.packet ), std::vector<bcm_field_entry_t>{ id } );
         } else {
            EXPECT_FALSE( w.shadowers.empty() && w.contradictions.empty() );
         }
      }
   }
}

}  // namespace
}  // namespace SdkTest
