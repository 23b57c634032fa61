// The shipped chip profiles (each one is run in ToolRunTest) together reach
// every branch of the library that depends on a chip attribute or switch flag.
#include <algorithm>

#include <gtest/gtest.h>

#include "ToolProcess.h"
#include "tools/ferro-acl/ProfileLoader.h"

using namespace FerroAcl;
using Config = Agent::SwitchConfig;
using Chip = Agent::ChipProfile;
using Caps = FerroCentral::ChipAttributes;
using Holds = bool ( * )( const Config&, const Chip&, const Caps& );

// A condition on a switch `s`, one of its chips `c` and that chip's attributes `a`.
#define FERRO_HAS( condition )                                              \
   std::pair<Holds, const char*> {                                          \
      []( [[maybe_unused]] const Config& s, [[maybe_unused]] const Chip& c, \
          [[maybe_unused]] const Caps& a ) -> bool { return condition; },   \
          #condition                                                        \
   }

TEST( ProfileSet, TogetherTheyCoverEveryAttributeBranch ) {
   const std::pair<Holds, const char*> cases[] = {
       FERRO_HAS( a.dstClassL3Supported ),
       FERRO_HAS( !a.dstClassL3Supported ),
       FERRO_HAS( a.gleanViaNextHopToCpu && !s.nextHopToCpuGleanDisabled ),
       FERRO_HAS( a.gleanViaNextHopToCpu && s.nextHopToCpuGleanDisabled ),
       FERRO_HAS( !a.gleanViaNextHopToCpu && a.gleanClassIdSupported ),
       FERRO_HAS( !a.gleanViaNextHopToCpu && !a.gleanClassIdSupported ),
       FERRO_HAS( a.espWarRequired && a.extensionHeaderTypeQualifierSupported ),
       FERRO_HAS( a.espWarRequired && !a.extensionHeaderTypeQualifierSupported ),
       FERRO_HAS( a.ipfixSupported ),
       FERRO_HAS( !a.ipfixSupported ),
       FERRO_HAS( a.ipv6MulticastSupported ),
       FERRO_HAS( !a.ipv6MulticastSupported ),
       FERRO_HAS( c.chipType == 22 ),  // no IPv6 PIM
       FERRO_HAS( a.bfdEchoCheckEnabled && a.bfdEchoSupported &&
                  !a.bfdEchoRuleSuppressed ),
       FERRO_HAS( a.bfdEchoRuleSuppressed ),
       FERRO_HAS( a.bfdEchoSupported && !a.bfdEchoCheckEnabled &&
                  !a.bfdEchoRuleSuppressed ),
       FERRO_HAS( s.aclGroupManagers ),
       FERRO_HAS( a.hasVxlanCoreProtocol( Lamo::L2Pt::lldp() ) ),
       FERRO_HAS( a.linkLocalPtpSupported != 0 &&
                  !a.hasVxlanCoreProtocol( Lamo::L2Pt::lldp() ) ),
       FERRO_HAS( a.linkLocalPtpSupported == 0 ),
       FERRO_HAS( !s.l2ProtocolForwarding.empty() && a.l2PfDevicePbmpSupported != 0 ),
       FERRO_HAS( !s.l2ProtocolForwarding.empty() && a.l2PfDevicePbmpSupported == 0 ),
       FERRO_HAS( std::any_of( s.l2ProtocolForwarding.begin(), s.l2ProtocolForwarding.end(),
                               []( const auto& f ) {
                                  return f.trafficType == Lamo::L2Pt::l2PtTrafficTypeVxlanDecap;
                               } ) ),
       FERRO_HAS( std::any_of( s.l2ProtocolForwarding.begin(), s.l2ProtocolForwarding.end(),
                               []( const auto& f ) { return f.intf.isPortChannel(); } ) ),
       FERRO_HAS( a.l2CacheHitSupported != 0 ),
       FERRO_HAS( s.reducedL2TrapsA ),
       FERRO_HAS( a.vlanStageClassRulesSupported && !a.igmpVlanClassRulesSuppressed ),
       FERRO_HAS( a.vlanStageClassRulesSupported && a.igmpVlanClassRulesSuppressed ),
       FERRO_HAS( c.model >= 32 && c.model <= 35 && a.stpStateMaskReadBack == 0x03 ),
       FERRO_HAS( a.l2PfDevicePbmpSupported != 0 ),
       FERRO_HAS( s.platformCode == 7 ),
       FERRO_HAS( s.skipInPortQualify != 0 ),
       FERRO_HAS( s.mayRunAsSimulation ),
       FERRO_HAS( s.sdkVersion == Sim::SdkVersion::V6_6 ),
   };
   std::vector<Config> profiles;
   for ( const std::string& file : FerroAclTest::profileFiles() ) {
      Result<Config> loaded = loadProfile( file );
      ASSERT_TRUE( loaded ) << loaded.error();
      profiles.push_back( loaded.value() );
   }
   for ( const auto& [holds, what] : cases ) {
      bool found = false;
      // Only chips that some unit uses count: an unused family exercises nothing.
      for ( const Config& s : profiles ) {
         for ( const Agent::UnitSpec& unit : s.units ) {
            for ( const Chip& c : s.chips ) {
               found = found || ( c.family == unit.chip && holds( s, c, c.attributes ) );
            }
         }
      }
      EXPECT_TRUE( found ) << "no profile has " << what;
   }
}
#undef FERRO_HAS
