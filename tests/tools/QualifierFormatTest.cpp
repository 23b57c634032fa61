#include "tools/ferro-acl/QualifierFormat.h"

#include <gtest/gtest.h>

using namespace FerroAcl;

namespace {

// "e000:0005" -> { 0xe0, 0x00, 0x00, 0x05 }
std::vector<uint8_t> hex( std::string text ) {
   std::erase( text, ':' );
   std::vector<uint8_t> bytes;
   for ( size_t i = 0; i + 1 < text.size(); i += 2 ) {
      bytes.push_back( uint8_t( std::stoi( text.substr( i, 2 ), nullptr, 16 ) ) );
   }
   return bytes;
}

}  // namespace

TEST( QualifierFormat, Ipv6FollowsRfc5952 ) {
   const std::pair<const char*, const char*> cases[] = {
       { "0000:0000:0000:0000:0000:0000:0000:0000", "::" },
       { "0000:0000:0000:0000:0000:0000:0000:0001", "::1" },
       { "0001:0000:0000:0000:0000:0000:0000:0000", "1::" },
       { "2001:0db8:0000:0001:0001:0001:0001:0001", "2001:db8:0:1:1:1:1:1" },  // one zero
       { "2001:0000:0000:0001:0000:0000:0000:0001", "2001:0:0:1::1" },  // the longest run
       { "2001:0db8:0000:0000:0001:0000:0000:0001",
         "2001:db8::1:0:0:1" },  // first of a tie
       { "fe80:0000:0000:0000:0a00:27ff:fe00:0001", "fe80::a00:27ff:fe00:1" },
       { "ffff:ffff:ffff:ffff:ffff:ffff:ffff:fffc",
         "ffff:ffff:ffff:ffff:ffff:ffff:ffff:fffc" },
   };
   for ( const auto& [bytes, text] : cases ) {
      EXPECT_EQ( formatIpv6( hex( bytes ) ), text );
   }
}

// The kinds of value the chip-state output does not show. `exact` says the
// mask covers the field, which for narrow fields is not all ones of the bytes.
TEST( QualifierFormat, ValuesByKind ) {
   const auto v65 = Sim::SdkVersion::V6_5, v66 = Sim::SdkVersion::V6_6;
   using Case =
       std::tuple<Sim::SdkVersion, const char*, const char*, const char*, FieldValue>;
   const Case cases[] = {
       { v65, "DstIp", "e0000005", "ffffffff", { "224.0.0.5", "255.255.255.255", true } },
       { v65, "OuterVlanPri", "06", "07", { 6u, 7u, true } },
       { v65, "OuterVlanPri", "06", "06", { 6u, 6u, false } },
       { v65, "DstClassL3", "03ff", "03ff", { 1023u, 1023u, true } },
       { v65, "DstPort", "fa00", "ff00", { "250:0", "255:0", false } },
       // Enumerations by the values of the running SDK version; a code that
       // is none of them stays a number.
       { v66, "IpType", "05", "ff", { "Ipv4Any", 255u, true } },
       { v65, "IpType", "05", "ff", { 5u, 255u, true } },
       { v65, "PacketRes", "00000013", "ffffffff", { "CONTROL", 0xffffffffu, true } },
   };
   for ( const auto& [sdk, name, data, mask, expected] : cases ) {
      Sim::FieldProcessor::instance().reset( sdk );
      Sim::QualifierView view;
      view.name = name;
      view.data = hex( data );
      view.mask = hex( mask );
      EXPECT_EQ( describeQualifier( view ), ( QualifierState{ name, { expected } } ) )
          << name;
   }
}
