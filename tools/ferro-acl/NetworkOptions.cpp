#include "tools/ferro-acl/NetworkOptions.h"

#include <iostream>

#include "tools/ferro-acl/NetworkProfile.h"

namespace FerroAcl {

void addNetworkOptions( CLI::App& app, NetworkOptions& options ) {
   app.add_option( "--self-ip", options.selfIps,
                   "the switch owns ADDRESS on the ingress interface; its /24 or /64 is "
                   "connected (repeatable)" )
       ->type_name( "ADDRESS" );
   app.add_option( "--router-mac", options.routerMac,
                   "the router MAC; 'any' takes every unicast destination MAC as the "
                   "router's (captures taken on a host)" )
       ->type_name( "MAC|any" );
   app.add_option( "--in-port", options.inPort,
                   "where packets enter (default: the first routed front-panel port of the "
                   "profile's network)" )
       ->type_name( "UNIT:PORT" );
   app.add_option( "--apply", options.scenario,
                   "a scenario applied before the first packet (grammar: ferro-acl apply "
                   "--help)" )
       ->type_name( "SCENARIO" );
}

std::optional<NetworkSetup> prepareNetwork( const NetworkOptions& options,
                                            const AgentSetup& setup ) {
   NetworkSetup result;
   result.network = setup.network;
   Pipeline::NetworkContext& network = result.network;
   if ( options.routerMac == "any" ) {
      network.anyRouterMac = true;
   } else if ( !options.routerMac.empty() ) {
      const std::optional<Pipeline::MacAddress> mac =
          Pipeline::parseMacAddress( options.routerMac );
      if ( !mac ) {
         std::cerr << "ferro-acl: --router-mac \"" << options.routerMac
                   << "\": expected a MAC address as 00:1c:73:00:00:01, or any\n";
         return std::nullopt;
      }
      network.routerMac = *mac;
   }
   std::vector<Pipeline::IpAddress> selfIps;
   for ( const std::string& text : options.selfIps ) {
      const std::optional<Pipeline::IpAddress> address = Pipeline::parseIpAddress( text );
      if ( !address || address->isMulticast() ) {
         std::cerr << "ferro-acl: --self-ip \"" << text
                   << "\": expected a unicast IPv4 or IPv6 address\n";
         return std::nullopt;
      }
      selfIps.push_back( *address );
   }
   if ( !options.inPort.empty() ) {
      Result<Pipeline::PortRef> port = parsePort( options.inPort, setup.config );
      if ( !port ) {
         std::cerr << "ferro-acl: --in-port \"" << options.inPort << "\": " << port.error()
                   << '\n';
         return std::nullopt;
      }
      result.ingress = port.value();
   } else if ( std::optional<Pipeline::PortRef> first = network.firstRoutedPort() ) {
      result.ingress = *first;
   } else if ( !selfIps.empty() ) {
      // The self IPs make the first port of the first unit a routed one.
      result.ingress = { setup.config.units.front().unit, 1 };
   } else {
      std::cerr << "ferro-acl: " << setup.source
                << ": network: no routed front-panel port to take packets from; expected "
                   "an interface with addresses, or --in-port UNIT:PORT or --self-ip "
                   "ADDRESS\n";
      return std::nullopt;
   }
   for ( const Pipeline::IpAddress& address : selfIps ) {
      network.addSelfIp( address, result.ingress );
   }
   if ( !options.scenario.empty() ) {
      std::optional<std::vector<ScenarioEvent>> events =
          loadScenario( options.scenario, setup.config );
      if ( !events ) {
         return std::nullopt;
      }
      result.events = std::move( *events );
   }
   return result;
}

Pipeline::SwitchModel startModel( NetworkSetup& network, SimulatedAgent& agent ) {
   ScenarioRun run( agent.switchPtr(), agent.helper() );
   for ( const ScenarioEvent& event : network.events ) {
      run.apply( event );
      if ( event.kind == EventKind::ptpMode ) {
         network.network.ptpEnabled = event.number != 0;
      }
   }
   return Pipeline::SwitchModel( network.network, Pipeline::unitModels( agent.sw().config ) );
}

}  // namespace FerroAcl
