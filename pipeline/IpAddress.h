// IPv4 and IPv6 addresses and prefixes as the switch model and its
// configuration name them, with their text forms.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "pipeline/ParsedPacket.h"

namespace Pipeline {

struct IpAddress {
   bool isV6 = false;
   Ipv4Address v4 = 0;
   Ipv6Address v6{};

   static IpAddress ofV4( Ipv4Address address ) { return { false, address, {} }; }
   static IpAddress ofV6( const Ipv6Address& address ) { return { true, 0, address }; }
   bool operator==( const IpAddress& other ) const = default;
   bool isMulticast() const;  // 224.0.0.0/4, ff00::/8
   // 224.0.0.0/24 and ff02::/16: never routed, always seen by the router.
   bool isLinkLocalMulticast() const;
   bool isLinkLocalUnicast() const;  // fe80::/10 (IPv4 has none that a router owns)
};

struct IpPrefix {
   IpAddress address;
   uint8_t length = 0;
   bool contains( const IpAddress& address ) const;
};

// "10.0.0.1", "2001:db8::1"; nothing when the text is not an address.
std::optional<IpAddress> parseIpAddress( std::string_view text );
// "10.0.0.1/24", "2001:db8::1/64"; a bare address is a host prefix.
std::optional<IpPrefix> parseIpPrefix( std::string_view text );
std::optional<MacAddress> parseMacAddress( std::string_view text );  // "00:1c:73:00:00:01"

std::string toString( const IpAddress& address );  // shortest IPv6 form
std::string toString( const IpPrefix& prefix );
std::string toString( const MacAddress& mac );

}  // namespace Pipeline
