// doInstallTH3SystemAclRule on the TH3-family profile (unit 0 with the IGMP
// class rules, unit 1 without), judged by what the VLAN stage holds, which
// class packets get there and what the ingress stage then sees.
#include <optional>
#include <regex>
#include <string>

#include <gtest/gtest.h>

#include "L3TestSupport.h"
#include "tools/ferro-acl/ChipStateText.h"
#include "tools/ferro-acl/QualifierFormat.h"

namespace {

using FerroTcamSystemAcl::Helper;

struct ExpectedRule {
   const char* name;
   const char* qualifiers;  // as the tool shows them, in qualification order
   U32 classId;
   bool igmp = false;       // absent where the chip suppresses IGMP class rules
};

const ExpectedRule expectedRules[] = {
   { "OSPF Multicast MAC", "DstMac=33:33:00:00:00:04/ff:ff:ff:ff:ff:fc IpType=Ipv6 IpProtocol=89", 1 },
   { "PIM Multicast IP", "DstIp=224.0.0.13 IpProtocol=103", 2 },
   { "PIM Multicast IP", "DstIp=224.0.0.4/255.255.255.252 IpProtocol=89", 3 },
   { "IGMP Flood Link Local", "DstIp=224.0.0.0/255.255.255.0", 4, true },
   { "IGMP Multicast MAC", "DstMac=01:00:5e:00:00:00/ff:ff:ff:80:00:00", 5, true },
   { "MLAG L4 Source Port", "L4SrcPort=4432", 10 },
   { "KIX Heartbeat L4 Source Port", "IpProtocol=6 L4SrcPort=50003", 11 },
   { "KIX Controller L4 Source Port", "IpProtocol=6 L4SrcPort=9979", 12 },
   { "KIX Client L4 Source Port", "IpProtocol=6 L4SrcPort=9999", 13 },
   { "BGP L4 Source Port", "IpProtocol=6 L4SrcPort=179", 9 },
   { "DHCPv4 Server L4 Source Port", "IpType=Ipv4Any IpProtocol=17 L4SrcPort=67", 7 },
   { "DHCPv6 Server L4 Source Port", "IpType=Ipv6 IpProtocol=17 L4SrcPort=547", 8 },
   { "DHCPv4 Client L4 Source Port", "IpType=Ipv4Any IpProtocol=17 L4SrcPort=68", 15 },
   { "ICMPv6 ND Solicit", "IpType=Ipv6 IpProtocol=58 L4SrcPort=34560/0xff00", 14 },
   { "ICMPv6 ND Advertisement", "IpType=Ipv6 IpProtocol=58 L4SrcPort=34816/0xff00", 17 },
   { "MLD Listener Query", "IpType=Ipv6 IpProtocol=58 L4SrcPort=33280/0xff00", 16 },
   { "MLD V1 Report", "IpType=Ipv6 IpProtocol=58 L4SrcPort=33536/0xff00", 16 },
   { "MLD Listener Done", "IpType=Ipv6 IpProtocol=58 L4SrcPort=33792/0xff00", 16 },
   { "MLD V2 Report", "IpType=Ipv6 IpProtocol=58 L4SrcPort=36608/0xff00", 16 },
};

Sim::FieldProcessor& chip() { return Sim::FieldProcessor::instance(); }

class TH3ClassRules : public testing::Test {
  protected:
   void SetUp() override {
      config_ = L3Test::loadProfile( "th3-vlan-class" );
      ASSERT_EQ( config_.units.size(), 2u );
      sw_ = Agent::bringUp( config_ );
      helper_ = Helper::Ptr( new Helper( "th3-test" ) );
      sw_->attach( *helper_ );
   }
   void installAll() {
      for ( const Agent::UnitSpec& unit : config_.units ) {
         helper_->doInstallTH3SystemAclRule( unit.unit );
      }
   }
   bool igmpSuppressed( U16 unit ) const {
      return sw_->groupManager->chipAttributes( unit )->igmpVlanClassRulesSuppressed;
   }
   std::vector<Sim::EntryView> vlanEntries( U16 unit ) const {
      std::vector<Sim::EntryView> entries;
      for ( const Sim::EntryView& e : chip().entries( unit ) ) {
         if ( e.stage == bcmFieldStageLookup ) {
            entries.push_back( e );
         }
      }
      return entries;
   }
   std::string ruleName( U16 unit, bcm_field_entry_t entry ) const {
      const TcamEntryRecord* record = sw_->vlanManager->record( unit, U32( entry ) );
      return record ? record->ruleName : "?";
   }

   Agent::SwitchConfig config_;
   Agent::Switch::Ptr sw_;
   Helper::Ptr helper_;
};

// Every rule in order, at consecutive ids from the one the manager offered,
// with its name, qualifiers and class installed in hardware. An entry some
// other user took first must not be overwritten.
TEST_F( TH3ClassRules, InstallsEveryRuleInOrderAfterWhatTheManagerHandedOut ) {
   const U32 taken = Agent::ManagerLayout::vlanBase + 2;
   ASSERT_EQ( sw_->vlanManager->getEntry( 1, taken, "taken", {} ), taken );
   installAll();
   for ( const Agent::UnitSpec& unit : config_.units ) {
      SCOPED_TRACE( "unit " + std::to_string( unit.unit ) );
      std::vector<Sim::EntryView> entries = vlanEntries( unit.unit );
      U32 id = Agent::ManagerLayout::vlanBase;
      if ( unit.unit == 1 ) {
         ASSERT_FALSE( entries.empty() );
         EXPECT_EQ( ruleName( 1, entries.front().id ), "taken" );
         EXPECT_FALSE( entries.front().installed );
         entries.erase( entries.begin() );
         id = taken + 1;
      }
      size_t row = 0;
      for ( const ExpectedRule& rule : expectedRules ) {
         if ( rule.igmp && igmpSuppressed( unit.unit ) ) {
            continue;
         }
         SCOPED_TRACE( rule.name );
         ASSERT_LT( row, entries.size() );
         const Sim::EntryView& e = entries[ row++ ];
         EXPECT_EQ( e.id, bcm_field_entry_t( id++ ) );
         EXPECT_EQ( ruleName( unit.unit, e.id ), rule.name );
         EXPECT_TRUE( e.installed && e.enabled );
         std::string qualifiers;
         for ( const Sim::QualifierView& q : e.hardware.qualifiers ) {
            qualifiers += ( qualifiers.empty() ? "" : " " ) +
                          FerroAcl::qualifierText( FerroAcl::describeQualifier( q ) );
         }
         EXPECT_EQ( qualifiers, rule.qualifiers );
         ASSERT_EQ( e.hardware.actions.size(), 1u );
         EXPECT_EQ( e.hardware.actions[ 0 ].name, "ClassDestSet" );
         EXPECT_EQ( e.hardware.actions[ 0 ].param0, rule.classId );
      }
      EXPECT_EQ( row, igmpSuppressed( unit.unit ) ? 17u : 19u );
      EXPECT_EQ( entries.size(), row );
   }
}

Sim::PacketFields ipv4( U32 dstIp, U8 protocol, U16 srcPort = 0 ) {
   Sim::PacketFields p = L3Test::ipv4Packet( dstIp, protocol );
   if ( ( dstIp >> 28 ) == 0xE ) {  // the group's MAC: 01:00:5e and its low 23 bits
      p.dstMac = { 0x01, 0x00, 0x5E, U8( ( dstIp >> 16 ) & 0x7F ), U8( dstIp >> 8 ),
                   U8( dstIp ) };
   } else {
      p.dstMac = { 0x00, 0x1C, 0x73, 0x00, 0x00, 0x01 };
   }
   p.l4SrcPort = srcPort;
   p.l4DstPort = 40000;
   return p;
}
Sim::PacketFields ipv6( U8 protocol, U16 srcPort, U8 lastMacByte = 0x01 ) {
   Sim::PacketFields p;
   p.etherType = 0x86DD;
   p.ipType = Shim::FieldIpType::Ipv6;
   p.dstMac = { 0x33, 0x33, 0x00, 0x00, 0x00, lastMacByte };
   p.dstIp6 = { 0xFF, 0x02 };
   p.dstIp6[ 15 ] = lastMacByte;
   p.ipProtocol = protocol;
   p.l4SrcPort = srcPort;
   return p;
}
Sim::PacketFields icmpv6( U8 type, U8 code ) { return ipv6( 58, U16( type << 8 | code ) ); }

struct ClassCase {
   std::string what;
   Sim::PacketFields packet;
   std::optional<U32> classId;  // none: no VLAN-stage rule matches
   const char* rule;
   bool igmp = false;           // no class where IGMP class rules are suppressed
};

std::vector<ClassCase> classCases() {
   std::vector<ClassCase> cases = {
      { "OSPF to 224.0.0.5", ipv4( 0xE0000005, 89 ), 3, "PIM Multicast IP" },
      { "OSPF to 224.0.0.6", ipv4( 0xE0000006, 89 ), 3, "PIM Multicast IP" },
      { "OSPF to 224.0.0.4", ipv4( 0xE0000004, 89 ), 3, "PIM Multicast IP" },
      { "OSPF to 224.0.0.7", ipv4( 0xE0000007, 89 ), 3, "PIM Multicast IP" },
      { "OSPF to 224.0.0.8", ipv4( 0xE0000008, 89 ), 4, "IGMP Flood Link Local", true },
      { "PIM to 224.0.0.13", ipv4( 0xE000000D, 103 ), 2, "PIM Multicast IP" },
      { "UDP to 224.0.0.13", ipv4( 0xE000000D, 17 ), 4, "IGMP Flood Link Local", true },
      { "IGMP to 224.0.0.22", ipv4( 0xE0000016, 2 ), 4, "IGMP Flood Link Local", true },
      { "UDP to 239.1.1.1", ipv4( 0xEF010101, 17 ), 5, "IGMP Multicast MAC", true },
      { "UDP to 239.129.1.1", ipv4( 0xEF810101, 17 ), 5, "IGMP Multicast MAC", true },
      { "OSPFv3 to 33:33:00:00:00:05", ipv6( 89, 0, 0x05 ), 1, "OSPF Multicast MAC" },
      { "OSPFv3 to 33:33:00:00:00:06", ipv6( 89, 0, 0x06 ), 1, "OSPF Multicast MAC" },
      { "OSPFv3 to 33:33:00:00:00:09", ipv6( 89, 0, 0x09 ), std::nullopt, "" },
      { "UDP to 33:33:00:00:00:05", ipv6( 17, 0, 0x05 ), std::nullopt, "" },
      { "MLAG over UDP", ipv4( 0x0A000001, 17, 4432 ), 10, "MLAG L4 Source Port" },
      { "MLAG over TCP", ipv4( 0x0A000001, 6, 4432 ), 10, "MLAG L4 Source Port" },
      { "BGP over TCP", ipv4( 0x0A000001, 6, 179 ), 9, "BGP L4 Source Port" },
      { "BGP port over UDP", ipv4( 0x0A000001, 17, 179 ), std::nullopt, "" },
      { "KIX heartbeat", ipv4( 0x0A000001, 6, 50003 ), 11, "KIX Heartbeat L4 Source Port" },
      { "KIX port over UDP", ipv4( 0x0A000001, 17, 50003 ), std::nullopt, "" },
      { "KIX controller", ipv4( 0x0A000001, 6, 9979 ), 12, "KIX Controller L4 Source Port" },
      { "KIX client", ipv4( 0x0A000001, 6, 9999 ), 13, "KIX Client L4 Source Port" },
      { "DHCPv4 server", ipv4( 0xFFFFFFFF, 17, 67 ), 7, "DHCPv4 Server L4 Source Port" },
      { "DHCPv4 client", ipv4( 0xFFFFFFFF, 17, 68 ), 15, "DHCPv4 Client L4 Source Port" },
      { "DHCPv4 server port over TCP", ipv4( 0x0A000001, 6, 67 ), std::nullopt, "" },
      { "DHCPv6 server", ipv6( 17, 547 ), 8, "DHCPv6 Server L4 Source Port" },
      { "DHCPv6 server port over IPv4", ipv4( 0x0A000001, 17, 547 ), std::nullopt, "" },
      { "DHCPv4 ports over IPv6", ipv6( 17, 67 ), std::nullopt, "" },
      { "ICMPv6 echo request", icmpv6( 128, 0 ), std::nullopt, "" },
   };
   const std::pair<U8, std::pair<U32, const char*>> icmpTypes[] = {
      { 135, { 14, "ICMPv6 ND Solicit" } }, { 136, { 17, "ICMPv6 ND Advertisement" } },
      { 130, { 16, "MLD Listener Query" } }, { 131, { 16, "MLD V1 Report" } },
      { 132, { 16, "MLD Listener Done" } },  { 143, { 16, "MLD V2 Report" } },
   };
   for ( const auto& [ type, expected ] : icmpTypes ) {
      for ( U8 code : { 0, 1, 0x80, 0xFF } ) {
         cases.push_back( { "ICMPv6 type " + std::to_string( type ) + " code " +
                               std::to_string( code ),
                            icmpv6( type, code ), expected.first, expected.second } );
      }
   }
   return cases;
}

TEST_F( TH3ClassRules, PacketsGetTheClassOfTheirRule ) {
   installAll();
   for ( const Agent::UnitSpec& unit : config_.units ) {
      for ( const ClassCase& c : classCases() ) {
         SCOPED_TRACE( "unit " + std::to_string( unit.unit ) + ": " + c.what );
         const bool present = !( c.igmp && igmpSuppressed( unit.unit ) );
         const Sim::StageResult vlan = chip().lookup( unit.unit, c.packet ).vlan;
         EXPECT_EQ( vlan.classDest, present ? c.classId : std::nullopt );
         if ( present && c.classId ) {
            ASSERT_EQ( vlan.hits.size(), 1u );
            EXPECT_EQ( ruleName( unit.unit, vlan.hits[ 0 ].entry ), c.rule );
         }
      }
   }
}

// An ingress rule matching the class the VLAN stage wrote, as the trap rules
// of the other families do, sees it; a packet of another class does not.
TEST_F( TH3ClassRules, TheIngressStageMatchesTheWrittenClass ) {
   installAll();
   const U32 entry = Agent::ManagerLayout::l3Base;
   ASSERT_EQ( sw_->l3Manager->getEntry( 0, entry, "OSPF by class", {} ), entry );
   ASSERT_EQ( Shim::sdk_->bcm_field_qualify_DstClassField( 0, entry, 3, 0xFF ), 0 );
   ASSERT_EQ( Shim::sdk_->bcm_field_action_add( 0, entry, bcmFieldActionCosQCpuNew, 37, 0 ), 0 );
   ASSERT_EQ( sw_->l3Manager->installEntry( 0, entry ), 0 );

   const Sim::LookupResult ospf = chip().lookup( 0, ipv4( 0xE0000005, 89 ) );
   EXPECT_EQ( ospf.ingress.cpuQueue, 37u );
   ASSERT_EQ( ospf.ingress.hits.size(), 1u );
   EXPECT_EQ( ospf.ingress.hits[ 0 ].entry, bcm_field_entry_t( entry ) );
   EXPECT_TRUE( chip().lookup( 0, ipv4( 0xE000000D, 103 ) ).ingress.hits.empty() );
}

std::string quoted( const std::string& text ) {
   return std::regex_replace( text, std::regex( R"([.^$|()\[\]{}*+?\\])" ), R"(\$&)" );
}
const std::string operation =
   "virtual void FerroTcamSystemAcl::Helper::doInstallTH3SystemAclRule(U16)";

// A failure stops the operation on the call that failed, named as written;
// the failing nth call of a function picks the rule.
TEST_F( TH3ClassRules, FailuresAbortNamingTheCallAndTheOperation ) {
   struct Failure {
      const char* function;
      int nth;
      std::string expected;
   };
   const std::string sdkError = " API ERROR:Invalid parameter (-4)";
   const Failure failures[] = {
      { "bcm_field_qualify_DstMac", 2,
        "bcm_field_qualify_DstMac( unit, entry, mcastMacBase, mcastMacMask )" + sdkError },
      { "bcm_field_qualify_L4SrcPort", 2,
        "bcm_field_qualify_L4SrcPort( unit, entry, kixPort, 0xffff )" + sdkError },
      { "bcm_field_qualify_L4SrcPort", 9,
        "bcm_field_qualify_L4SrcPort( unit, entry, icmpData, icmpMask )" + sdkError },
      { "bcm_field_action_add", 3,
        "bcm_field_action_add( unit, entry, bcmFieldActionClassDestSet, "
        "FerroCommon::classOspfMulticastIp_, 0 )" + sdkError },
      { "bcm_field_entry_install", 1, "" },
   };
   for ( const Failure& f : failures ) {
      SCOPED_TRACE( std::string( f.function ) + " #" + std::to_string( f.nth ) );
      chip().clearFaults();
      chip().injectFault( { f.function, 0, {}, f.nth, BCM_E_PARAM, true } );
      const std::string assertion = f.expected.empty()
                                       ? "rc == BCM_E_NONE && \"installEntry failed\""
                                       : "0";
      EXPECT_DEATH( helper_->doInstallTH3SystemAclRule( 0 ),
                    "TH3SystemAclRules.cpp:[0-9]+" +
                       ( f.expected.empty() ? "" : " " + quoted( f.expected ) ) +
                       "(.|\n)*" + quoted( operation + ": Assertion `" + assertion + "' failed" ) );
   }
}

}  // namespace
