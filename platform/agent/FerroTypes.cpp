#include "platform/agent/FerroTypes.h"

#include <cstdio>

namespace Wirex {

std::string IntfId::name() const {
   if ( isPortChannel() ) {
      return "Port-Channel" + std::to_string( value_ - portChannelBase );
   }
   return "Ethernet" + std::to_string( value_ );
}

std::optional<IntfId> IntfId::fromName( std::string_view name ) {
   auto number = [ & ]( std::string_view prefix, U32 limit ) -> std::optional<U32> {
      if ( !name.starts_with( prefix ) || name.size() == prefix.size() ||
           name.size() > prefix.size() + 9 ) {
         return std::nullopt;
      }
      U32 n = 0;
      for ( char c : name.substr( prefix.size() ) ) {
         if ( c < '0' || c > '9' ) {
            return std::nullopt;
         }
         n = n * 10 + U32( c - '0' );
      }
      // Leading zeros would give one interface two names.
      if ( n >= limit || ( name[ prefix.size() ] == '0' && name.size() > prefix.size() + 1 ) ) {
         return std::nullopt;
      }
      return n;
   };
   if ( auto n = number( "Port-Channel", 0xFFFFFFFF - portChannelBase ) ) {
      return portChannel( *n );
   }
   if ( auto n = number( "Ethernet", portChannelBase ) ) {
      return ethernet( *n );
   }
   return std::nullopt;
}

std::ostream& operator<<( std::ostream& os, const IntfId& intf ) {
   return os << intf.name();
}

std::string EthAddr::toString() const {
   char text[ 18 ];
   std::snprintf( text, sizeof text, "%02x:%02x:%02x:%02x:%02x:%02x", bytes_[ 0 ],
                  bytes_[ 1 ], bytes_[ 2 ], bytes_[ 3 ], bytes_[ 4 ], bytes_[ 5 ] );
   return text;
}

std::ostream& operator<<( std::ostream& os, const EthAddr& addr ) {
   return os << addr.toString();
}

}  // namespace Wirex

namespace Lamo::L2Pt {

const char* name( L2PtTrafficType trafficType ) {
   switch ( trafficType ) {
      case L2PtTrafficType::l2PtTrafficTypeAll:
         return "all";
      case L2PtTrafficType::l2PtTrafficTypeVxlanDecap:
         return "vxlanDecap";
   }
   return "unknown";
}

const char* name( L2PtProtocol protocol ) {
   switch ( protocol ) {
      case L2PtProtocol::lacp:
         return "lacp";
      case L2PtProtocol::lldp:
         return "lldp";
      case L2PtProtocol::stp:
         return "stp";
      case L2PtProtocol::dot1x:
         return "dot1x";
      case L2PtProtocol::elmi:
         return "elmi";
      case L2PtProtocol::pagp:
         return "pagp";
      case L2PtProtocol::udld:
         return "udld";
      case L2PtProtocol::cdp:
         return "cdp";
      case L2PtProtocol::microBfd:
         return "microBfd";
   }
   // A value cast in from outside the enumeration.
   return "unknown";
}

}  // namespace Lamo::L2Pt
