#include "tests/platform/sdk/SdkFixture.h"

#include <sstream>

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
   bcm_field_qset_t qset = qsetOf( { bcmFieldQualifyStageIngress } );
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
   bcm_pbmp_t bitmap = portsOf( {} );
   for ( int port = first; port <= last; ++port ) {
      BCM_PBMP_PORT_ADD( bitmap, port );
   }
   return bitmap;
}

namespace {

template <typename Bytes>
void put( std::ostream& out, const Bytes& bytes ) {
   for ( uint8_t b : bytes ) {
      out << ' ' << int( b );
   }
}

void put( std::ostream& out, const Sim::EntryCopy& copy ) {
   for ( const Sim::QualifierView& q : copy.qualifiers ) {
      out << ' ' << q.name << ':';
      put( out, q.data );
      out << " /";
      put( out, q.mask );
      for ( const Shim::CompressedValue& v : q.compressed ) {
         out << " |" << v.classId << '/' << v.classMask << ':';
         put( out, v.data.bytes );
         out << " /";
         put( out, v.mask.bytes );
      }
   }
   for ( const Sim::ActionView& a : copy.actions ) {
      out << ' ' << a.name << '(' << a.param0 << ',' << a.param1 << ')';
   }
}

}  // namespace

std::string describe( int unit ) {
   std::ostringstream out;
   for ( const Sim::EntryView& e : Sim::FieldProcessor::instance().entries( unit ) ) {
      out << e.id << " group " << e.group << " prio " << e.priority << " installed "
          << e.installed << " enabled " << e.enabled << "\n sw:";
      put( out, e.software );
      out << "\n hw:";
      put( out, e.hardware );
      out << '\n';
   }
   return out.str();
}

void SdkFixture::bringUp( Sim::SdkVersion version ) {
   fp.reset( version );
   ASSERT_EQ( Shim::sdk_, &fp );
   ASSERT_EQ( 0, fp.attachUnit( kUnit, Sim::UnitConfig{} ) );
   const bcm_field_qset_t vlan =
       qsetOf( { bcmFieldQualifyStageLookup, bcmFieldQualifyInPorts,
                 bcmFieldQualifyDstMac, bcmFieldQualifyEtherType } );
   const bcm_field_qset_t narrow =
       qsetOf( { bcmFieldQualifyStageIngress, bcmFieldQualifyL4DstPort } );
   ASSERT_EQ( 0, sdk.bcm_field_group_create_id( kUnit, ingressQset(), 10, kIngress ) );
   ASSERT_EQ( 0,
              sdk.bcm_field_group_create_id( kUnit, ingressQset(), 20, kIngressHigh ) );
   ASSERT_EQ( 0, sdk.bcm_field_group_create_id( kUnit, vlan, 5, kVlan ) );
   ASSERT_EQ( 0, sdk.bcm_field_group_create_id( kUnit, narrow, 1, kNarrow ) );
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
   ASSERT_EQ( 0, addAction( entry, bcmFieldActionCosQCpuNew, queue ) );
   ASSERT_EQ( 0, sdk.bcm_field_entry_install( kUnit, entry ) );
}

Shim::FieldBytes be16( uint16_t value ) {
   Shim::FieldBytes b;
   b.bytes[0] = static_cast<uint8_t>( value >> 8 );
   b.bytes[1] = static_cast<uint8_t>( value );
   return b;
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

std::vector<bcm_field_entry_t> SdkFixture::ingressHits(
    const Sim::PacketFields& packet ) const {
   std::vector<bcm_field_entry_t> hits;
   for ( const Sim::StageHit& hit : ingress( packet ).hits ) {
      hits.push_back( hit.entry );
   }
   return hits;
}

}  // namespace SdkTest
