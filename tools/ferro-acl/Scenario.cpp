#include "tools/ferro-acl/Scenario.h"

#include <arpa/inet.h>

#include <charconv>
#include <set>
#include <sstream>

namespace FerroAcl {

namespace {

using Lamo::L2Pt::L2PtProtocol;

struct ParseError {
   std::string message;
};

// The tokens of one line and where the parser stands in them.
class Line {
  public:
   Line( std::vector<std::string> tokens, const std::string& where )
         : tokens_( std::move( tokens ) ), where_( where ) {}

   bool atEnd() const { return at_ >= tokens_.size(); }
   const std::string* peek() const { return atEnd() ? nullptr : &tokens_[ at_ ]; }
   const std::string* peekLast() const { return at_ == 0 ? nullptr : &tokens_[ at_ - 1 ]; }
   // The next token, which must be one of `words`; its index among them.
   size_t oneOf( std::initializer_list<const char*> words ) {
      std::string expected;
      size_t i = 0;
      for ( const char* word : words ) {
         if ( !atEnd() && tokens_[ at_ ] == word ) {
            ++at_;
            return i;
         }
         expected += std::string( i == 0 ? "" : i + 1 == words.size() ? " or " : ", " ) +
                     "'" + word + "'";
         ++i;
      }
      fail( expected );
   }
   bool onOff() { return oneOf( { "on", "off" } ) == 0; }
   // Steps over a token peek() has shown.
   void skip() { ++at_; }
   // The next token, whatever it is; `what` describes it when missing.
   const std::string& any( const std::string& what ) {
      if ( atEnd() ) {
         fail( what );
      }
      return tokens_[ at_++ ];
   }
   U32 number( const std::string& what, U32 max ) {
      const std::string& token = any( what );
      U32 value = 0;
      const auto [ end, ec ] = std::from_chars( token.data(), token.data() + token.size(), value );
      if ( ec != std::errc() || end != token.data() + token.size() || value > max ) {
         failLast( what );
      }
      return value;
   }
   void end() {
      if ( !atEnd() ) {
         fail( "end of line" );
      }
   }
   [[noreturn]] void fail( const std::string& expected ) const {
      const std::string found =
         atEnd() ? "unexpected end of line" : "unexpected '" + tokens_[ at_ ] + "'";
      throw ParseError{ where_ + ": " + found + ", expected " + expected };
   }
   // Fails naming the token just taken.
   [[noreturn]] void failLast( const std::string& expected ) {
      --at_;
      fail( expected );
   }

  private:
   std::vector<std::string> tokens_;
   std::string where_;
   size_t at_ = 0;
};

std::vector<std::string> tokensOf( const std::string& text ) {
   std::istringstream in( text );
   std::vector<std::string> tokens;
   for ( std::string token; in >> token; ) {
      tokens.push_back( token );
   }
   return tokens;
}

std::optional<Wirex::EthAddr> macOf( const std::string& text ) {
   unsigned b[ 6 ];
   char tail;
   if ( text.size() != 17 || std::sscanf( text.c_str(), "%2x:%2x:%2x:%2x:%2x:%2x%c", &b[ 0 ], &b[ 1 ],
                                          &b[ 2 ], &b[ 3 ], &b[ 4 ], &b[ 5 ], &tail ) != 6 ) {
      return std::nullopt;
   }
   return Wirex::EthAddr( U8( b[ 0 ] ), U8( b[ 1 ] ), U8( b[ 2 ] ), U8( b[ 3 ] ), U8( b[ 4 ] ),
                          U8( b[ 5 ] ) );
}

// UNIT:PORT
void unitPort( Line& line, ScenarioEvent& event ) {
   const std::string& token = line.any( "UNIT:PORT" );
   const size_t colon = token.find( ':' );
   U32 unit = 0, port = 0;
   auto whole = [ & ]( const char* first, const char* last, U32& value ) {
      const auto [ end, ec ] = std::from_chars( first, last, value );
      return ec == std::errc() && end == last && first != last && value <= 0xFFFF;
   };
   if ( colon == std::string::npos ||
        !whole( token.data(), token.data() + colon, unit ) ||
        !whole( token.data() + colon + 1, token.data() + token.size(), port ) ) {
      line.failLast( "UNIT:PORT" );
   }
   event.targetUnit = U16( unit );
   event.targetPort = U16( port );
}

// ADDRESS:PORT, the IPv6 address in brackets.
void collectorAddress( Line& line, ScenarioEvent& event ) {
   const std::string& token = line.any( "ADDRESS:PORT or 'remove'" );
   std::string address, port;
   if ( !token.empty() && token[ 0 ] == '[' ) {
      const size_t close = token.find( "]:" );
      if ( close != std::string::npos ) {
         address = token.substr( 1, close - 1 );
         port = token.substr( close + 2 );
      }
      event.ipv6 = true;
   } else if ( const size_t colon = token.rfind( ':' ); colon != std::string::npos ) {
      address = token.substr( 0, colon );
      port = token.substr( colon + 1 );
   }
   U32 portValue = 0;
   const auto [ end, ec ] = std::from_chars( port.data(), port.data() + port.size(), portValue );
   bool ok = ec == std::errc() && end == port.data() + port.size() && !port.empty() &&
             portValue <= 0xFFFF;
   if ( event.ipv6 ) {
      ok = ok && inet_pton( AF_INET6, address.c_str(), event.ip6.data() ) == 1;
   } else {
      in_addr v4{};
      ok = ok && inet_pton( AF_INET, address.c_str(), &v4 ) == 1;
      event.ipv4 = ntohl( v4.s_addr );
   }
   if ( !ok ) {
      line.failLast( "ADDRESS:PORT (a.b.c.d:PORT or [IPv6]:PORT) or 'remove'" );
   }
   event.collectorPort = U16( portValue );
}

// What the scenario has created so far, so that a line naming a tracker or
// exporter that does not exist is refused before anything runs.
struct Names {
   std::set<std::string> trackers;
   std::set<std::string> exporters;  // "T/E"
};

// T/E/C split into at least `parts` names.
std::vector<std::string> pathOf( Line& line, size_t parts, const char* what ) {
   const std::string& token = line.any( what );
   std::vector<std::string> names;
   size_t at = 0;
   for ( size_t slash; ( slash = token.find( '/', at ) ) != std::string::npos; at = slash + 1 ) {
      names.push_back( token.substr( at, slash - at ) );
   }
   names.push_back( token.substr( at ) );
   bool ok = names.size() == parts;
   for ( const std::string& name : names ) {
      ok = ok && !name.empty();
   }
   if ( !ok ) {
      line.failLast( what );
   }
   return names;
}

// Called right after the name was taken, so that an error names it.
void knownTracker( Line& line, const Names& names, const std::string& tracker ) {
   if ( !names.trackers.count( tracker ) ) {
      line.failLast( "a tracker added earlier ('ipfix tracker " + tracker + " add')" );
   }
}

void ipfix( Line& line, ScenarioEvent& event, Names& names ) {
   switch ( line.oneOf( { "sw-export", "tracker", "exporter", "collector", "local-collector" } ) ) {
      case 0:
         event.kind = EventKind::ipfixSwExport;
         event.on = line.onOff();
         return;
      case 1: {
         event.kind = EventKind::ipfixTracker;
         event.tracker = pathOf( line, 1, "a tracker name T" )[ 0 ];
         if ( line.peek() && *line.peek() == "remove" ) {
            knownTracker( line, names, event.tracker );
         }
         event.on = line.oneOf( { "add", "remove" } ) == 0;
         if ( event.on ) {
            names.trackers.insert( event.tracker );
         } else {
            names.trackers.erase( event.tracker );
            std::erase_if( names.exporters, [ & ]( const std::string& key ) {
               return key.rfind( event.tracker + "/", 0 ) == 0;
            } );
         }
         return;
      }
      case 2: {
         event.kind = EventKind::ipfixExporter;
         const auto path = pathOf( line, 2, "TRACKER/EXPORTER" );
         event.tracker = path[ 0 ];
         event.exporter = path[ 1 ];
         knownTracker( line, names, event.tracker );
         event.on = line.oneOf( { "add", "remove" } ) == 0;
         const std::string key = event.tracker + "/" + event.exporter;
         if ( event.on ) {
            names.exporters.insert( key );
         } else {
            names.exporters.erase( key );
         }
         return;
      }
      case 3: {
         event.kind = EventKind::ipfixCollector;
         const auto path = pathOf( line, 3, "TRACKER/EXPORTER/COLLECTOR" );
         event.tracker = path[ 0 ];
         event.exporter = path[ 1 ];
         event.collector = path[ 2 ];
         if ( !names.exporters.count( event.tracker + "/" + event.exporter ) ) {
            line.failLast( "an exporter added earlier ('ipfix exporter " + event.tracker + "/" +
                           event.exporter + " add')" );
         }
         if ( line.peek() && *line.peek() == "remove" ) {
            line.skip();
            event.on = false;
         } else {
            collectorAddress( line, event );
            event.on = true;
         }
         return;
      }
      default: {
         event.kind = EventKind::ipfixLocalCollector;
         event.tracker = pathOf( line, 1, "a tracker name T" )[ 0 ];
         knownTracker( line, names, event.tracker );
         line.oneOf( { "port" } );
         event.number = line.number( "a port number 0..65535", 0xFFFF );
         line.oneOf( { "add" } );
         event.on = line.onOff();
         return;
      }
   }
}

void parseEvent( Line& line, ScenarioEvent& event, Names& names ) {
   if ( line.peek() && *line.peek() == "unit" ) {
      line.skip();
      event.unit = U16( line.number( "a unit number", 0xFFFF ) );
   }
   static const std::initializer_list<const char*> perUnit = {
      "ptp", "pim", "ll-mcast", "eapol", "verify" };
   static const std::initializer_list<const char*> all = {
      "ptp", "pim", "ll-mcast", "eapol", "verify", "vxlan", "port", "l2pf", "ipfix" };
   switch ( line.oneOf( event.unit ? perUnit : all ) ) {
      case 0:
         if ( line.oneOf( { "mode", "tap-aggregation" } ) == 0 ) {
            event.kind = EventKind::ptpMode;
            event.number = line.number( "a PTP mode 0..7", 7 );
            if ( !line.atEnd() ) {
               line.oneOf( { "flag" } );
               event.flag = line.onOff();
            }
         } else {
            event.kind = EventKind::ptpTapAggregation;
            event.on = line.onOff();
         }
         break;
      case 1:
         event.kind = EventKind::pimCopy;
         line.oneOf( { "copy" } );
         event.on = line.onOff();
         break;
      case 2:
         event.kind = EventKind::llMcastCancel;
         line.oneOf( { "cancel" } );
         event.on = line.onOff();
         break;
      case 3:
         if ( line.oneOf( { "mac", "enable", "disable" } ) == 0 ) {
            event.kind = EventKind::eapolMac;
            const std::string& text = line.any( "a MAC address xx:xx:xx:xx:xx:xx" );
            const std::optional<Wirex::EthAddr> mac = macOf( text );
            if ( !mac ) {
               line.failLast( "a MAC address xx:xx:xx:xx:xx:xx" );
            }
            event.mac = *mac;
         } else {
            event.kind = EventKind::eapolEnable;
            event.on = *line.peekLast() == "enable";
         }
         break;
      case 4:
         event.kind = EventKind::verify;
         break;
      case 5:
         event.kind = EventKind::vxlan;
         event.on = line.onOff();
         break;
      case 6:
         event.kind = EventKind::port;
         event.on = line.oneOf( { "add", "remove" } ) == 0;
         unitPort( line, event );
         if ( !line.atEnd() ) {
            line.oneOf( { "mesa" } );
            event.mesa = true;
         }
         break;
      case 7: {
         event.kind = EventKind::l2pf;
         static const L2PtProtocol protocols[] = { L2PtProtocol::lacp, L2PtProtocol::lldp,
                                                   L2PtProtocol::stp, L2PtProtocol::microBfd };
         event.protocol = protocols[ line.oneOf( { "lacp", "lldp", "bpdu", "micro-bfd" } ) ];
         unitPort( line, event );
         switch ( line.oneOf( { "all", "vxlan-decap", "off" } ) ) {
            case 0:
               event.traffic = Lamo::L2Pt::l2PtTrafficTypeAll;
               break;
            case 1:
               event.traffic = Lamo::L2Pt::l2PtTrafficTypeVxlanDecap;
               break;
            default:
               event.traffic = std::nullopt;
         }
         break;
      }
      default:
         ipfix( line, event, names );
   }
   line.end();
}

}  // namespace

Result<std::vector<ScenarioEvent>> parseScenario( const std::string& text,
                                                  const std::string& file ) {
   std::vector<ScenarioEvent> events;
   Names names;
   std::istringstream in( text );
   int number = 0;
   for ( std::string raw; std::getline( in, raw ); ) {
      ++number;
      const std::string content = raw.substr( 0, raw.find( '#' ) );
      std::vector<std::string> tokens = tokensOf( content );
      if ( tokens.empty() ) {
         continue;
      }
      ScenarioEvent event;
      event.line = number;
      for ( const std::string& token : tokens ) {
         event.text += ( event.text.empty() ? "" : " " ) + token;
      }
      Line line( std::move( tokens ), file + ":" + std::to_string( number ) );
      try {
         parseEvent( line, event, names );
      } catch ( const ParseError& e ) {
         return Error{ e.message };
      }
      events.push_back( std::move( event ) );
   }
   return events;
}

}  // namespace FerroAcl
