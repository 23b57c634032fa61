// ferro-acl audit: bring up and install, then ask of every installed, enabled
// entry of every unit whether some packet hits it, and say what stands in the
// way of those no packet hits.
#include <arpa/inet.h>

#include <iostream>

#include "tools/ferro-acl/Audit.h"
#include "tools/ferro-acl/ExitStatus.h"
#include "tools/ferro-acl/JsonText.h"
#include "tools/ferro-acl/RunOptions.h"
#include "tools/ferro-acl/Subcommands.h"

namespace FerroAcl {

namespace {

std::string ipv4Text( uint32_t address ) {
   char text[INET_ADDRSTRLEN];
   const in_addr a{ htonl( address ) };
   return inet_ntop( AF_INET, &a, text, sizeof text );
}

std::string ipv6Text( const std::array<uint8_t, 16>& address ) {
   char text[INET6_ADDRSTRLEN];
   return inet_ntop( AF_INET6, address.data(), text, sizeof text );
}

std::string macText( const std::array<uint8_t, 6>& mac ) {
   char text[18];
   std::snprintf( text, sizeof text, "%02x:%02x:%02x:%02x:%02x:%02x", mac[0], mac[1],
                  mac[2], mac[3], mac[4], mac[5] );
   return text;
}

// Every field of the witness, as the field processor sees the packet.
Json witnessJson( const Sim::PacketFields& p ) {
   return Json{ { "inPort", p.inPort },
                { "srcModid", p.srcModid },
                { "dstModid", p.dstModid },
                { "dstPort", p.dstPort },
                { "dstMac", macText( p.dstMac ) },
                { "etherType", p.etherType },
                { "ipType", Sim::FieldProcessor::ipTypeName( p.ipType ) },
                { "dstIp", ipv4Text( p.dstIp ) },
                { "dstIp6", ipv6Text( p.dstIp6 ) },
                { "ipProtocol", p.ipProtocol },
                { "extensionHeaderType", p.extensionHeaderType },
                { "l4SrcPort", p.l4SrcPort },
                { "l4DstPort", p.l4DstPort },
                { "ttl", p.ttl },
                { "tos", p.tos },
                { "outerVlanPri", p.outerVlanPri },
                { "drop", p.drop },
                { "stpState", p.stpState },
                { "higig", p.higig },
                { "l2CacheHit", p.l2CacheHit },
                { "l3Routable", p.l3Routable },
                { "packetRes", Sim::FieldProcessor::packetResName( p.packetRes ) },
                { "interfaceClassL2", p.interfaceClassL2 },
                { "interfaceClassVPort", p.interfaceClassVPort },
                { "dstClassL2", p.dstClassL2 },
                { "dstClassL3", p.dstClassL3 },
                { "dstClassField", p.dstClassField },
                { "dstL3EgressNextHop", p.dstL3EgressNextHop } };
}

Json findingJson( const AuditFinding& f ) {
   return Json{ { "id", f.id },
                { "name", f.name },
                { "group", f.group },
                { "stage", f.stage },
                { "reachable", f.reachable() },
                { "witness", f.reachable() ? witnessJson( *f.witness ) : Json() },
                { "shadowedBy", f.shadowedBy },
                { "contradictions", f.contradictions },
                { "byDesign", f.byDesign ? Json( f.byDesign ) : Json() } };
}

// Why an entry has no packet, in words.
std::string obstacle( const AuditFinding& f ) {
   if ( !f.contradictions.empty() ) {
      std::string text = "its own qualifiers exclude each other on ";
      for ( size_t i = 0; i < f.contradictions.size(); ++i ) {
         text += ( i ? ", " : "" ) + f.contradictions[i];
      }
      return text;
   }
   if ( !f.shadowedBy.empty() ) {
      std::string text = "shadowed by ";
      for ( size_t i = 0; i < f.shadowedBy.size(); ++i ) {
         text += ( i ? ", \"" : "\"" ) + f.shadowedBy[i] + "\"";
      }
      return text;
   }
   return "its witness did not hit it";
}

void printUnit( std::ostream& out, U16 unit, const std::vector<AuditFinding>& findings ) {
   size_t reachable = 0, byDesign = 0, unexplained = 0;
   for ( const AuditFinding& f : findings ) {
      reachable += f.reachable();
      byDesign += !f.reachable() && f.byDesign;
      unexplained += f.unexplained();
   }
   out << "unit " << unit << ": " << findings.size() << " entries, " << reachable
       << " reachable, " << byDesign << " shadowed by design, " << unexplained
       << " unexplained\n";
   for ( const AuditFinding& f : findings ) {
      if ( f.reachable() && f.byDesign ) {
         out << "  " << f.id << " \"" << f.name
             << "\": reachable, although listed as shadowed by design\n";
      } else if ( !f.reachable() ) {
         out << "  " << f.id << " \"" << f.name << "\": " << obstacle( f )
             << ( f.byDesign ? std::string( "; by design: " ) + f.byDesign
                             : std::string( "; NOT EXPECTED" ) )
             << '\n';
      }
   }
}

}  // namespace

int auditCommand( int argc, char** argv ) {
   CLI::App app(
       "Brings up a simulated switch and installs the system ACL as show does, then, for "
       "every installed and enabled entry of every unit, builds a witness packet from "
       "the "
       "entries' data and masks (one that matches the entry and no entry its group looks "
       "at first) and looks it up to confirm the hit. Entries without a witness are "
       "listed with the entries that shadow them or their own contradicting qualifiers; "
       "those shadowed by design say why.",
       "ferro-acl audit" );
   RunOptions options;
   addRunOptions( app, options );
   app.footer(
       "Examples:\n"
       "  ferro-acl audit                            the default two-unit switch\n"
       "  ferro-acl audit --profile profiles/th3-vlan-class.json --json\n"
       "Exit status: 0 every entry has a witness or is shadowed by design; 1 an "
       "entry is shadowed or unmatchable and not by design, or the library "
       "aborted; 2 bad options or profile." );
   if ( std::optional<int> status = parseCommandLine( app, argc, argv ) ) {
      return *status;
   }
   const std::optional<AgentSetup> setup = prepareRun( options );
   if ( !setup ) {
      return exitUsage;
   }
   const ChildOutcome outcome = runInstalled( *setup, [&]( SimulatedAgent& agent,
                                                           const MessageChannel& ) {
      int status = exitOk;
      Json units = Json::array();
      for ( const Agent::UnitSpec& spec : setup->config.units ) {
         const std::vector<AuditFinding> findings = auditUnit( agent.sw(), spec.unit );
         if ( std::any_of( findings.begin(), findings.end(),
                           []( const AuditFinding& f ) { return f.unexplained(); } ) ) {
            status = exitFailure;
         }
         if ( options.json ) {
            Json entries = Json::array();
            for ( const AuditFinding& f : findings ) {
               entries.push_back( findingJson( f ) );
            }
            units.push_back( Json{ { "unit", spec.unit }, { "entries", entries } } );
         } else {
            printUnit( std::cout, spec.unit, findings );
         }
      }
      if ( options.json ) {
         std::cout << Json{ { "units", units } }.dump( 2 ) << '\n';
      }
      std::cout.flush();
      return std::max( status, agent.reportFaults() );
   } );
   return finishRun( outcome, setup->plan );
}

}  // namespace FerroAcl
