// The shipped chip profiles: each one loads and brings a switch up, and
// together they reach every branch of the library that depends on a chip
// attribute or switch flag.
#include <gtest/gtest.h>

#include <filesystem>
#include <functional>

#include "ToolProcess.h"
#include "tools/ferro-acl/DefaultProfile.h"
#include "tools/ferro-acl/ProfileLoader.h"

using namespace FerroAcl;

namespace {

struct LoadedProfile {
   std::string file;
   Agent::SwitchConfig config;
};

std::vector<LoadedProfile> loadAll() {
   std::vector<LoadedProfile> profiles;
   for ( const std::string& file : FerroAclTest::profileFiles() ) {
      Result<Agent::SwitchConfig> loaded = loadProfile( file );
      EXPECT_TRUE( loaded ) << loaded.error();
      if ( loaded ) {
         profiles.push_back( { file, loaded.value() } );
      }
   }
   return profiles;
}

// Only chips that some unit uses count: an unused family exercises nothing.
bool anyChip( const std::vector<LoadedProfile>& profiles,
              const std::function<bool( const Agent::SwitchConfig&,
                                        const Agent::ChipProfile& )>& holds ) {
   for ( const LoadedProfile& profile : profiles ) {
      for ( const Agent::UnitSpec& unit : profile.config.units ) {
         for ( const Agent::ChipProfile& chip : profile.config.chips ) {
            if ( chip.family == unit.chip && holds( profile.config, chip ) ) {
               return true;
            }
         }
      }
   }
   return false;
}

}  // namespace

TEST( ProfileSet, EveryProfileBringsASwitchUp ) {
   const std::vector<LoadedProfile> profiles = loadAll();
   ASSERT_GE( profiles.size(), 6u );
   for ( const LoadedProfile& profile : profiles ) {
      EXPECT_NO_THROW( Agent::bringUp( profile.config ) ) << profile.file;
      for ( const Agent::ChipProfile& chip : profile.config.chips ) {
         // Checking echo packets needs a chip that traps them.
         EXPECT_TRUE( !chip.attributes.bfdEchoCheckEnabled ||
                      chip.attributes.bfdEchoSupported )
             << profile.file << ": " << chip.family;
         // PIMv6 verification reads the STP-state mask back strictly on every
         // model, so a chip with the narrow read-back has no IPv6 multicast.
         EXPECT_TRUE( chip.attributes.stpStateMaskReadBack == 0xFF ||
                      !chip.attributes.ipv6MulticastSupported )
             << profile.file << ": " << chip.family;
         // The chip type without IPv6 PIM has no IPv6 multicast to check either.
         EXPECT_TRUE( chip.chipType != 22 || !chip.attributes.ipv6MulticastSupported )
             << profile.file << ": " << chip.family;
      }
   }
}

TEST( ProfileSet, TogetherTheyCoverEveryAttributeBranch ) {
   using Config = Agent::SwitchConfig;
   using Chip = Agent::ChipProfile;
   const std::pair<const char*, std::function<bool( const Config&, const Chip& )>>
       cases[] = {
           { "dstClassL3Supported",
             []( auto&, auto& c ) { return c.attributes.dstClassL3Supported; } },
           { "no dstClassL3Supported",
             []( auto&, auto& c ) { return !c.attributes.dstClassL3Supported; } },
           { "glean via next hop to CPU",
             []( auto& s, auto& c ) {
                return c.attributes.gleanViaNextHopToCpu && !s.nextHopToCpuGleanDisabled;
             } },
           { "glean via next hop to CPU, disabled",
             []( auto& s, auto& c ) {
                return c.attributes.gleanViaNextHopToCpu && s.nextHopToCpuGleanDisabled;
             } },
           { "glean via class id",
             []( auto&, auto& c ) {
                return !c.attributes.gleanViaNextHopToCpu &&
                       c.attributes.gleanClassIdSupported;
             } },
           { "no glean",
             []( auto&, auto& c ) {
                return !c.attributes.gleanViaNextHopToCpu &&
                       !c.attributes.gleanClassIdSupported;
             } },
           { "ESP workaround, WESP by extension header",
             []( auto&, auto& c ) {
                return c.attributes.espWarRequired &&
                       c.attributes.extensionHeaderTypeQualifierSupported;
             } },
           { "ESP workaround without extension header",
             []( auto&, auto& c ) {
                return c.attributes.espWarRequired &&
                       !c.attributes.extensionHeaderTypeQualifierSupported;
             } },
           { "IPFIX", []( auto&, auto& c ) { return c.attributes.ipfixSupported; } },
           { "no IPFIX", []( auto&, auto& c ) { return !c.attributes.ipfixSupported; } },
           { "IPv6 multicast",
             []( auto&, auto& c ) { return c.attributes.ipv6MulticastSupported; } },
           { "no IPv6 multicast",
             []( auto&, auto& c ) { return !c.attributes.ipv6MulticastSupported; } },
           { "chip type 22 (no IPv6 PIM)",
             []( auto&, auto& c ) { return c.chipType == 22; } },
           { "BFD echo checked",
             []( auto&, auto& c ) {
                return c.attributes.bfdEchoCheckEnabled &&
                       c.attributes.bfdEchoSupported &&
                       !c.attributes.bfdEchoRuleSuppressed;
             } },
           { "BFD echo shares the control entry",
             []( auto&, auto& c ) { return c.attributes.bfdEchoRuleSuppressed; } },
           { "BFD echo check disabled",
             []( auto&, auto& c ) {
                return c.attributes.bfdEchoSupported &&
                       !c.attributes.bfdEchoCheckEnabled &&
                       !c.attributes.bfdEchoRuleSuppressed;
             } },
           { "ACL-group managers", []( auto& s, auto& ) { return s.aclGroupManagers; } },
           { "VXLAN-core LLDP",
             []( auto&, auto& c ) {
                return c.attributes.hasVxlanCoreProtocol( Lamo::L2Pt::lldp() );
             } },
           { "link-local PTP",
             []( auto&, auto& c ) { return c.attributes.linkLocalPtpSupported != 0; } },
           { "L2 cache hit",
             []( auto&, auto& c ) { return c.attributes.l2CacheHitSupported != 0; } },
           { "reduced L2 traps", []( auto& s, auto& ) { return s.reducedL2TrapsA; } },
           { "VLAN-stage class rules with IGMP",
             []( auto&, auto& c ) {
                return c.attributes.vlanStageClassRulesSupported &&
                       !c.attributes.igmpVlanClassRulesSuppressed;
             } },
           { "VLAN-stage class rules without IGMP",
             []( auto&, auto& c ) {
                return c.attributes.vlanStageClassRulesSupported &&
                       c.attributes.igmpVlanClassRulesSuppressed;
             } },
           { "model 32-35 reading back two STP-state bits",
             []( auto&, auto& c ) {
                return c.model >= 32 && c.model <= 35 &&
                       c.attributes.stpStateMaskReadBack == 0x03;
             } },
           { "device port bitmaps",
             []( auto&, auto& c ) { return c.attributes.l2PfDevicePbmpSupported != 0; } },
           { "platform code 7", []( auto& s, auto& ) { return s.platformCode == 7; } },
           { "in-port qualification skipped",
             []( auto& s, auto& ) { return s.skipInPortQualify != 0; } },
           { "may run as simulation",
             []( auto& s, auto& ) { return s.mayRunAsSimulation; } },
           { "SDK 6.6",
             []( auto& s, auto& ) { return s.sdkVersion == Sim::SdkVersion::V6_6; } },
       };
   const std::vector<LoadedProfile> profiles = loadAll();
   for ( const auto& [what, holds] : cases ) {
      EXPECT_TRUE( anyChip( profiles, holds ) ) << "no profile has " << what;
   }
}

TEST( ProfileSet, EmbeddedDefaultIsProfilesDefaultJson ) {
   EXPECT_EQ(
       defaultProfileText,
       FerroAclTest::readFile( std::string( FERRO_PROFILES_DIR ) + "/default.json" ) );
   Result<Agent::SwitchConfig> loaded =
       parseProfile( defaultProfileText, defaultProfileSource );
   ASSERT_TRUE( loaded ) << loaded.error();
   const Agent::SwitchConfig& config = loaded.value();
   ASSERT_EQ( config.chips.size(), 1u );
   ASSERT_EQ( config.units.size(), 2u );
   EXPECT_EQ( config.units[0].unit, 0 );
   EXPECT_EQ( config.units[1].unit, 1 );
   const Agent::ChipProfile& chip = config.chips[0];
   EXPECT_EQ( chip.model, 5 );
   const FerroCentral::ChipCapabilities& a = chip.attributes;
   EXPECT_TRUE( a.dstClassL3Supported && a.gleanClassIdSupported &&
                a.l3McCpuOifCosqSupported && a.ipv6MulticastSupported &&
                a.ipfixSupported && a.bfdEchoCheckEnabled && a.bfdEchoSupported &&
                a.dstIpv6ClassSupported );
   EXPECT_EQ( a.ipfixInPort, 1 );
   EXPECT_NE( a.linkLocalPtpSupported, 0 );
   EXPECT_EQ( a.portCount, 65 );
}
