// A simulated switch for the agent layer's tests, and the few questions the
// tests ask the simulated chip about it.
#pragma once

#include <gtest/gtest.h>

#include <optional>

#include "platform/agent/FerroCentral.h"
#include "platform/agent/SwitchBringup.h"
#include "platform/sdk/Shim.h"
#include "platform/sdk/Simulator.h"

namespace AgentTest {

inline Sim::FieldProcessor& chip() { return Sim::FieldProcessor::instance(); }

inline bcm_pbmp_t ports( std::initializer_list<int> list ) {
   bcm_pbmp_t p{};
   for ( int port : list ) {
      BCM_PBMP_PORT_ADD( p, port );
   }
   return p;
}

// A TCP packet arriving on `inPort`; the tests' entries match on its protocol.
inline Sim::PacketFields tcpPacket( int inPort = 1, uint16_t dstPort = 179 ) {
   Sim::PacketFields p;
   p.inPort = inPort;
   p.ipType = Shim::FieldIpType::Ipv4Any;
   p.ipProtocol = 6;
   p.l4DstPort = dstPort;
   return p;
}

// The entry of `group` that the packet hits in the ingress stage, if any.
inline std::optional<bcm_field_entry_t> hit( int unit, const Sim::PacketFields& packet,
                                             bcm_field_group_t group ) {
   for ( const Sim::StageHit& h : chip().lookup( unit, packet ).ingress.hits ) {
      if ( h.group == group ) {
         return h.entry;
      }
   }
   return std::nullopt;
}

class SwitchTest : public ::testing::Test {
  protected:
   void SetUp() override { bringUp( Agent::defaultSwitchConfig() ); }
   // The platform attributes are process-wide: leave none behind.
   void TearDown() override { FerroCentral::ferroAttributesIs( nullptr ); }

   void bringUp( const Agent::SwitchConfig& config ) { sw_ = Agent::bringUp( config ); }

   // Requests `entry` from the L3 manager, matches TCP with it and sends it to
   // `queue`, uninstalled.
   U32 tcpEntry( U32 entry, U32 queue ) {
      EXPECT_EQ( sw_->l3Manager->getEntry( 0, entry, "tcp", {} ), entry );
      EXPECT_EQ( Shim::sdk_->bcm_field_qualify_IpProtocol( 0, entry, 6, 0xff ), 0 );
      EXPECT_EQ(
         Shim::sdk_->bcm_field_action_add( 0, entry, bcmFieldActionCosQCpuNew, queue, 0 ), 0 );
      return entry;
   }
   // The CPU queue a TCP packet on port 1 of unit 0 is sent to.
   std::optional<uint32_t> cpuQueue() {
      return chip().lookup( 0, tcpPacket() ).ingress.cpuQueue;
   }

   static constexpr U32 l3Base = Agent::ManagerLayout::l3Base;
   static constexpr bcm_field_group_t l3Group = Agent::ManagerLayout::l3Group;
   static constexpr bcm_field_group_t l2Group = Agent::ManagerLayout::l2Group;
   Agent::Switch::Ptr sw_;
};

}  // namespace AgentTest
