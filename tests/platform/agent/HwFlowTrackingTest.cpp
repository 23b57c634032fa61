#include <gtest/gtest.h>

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "platform/agent/HwFlowTracking.h"

using namespace HwFlowTracking;

namespace {

struct Heard {
   Lumo::AttributeId attribute;
   std::optional<std::string> key;
   bool operator==( const Heard& ) const = default;
};

class Listener : public Lumo::Reactor {
  public:
   void onAttributeChange( const Lumo::Notification& n ) override {
      heard.push_back( { n.attribute, n.key ? std::optional<std::string>( *n.key )
                                            : std::nullopt } );
   }
   std::vector<Heard> heard;
};

}  // namespace

// Each row changes one object and names what its publisher must say; the
// state is checked alongside, so a setter that notifies but forgets fails too.
TEST( HwFlowTrackingTest, EveryChangeIsPublished ) {
   auto config = Lumo::makePtr<Config>();
   auto ft = Lumo::makePtr<FtConfig>();
   auto exporter = Lumo::makePtr<ExporterConfig>();
   auto local = Lumo::makePtr<LocalCollectorConfig>( 4739, false );
   const struct {
      const char* row;
      Lumo::Publisher& publisher;
      std::function<void()> change;
      Heard expected;
      std::function<bool()> stored;
   } rows[] = {
      { "swExport", config->publisher(), [ & ] { config->swExportIs( true ); },
        { Config::attrSwExport, {} }, [ & ] { return config->swExport(); } },
      { "hwFtConfig", config->publisher(), [ & ] { config->hwFtConfigIs( "ipfix", ft ); },
        { Config::attrHwFtConfig, "ipfix" },
        [ & ] { return config->hwFtConfig().at( "ipfix" ) == ft; } },
      { "expConfig", ft->publisher(), [ & ] { ft->expConfigIs( "exp", exporter ); },
        { FtConfig::attrExpConfig, "exp" },
        [ & ] { return ft->expConfig().size() == 1; } },
      { "localCollector", ft->publisher(), [ & ] { ft->localCollectorConfigIs( local ); },
        { FtConfig::attrLocalCollectorConfig, {} },
        [ & ] { return ft->localCollectorConfig() == local; } },
      { "port", local->publisher(), [ & ] { local->portIs( 2055 ); },
        { LocalCollectorConfig::attrConfig, {} },
        [ & ] { return local->port() == 2055; } },
      { "add", local->publisher(), [ & ] { local->addIs( true ); },
        { LocalCollectorConfig::attrConfig, {} }, [ & ] { return local->add(); } },
      { "v4", exporter->publisher(),
        [ & ] { exporter->collectorIpAndPortIs( "c1", { 0x0a000001, 4739 } ); },
        { ExporterConfig::attrCollectorIpAndPort, "c1" },
        [ & ] { return exporter->collectorIpAndPort().at( "c1" ).port == 4739; } },
      { "v6", exporter->publisher(),
        [ & ] { exporter->collectorIp6AndPortIs( "c2", { {}, 4740 } ); },
        { ExporterConfig::attrCollectorIp6AndPort, "c2" },
        [ & ] { return exporter->collectorIp6AndPort().at( "c2" ).port == 4740; } },
      { "v4 delete", exporter->publisher(),
        [ & ] { exporter->collectorIpAndPortDel( "c1" ); },
        { ExporterConfig::attrCollectorIpAndPort, "c1" },
        [ & ] { return exporter->collectorIpAndPort().empty(); } },
      { "hwFt delete", config->publisher(), [ & ] { config->hwFtConfigDel( "ipfix" ); },
        { Config::attrHwFtConfig, "ipfix" },
        [ & ] { return config->hwFtConfig().empty(); } },
   };
   for ( const auto& row : rows ) {
      SCOPED_TRACE( row.row );
      Listener listener;
      listener.notifierIs( &row.publisher );
      row.change();
      EXPECT_EQ( listener.heard, std::vector<Heard>{ row.expected } );
      EXPECT_TRUE( row.stored() );
   }
}

TEST( HwFlowTrackingTest, DeletingAnAbsentKeyIsSilent ) {
   auto exporter = Lumo::makePtr<ExporterConfig>();
   Listener listener;
   listener.notifierIs( &exporter->publisher() );
   exporter->collectorIpAndPortDel( "never" );
   exporter->collectorIp6AndPortDel( "never" );
   EXPECT_TRUE( listener.heard.empty() );
}
