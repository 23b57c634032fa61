// ferro-acl copp: bring up and install, then send the canonical control-plane
// packets into every unit through the switch model and print what each hit
// and where it went.
#include <iostream>

#include "tools/ferro-acl/CoppOutput.h"
#include "tools/ferro-acl/ExitStatus.h"
#include "tools/ferro-acl/NetworkOptions.h"
#include "tools/ferro-acl/RunOptions.h"
#include "tools/ferro-acl/Subcommands.h"

namespace FerroAcl {

namespace {

// --in-port alone, or the first routed port of each unit that has one.
std::vector<Pipeline::PortRef> ingressPorts( const NetworkSetup& network,
                                             const NetworkOptions& options,
                                             const Agent::SwitchConfig& config ) {
   if ( !options.inPort.empty() ) {
      return { network.ingress };
   }
   std::vector<Pipeline::PortRef> ports;
   for ( const Agent::UnitSpec& unit : config.units ) {
      if ( std::optional<Pipeline::PortRef> port =
               firstRoutedPortOf( network.network, unit.unit ) ) {
         ports.push_back( *port );
      } else {
         std::cerr << "ferro-acl: unit " << unit.unit
                   << " has no routed front-panel port; no packets enter it\n";
      }
   }
   return ports;
}

}  // namespace

int coppCommand( int argc, char** argv ) {
   CLI::App app(
       "Brings up a simulated switch and installs the system ACL as show does, then "
       "sends the canonical control-plane packets (BGP, OSPF, IS-IS, PIM, VRRP, BFD, "
       "LACP, LLDP, STP, PTP, EAPoL, glean, self-IP elevators, IPFIX, ND, MLD, DHCP, "
       "MLAG, IGMP, ARP, LDP, RIP) into each unit through the switch model and prints, "
       "per packet, the entries it hit, whether it reaches the CPU as a trap or a copy, "
       "on which queue and traffic class, and whether it is forwarded or dropped. "
       "Addresses come from the profile's network: the ingress interface's own address, "
       "a resolved neighbour, an unresolved host of the connected subnet, the router "
       "MAC.",
       "ferro-acl copp" );
   RunOptions options;
   NetworkOptions networkOptions;
   addRunOptions( app, options );
   addNetworkOptions( app, networkOptions );
   bool explain = false;
   app.add_flag( "--explain", explain,
                 "after the matrix, say for each packet why: the entries hit and missed "
                 "qualifier by qualifier, and where its fate came from" );
   app.footer(
       "Examples:\n"
       "  ferro-acl copp                             the default two-unit switch\n"
       "  ferro-acl copp --profile profiles/nexthop-glean-aclgroup.json\n"
       "  ferro-acl copp --json | jq '.units[0].packets[] | {name, cpuQueue}'\n"
       "  ferro-acl copp --in-port 0:9 --self-ip 10.0.9.1\n"
       "  ferro-acl copp --apply examples/pim-copy.scenario\n"
       "  ferro-acl copp --explain --in-port 0:1\n"
       "Exit status: 0 shown; 1 the library aborted or the run failed; 2 bad "
       "options, profile, network or scenario." );
   if ( std::optional<int> status = parseCommandLine( app, argc, argv ) ) {
      return *status;
   }
   const std::optional<AgentSetup> setup = prepareRun( options );
   if ( !setup ) {
      return exitUsage;
   }
   std::optional<NetworkSetup> network = prepareNetwork( networkOptions, *setup );
   if ( !network ) {
      return exitUsage;
   }
   const std::vector<Pipeline::PortRef> ingresses =
       ingressPorts( *network, networkOptions, setup->config );
   const ChildOutcome outcome = runInstalled( *setup, [&]( SimulatedAgent& agent,
                                                           const MessageChannel& ) {
      const Pipeline::SwitchModel model = startModel( *network, agent );
      const ChipState state = agent.state();
      std::vector<CoppUnit> units;
      for ( const Pipeline::PortRef& ingress : ingresses ) {
         for ( const UnitState& unit : state.units ) {
            if ( unit.unit == ingress.unit ) {
               units.push_back( coppUnit( model, agent.sw(), unit, ingress, explain ) );
            }
         }
      }
      if ( options.json ) {
         std::cout << coppJson( units ).dump( 2 ) << '\n';
      } else {
         printCopp( std::cout, units );
      }
      std::cout.flush();
      return agent.reportFaults();
   } );
   return finishRun( outcome, setup->plan );
}

}  // namespace FerroAcl
