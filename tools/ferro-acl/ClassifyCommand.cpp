// ferro-acl classify: bring up and install, then run every packet of a
// capture through the switch model and say what the system ACL does with it.
#include <unistd.h>

#include <iostream>

#include "pipeline/PacketSummary.h"
#include "tools/ferro-acl/ClassifyOutput.h"
#include "tools/ferro-acl/ExitStatus.h"
#include "tools/ferro-acl/NetworkOptions.h"
#include "tools/ferro-acl/PcapReader.h"
#include "tools/ferro-acl/RunOptions.h"
#include "tools/ferro-acl/Subcommands.h"

namespace FerroAcl {

namespace {

// "\r12000 packets" while a long capture is read. The child's stderr is a
// pipe to the parent, read only when the child ends, so the child writes to
// the copy of the terminal the parent handed it; -1 when stderr is no
// terminal. Short captures finish before the first line.
class Progress {
 public:
   explicit Progress( int terminal ) : terminal_( terminal ) {}

   void count( size_t packets ) {
      if ( terminal_ >= 0 && packets % kEvery == 0 ) {
         write( "\r" + std::to_string( packets ) + " packets" );
         shown_ = true;
      }
   }
   void clear() {
      if ( shown_ ) {
         write( "\r\033[K" );
      }
   }

 private:
   static constexpr size_t kEvery = 4096;
   void write( const std::string& text ) const {
      // Progress is a courtesy: a terminal that went away loses nothing.
      [[maybe_unused]] const ssize_t written =
          ::write( terminal_, text.data(), text.size() );
   }

   int terminal_;
   bool shown_ = false;
};

std::vector<RuleHit> ruleHits( const Pipeline::Classification& packet,
                               const Agent::Switch& sw ) {
   std::vector<RuleHit> hits;
   const std::pair<const char*, const Sim::StageResult&> stages[] = {
       { "vlan", packet.lookup.vlan }, { "ingress", packet.lookup.ingress } };
   for ( const auto& [stage, result] : stages ) {
      for ( const Sim::StageHit& hit : result.hits ) {
         EntryOwner owner = entryOwner( sw, packet.ingress.unit, U32( hit.entry ) );
         hits.push_back( RuleHit{ stage, std::move( owner.group ), hit.entry,
                                  std::move( owner.name ) } );
      }
   }
   return hits;
}

std::string summaryOf( const Pipeline::Classification& packet,
                       const CapturedPacket& captured ) {
   std::string summary = Pipeline::summarizePacket( packet.parsed, captured.bytes );
   if ( captured.bytes.size() < captured.originalLength ) {
      summary += " (" + std::to_string( captured.bytes.size() ) + " of " +
                 std::to_string( captured.originalLength ) + " bytes captured)";
   }
   return summary;
}

// In the child: every packet through the model, then the summary; a capture
// that cannot be read to its end is reported after what it held.
int classifyCapture( const std::string& path, const Pipeline::SwitchModel& model,
                     const Pipeline::PortRef& ingress, const Agent::Switch& sw,
                     ClassifyPrinter& printer, Progress& progress, bool explain ) {
   Result<PcapReader> reader = PcapReader::open( path );
   if ( !reader ) {
      std::cerr << "ferro-acl: " << path << ": " << reader.error() << '\n';
      return exitUsage;
   }
   while ( std::optional<CapturedPacket> captured = reader.value().next() ) {
      const Pipeline::Classification packet = model.classify( captured->bytes, ingress );
      PacketReport report{ reader.value().packetsRead(), summaryOf( packet, *captured ),
                           ruleHits( packet, sw ), packet.fate, std::nullopt };
      if ( explain ) {
         report.explain = explainPacket( sw, packet );
      }
      printer.add( report );
      progress.count( reader.value().packetsRead() );
   }
   progress.clear();
   printer.finish();
   std::cout.flush();
   if ( !reader.value().error().empty() ) {
      std::cerr << "ferro-acl: " << path << ": " << reader.value().error() << '\n';
      return exitUsage;
   }
   return exitOk;
}

}  // namespace

int classifyCommand( int argc, char** argv ) {
   CLI::App app(
       "Brings up a simulated switch and installs the system ACL as show does, then runs "
       "every packet of a capture through the switch: the VLAN and ingress "
       "field-processor "
       "stages of the ingress port's unit, with the metadata the chip's earlier stages "
       "give it. Prints per packet a summary, the winning entry of each stage and group, "
       "and its fate (CPU queue, trap or copy, forwarded or dropped, traffic class, "
       "class "
       "ids), then the packets per CPU queue and per rule.",
       "ferro-acl classify" );
   RunOptions options;
   NetworkOptions network;
   std::string capture;
   bool summaryOnly = false;
   bool explain = false;
   app.add_option( "--pcap", capture, "the capture, pcap or pcapng, of Ethernet frames" )
       ->required()
       ->type_name( "FILE" );
   addRunOptions( app, options );
   addNetworkOptions( app, network );
   app.add_flag(
       "--summary", summaryOnly,
       "print only the packets per CPU queue and per rule (for large captures)" );
   app.add_flag(
       "--explain", explain,
       "say why: per group the entry hit with each qualifier beside the packet's "
       "value, every entry looked at before it with the qualifier that failed, and "
       "where the fate came from" );
   app.footer(
       "Examples:\n"
       "  ferro-acl classify --pcap bgp.pcap\n"
       "  ferro-acl classify --pcap host.pcapng --router-mac any --self-ip 10.0.0.1\n"
       "  ferro-acl classify --pcap ptp.pcap --apply examples/ptp.scenario\n"
       "  ferro-acl classify --pcap big.pcap --summary --in-port 1:5\n"
       "  ferro-acl classify --pcap bgp.pcap --explain\n"
       "  ferro-acl classify --pcap bgp.pcap --json | jq '.packets[].fate.cpuQueue'\n"
       "Exit status: 0 every packet classified; 1 the library aborted or the run "
       "failed; 2 bad options, profile, scenario or capture (a capture that cannot be "
       "read to its end is reported after the packets before the fault)." );
   if ( std::optional<int> status = parseCommandLine( app, argc, argv ) ) {
      return *status;
   }
   const std::optional<AgentSetup> setup = prepareRun( options );
   if ( !setup ) {
      return exitUsage;
   }
   std::optional<NetworkSetup> networkSetup = prepareNetwork( network, *setup );
   if ( !networkSetup ) {
      return exitUsage;
   }
   if ( Result<PcapReader> reader = PcapReader::open( capture ); !reader ) {
      std::cerr << "ferro-acl: " << capture << ": " << reader.error() << '\n';
      return exitUsage;
   }
   // Progress would break up packet lines printed on the same terminal.
   const bool showProgress =
       ::isatty( STDERR_FILENO ) && ( summaryOnly || !::isatty( STDOUT_FILENO ) );
   const int terminal = showProgress ? ::dup( STDERR_FILENO ) : -1;
   const ChildOutcome outcome =
       runInstalled( *setup, [&]( SimulatedAgent& agent, const MessageChannel& ) {
          int status = exitOk;
          const Pipeline::SwitchModel model = startModel( *networkSetup, agent );
          ClassifyPrinter printer( std::cout,
                                   options.json ? ClassifyForm::Json : ClassifyForm::Text,
                                   summaryOnly );
          Progress progress( terminal );
          status = classifyCapture( capture, model, networkSetup->ingress, agent.sw(),
                                    printer, progress, explain );
          const int faults = agent.reportFaults();
          return status != exitOk ? status : faults;
       } );
   if ( terminal >= 0 ) {
      ::close( terminal );
   }
   return finishRun( outcome, setup->plan );
}

}  // namespace FerroAcl
