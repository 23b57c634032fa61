#include "tools/ferro-acl/QualifierFormat.h"

#include <cstdio>
#include <iterator>
#include <optional>
#include <string_view>

namespace FerroAcl {

namespace {

uint64_t bigEndianNumber( std::span<const uint8_t> bytes ) {
   uint64_t value = 0;
   for ( uint8_t byte : bytes ) {
      value = ( value << 8 ) | byte;
   }
   return value;
}

// Enumeration codes by their names in the running SDK version; a code that is
// none of them stays a number.
std::optional<std::string> ipTypeName( uint64_t value ) {
   const auto type =
       Sim::FieldProcessor::instance().ipTypeFromValue( bcm_field_IpType_t( value ) );
   return type ? std::optional<std::string>( Sim::FieldProcessor::ipTypeName( *type ) )
               : std::nullopt;
}

std::optional<std::string> packetResName( uint64_t value ) {
   const auto res = Sim::FieldProcessor::instance().packetResFromValue( uint32_t( value ) );
   return res ? std::optional<std::string>( Sim::FieldProcessor::packetResName( *res ) )
              : std::nullopt;
}

// Fields narrower than their bytes: a full mask of these is not all ones.
int fieldBits( std::string_view name, size_t bytes ) {
   if ( name == "Drop" || name == "HiGig" || name == "L2CacheHit" ||
        name == "L3Routable" ) {
      return 1;
   }
   if ( name == "OuterVlanPri" ) {
      return 3;
   }
   if ( name == "DstClassL3" ) {
      return 10;
   }
   return int( bytes * 8 );
}

bool coversField( std::string_view name, std::span<const uint8_t> mask ) {
   const int bits = fieldBits( name, mask.size() );
   if ( bits >= 64 || name == "DstIp6" || name == "InPorts" ) {
      for ( uint8_t byte : mask ) {
         if ( byte != 0xff ) {
            return false;
         }
      }
      return !mask.empty();
   }
   return bigEndianNumber( mask ) == ( uint64_t{ 1 } << bits ) - 1;
}

FieldText decode( std::string_view name, std::span<const uint8_t> bytes, bool isMask ) {
   if ( name == "DstMac" ) {
      return formatMac( bytes );
   }
   if ( name == "DstIp" ) {
      return formatIpv4( bytes );
   }
   if ( name == "DstIp6" ) {
      return formatIpv6( bytes );
   }
   if ( name == "InPorts" ) {
      return portsOfBitmap( bytes );
   }
   // A (module, port) pair, read as the chip keeps it: module byte, port byte.
   if ( ( name == "SrcPort" || name == "DstPort" ) && bytes.size() == 2 ) {
      return std::to_string( bytes[ 0 ] ) + ":" + std::to_string( bytes[ 1 ] );
   }
   const uint64_t number = bigEndianNumber( bytes );
   if ( !isMask && name == "IpType" ) {
      if ( auto text = ipTypeName( number ) ) {
         return *text;
      }
   }
   if ( !isMask && name == "PacketRes" ) {
      if ( auto text = packetResName( number ) ) {
         return *text;
      }
   }
   return number;
}

FieldValue valueOf( std::string_view name, std::span<const uint8_t> data,
                    std::span<const uint8_t> mask ) {
   return FieldValue{ decode( name, data, false ), decode( name, mask, true ),
                      coversField( name, mask ) };
}

// Compressed values are left-aligned in 16 bytes; these are their widths.
size_t compressedWidth( std::string_view name ) {
   if ( name == "IpProtocol" ) {
      return 1;
   }
   if ( name == "L4SrcPort" || name == "L4DstPort" || name == "EtherType" ) {
      return 2;
   }
   if ( name == "DstIp" ) {
      return 4;
   }
   if ( name == "DstMac" ) {
      return 6;
   }
   return 16;
}

}  // namespace

std::string formatMac( std::span<const uint8_t> bytes ) {
   std::string text;
   for ( uint8_t byte : bytes ) {
      char part[4];
      std::snprintf( part, sizeof part, text.empty() ? "%02x" : ":%02x", byte );
      text += part;
   }
   return text;
}

std::string formatIpv4( std::span<const uint8_t> bytes ) {
   std::string text;
   for ( uint8_t byte : bytes ) {
      text += ( text.empty() ? "" : "." ) + std::to_string( byte );
   }
   return text;
}

std::string formatIpv6( std::span<const uint8_t> bytes ) {
   uint16_t groups[8] = {};
   for ( size_t i = 0; i < 8 && 2 * i + 1 < bytes.size(); ++i ) {
      groups[i] = uint16_t( ( bytes[2 * i] << 8 ) | bytes[2 * i + 1] );
   }
   // RFC 5952: the longest run of two or more zero groups becomes "::", the
   // first one when runs tie; a single zero group stays "0".
   int bestStart = -1;
   int bestLength = 1;
   for ( int i = 0; i < 8; ) {
      if ( groups[i] != 0 ) {
         ++i;
         continue;
      }
      int j = i;
      while ( j < 8 && groups[j] == 0 ) {
         ++j;
      }
      if ( j - i > bestLength ) {
         bestStart = i;
         bestLength = j - i;
      }
      i = j;
   }
   std::string text;
   for ( int i = 0; i < 8; ++i ) {
      if ( i == bestStart ) {
         text += "::";
         i += bestLength - 1;
         continue;
      }
      char group[6];
      std::snprintf( group, sizeof group, "%x", groups[i] );
      if ( !text.empty() && text.back() != ':' ) {
         text += ':';
      }
      text += group;
   }
   return text;
}

std::vector<int> portsOfBitmap( std::span<const uint8_t> bytes ) {
   std::vector<int> ports;
   const size_t count = bytes.size();
   for ( size_t i = 0; i < count; ++i ) {
      const uint8_t byte = bytes[count - 1 - i];
      for ( int bit = 0; bit < 8; ++bit ) {
         if ( ( byte >> bit ) & 1 ) {
            ports.push_back( int( i * 8 ) + bit );
         }
      }
   }
   return ports;
}

QualifierState describeQualifier( const Sim::QualifierView& view ) {
   QualifierState state{ view.name, {} };
   if ( !view.data.empty() ) {
      state.values.push_back( valueOf( view.name, view.data, view.mask ) );
   }
   const size_t width = compressedWidth( view.name );
   for ( const Shim::CompressedValue& value : view.compressed ) {
      state.values.push_back( valueOf( view.name,
                                       std::span( value.data.bytes ).first( width ),
                                       std::span( value.mask.bytes ).first( width ) ) );
   }
   return state;
}

}  // namespace FerroAcl
