#include "tools/ferro-acl/NetworkProfile.h"

#include <algorithm>
#include <charconv>

#include "tools/ferro-acl/JsonFields.h"

namespace FerroAcl {

namespace {

using Pipeline::IpAddress;
using Pipeline::NetworkContext;
using Pipeline::PortRef;

// The logical port count of `unit`'s chip; 0 when the profile has no such unit.
int portCountOf( const Agent::SwitchConfig& config, int unit ) {
   for ( const Agent::UnitSpec& spec : config.units ) {
      if ( spec.unit == unit ) {
         for ( const Agent::ChipProfile& chip : config.chips ) {
            if ( chip.family == spec.chip ) {
               return chip.attributes.portCount;
            }
         }
      }
   }
   return 0;
}

std::optional<int> number( std::string_view text ) {
   int value = 0;
   const auto [end, error] = std::from_chars( text.data(), text.data() + text.size(), value );
   if ( text.empty() || error != std::errc() || end != text.data() + text.size() ) {
      return std::nullopt;
   }
   return value;
}

// "U:P" or, where `ranges` allows, "U:FIRST-LAST": front-panel ports of the
// profile's units. The message says what was wrong.
Result<std::vector<PortRef>> portsOf( std::string_view text, const Agent::SwitchConfig& config,
                                      bool ranges ) {
   const std::string expected =
       ranges ? "UNIT:PORT or UNIT:FIRST-LAST" : "UNIT:PORT";
   const size_t colon = text.find( ':' );
   const size_t dash = text.find( '-' );
   const std::optional<int> unit = number( text.substr( 0, colon ) );
   const std::optional<int> first =
       colon == std::string_view::npos ? std::nullopt
                                       : number( text.substr( colon + 1, dash - colon - 1 ) );
   const std::optional<int> last =
       dash == std::string_view::npos ? first : number( text.substr( dash + 1 ) );
   if ( !unit || !first || !last || ( !ranges && dash != std::string_view::npos ) ) {
      return Error{ "expected " + expected + ", got \"" + std::string( text ) + "\"" };
   }
   const int count = portCountOf( config, *unit );
   if ( count == 0 ) {
      return Error{ "the profile has no unit " + std::to_string( *unit ) };
   }
   if ( *first < 1 || *last >= count || *first > *last ) {
      return Error{ "expected front-panel ports 1-" + std::to_string( count - 1 ) +
                    " of unit " + std::to_string( *unit ) + ", got \"" + std::string( text ) +
                    "\"" };
   }
   std::vector<PortRef> ports;
   for ( int port = *first; port <= *last; ++port ) {
      ports.push_back( { uint16_t( *unit ), port } );
   }
   return ports;
}

std::vector<PortRef> readPorts( const Json& value, const std::string& path,
                                const Agent::SwitchConfig& config, bool ranges ) {
   Result<std::vector<PortRef>> ports = portsOf( readString( value, path ), config, ranges );
   if ( !ports ) {
      throw FieldError{ path, ports.error() };
   }
   return ports.value();
}

std::vector<PortRef> readPortList( const Json& list, const std::string& path,
                                   const Agent::SwitchConfig& config ) {
   expectList( list, path );
   std::vector<PortRef> ports;
   for ( size_t i = 0; i < list.size(); ++i ) {
      const std::string at = elementPath( path, i );
      for ( const PortRef& port : readPorts( list[i], at, config, true ) ) {
         if ( std::find( ports.begin(), ports.end(), port ) != ports.end() ) {
            throw FieldError{ at, "port " + Pipeline::toString( port ) + " listed twice" };
         }
         ports.push_back( port );
      }
   }
   return ports;
}

IpAddress readAddress( const Json& value, const std::string& path ) {
   const std::optional<IpAddress> address =
       Pipeline::parseIpAddress( readString( value, path ) );
   if ( !address ) {
      fieldError( path, "an IPv4 or IPv6 address", value );
   }
   return *address;
}

Pipeline::IpPrefix readAddressWithLength( const Json& value, const std::string& path ) {
   const std::string text = readString( value, path );
   const std::optional<Pipeline::IpPrefix> prefix = Pipeline::parseIpPrefix( text );
   if ( !prefix || text.find( '/' ) == std::string::npos || prefix->address.isMulticast() ) {
      fieldError( path, "a unicast address with its prefix length, as \"10.0.0.1/24\"",
                  value );
   }
   return *prefix;
}

Pipeline::MacAddress readMac( const Json& value, const std::string& path ) {
   const std::optional<Pipeline::MacAddress> mac =
       Pipeline::parseMacAddress( readString( value, path ) );
   if ( !mac ) {
      fieldError( path, "a MAC address as \"00:1c:73:00:00:01\"", value );
   }
   return *mac;
}

void readInterfaces( const Json& list, const std::string& path,
                     const Agent::SwitchConfig& config, NetworkContext& network ) {
   expectList( list, path );
   for ( size_t i = 0; i < list.size(); ++i ) {
      const std::string at = elementPath( path, i );
      const Json& item = list[i];
      expectObject( item, at );
      rejectUnknownKeys( item, at, { "name", "vlan", "ports", "addresses" } );
      Pipeline::Interface intf;
      intf.name = readString( requiredMember( item, at, "name" ), memberPath( at, "name" ) );
      const std::string vlanPath = memberPath( at, "vlan" );
      intf.vlan = uint16_t( readInteger( requiredMember( item, at, "vlan" ), vlanPath, 1, 4094 ) );
      if ( network.vlanInterface( intf.vlan ) ) {
         throw FieldError{ vlanPath, "VLAN " + std::to_string( intf.vlan ) + " listed twice" };
      }
      intf.ports = readPortList( requiredMember( item, at, "ports" ), memberPath( at, "ports" ),
                                 config );
      if ( const Json* addresses = optionalMember( item, "addresses" ) ) {
         const std::string addressesPath = memberPath( at, "addresses" );
         expectList( *addresses, addressesPath );
         for ( size_t a = 0; a < addresses->size(); ++a ) {
            intf.addresses.push_back(
                readAddressWithLength( ( *addresses )[a], elementPath( addressesPath, a ) ) );
         }
      }
      network.interfaces.push_back( intf );
   }
}

void readNeighbours( const Json& list, const std::string& path,
                     const Agent::SwitchConfig& config, NetworkContext& network ) {
   expectList( list, path );
   for ( size_t i = 0; i < list.size(); ++i ) {
      const std::string at = elementPath( path, i );
      const Json& item = list[i];
      expectObject( item, at );
      rejectUnknownKeys( item, at, { "address", "mac", "port" } );
      Pipeline::Neighbour n;
      const std::string addressPath = memberPath( at, "address" );
      n.address = readAddress( requiredMember( item, at, "address" ), addressPath );
      if ( !network.connected( n.address ) || network.owner( n.address ) ) {
         throw FieldError{ addressPath, "expected an address of a connected subnet that is "
                                        "not the switch's own, got \"" +
                                            Pipeline::toString( n.address ) + "\"" };
      }
      if ( network.neighbour( n.address ) ) {
         throw FieldError{ addressPath, Pipeline::toString( n.address ) + " listed twice" };
      }
      n.mac = readMac( requiredMember( item, at, "mac" ), memberPath( at, "mac" ) );
      n.port = readPorts( requiredMember( item, at, "port" ), memberPath( at, "port" ), config,
                          false )
                   .front();
      network.neighbours.push_back( n );
   }
}

void readGateways( const Json& list, const std::string& path, NetworkContext& network ) {
   expectList( list, path );
   for ( size_t i = 0; i < list.size(); ++i ) {
      const std::string at = elementPath( path, i );
      const IpAddress gateway = readAddress( list[i], at );
      if ( !network.neighbour( gateway ) ) {
         fieldError( at, "the address of one of the neighbours", list[i] );
      }
      network.gateways.push_back( gateway );
   }
}

void readMulticastRoutes( const Json& list, const std::string& path, NetworkContext& network ) {
   expectList( list, path );
   for ( size_t i = 0; i < list.size(); ++i ) {
      const std::string at = elementPath( path, i );
      const Json& item = list[i];
      expectObject( item, at );
      rejectUnknownKeys( item, at, { "group", "cpuOif" } );
      Pipeline::MulticastRoute route;
      const std::string groupPath = memberPath( at, "group" );
      route.group = readAddress( requiredMember( item, at, "group" ), groupPath );
      if ( !route.group.isMulticast() || route.group.isLinkLocalMulticast() ) {
         fieldError( groupPath, "a routable multicast group (not 224.0.0.0/24 or ff02::/16)",
                     item.at( "group" ) );
      }
      if ( const Json* cpuOif = optionalMember( item, "cpuOif" ) ) {
         route.cpuOif = readBool( *cpuOif, memberPath( at, "cpuOif" ) );
      }
      network.multicastRoutes.push_back( route );
   }
}

int minimumCpuQueueCount( const Agent::SwitchConfig& config ) {
   int count = 1024;
   for ( const Agent::ChipProfile& chip : config.chips ) {
      count = std::min( count, chip.attributes.cpuQueueCount );
   }
   return count;
}

NetworkContext readNetwork( const Json& section, const std::string& path,
                            const Agent::SwitchConfig& config ) {
   expectObject( section, path );
   rejectUnknownKeys( section, path,
                      { "routerMac", "defaultCpuQueue", "ptpEnabled", "interfaces",
                        "neighbours", "gateways", "multicastRoutes", "stpBlockedPorts",
                        "vxlanDecapPorts", "higigPorts" } );
   NetworkContext network;
   if ( const Json* mac = optionalMember( section, "routerMac" ) ) {
      network.routerMac = readMac( *mac, memberPath( path, "routerMac" ) );
   }
   if ( const Json* queue = optionalMember( section, "defaultCpuQueue" ) ) {
      network.defaultCpuQueue = uint32_t( readInteger(
          *queue, memberPath( path, "defaultCpuQueue" ), 0, minimumCpuQueueCount( config ) - 1 ) );
   }
   if ( const Json* ptp = optionalMember( section, "ptpEnabled" ) ) {
      network.ptpEnabled = readBool( *ptp, memberPath( path, "ptpEnabled" ) );
   }
   if ( const Json* list = optionalMember( section, "interfaces" ) ) {
      readInterfaces( *list, memberPath( path, "interfaces" ), config, network );
   }
   if ( const Json* list = optionalMember( section, "neighbours" ) ) {
      readNeighbours( *list, memberPath( path, "neighbours" ), config, network );
   }
   if ( const Json* list = optionalMember( section, "gateways" ) ) {
      readGateways( *list, memberPath( path, "gateways" ), network );
   }
   if ( const Json* list = optionalMember( section, "multicastRoutes" ) ) {
      readMulticastRoutes( *list, memberPath( path, "multicastRoutes" ), network );
   }
   const std::pair<const char*, std::vector<PortRef> NetworkContext::*> portSets[] = {
       { "stpBlockedPorts", &NetworkContext::stpBlockedPorts },
       { "vxlanDecapPorts", &NetworkContext::vxlanDecapPorts },
       { "higigPorts", &NetworkContext::higigPorts },
   };
   for ( const auto& [key, member] : portSets ) {
      if ( const Json* list = optionalMember( section, key ) ) {
         network.*member = readPortList( *list, memberPath( path, key ), config );
      }
   }
   return network;
}

}  // namespace

Result<NetworkContext> parseNetwork( std::string_view text, const std::string& source,
                                     const Agent::SwitchConfig& config ) {
   Result<Json> document = parseJsonText( text, source );
   if ( !document ) {
      return Error{ document.error() };
   }
   try {
      const Json* section = optionalMember( document.value(), "network" );
      return section ? readNetwork( *section, "network", config ) : NetworkContext{};
   } catch ( const FieldError& e ) {
      return Error{ source + ": " + e.message() };
   }
}

Result<PortRef> parsePort( std::string_view text, const Agent::SwitchConfig& config ) {
   Result<std::vector<PortRef>> ports = portsOf( text, config, false );
   if ( !ports ) {
      return Error{ ports.error() };
   }
   return ports.value().front();
}

}  // namespace FerroAcl
