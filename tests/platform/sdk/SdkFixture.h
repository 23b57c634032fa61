// One simulated chip per test: unit 0 with two ingress groups of every qualifier
// (priorities 10 and 20), a VLAN-stage group and an ingress group that only
// knows L4DstPort. Every SDK call goes through Shim::sdk_, as the library's do.
#pragma once

#include <gtest/gtest.h>

#include <initializer_list>
#include <string>
#include <vector>

#include "platform/sdk/Simulator.h"

namespace SdkTest {

inline constexpr int kUnit = 0;
inline constexpr bcm_field_group_t kIngress = 1;      // priority 10, every ingress field
inline constexpr bcm_field_group_t kIngressHigh = 2;  // priority 20, every ingress field
inline constexpr bcm_field_group_t kVlan = 3;         // InPorts, DstMac, EtherType
inline constexpr bcm_field_group_t kNarrow = 4;       // priority 1, L4DstPort only

bcm_field_qset_t qsetOf( std::initializer_list<bcm_field_qualify_t> qualifiers );
bcm_field_qset_t ingressQset();  // StageIngress and every real qualifier
bcm_pbmp_t portsOf( std::initializer_list<int> ports );
bcm_pbmp_t portRange( int first, int last );
// A 16-bit value as a compressed field's bytes (network order).
Shim::FieldBytes be16( uint16_t value );

// Everything the views of a unit's entries hold, as text, to compare whole states.
std::string describe( int unit );

// Names parameterized cases after the `name` of their row.
struct RowName {
   template <typename Param>
   std::string operator()( const ::testing::TestParamInfo<Param>& info ) const {
      return info.param.name;
   }
};

class SdkFixture : public ::testing::Test {
 protected:
   void SetUp() override { bringUp(); }
   // Forgets everything, then attaches unit 0 with the groups above.
   void bringUp( Sim::SdkVersion version = Sim::SdkVersion::V6_5 );

   void createEntry( bcm_field_entry_t entry, bcm_field_group_t group = kIngress,
                     int priority = 0 );
   // An installed entry matching L4 destination port `port`, sending to CPU queue
   // `queue`.
   void installTrap( bcm_field_entry_t entry, uint16_t port, uint32_t queue,
                     bcm_field_group_t group = kIngress, int priority = 0 );
   int addAction( bcm_field_entry_t entry, bcm_field_action_t action,
                  uint32 param0 = 0 ) {
      return sdk.bcm_field_action_add( kUnit, entry, action, param0, 0 );
   }

   static Sim::PacketFields udpTo( uint16_t port );
   Sim::StageResult ingress( const Sim::PacketFields& packet ) const {
      return fp.lookup( kUnit, packet ).ingress;
   }
   std::vector<bcm_field_entry_t> ingressHits( const Sim::PacketFields& packet ) const;

   Sim::FieldProcessor& fp = Sim::FieldProcessor::instance();
   Shim::Sdk& sdk = *Shim::sdk_;
};

}  // namespace SdkTest
