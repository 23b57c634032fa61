#include "pipeline/NetworkContext.h"

#include <algorithm>

namespace Pipeline {

namespace {

bool listed( const std::vector<PortRef>& ports, const PortRef& port ) {
   return std::find( ports.begin(), ports.end(), port ) != ports.end();
}

}  // namespace

std::string toString( const PortRef& port ) {
   return std::to_string( port.unit ) + ":" + std::to_string( port.port );
}

const Interface* NetworkContext::nativeInterface( const PortRef& port ) const {
   for ( const Interface& intf : interfaces ) {
      if ( listed( intf.ports, port ) ) {
         return &intf;
      }
   }
   return nullptr;
}

const Interface* NetworkContext::vlanInterface( uint16_t vlan ) const {
   for ( const Interface& intf : interfaces ) {
      if ( intf.vlan == vlan ) {
         return &intf;
      }
   }
   return nullptr;
}

bool NetworkContext::isMember( const PortRef& port, uint16_t vlan ) const {
   return std::any_of( interfaces.begin(), interfaces.end(), [&]( const Interface& intf ) {
      return intf.vlan == vlan && listed( intf.ports, port );
   } );
}

const Interface* NetworkContext::owner( const IpAddress& address ) const {
   for ( const Interface& intf : interfaces ) {
      for ( const IpPrefix& own : intf.addresses ) {
         if ( own.address == address ) {
            return &intf;
         }
      }
   }
   return nullptr;
}

const Interface* NetworkContext::connected( const IpAddress& address ) const {
   for ( const Interface& intf : interfaces ) {
      for ( const IpPrefix& own : intf.addresses ) {
         if ( own.contains( address ) ) {
            return &intf;
         }
      }
   }
   return nullptr;
}

const Neighbour* NetworkContext::neighbour( const IpAddress& address ) const {
   for ( const Neighbour& n : neighbours ) {
      if ( n.address == address ) {
         return &n;
      }
   }
   return nullptr;
}

const MulticastRoute* NetworkContext::multicastRoute( const IpAddress& group ) const {
   for ( const MulticastRoute& route : multicastRoutes ) {
      if ( route.group == group ) {
         return &route;
      }
   }
   return nullptr;
}

bool NetworkContext::stpBlocked( const PortRef& port ) const {
   return listed( stpBlockedPorts, port );
}

bool NetworkContext::vxlanDecap( const PortRef& port ) const {
   return listed( vxlanDecapPorts, port );
}

bool NetworkContext::higig( const PortRef& port ) const { return listed( higigPorts, port ); }

std::optional<PortRef> NetworkContext::firstRoutedPort() const {
   std::optional<PortRef> first;
   for ( const Interface& intf : interfaces ) {
      for ( const PortRef& port : intf.ports ) {
         const auto before = []( const PortRef& a, const PortRef& b ) {
            return a.unit != b.unit ? a.unit < b.unit : a.port < b.port;
         };
         if ( port.port != 0 && !higig( port ) && !stpBlocked( port ) &&
              nativeInterface( port )->routed() && ( !first || before( port, *first ) ) ) {
            first = port;
         }
      }
   }
   return first;
}

void NetworkContext::addSelfIp( const IpAddress& address, const PortRef& port ) {
   const Interface* native = nativeInterface( port );
   Interface* intf = nullptr;
   if ( native ) {
      intf = &interfaces[static_cast<size_t>( native - interfaces.data() )];
   } else {
      uint16_t vlan = 4094;
      while ( vlanInterface( vlan ) ) {
         --vlan;
      }
      interfaces.push_back( { "Port" + toString( port ), vlan, { port }, {} } );
      intf = &interfaces.back();
   }
   intf->addresses.push_back( { address, uint8_t( address.isV6 ? 64 : 24 ) } );
}

}  // namespace Pipeline
