#include "platform/agent/FerroTypes.h"

#include <cstdio>

namespace Wirex {

std::string IntfId::name() const {
   if ( isPortChannel() ) {
      return "Port-Channel" + std::to_string( value_ - portChannelBase );
   }
   return "Ethernet" + std::to_string( value_ );
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
