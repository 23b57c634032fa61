// Every prefix of every protocol frame: the parser stays inside the bytes it
// is given (the prefix is copied to an allocation of exactly its size, so the
// sanitizer build catches any read past it), reports the truncation in the
// header the cut falls into, and claims nothing the full frame does not say.
#include <gtest/gtest.h>

#include <sstream>

#include "tests/pipeline/ProtocolFrames.h"

namespace Pipeline::Test {
namespace {

// The byte-derived chip fields, with unread ones forced to their zero value.
std::string chipFields( const ParsedPacket& p, uint16_t known ) {
   auto show = [ known ]( Field f ) { return ( known & uint16_t( f ) ) != 0; };
   std::ostringstream out;
   const Sim::PacketFields& f = p.fields;
   out << std::hex;
   for ( uint8_t b : f.dstMac ) {
      out << int( show( Field::DstMac ) ? b : 0 ) << ':';
   }
   out << " type " << ( show( Field::EtherType ) ? f.etherType : 0 );
   out << " dip " << ( show( Field::DstIp ) ? f.dstIp : 0 ) << " dip6 ";
   for ( uint8_t b : f.dstIp6 ) {
      out << int( show( Field::DstIp6 ) ? b : 0 ) << '.';
   }
   out << " proto " << int( show( Field::IpProtocol ) ? f.ipProtocol : 0 );
   out << " ext " << int( show( Field::ExtensionHeaderType ) ? f.extensionHeaderType : 0 );
   out << " sport " << ( show( Field::L4SrcPort ) ? f.l4SrcPort : 0 );
   out << " dport " << ( show( Field::L4DstPort ) ? f.l4DstPort : 0 );
   out << " ttl " << int( show( Field::Ttl ) ? f.ttl : 0 );
   out << " tos " << int( show( Field::Tos ) ? f.tos : 0 );
   out << " pri " << int( show( Field::OuterVlanPri ) ? f.outerVlanPri : 0 );
   return out.str();
}

template <typename T>
void expectClaimAgrees( const std::optional<T>& cut, const std::optional<T>& full,
                        const char* name ) {
   if ( cut ) {
      EXPECT_EQ( cut, full ) << name;
   }
}

void expectNoClaimBeyond( const ParsedPacket& cut, const ParsedPacket& full ) {
   EXPECT_EQ( cut.known & ~full.known, 0 ) << "fields the full frame does not give";
   // Unread fields hold zero, and read ones the full frame's values.
   EXPECT_EQ( chipFields( cut, 0xFFFF ), chipFields( full, cut.known ) );
   if ( cut.fields.ipType != Shim::FieldIpType::NonIp ) {
      EXPECT_EQ( cut.fields.ipType, full.fields.ipType );
   }
   expectClaimAgrees( cut.srcMac, full.srcMac, "srcMac" );
   expectClaimAgrees( cut.srcIp, full.srcIp, "srcIp" );
   expectClaimAgrees( cut.srcIp6, full.srcIp6, "srcIp6" );
   expectClaimAgrees( cut.bpduType, full.bpduType, "bpduType" );
   expectClaimAgrees( cut.slowProtocolSubtype, full.slowProtocolSubtype, "slowProtocol" );
   expectClaimAgrees( cut.eapolType, full.eapolType, "eapolType" );
   expectClaimAgrees( cut.tcpFlags, full.tcpFlags, "tcpFlags" );
   expectClaimAgrees( cut.greProtocol, full.greProtocol, "greProtocol" );
   expectClaimAgrees( cut.isisPduType, full.isisPduType, "isisPduType" );
   if ( cut.outerVlan ) {
      ASSERT_TRUE( full.outerVlan );
      EXPECT_EQ( cut.outerVlan->vid, full.outerVlan->vid );
   }
   if ( cut.innerVlan ) {
      ASSERT_TRUE( full.innerVlan );
      EXPECT_EQ( cut.innerVlan->vid, full.innerVlan->vid );
   }
   if ( cut.icmp ) {
      ASSERT_TRUE( full.icmp );
      EXPECT_EQ( cut.icmp->type, full.icmp->type );
      EXPECT_EQ( cut.icmp->code, full.icmp->code );
   }
   if ( cut.ptp ) {
      ASSERT_TRUE( full.ptp );
      EXPECT_EQ( cut.ptp->messageType, full.ptp->messageType );
   }
   if ( cut.arp ) {
      ASSERT_TRUE( full.arp );
      EXPECT_EQ( cut.arp->opcode, full.arp->opcode );
      expectClaimAgrees( cut.arp->targetIp, full.arp->targetIp, "arp target" );
   }
   EXPECT_LE( int( cut.ipv4Options ), int( full.ipv4Options ) );
   EXPECT_LE( int( cut.ipv6HopByHop ), int( full.ipv6HopByHop ) );
}

// The header the byte at `offset` belongs to, if any.
std::optional<Layer> layerAt( const ParsedPacket& full, size_t offset ) {
   for ( const LayerSpan& span : full.layers ) {
      if ( span.offset <= offset && offset < span.offset + span.length ) {
         return span.layer;
      }
   }
   return std::nullopt;
}

class TruncationTest : public ::testing::TestWithParam<FrameCase> {};

TEST_P( TruncationTest, EveryPrefixStopsInsideTheBytesAndSaysWhere ) {
   const FrameCase& row = GetParam();
   const ParsedPacket full = parsePacket( row.frame );
   ASSERT_EQ( full.status.outcome, ParseOutcome::Complete );
   const LayerSpan& last = full.layers.back();
   const size_t headersEnd = last.offset + last.length;

   for ( size_t length = 0; length < row.frame.size(); ++length ) {
      SCOPED_TRACE( "prefix of " + std::to_string( length ) + " bytes" );
      const Bytes prefix( row.frame.begin(), row.frame.begin() + length );
      const ParsedPacket cut = parsePacket( prefix );

      ASSERT_LE( cut.layers.size(), full.layers.size() );
      for ( size_t i = 0; i < cut.layers.size(); ++i ) {
         EXPECT_EQ( cut.layers[ i ].layer, full.layers[ i ].layer );
         EXPECT_EQ( cut.layers[ i ].offset, full.layers[ i ].offset );
         EXPECT_EQ( cut.layers[ i ].length, full.layers[ i ].length );
      }
      expectNoClaimBeyond( cut, full );

      if ( length < headersEnd ) {
         EXPECT_EQ( cut.status.outcome, ParseOutcome::Truncated ) << cut.status.reason;
         std::optional<Layer> expected = layerAt( full, length );
         if ( expected ) {
            EXPECT_EQ( cut.status.layer, *expected )
               << layerName( cut.status.layer ) << ": " << cut.status.reason;
         }
      } else if ( row.lengthCovered ) {
         EXPECT_EQ( cut.status.outcome, ParseOutcome::Truncated );
      }
   }
}

INSTANTIATE_TEST_SUITE_P( Frames, TruncationTest, ::testing::ValuesIn( protocolFrames() ),
                          []( const auto& info ) { return info.param.name; } );

}  // namespace
}  // namespace Pipeline::Test
