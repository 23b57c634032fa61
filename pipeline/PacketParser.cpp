// The parse entry point, the shared parse state and the names of layers.
#include "pipeline/PacketParser.h"

#include <algorithm>

#include "pipeline/ParserContext.h"

namespace Pipeline {

namespace detail {

bool ParserContext::fits( Layer layer, const char* what, size_t offset, size_t length,
                          size_t end ) {
   size_t available = offset < end ? end - offset : 0;
   if ( available >= length ) {
      return true;
   }
   truncated( layer, std::string( what ) + ": " + std::to_string( available ) + " of " +
                        std::to_string( length ) + " bytes" );
   return false;
}

// A later report comes from an inner header and says more precisely where the
// frame went wrong than an outer length check did, so it replaces it.
void ParserContext::truncated( Layer layer, std::string reason ) {
   out_.status = { ParseOutcome::Truncated, layer, std::move( reason ) };
}

void ParserContext::malformed( Layer layer, std::string reason ) {
   out_.status = { ParseOutcome::Malformed, layer, std::move( reason ) };
}

void ParserContext::found( Layer layer, size_t offset, size_t length ) {
   out_.layers.push_back( { layer, offset, length } );
}

}  // namespace detail

ParsedPacket parsePacket( std::span<const uint8_t> frame ) {
   ParsedPacket packet;
   // The chip sees no TTL in a packet without an IP header; 64 is only the
   // simulator's convenience default for hand-made packets.
   packet.fields.ttl = 0;
   detail::ParserContext context( frame, packet );
   detail::parseEthernet( context );
   return packet;
}

bool ParsedPacket::hasLayer( Layer layer ) const {
   return std::any_of( layers.begin(), layers.end(),
                       [ layer ]( const LayerSpan& span ) { return span.layer == layer; } );
}

const char* layerName( Layer layer ) {
   switch ( layer ) {
      case Layer::Ethernet:
         return "Ethernet";
      case Layer::Vlan:
         return "802.1Q";
      case Layer::Llc:
         return "LLC";
      case Layer::Snap:
         return "SNAP";
      case Layer::Stp:
         return "STP";
      case Layer::Arp:
         return "ARP";
      case Layer::Ipv4:
         return "IPv4";
      case Layer::Ipv6:
         return "IPv6";
      case Layer::Ipv6HopByHop:
         return "IPv6 hop-by-hop";
      case Layer::Ipv6Routing:
         return "IPv6 routing";
      case Layer::Ipv6Fragment:
         return "IPv6 fragment";
      case Layer::Ipv6DestinationOptions:
         return "IPv6 destination options";
      case Layer::Ipv6Mobility:
         return "IPv6 mobility";
      case Layer::Ah:
         return "AH";
      case Layer::Esp:
         return "ESP";
      case Layer::Wesp:
         return "WESP";
      case Layer::Tcp:
         return "TCP";
      case Layer::Udp:
         return "UDP";
      case Layer::Icmp:
         return "ICMP";
      case Layer::Icmpv6:
         return "ICMPv6";
      case Layer::Gre:
         return "GRE";
      case Layer::Isis:
         return "IS-IS";
      case Layer::Ptp:
         return "PTP";
      case Layer::SlowProtocol:
         return "slow protocol";
      case Layer::Lldp:
         return "LLDP";
      case Layer::Eapol:
         return "EAPoL";
   }
   return "?";
}

const char* outcomeName( ParseOutcome outcome ) {
   switch ( outcome ) {
      case ParseOutcome::Complete:
         return "complete";
      case ParseOutcome::Truncated:
         return "truncated";
      case ParseOutcome::Malformed:
         return "malformed";
   }
   return "?";
}

}  // namespace Pipeline
