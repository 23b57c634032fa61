#include "tests/platform/sdk/SdkFixture.h"

#include <cstdio>

namespace SdkTest {

bcm_field_qset_t qsetOf( std::initializer_list<bcm_field_qualify_t> qualifiers ) {
   bcm_field_qset_t qset;
   BCM_FIELD_QSET_INIT( qset );
   for ( bcm_field_qualify_t q : qualifiers ) {
      BCM_FIELD_QSET_ADD( qset, q );
   }
   return qset;
}

bcm_field_qset_t ingressQset() {
   bcm_field_qset_t qset;
   BCM_FIELD_QSET_INIT( qset );
   BCM_FIELD_QSET_ADD( qset, bcmFieldQualifyStageIngress );
   for ( int q = bcmFieldQualifyInPorts; q < bcmFieldQualifyCount; ++q ) {
      BCM_FIELD_QSET_ADD( qset, q );
   }
   return qset;
}

bcm_pbmp_t portsOf( std::initializer_list<int> ports ) {
   bcm_pbmp_t bitmap;
   BCM_PBMP_CLEAR( bitmap );
   for ( int port : ports ) {
      BCM_PBMP_PORT_ADD( bitmap, port );
   }
   return bitmap;
}

bcm_pbmp_t portRange( int first, int last ) {
   bcm_pbmp_t bitmap;
   BCM_PBMP_CLEAR( bitmap );
   for ( int port = first; port <= last; ++port ) {
      BCM_PBMP_PORT_ADD( bitmap, port );
   }
   return bitmap;
}

namespace {

std::string bytes( const std::vector<uint8_t>& data ) {
   std::string text;
   char hex[4];
   for ( uint8_t b : data ) {
      std::snprintf( hex, sizeof hex, "%02x", b );
      text += hex;
   }
   return text;
}

std::string describe( const Sim::EntryCopy& copy ) {
   std::string text;
   for ( const Sim::QualifierView& q : copy.qualifiers ) {
      text += " " + q.name + "=" + bytes( q.data ) + "/" + bytes( q.mask );
      for ( const Shim::CompressedValue& v : q.compressed ) {
         text += " |" + bytes( { v.data.bytes.begin(), v.data.bytes.end() } ) + "/" +
                 bytes( { v.mask.bytes.begin(), v.mask.bytes.end() } ) + "#" +
                 std::to_string( v.classId );
      }
   }
   for ( const Sim::ActionView& a : copy.actions ) {
      text += " " + a.name + "(" + std::to_string( a.param0 ) + "," +
              std::to_string( a.param1 ) + ")";
   }
   return text;
}

}  // namespace

std::string describe( const std::vector<Sim::EntryView>& entries ) {
   std::string text;
   for ( const Sim::EntryView& e : entries ) {
      text += "entry " + std::to_string( e.id ) + " group " + std::to_string( e.group ) +
              " prio " + std::to_string( e.priority ) +
              ( e.installed ? " installed" : "" ) + ( e.enabled ? " enabled" : "" ) +
              "\n sw:" + describe( e.software ) + "\n hw:" + describe( e.hardware ) +
              "\n";
   }
   return text;
}

void SdkFixture::SetUp() {
   fp.reset();
   ASSERT_EQ( Shim::sdk_, &fp );
   ASSERT_EQ( 0, fp.attachUnit( kUnit, Sim::UnitConfig{} ) );
   ASSERT_EQ( 0, sdk.bcm_field_group_create_id( kUnit, ingressQset(), 10, kIngress ) );
   ASSERT_EQ( 0,
              sdk.bcm_field_group_create_id( kUnit, ingressQset(), 20, kIngressHigh ) );
   ASSERT_EQ( 0, sdk.bcm_field_group_create_id(
                     kUnit,
                     qsetOf( { bcmFieldQualifyStageLookup, bcmFieldQualifyInPorts,
                               bcmFieldQualifyDstMac, bcmFieldQualifyEtherType } ),
                     5, kVlan ) );
   ASSERT_EQ(
       0, sdk.bcm_field_group_create_id(
              kUnit, qsetOf( { bcmFieldQualifyStageIngress, bcmFieldQualifyL4DstPort } ),
              1, kNarrow ) );
}

void SdkFixture::createEntry( bcm_field_entry_t entry, bcm_field_group_t group,
                              int priority ) {
   ASSERT_EQ( 0, sdk.bcm_field_entry_create_id( kUnit, group, entry ) );
   ASSERT_EQ( 0, sdk.bcm_field_entry_prio_set( kUnit, entry, priority ) );
}

void SdkFixture::installTrap( bcm_field_entry_t entry, uint16_t port, uint32_t queue,
                              bcm_field_group_t group, int priority ) {
   createEntry( entry, group, priority );
   ASSERT_EQ( 0, sdk.bcm_field_qualify_L4DstPort( kUnit, entry, port, 0xffff ) );
   ASSERT_EQ(
       0, sdk.bcm_field_action_add( kUnit, entry, bcmFieldActionCosQCpuNew, queue, 0 ) );
   ASSERT_EQ( 0, sdk.bcm_field_entry_install( kUnit, entry ) );
}

Sim::PacketFields SdkFixture::udpTo( uint16_t port ) {
   Sim::PacketFields packet;
   packet.etherType = 0x0800;
   packet.ipType = Shim::FieldIpType::Ipv4Any;
   packet.ipProtocol = 17;
   packet.l4SrcPort = 40000;
   packet.l4DstPort = port;
   return packet;
}

Sim::StageResult SdkFixture::ingress( const Sim::PacketFields& packet ) const {
   return fp.lookup( kUnit, packet ).ingress;
}

std::vector<bcm_field_entry_t> SdkFixture::ingressHits(
    const Sim::PacketFields& packet ) const {
   std::vector<bcm_field_entry_t> hits;
   for ( const Sim::StageHit& hit : ingress( packet ).hits ) {
      hits.push_back( hit.entry );
   }
   return hits;
}

}  // namespace SdkTest
