// A two-unit switch with the L3 rules installed, so that every unit has its
// "Ipfix Dst Port" entry and the Helper follows the switch's flow-tracking
// configuration. Tests change that configuration through its publishers and
// read the IPFIX entry back from the chip.
#pragma once

#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "FerroTcamSystemAcl/Helper.h"
#include "platform/agent/SwitchBringup.h"
#include "platform/runtime/Trace.h"
#include "platform/sdk/Simulator.h"

namespace IpfixTest {

using namespace HwFlowTracking;

inline Sim::FieldProcessor& chip() { return Sim::FieldProcessor::instance(); }

// The hardware copy of a unit's IPFIX entry.
struct RuleState {
   U16 port = 0;  // 0: no single L4 destination port in hardware
   bool installed = false;
   bool enabled = false;
   bool operator==( const RuleState& ) const = default;
};
std::ostream& operator<<( std::ostream& os, const RuleState& s );

class IpfixFixture : public ::testing::Test {
  protected:
   void SetUp() override;
   void TearDown() override;

   static RuleState ruleAt( U16 unit, U32 entry );
   RuleState rule( U16 unit ) const { return ruleAt( unit, helper->ipfixRule( unit ) ); }
   // Every unit's entry is in `expected`.
   void expectEveryUnit( const RuleState& expected ) const;
   // The ingress CPU queue of a UDP packet to `port` on the IPFIX in-port, if
   // the IPFIX entry is what it hits.
   std::optional<uint32_t> ipfixQueueFor( U16 unit, U16 port ) const;

   // The level-2 lines of the library's trace handle since the last call.
   std::vector<std::string> takeTrace();

   FtConfig::Ptr trackerIs( const std::string& name );  // added to the config
   ExporterConfig::Ptr exporterIs( const FtConfig::Ptr& tracker, const std::string& name );
   // The top machine's tracker machine of that name; null when none.
   FerroTcamSystemAcl::IpfixPortFlowTrackerProgrammerSm::Ptr tracker(
      const std::string& name ) const;

   Agent::Switch::Ptr sw;
   FerroTcamSystemAcl::Helper::Ptr helper;
   Config::Ptr config;
   std::vector<std::string> trace_;
};

}  // namespace IpfixTest
