#include "pipeline/CanonicalAddresses.h"

#include "pipeline/PacketBuilder.h"

namespace Pipeline {

namespace {

constexpr MacAddress locallyAdministeredMac{ 0x02, 0, 0, 0, 0, 0x02 };
// How far into a subnet to look for a free host before giving up.
constexpr uint32_t hostsTried = 256;

std::optional<IpPrefix> ownPrefix( const Interface& intf, bool v6 ) {
   for ( const IpPrefix& prefix : intf.addresses ) {
      if ( prefix.address.isV6 == v6 ) {
         return prefix;
      }
   }
   return std::nullopt;
}

IpPrefix selfPrefix( const NetworkContext& network, const PortRef& ingress, bool v6 ) {
   if ( const Interface* native = network.nativeInterface( ingress ) ) {
      if ( std::optional<IpPrefix> prefix = ownPrefix( *native, v6 ) ) {
         return *prefix;
      }
   }
   for ( const Interface& intf : network.interfaces ) {
      if ( std::optional<IpPrefix> prefix = ownPrefix( intf, v6 ) ) {
         return *prefix;
      }
   }
   return v6 ? IpPrefix{ IpAddress::ofV6( ipv6( "2001:db8::1" ) ), 64 }
             : IpPrefix{ IpAddress::ofV4( ipv4( "192.0.2.1" ) ), 24 };
}

// Host `n` of the prefix, counted from its first address or from its last;
// nothing past the prefix's end.
std::optional<IpAddress> host( const IpPrefix& prefix, uint32_t n, bool fromTop ) {
   const unsigned width = prefix.address.isV6 ? 128 : 32;
   const unsigned hostBits = width - prefix.length;
   if ( hostBits < 32 && n >= ( uint32_t( 1 ) << hostBits ) ) {
      return std::nullopt;
   }
   if ( !prefix.address.isV6 ) {
      const uint32_t hostMask =
          hostBits >= 32 ? ~uint32_t( 0 ) : ( uint32_t( 1 ) << hostBits ) - 1;
      const uint32_t base = prefix.address.v4 & ~hostMask;
      return IpAddress::ofV4( fromTop ? ( base | hostMask ) - n : base + n );
   }
   Ipv6Address bytes = prefix.address.v6;
   for ( unsigned bit = prefix.length; bit < width; ++bit ) {
      const uint8_t mask = uint8_t( 0x80 >> ( bit % 8 ) );
      bytes[bit / 8] =
          uint8_t( fromTop ? bytes[bit / 8] | mask : bytes[bit / 8] & ~mask );
   }
   // n is below the host count, so the low 32 bits take it without a carry
   // into the prefix.
   uint32_t low = uint32_t( bytes[12] ) << 24 | uint32_t( bytes[13] ) << 16 |
                  uint32_t( bytes[14] ) << 8 | bytes[15];
   low = fromTop ? low - n : low + n;
   for ( size_t i = 0; i < 4; ++i ) {
      bytes[15 - i] = uint8_t( low >> ( 8 * i ) );
   }
   return IpAddress::ofV6( bytes );
}

// The first host from the bottom or the top of the subnet that is not the
// self address, not the switch's and not a neighbour's. The first and last
// addresses (network and broadcast, subnet-router anycast) are left alone.
std::optional<IpAddress> freeHost( const NetworkContext& network, const IpPrefix& self,
                                   bool fromTop ) {
   for ( uint32_t n = 1; n <= hostsTried; ++n ) {
      const std::optional<IpAddress> candidate = host( self, n, fromTop );
      if ( !candidate ) {
         return std::nullopt;
      }
      if ( *candidate != self.address && !network.owner( *candidate ) &&
           !network.neighbour( *candidate ) ) {
         return candidate;
      }
   }
   return std::nullopt;
}

const Neighbour* neighbourIn( const NetworkContext& network, const IpPrefix& subnet ) {
   for ( const Neighbour& n : network.neighbours ) {
      if ( subnet.contains( n.address ) ) {
         return &n;
      }
   }
   return nullptr;
}

IpAddress neighbourAddress( const NetworkContext& network, const IpPrefix& self ) {
   if ( const Neighbour* n = neighbourIn( network, self ) ) {
      return n->address;
   }
   return freeHost( network, self, false ).value_or( self.address );
}

Ipv6Address linkLocal( const MacAddress& mac ) {
   return {
       0xfe,   0x80,   0,    0,    0,      0,      0,     0, uint8_t( mac[0] ^ 0x02 ),
       mac[1], mac[2], 0xff, 0xfe, mac[3], mac[4], mac[5] };
}

}  // namespace

CanonicalAddresses canonicalAddresses( const NetworkContext& network,
                                       const PortRef& ingress ) {
   const IpPrefix v4 = selfPrefix( network, ingress, false );
   const IpPrefix v6 = selfPrefix( network, ingress, true );
   CanonicalAddresses a;
   a.routerMac = network.routerMac;
   const Neighbour* neighbour = neighbourIn( network, v4 );
   if ( !neighbour ) {
      neighbour = neighbourIn( network, v6 );
   }
   a.neighbourMac = neighbour ? neighbour->mac : locallyAdministeredMac;
   a.selfV4 = v4.address;
   a.selfV6 = v6.address;
   a.neighbourV4 = neighbourAddress( network, v4 );
   a.neighbourV6 = neighbourAddress( network, v6 );
   a.neighbourLinkLocal = linkLocal( a.neighbourMac );
   a.gleanV4 = freeHost( network, v4, true );
   a.gleanV6 = freeHost( network, v6, true );
   return a;
}

}  // namespace Pipeline
