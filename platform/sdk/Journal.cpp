// The call journal and the formatting of call arguments.
#include <arpa/inet.h>

#include <cstdio>

#include "platform/sdk/SimState.h"

namespace Sim {

std::string JournalEntry::toString() const {
   return std::string( function ) + "(" + arguments + ") = " + std::to_string( rc );
}

const std::vector<JournalEntry>& FieldProcessor::journal() const {
   return state_->journal;
}

void FieldProcessor::clearJournal() {
   std::lock_guard guard( state_->mutex );
   state_->journal.clear();
}

void FieldProcessor::journalEnabledIs( bool enabled ) {
   std::lock_guard guard( state_->mutex );
   state_->journalEnabled = enabled;
}

void ArgWriter::separate() {
   if ( !text_.empty() ) {
      text_ += ", ";
   }
}

ArgWriter& ArgWriter::dec( long long value ) {
   separate();
   text_ += std::to_string( value );
   return *this;
}

ArgWriter& ArgWriter::hex( unsigned long long value ) {
   char buffer[24];
   std::snprintf( buffer, sizeof buffer, "0x%llx", value );
   return text( buffer );
}

ArgWriter& ArgWriter::text( const char* value ) {
   separate();
   text_ += value;
   return *this;
}

ArgWriter& ArgWriter::out( const void* pointer, const char* name ) {
   separate();
   if ( pointer == nullptr ) {
      text_ += "NULL";
   } else {
      text_ += '&';
      text_ += name;
   }
   return *this;
}

ArgWriter& ArgWriter::mac( const uint8_t* bytes ) {
   char buffer[18];
   std::snprintf( buffer, sizeof buffer, "%02x:%02x:%02x:%02x:%02x:%02x", bytes[0],
                  bytes[1], bytes[2], bytes[3], bytes[4], bytes[5] );
   return text( buffer );
}

ArgWriter& ArgWriter::ip4( uint32_t address ) {
   char buffer[16];
   std::snprintf( buffer, sizeof buffer, "%u.%u.%u.%u", address >> 24,
                  ( address >> 16 ) & 0xff, ( address >> 8 ) & 0xff, address & 0xff );
   return text( buffer );
}

ArgWriter& ArgWriter::ip6( const uint8_t* bytes ) {
   char buffer[INET6_ADDRSTRLEN];
   inet_ntop( AF_INET6, bytes, buffer, sizeof buffer );
   return text( buffer );
}

// Port lists with ranges, as the SDK shell prints bitmaps: "{1-64}", "{0,3,5-7}".
ArgWriter& ArgWriter::ports( const bcm_pbmp_t& bitmap ) {
   separate();
   text_ += '{';
   bool first = true;
   for ( int port = 0; port < BCM_PBMP_PORT_MAX; ++port ) {
      if ( !bcm_pbmp_member( bitmap, port ) ) {
         continue;
      }
      int last = port;
      while ( last + 1 < BCM_PBMP_PORT_MAX && bcm_pbmp_member( bitmap, last + 1 ) ) {
         ++last;
      }
      if ( !first ) {
         text_ += ',';
      }
      first = false;
      text_ += std::to_string( port );
      if ( last > port ) {
         text_ += '-';
         text_ += std::to_string( last );
      }
      port = last;
   }
   text_ += '}';
   return *this;
}

ArgWriter& ArgWriter::action( bcm_field_action_t value ) {
   if ( auto a = decodeAction( version_, value ) ) {
      return text( FieldProcessor::actionName( *a ) );
   }
   return dec( value );
}

ArgWriter& ArgWriter::qset( const bcm_field_qset_t& qset ) {
   separate();
   text_ += '{';
   bool first = true;
   for ( int q = 0; q < kQualifierCount; ++q ) {
      if ( BCM_FIELD_QSET_TEST( qset, q ) ) {
         if ( !first ) {
            text_ += ',';
         }
         first = false;
         text_ += FieldProcessor::qualifierName( static_cast<bcm_field_qualify_t>( q ) );
      }
   }
   text_ += '}';
   return *this;
}

ArgWriter& ArgWriter::fieldData( bcm_field_qualify_t q, uint64_t value ) {
   switch ( q ) {
      case bcmFieldQualifyIpType:
         if ( auto t = decodeIpType( version_, static_cast<int>( value ) ) ) {
            return text( FieldProcessor::ipTypeName( *t ) );
         }
         return dec( static_cast<long long>( value ) );
      case bcmFieldQualifyPacketRes:
         if ( auto r = decodePacketRes( version_, static_cast<uint32_t>( value ) ) ) {
            return text( FieldProcessor::packetResName( *r ) );
         }
         return hex( value );
      case bcmFieldQualifyEtherType:
         return hex( value );
      case bcmFieldQualifyDstIp:
         return ip4( static_cast<uint32_t>( value ) );
      case bcmFieldQualifyDstMac: {
         uint8_t bytes[6];
         for ( int i = 0; i < 6; ++i ) {
            bytes[i] = static_cast<uint8_t>( value >> ( 8 * ( 5 - i ) ) );
         }
         return mac( bytes );
      }
      case bcmFieldQualifyStageIngress:
      case bcmFieldQualifyStageLookup:
      case bcmFieldQualifyInPorts:
      case bcmFieldQualifySrcPort:
      case bcmFieldQualifyDstPort:
      case bcmFieldQualifyDstIp6:
      case bcmFieldQualifyIpProtocol:
      case bcmFieldQualifyExtensionHeaderType:
      case bcmFieldQualifyL4SrcPort:
      case bcmFieldQualifyL4DstPort:
      case bcmFieldQualifyTtl:
      case bcmFieldQualifyDSCP:
      case bcmFieldQualifyOuterVlanPri:
      case bcmFieldQualifyDrop:
      case bcmFieldQualifyIngressStpState:
      case bcmFieldQualifyHiGig:
      case bcmFieldQualifyInterfaceClassL2:
      case bcmFieldQualifyInterfaceClassVPort:
      case bcmFieldQualifyInterfaceClassPort:
      case bcmFieldQualifyDstClassL2:
      case bcmFieldQualifyDstClassL3:
      case bcmFieldQualifyDstClassField:
      case bcmFieldQualifyDstL3EgressNextHops:
      case bcmFieldQualifyL2CacheHit:
      case bcmFieldQualifyL3Routable:
      case bcmFieldQualifyCount:
         break;
   }
   return dec( static_cast<long long>( value ) );
}

ArgWriter& ArgWriter::fieldBytes( Shim::CompressedField field,
                                  const Shim::FieldBytes& bytes, bool isMask ) {
   const auto& b = bytes.bytes;
   const uint64_t be16 = ( uint64_t{ b[0] } << 8 ) | b[1];
   switch ( field ) {
      case Shim::CompressedField::IpProtocol:
         return isMask ? hex( b[0] ) : dec( b[0] );
      case Shim::CompressedField::L4SrcPort:
      case Shim::CompressedField::L4DstPort:
         return isMask ? hex( be16 ) : dec( static_cast<long long>( be16 ) );
      case Shim::CompressedField::EtherType:
         return hex( be16 );
      case Shim::CompressedField::DstIp:
         return ip4( ( uint32_t{ b[0] } << 24 ) | ( uint32_t{ b[1] } << 16 ) |
                     ( uint32_t{ b[2] } << 8 ) | b[3] );
      case Shim::CompressedField::DstIp6:
         return ip6( b.data() );
      case Shim::CompressedField::DstMac:
         return mac( b.data() );
      case Shim::CompressedField::Count:
         break;
   }
   return text( "?" );
}

}  // namespace Sim
