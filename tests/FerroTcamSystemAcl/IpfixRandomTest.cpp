// Random flow-tracking changes against a reference model of the IPFIX rule:
// the last reaction wins, and where reactions run in a map's order (catch-up
// walks, software-export rebuilds) the result of any order is accepted.
// FERRO_IPFIX_RANDOM_SEED and FERRO_IPFIX_RANDOM_CHANGES replay or resize a run.
#include <cstdlib>
#include <random>
#include <set>
#include <sstream>

#include "IpfixFixture.h"

namespace IpfixTest {
namespace {

using Ports = std::set<U16>;

// What a change may do to the rule: move the port to one of `ports` (none:
// the port stays), and whether it disables the entry.
struct Outcome {
   Ports ports;
   bool disables = false;
};
const Outcome unchanged{};
const Outcome reset{ { 4739 }, true };

uint64_t fromEnvironment( const char* name, uint64_t fallback ) {
   const char* value = std::getenv( name );
   return value ? std::strtoull( value, nullptr, 10 ) : fallback;
}

// A fresh exporter machine walks its IPv4 names, then its IPv6 names; the last
// name walked decides, and a name with an IPv4 collector takes its IPv4 port.
Ports exporterCatchUp( const ExporterConfig& e ) {
   Ports ports;
   const auto& v4 = e.collectorIpAndPort();
   const auto& v6 = e.collectorIp6AndPort();
   for ( const auto& [ name, value ] : v6 ) {
      ports.insert( v4.count( name ) ? v4.at( name ).port : value.port );
   }
   if ( v6.empty() ) {
      for ( const auto& [ name, value ] : v4 ) {
         ports.insert( value.port );
      }
   }
   return ports;
}

Outcome localCollector( const LocalCollectorConfig* local ) {
   return local && local->add() ? Outcome{ { local->port() }, false } : reset;
}

// A fresh tracker machine's catch-up.
Outcome trackerCatchUp( const FtConfig& ft, bool swExport ) {
   if ( swExport ) {
      return ft.localCollectorConfig() ? localCollector( ft.localCollectorConfig().get() )
                                       : unchanged;
   }
   Outcome outcome;
   for ( const auto& exporter : ft.expConfig() ) {
      outcome.ports.merge( exporterCatchUp( *exporter.second ) );
   }
   return outcome;
}

class IpfixRandomTest : public IpfixFixture {
  protected:
   U16 port() { return ports_[ random_() % 5 ]; }
   std::string name() { return std::string( 1, char( 'a' + random_() % 3 ) ); }
   bool coin() { return random_() % 2; }

   void collectorsIs( ExporterConfig& e ) {
      for ( int i = random_() % 3; i > 0; --i ) {
         coin() ? e.collectorIpAndPortIs( name(), { 1, port() } )
                : e.collectorIp6AndPortIs( name(), { {}, port() } );
      }
   }
   FtConfig::Ptr newTracker() {
      auto ft = Lumo::makePtr<FtConfig>();
      for ( int i = random_() % 3; i > 0; --i ) {
         collectorsIs( *exporterIs( ft, name() ) );
      }
      if ( coin() ) {
         ft->localCollectorConfigIs( Lumo::makePtr<LocalCollectorConfig>( port(), coin() ) );
      }
      return ft;
   }
   // One random change, applied; what the model expects of it.
   Outcome change( std::string& what );

   std::mt19937_64 random_;
   const U16 ports_[ 5 ] = { 2055, 4739, 4740, 6343, 9995 };
};

Outcome IpfixRandomTest::change( std::string& what ) {
   const bool sw = config->swExport();
   const std::string t = name(), e = name(), c = name();
   const auto& trackers = config->hwFtConfig();
   const FtConfig::Ptr ft = trackers.count( t ) ? trackers.at( t ) : nullptr;
   const unsigned kind = random_() % 10;
   what = "change " + std::to_string( kind ) + " tracker " + t + " exporter " + e +
          " collector " + c;
   if ( kind == 0 || ( !ft && kind > 2 ) ) {  // a tracker is (re)built
      config->hwFtConfigIs( t, newTracker() );
      Outcome o = trackerCatchUp( *trackers.at( t ), sw );
      if ( ft && o.ports.empty() ) {
         o.ports = { 4739 };
      }
      o.disables |= bool( ft );
      return o;
   }
   if ( kind == 1 ) {
      config->hwFtConfigDel( t );
      return ft ? reset : unchanged;
   }
   if ( kind == 2 ) {
      config->swExportIs( coin() );
      Outcome o{ {}, !trackers.empty() };
      for ( const auto& tracker : trackers ) {
         const Outcome one = trackerCatchUp( *tracker.second, config->swExport() );
         o.ports.merge( one.ports.empty() ? Ports{ 4739 } : Ports( one.ports ) );
      }
      return o;
   }
   if ( kind == 3 ) {  // the local collector is replaced, removed, or changed
      const LocalCollectorConfig::Ptr old = ft->localCollectorConfig();
      const unsigned how = random_() % 4;
      if ( how == 0 && old ) {
         coin() ? old->addIs( coin() ) : old->portIs( port() );
      } else {
         ft->localCollectorConfigIs(
            how == 1 ? nullptr : Lumo::makePtr<LocalCollectorConfig>( port(), coin() ) );
         if ( ft->localCollectorConfig() == old ) {
            return unchanged;
         }
      }
      return sw ? localCollector( ft->localCollectorConfig().get() ) : unchanged;
   }
   const auto& exporters = ft->expConfig();
   const ExporterConfig::Ptr exp = exporters.count( e ) ? exporters.at( e ) : nullptr;
   if ( kind == 4 || ( !exp && kind > 5 ) ) {  // an exporter is set, maybe unchanged
      const ExporterConfig::Ptr next = exp && coin() ? exp : Lumo::makePtr<ExporterConfig>();
      if ( next != exp ) {
         collectorsIs( *next );
      }
      ft->expConfigIs( e, next );
      return sw || next == exp ? unchanged : Outcome{ exporterCatchUp( *next ) };
   }
   if ( kind == 5 ) {
      ft->expConfigDel( e );
      return unchanged;
   }
   const auto& v4 = exp->collectorIpAndPort();
   const auto& v6 = exp->collectorIp6AndPort();
   if ( kind == 6 || kind == 7 ) {
      const U16 p = port();
      kind == 6 ? exp->collectorIpAndPortIs( c, { 1, p } )
                : exp->collectorIp6AndPortIs( c, { {}, p } );
      return sw ? unchanged : Outcome{ { v4.count( c ) ? v4.at( c ).port : p } };
   }
   // A removed collector falls back on the other family's collector of its name.
   const bool existed = kind == 8 ? v4.count( c ) : v6.count( c );
   kind == 8 ? exp->collectorIpAndPortDel( c ) : exp->collectorIp6AndPortDel( c );
   if ( sw || !existed ) {
      return unchanged;
   }
   if ( kind == 8 ) {
      return v6.count( c ) ? Outcome{ { v6.at( c ).port } } : reset;
   }
   return v4.count( c ) ? Outcome{ { v4.at( c ).port } } : reset;
}

TEST_F( IpfixRandomTest, EveryUnitFollowsTheLastReaction ) {
   const uint64_t seed = fromEnvironment( "FERRO_IPFIX_RANDOM_SEED", 20261122 );
#if defined( __SANITIZE_ADDRESS__ )
   const uint64_t changes = fromEnvironment( "FERRO_IPFIX_RANDOM_CHANGES", 20000 );
#else
   const uint64_t changes = fromEnvironment( "FERRO_IPFIX_RANDOM_CHANGES", 100000 );
#endif
   random_.seed( seed );
   Lumo::traceHandle( "FerroTcamSystemAclHelper" ).maskIs( 0 );
   chip().journalEnabledIs( false );
   RuleState model = rule( 0 );
   std::string what;
   for ( uint64_t step = 0; step < changes; ++step ) {
      const Outcome expected = change( what );
      const RuleState now = rule( 0 );
      const bool portOk = expected.ports.empty() ? now.port == model.port
                                                 : expected.ports.count( now.port ) != 0;
      if ( !portOk || !now.installed || now.enabled != ( model.enabled && !expected.disables ) ||
           rule( 1 ) != now ) {
         std::ostringstream ports;
         for ( U16 p : expected.ports ) {
            ports << p << " ";
         }
         FAIL() << "seed " << seed << " step " << step << " (" << what << "): was " << model
                << ", unit 0 " << now << ", unit 1 " << rule( 1 ) << "; ports expected "
                << ports.str() << ( expected.disables ? "and disabled" : "" );
      }
      model = now;
   }
}

}  // namespace
}  // namespace IpfixTest
