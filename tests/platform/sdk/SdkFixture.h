// One simulated chip per test: unit 0 with an ingress group of every qualifier
// (priority 10), a second ingress group (priority 20), a VLAN-stage group and
// a group that only knows L4DstPort. Every SDK call goes through Shim::sdk_,
// as the library's calls do.
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
inline constexpr bcm_field_group_t kVlan = 3;         // VLAN stage
inline constexpr bcm_field_group_t kNarrow = 4;       // ingress, L4DstPort only

bcm_field_qset_t qsetOf( std::initializer_list<bcm_field_qualify_t> qualifiers );
bcm_field_qset_t ingressQset();  // StageIngress and every real qualifier

bcm_pbmp_t portsOf( std::initializer_list<int> ports );
bcm_pbmp_t portRange( int first, int last );

// Everything an EntryView holds, as text, to compare whole states.
std::string describe( const std::vector<Sim::EntryView>& entries );

class SdkFixture : public ::testing::Test {
 protected:
   void SetUp() override;

   void createEntry( bcm_field_entry_t entry, bcm_field_group_t group = kIngress,
                     int priority = 0 );
   // An installed ingress entry matching L4 destination port `port` that sends
   // to CPU queue `queue`.
   void installTrap( bcm_field_entry_t entry, uint16_t port, uint32_t queue,
                     bcm_field_group_t group = kIngress, int priority = 0 );

   static Sim::PacketFields udpTo( uint16_t port );
   Sim::StageResult ingress( const Sim::PacketFields& packet ) const;
   std::vector<bcm_field_entry_t> ingressHits( const Sim::PacketFields& packet ) const;

   Sim::FieldProcessor& fp = Sim::FieldProcessor::instance();
   Shim::Sdk& sdk = *Shim::sdk_;
};

}  // namespace SdkTest
