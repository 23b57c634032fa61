#include "tools/ferro-acl/QualifierFormat.h"

#include <gtest/gtest.h>

#include <array>

using namespace FerroAcl;

namespace {

std::vector<uint8_t> bytesOf( std::initializer_list<int> values ) {
   std::vector<uint8_t> bytes;
   for ( int v : values ) {
      bytes.push_back( uint8_t( v ) );
   }
   return bytes;
}

std::array<uint8_t, 16> ip6( std::array<uint16_t, 8> groups ) {
   std::array<uint8_t, 16> bytes{};
   for ( size_t i = 0; i < 8; ++i ) {
      bytes[2 * i] = uint8_t( groups[i] >> 8 );
      bytes[2 * i + 1] = uint8_t( groups[i] );
   }
   return bytes;
}

Shim::CompressedValue compressed( std::initializer_list<int> data,
                                  std::initializer_list<int> mask ) {
   Shim::CompressedValue value;
   std::copy( data.begin(), data.end(), value.data.bytes.begin() );
   std::copy( mask.begin(), mask.end(), value.mask.bytes.begin() );
   return value;
}

}  // namespace

TEST( QualifierFormat, Ipv6FollowsRfc5952 ) {
   const std::pair<std::array<uint16_t, 8>, const char*> cases[] = {
       { { 0, 0, 0, 0, 0, 0, 0, 0 }, "::" },
       { { 0, 0, 0, 0, 0, 0, 0, 1 }, "::1" },
       { { 1, 0, 0, 0, 0, 0, 0, 0 }, "1::" },
       { { 0xff02, 0, 0, 0, 0, 0, 0, 0xd }, "ff02::d" },
       { { 0xff0f, 0, 0, 0, 0, 0, 0, 0 }, "ff0f::" },
       { { 0x2001, 0xdb8, 0, 1, 1, 1, 1, 1 }, "2001:db8:0:1:1:1:1:1" },  // one zero stays
       { { 0x2001, 0, 0, 1, 0, 0, 0, 1 }, "2001:0:0:1::1" },             // longest run
       { { 0x2001, 0xdb8, 0, 0, 1, 0, 0, 1 }, "2001:db8::1:0:0:1" },     // first of a tie
       { { 0xfe80, 0, 0, 0, 0x0a00, 0x27ff, 0xfe00, 0x0001 }, "fe80::a00:27ff:fe00:1" },
       { { 0xffff, 0xffff, 0xffff, 0xffff, 0xffff, 0xffff, 0xffff, 0xfffc },
         "ffff:ffff:ffff:ffff:ffff:ffff:ffff:fffc" },
   };
   for ( const auto& [groups, text] : cases ) {
      EXPECT_EQ( formatIpv6( ip6( groups ) ), text );
   }
}

TEST( QualifierFormat, MacIpv4AndPortBitmaps ) {
   EXPECT_EQ( formatMac( bytesOf( { 0x01, 0x80, 0xc2, 0, 0, 0x14 } ) ),
              "01:80:c2:00:00:14" );
   EXPECT_EQ( formatIpv4( bytesOf( { 224, 0, 0, 5 } ) ), "224.0.0.5" );
   // Port 0 is the low bit of the last byte; the first byte holds the highest.
   EXPECT_EQ( portsOfBitmap( bytesOf( { 0x01, 0x80, 0x03 } ) ),
              ( std::vector<int>{ 0, 1, 15, 16 } ) );
   EXPECT_EQ( portsOfBitmap( bytesOf( { 0, 0 } ) ), std::vector<int>{} );
}

TEST( QualifierFormat, PlainValuesByKind ) {
   Sim::FieldProcessor::instance().reset( Sim::SdkVersion::V6_5 );
   struct Case {
      const char* name;
      std::vector<uint8_t> data, mask;
      FieldValue expected;
   };
   const Case cases[] = {
       { "DstMac",
         bytesOf( { 1, 0x80, 0xc2, 0, 0, 0x14 } ),
         bytesOf( { 0xff, 0xff, 0xff, 0xff, 0xff, 0xfe } ),
         { "01:80:c2:00:00:14", "ff:ff:ff:ff:ff:fe", false } },
       { "DstIp",
         bytesOf( { 224, 0, 0, 5 } ),
         bytesOf( { 255, 255, 255, 255 } ),
         { "224.0.0.5", "255.255.255.255", true } },
       { "L4DstPort",
         bytesOf( { 0, 179 } ),
         bytesOf( { 0xff, 0xff } ),
         { uint64_t( 179 ), uint64_t( 65535 ), true } },
       { "L4DstPort",
         bytesOf( { 0x0e, 0xc8 } ),
         bytesOf( { 0xff, 0xfe } ),
         { uint64_t( 3784 ), uint64_t( 65534 ), false } },
       { "InPorts",
         bytesOf( { 0, 0x0e } ),
         bytesOf( { 1, 0xff } ),
         { std::vector<int>{ 1, 2, 3 }, std::vector<int>{ 0, 1, 2, 3, 4, 5, 6, 7, 8 },
           false } },
       // Narrow fields: a full mask is not all ones of the byte.
       { "OuterVlanPri",
         bytesOf( { 6 } ),
         bytesOf( { 7 } ),
         { uint64_t( 6 ), uint64_t( 7 ), true } },
       { "OuterVlanPri",
         bytesOf( { 6 } ),
         bytesOf( { 6 } ),
         { uint64_t( 6 ), uint64_t( 6 ), false } },
       { "Drop",
         bytesOf( { 0 } ),
         bytesOf( { 1 } ),
         { uint64_t( 0 ), uint64_t( 1 ), true } },
       { "DstClassL3",
         bytesOf( { 3, 0xff } ),
         bytesOf( { 3, 0xff } ),
         { uint64_t( 1023 ), uint64_t( 1023 ), true } },
       // IP type and packet resolution values of SDK 6.5, by name; an unknown
       // code stays a number rather than being guessed.
       { "IpType",
         bytesOf( { 1 } ),
         bytesOf( { 0xff } ),
         { "Ipv4Any", uint64_t( 255 ), true } },
       { "IpType",
         bytesOf( { 99 } ),
         bytesOf( { 0xff } ),
         { uint64_t( 99 ), uint64_t( 255 ), true } },
       { "PacketRes",
         bytesOf( { 0, 0, 0, 0x13 } ),
         bytesOf( { 0xff, 0xff, 0xff, 0xff } ),
         { "CONTROL", uint64_t( 0xffffffff ), true } },
   };
   for ( const Case& c : cases ) {
      Sim::QualifierView view;
      view.name = c.name;
      view.data = c.data;
      view.mask = c.mask;
      const QualifierState state = describeQualifier( view );
      EXPECT_EQ( state.name, c.name );
      ASSERT_EQ( state.values.size(), 1u ) << c.name;
      EXPECT_EQ( state.values[0], c.expected ) << c.name;
   }
}

TEST( QualifierFormat, EnumerationsFollowTheSdkVersion ) {
   Sim::QualifierView view;
   view.name = "IpType";
   view.data = bytesOf( { 5 } );  // Ipv4Any in 6.6; 5 is no IP type in 6.5
   view.mask = bytesOf( { 0xff } );
   Sim::FieldProcessor::instance().reset( Sim::SdkVersion::V6_6 );
   EXPECT_EQ( describeQualifier( view ).values[0].data, FieldText( "Ipv4Any" ) );
   Sim::FieldProcessor::instance().reset( Sim::SdkVersion::V6_5 );
   EXPECT_EQ( describeQualifier( view ).values[0].data, FieldText( uint64_t( 5 ) ) );
}

TEST( QualifierFormat, CompressedFieldsHoldEveryValue ) {
   Sim::QualifierView ports;
   ports.name = "L4SrcPort";
   ports.isCompressed = true;
   ports.compressed = { compressed( { 0, 67 }, { 0xff, 0xff } ),
                        compressed( { 0, 68 }, { 0xff, 0xff } ) };
   EXPECT_EQ(
       describeQualifier( ports ).values,
       ( std::vector<FieldValue>{ { uint64_t( 67 ), uint64_t( 65535 ), true },
                                  { uint64_t( 68 ), uint64_t( 65535 ), true } } ) );

   // A plain value beside compressed ones comes first.
   Sim::QualifierView mac;
   mac.name = "DstMac";
   mac.data = bytesOf( { 1, 0x80, 0xc2, 0, 0, 2 } );
   mac.mask = bytesOf( { 0xff, 0xff, 0xff, 0xff, 0xff, 0xff } );
   mac.isCompressed = true;
   mac.compressed = { compressed( { 1, 0x80, 0xc2, 0, 0, 0x0e },
                                  { 0xff, 0xff, 0xff, 0xff, 0xff, 0xff } ) };
   EXPECT_EQ( describeQualifier( mac ).values,
              ( std::vector<FieldValue>{
                  { "01:80:c2:00:00:02", "ff:ff:ff:ff:ff:ff", true },
                  { "01:80:c2:00:00:0e", "ff:ff:ff:ff:ff:ff", true } } ) );

   Sim::QualifierView address;
   address.name = "DstIp6";
   address.isCompressed = true;
   Shim::CompressedValue value;
   value.data.bytes = ip6( { 0xff02, 0, 0, 0, 0, 0, 0, 5 } );
   value.mask.bytes =
       ip6( { 0xffff, 0xffff, 0xffff, 0xffff, 0xffff, 0xffff, 0xffff, 0xffff } );
   address.compressed = { value };
   EXPECT_EQ( describeQualifier( address ).values,
              ( std::vector<FieldValue>{
                  { "ff02::5", "ffff:ffff:ffff:ffff:ffff:ffff:ffff:ffff", true } } ) );
}
