#include "pipeline/IpAddress.h"

#include <arpa/inet.h>

#include <charconv>
#include <cstdio>

namespace Pipeline {

bool IpAddress::isMulticast() const {
   return isV6 ? v6[0] == 0xff : ( v4 >> 28 ) == 0xe;
}

bool IpAddress::isLinkLocalMulticast() const {
   return isV6 ? v6[0] == 0xff && ( v6[1] & 0x0f ) == 0x02 : ( v4 >> 8 ) == 0xe00000;
}

bool IpAddress::isLinkLocalUnicast() const {
   return isV6 && v6[0] == 0xfe && ( v6[1] & 0xc0 ) == 0x80;
}

bool IpPrefix::contains( const IpAddress& other ) const {
   if ( other.isV6 != address.isV6 ) {
      return false;
   }
   if ( !address.isV6 ) {
      const uint32_t mask = length == 0 ? 0 : ~uint32_t( 0 ) << ( 32 - length );
      return ( other.v4 & mask ) == ( address.v4 & mask );
   }
   for ( size_t i = 0; i < 16; ++i ) {
      const int bits = std::min( 8, std::max( 0, int( length ) - int( i ) * 8 ) );
      const uint8_t mask = uint8_t( 0xff00 >> bits );
      if ( ( other.v6[i] & mask ) != ( address.v6[i] & mask ) ) {
         return false;
      }
   }
   return true;
}

std::optional<IpAddress> parseIpAddress( std::string_view text ) {
   const std::string copy( text );
   IpAddress address;
   in_addr v4;
   if ( inet_pton( AF_INET, copy.c_str(), &v4 ) == 1 ) {
      address.v4 = ntohl( v4.s_addr );
      return address;
   }
   if ( inet_pton( AF_INET6, copy.c_str(), address.v6.data() ) == 1 ) {
      address.isV6 = true;
      return address;
   }
   return std::nullopt;
}

std::optional<IpPrefix> parseIpPrefix( std::string_view text ) {
   const size_t slash = text.find( '/' );
   std::optional<IpAddress> address = parseIpAddress( text.substr( 0, slash ) );
   if ( !address ) {
      return std::nullopt;
   }
   const int maxLength = address->isV6 ? 128 : 32;
   int length = maxLength;
   if ( slash != std::string_view::npos ) {
      const std::string_view digits = text.substr( slash + 1 );
      const auto [end, error] =
          std::from_chars( digits.data(), digits.data() + digits.size(), length );
      if ( digits.empty() || error != std::errc() || end != digits.data() + digits.size() ||
           length < 0 || length > maxLength ) {
         return std::nullopt;
      }
   }
   return IpPrefix{ *address, uint8_t( length ) };
}

std::optional<MacAddress> parseMacAddress( std::string_view text ) {
   MacAddress mac;
   if ( text.size() != 17 ) {
      return std::nullopt;
   }
   for ( size_t i = 0; i < 6; ++i ) {
      const char* begin = text.data() + 3 * i;
      if ( i < 5 && begin[2] != ':' ) {
         return std::nullopt;
      }
      const auto [end, error] = std::from_chars( begin, begin + 2, mac[i], 16 );
      if ( error != std::errc() || end != begin + 2 ) {
         return std::nullopt;
      }
   }
   return mac;
}

std::string toString( const IpAddress& address ) {
   char text[INET6_ADDRSTRLEN];
   if ( address.isV6 ) {
      inet_ntop( AF_INET6, address.v6.data(), text, sizeof text );
   } else {
      const in_addr v4{ htonl( address.v4 ) };
      inet_ntop( AF_INET, &v4, text, sizeof text );
   }
   return text;
}

std::string toString( const IpPrefix& prefix ) {
   return toString( prefix.address ) + "/" + std::to_string( prefix.length );
}

std::string toString( const MacAddress& mac ) {
   char text[18];
   std::snprintf( text, sizeof text, "%02x:%02x:%02x:%02x:%02x:%02x", mac[0], mac[1], mac[2],
                  mac[3], mac[4], mac[5] );
   return text;
}

}  // namespace Pipeline
