#include <gtest/gtest.h>

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "platform/agent/HwFlowTracking.h"

using namespace HwFlowTracking;

namespace {

using Heard = std::pair<Lumo::AttributeId, std::optional<std::string>>;

struct Listener : Lumo::Reactor {
   void onAttributeChange( const Lumo::Notification& n ) override {
      heard.emplace_back( n.attribute, n.key ? std::optional( *n.key ) : std::nullopt );
   }
   std::vector<Heard> heard;
};

}  // namespace

// Each row changes one object and names what its publisher must say; the
// state is checked alongside, so a setter that notifies but forgets fails too.
TEST( HwFlowTrackingTest, EveryChangeIsPublishedWithItsKey ) {
   auto config = Lumo::makePtr<Config>();
   auto ft = Lumo::makePtr<FtConfig>();
   auto exporter = Lumo::makePtr<ExporterConfig>();
   auto local = Lumo::makePtr<LocalCollectorConfig>( 4739, false );
   Lumo::Publisher &cp = config->publisher(), &fp = ft->publisher();
   Lumo::Publisher &ep = exporter->publisher(), &lp = local->publisher();
   using E = ExporterConfig;
   using L = LocalCollectorConfig;
   const struct {
      const char* row;
      Lumo::Publisher& publisher;
      std::function<void()> change;
      std::vector<Heard> expected;
      std::function<bool()> stored;
   } rows[] = {
      { "swExport", cp, [ & ] { config->swExportIs( true ); },
        { { Config::attrSwExport, {} } }, [ & ] { return config->swExport(); } },
      { "hwFtConfig", cp, [ & ] { config->hwFtConfigIs( "ipfix", ft ); },
        { { Config::attrHwFtConfig, "ipfix" } },
        [ & ] { return config->hwFtConfig().at( "ipfix" ) == ft; } },
      { "expConfig", fp, [ & ] { ft->expConfigIs( "exp", exporter ); },
        { { FtConfig::attrExpConfig, "exp" } },
        [ & ] { return ft->expConfig().at( "exp" ) == exporter; } },
      { "localCollector", fp, [ & ] { ft->localCollectorConfigIs( local ); },
        { { FtConfig::attrLocalCollectorConfig, {} } },
        [ & ] { return ft->localCollectorConfig() == local; } },
      { "port", lp, [ & ] { local->portIs( 2055 ); }, { { L::attrConfig, {} } },
        [ & ] { return local->port() == 2055; } },
      { "add", lp, [ & ] { local->addIs( true ); }, { { L::attrConfig, {} } },
        [ & ] { return local->add(); } },
      { "v4", ep, [ & ] { exporter->collectorIpAndPortIs( "c1", { 0x0a000001, 4739 } ); },
        { { E::attrCollectorIpAndPort, "c1" } },
        [ & ] { return exporter->collectorIpAndPort().at( "c1" ).port == 4739; } },
      { "v6", ep, [ & ] { exporter->collectorIp6AndPortIs( "c2", { {}, 4740 } ); },
        { { E::attrCollectorIp6AndPort, "c2" } },
        [ & ] { return exporter->collectorIp6AndPort().at( "c2" ).port == 4740; } },
      { "v4 delete", ep, [ & ] { exporter->collectorIpAndPortDel( "c1" ); },
        { { E::attrCollectorIpAndPort, "c1" } },
        [ & ] { return exporter->collectorIpAndPort().empty(); } },
      // Deleting a key that is not there says nothing and touches nothing.
      { "absent keys", ep, [ & ] { exporter->collectorIpAndPortDel( "c1" ),
                                   exporter->collectorIp6AndPortDel( "c1" ); },
        {}, [ & ] { return exporter->collectorIp6AndPort().size() == 1; } },
      { "hwFt delete", cp, [ & ] { config->hwFtConfigDel( "ipfix" ); },
        { { Config::attrHwFtConfig, "ipfix" } },
        [ & ] { return config->hwFtConfig().empty(); } },
   };
   for ( const auto& row : rows ) {
      SCOPED_TRACE( row.row );
      Listener listener;
      listener.notifierIs( &row.publisher );
      row.change();
      EXPECT_EQ( listener.heard, row.expected );
      EXPECT_TRUE( row.stored() );
   }
}

// The caller may name the key to delete by the map's own copy of it, which the
// erase frees: the notification must still carry the key intact (the sanitizer
// preset reports the read of a freed key).
TEST( HwFlowTrackingTest, DeletingByTheMapsOwnKeyAnnouncesThatKey ) {
   const std::string name = "a collector name too long for the short-string buffer";
   auto exporter = Lumo::makePtr<ExporterConfig>();
   exporter->collectorIp6AndPortIs( name, { {}, 4740 } );
   Listener listener;
   listener.notifierIs( &exporter->publisher() );
   exporter->collectorIp6AndPortDel( exporter->collectorIp6AndPort().begin()->first );
   EXPECT_EQ( listener.heard,
              ( std::vector<Heard>{ { ExporterConfig::attrCollectorIp6AndPort, name } } ) );
   EXPECT_TRUE( exporter->collectorIp6AndPort().empty() );
}
