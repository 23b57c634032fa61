// The IPFIX rule as the programmer machines keep it: every case changes the
// flow-tracking configuration through its publishers and reads every unit's
// "Ipfix Dst Port" entry back from the chip.
#include "IpfixFixture.h"

namespace IpfixTest {
namespace {

const RuleState installedOn( U16 port ) { return { port, true, true }; }
const RuleState resetAndDisabled{ 4739, true, false };
using Lines = std::vector<std::string>;

class IpfixProgrammerTest : public IpfixFixture {};

TEST_F( IpfixProgrammerTest, Ipv4CollectorPortReprogramsEveryUnit ) {
   expectEveryUnit( installedOn( 4739 ) );
   const ExporterConfig::Ptr exporter = exporterIs( trackerIs( "ft" ), "exp" );
   exporter->collectorIpAndPortIs( "c", { 0x0A000063, 2055 } );
   expectEveryUnit( installedOn( 2055 ) );
   for ( U16 unit : { 0, 1 } ) {
      EXPECT_EQ( ipfixQueueFor( unit, 2055 ), 3u ) << "unit " << unit;
      EXPECT_EQ( ipfixQueueFor( unit, 4739 ), std::nullopt ) << "unit " << unit;
   }
   exporter->collectorIpAndPortIs( "c", { 0x0A000063, 9995 } );
   expectEveryUnit( installedOn( 9995 ) );
   EXPECT_EQ( ipfixQueueFor( 1, 9995 ), 3u );
}

TEST_F( IpfixProgrammerTest, NameInBothMapsTakesItsIpv4Port ) {
   const ExporterConfig::Ptr exporter = exporterIs( trackerIs( "ft" ), "exp" );
   exporter->collectorIpAndPortIs( "c", { 1, 2055 } );
   exporter->collectorIp6AndPortIs( "c", { {}, 6000 } );
   expectEveryUnit( installedOn( 2055 ) );
   // With the IPv4 collector gone the IPv6 one of that name takes over.
   exporter->collectorIpAndPortDel( "c" );
   expectEveryUnit( installedOn( 6000 ) );
   // A re-announced collector map walks IPv4 before IPv6: the last key walked
   // is an IPv6 one, whose name also has an IPv4 port.
   exporter->collectorIpAndPortIs( "c", { 1, 2055 } );
   exporter->collectorIp6AndPortIs( "c", { {}, 6001 } );
   exporter->publisher().notify( ExporterConfig::attrCollectorIp6AndPort );
   expectEveryUnit( installedOn( 2055 ) );
   EXPECT_EQ( takeTrace().back(), "ipv4 dstPort: 2055" );
}

TEST_F( IpfixProgrammerTest, RemovingTheLastCollectorResetsAndDisables ) {
   const ExporterConfig::Ptr exporter = exporterIs( trackerIs( "ft" ), "exp" );
   exporter->collectorIp6AndPortIs( "c", { {}, 2055 } );
   takeTrace();
   exporter->collectorIp6AndPortDel( "c" );
   expectEveryUnit( resetAndDisabled );
   EXPECT_EQ( ipfixQueueFor( 0, 4739 ), std::nullopt );
   EXPECT_EQ( takeTrace(), ( Lines{ "IpfixPortExporterProgrammerSm::handleCollector",
                                    "Deleting c" } ) );
   // A reinstall keeps the entry's enable state: a new collector moves the
   // port but does not switch the entry back on.
   exporter->collectorIpAndPortIs( "c", { 1, 2056 } );
   expectEveryUnit( { 2056, true, false } );
}

TEST_F( IpfixProgrammerTest, CatchUpAtConstructionTracesEveryStep ) {
   auto ft = Lumo::makePtr<FtConfig>();
   exporterIs( ft, "exp" )->collectorIpAndPortIs( "c", { 1, 2055 } );
   config->hwFtConfigIs( "ft", ft );
   expectEveryUnit( installedOn( 2055 ) );
   EXPECT_EQ( takeTrace(), ( Lines{ "IpfixPortProgrammerSm::handleFtConfig",
                                    "creating: ft",
                                    "swExport is : 0",
                                    "IpfixPortFlowTrackerProgrammerSm::handleExporterConfig",
                                    "IpfixPortFlowTrackerProgrammerSm::handleExporterConfig",
                                    "creating collProgrammerSm: exp",
                                    "IpfixPortExporterProgrammerSm::handleCollector",
                                    "IpfixPortExporterProgrammerSm::handleCollector",
                                    "ipv4 dstPort: 2055" } ) );
   ft->expConfigDel( "exp" );  // the exporter's teardown leaves the rule alone
   expectEveryUnit( installedOn( 2055 ) );
   config->hwFtConfigDel( "ft" );
   expectEveryUnit( resetAndDisabled );
   EXPECT_EQ( takeTrace(), ( Lines{ "IpfixPortFlowTrackerProgrammerSm::handleExporterConfig",
                                    "deleting collProgrammerSm: exp",
                                    "IpfixPortProgrammerSm::handleFtConfig",
                                    "IpfixPortFlowTrackerProgrammerSm::doCleanup",
                                    "deleting: ft" } ) );
}

TEST_F( IpfixProgrammerTest, SoftwareExportFollowsOnlyTheLocalCollector ) {
   config->swExportIs( true );
   const FtConfig::Ptr ft = trackerIs( "ft" );
   const ExporterConfig::Ptr exporter = exporterIs( ft, "exp" );
   exporter->collectorIpAndPortIs( "c", { 1, 2055 } );
   EXPECT_TRUE( tracker( "ft" )->collProgrammerSm().empty() );
   expectEveryUnit( installedOn( 4739 ) );
   EXPECT_EQ( takeTrace().back(), "SwExport is true, skip." );

   const auto local = Lumo::makePtr<LocalCollectorConfig>( 6343, true );
   ft->localCollectorConfigIs( local );
   expectEveryUnit( installedOn( 6343 ) );
   EXPECT_EQ( ipfixQueueFor( 0, 6343 ), 3u );
   local->addIs( false );
   expectEveryUnit( resetAndDisabled );
   EXPECT_EQ( takeTrace(), ( Lines{ "IpfixPortFlowTrackerProgrammerSm::handleLocalCollConfig",
                                    "add:1",
                                    "IpfixPortFlowTrackerProgrammerSm::handleLocalCollConfig",
                                    "add:0" } ) );
   local->addIs( true );
   local->portIs( 7000 );
   expectEveryUnit( { 7000, true, false } );
   ft->localCollectorConfigIs( nullptr );  // an absent collector is not added
   expectEveryUnit( resetAndDisabled );
}

TEST_F( IpfixProgrammerTest, HardwareExportIgnoresTheLocalCollector ) {
   const FtConfig::Ptr ft = trackerIs( "ft" );
   exporterIs( ft, "exp" )->collectorIpAndPortIs( "c", { 1, 2055 } );
   takeTrace();
   const auto local = Lumo::makePtr<LocalCollectorConfig>( 6343, true );
   ft->localCollectorConfigIs( local );
   local->portIs( 6344 );
   expectEveryUnit( installedOn( 2055 ) );
   EXPECT_EQ( takeTrace(), ( Lines{ "IpfixPortFlowTrackerProgrammerSm::handleLocalCollConfig",
                                    "swExport is disabled",
                                    "IpfixPortFlowTrackerProgrammerSm::handleLocalCollConfig",
                                    "swExport is disabled" } ) );
}

TEST_F( IpfixProgrammerTest, TogglingSoftwareExportRebuildsEveryTracker ) {
   const FtConfig::Ptr a = trackerIs( "a" );
   const FtConfig::Ptr b = trackerIs( "b" );
   exporterIs( a, "exp" )->collectorIpAndPortIs( "c", { 1, 2055 } );
   exporterIs( b, "exp" )->collectorIpAndPortIs( "c", { 1, 2055 } );
   b->localCollectorConfigIs( Lumo::makePtr<LocalCollectorConfig>( 6343, true ) );
   takeTrace();
   config->swExportIs( true );
   EXPECT_TRUE( tracker( "a" )->swExport() && tracker( "b" )->swExport() );
   const Lines trace = takeTrace();
   for ( const char* line : { "IpfixPortFlowTrackerProgrammerSm::doCleanup", "creating: a",
                              "creating: b", "swExport is : 1" } ) {
      EXPECT_EQ( std::count( trace.begin(), trace.end(), line ), line[ 0 ] == 'c' ? 1 : 2 )
         << line;
   }
   // Whichever tracker was rebuilt last decides: "a" has no local collector.
   const RuleState unit0 = rule( 0 );
   EXPECT_TRUE( unit0 == RuleState( { 6343, true, false } ) || unit0 == resetAndDisabled )
      << unit0;
   expectEveryUnit( unit0 );
   config->swExportIs( false );
   expectEveryUnit( { 2055, true, false } );
}

TEST_F( IpfixProgrammerTest, DestroyingTheHelperResetsAndDisables ) {
   const ExporterConfig::Ptr exporter = exporterIs( trackerIs( "ft" ), "exp" );
   exporter->collectorIpAndPortIs( "c", { 1, 2055 } );
   const U32 entries[] = { helper->ipfixRule( 0 ), helper->ipfixRule( 1 ) };
   helper.reset();
   for ( U16 unit : { 0, 1 } ) {
      EXPECT_EQ( ruleAt( unit, entries[ unit ] ), resetAndDisabled ) << "unit " << unit;
   }
   // Nothing follows the configuration any more.
   chip().clearJournal();
   exporter->collectorIpAndPortIs( "c", { 1, 2056 } );
   config->hwFtConfigDel( "ft" );
   EXPECT_TRUE( chip().journal().empty() );
   EXPECT_EQ( config->publisher().reactorCount(), 0u );
   EXPECT_EQ( exporter->publisher().reactorCount(), 0u );
}

TEST_F( IpfixProgrammerTest, InstallingEveryUnitPublishesTheMachineOnce ) {
   // SetUp installed the L3 rules of both units; the second unit's install
   // found the machine in place.
   const auto machine = helper->ipfixPortProgrammerSm();
   const uint64_t published = helper->publisher().notificationCount();
   EXPECT_EQ( published, 1u );
   EXPECT_TRUE( helper->ipfixPortProgrammerSmIs( config, helper.get() ) == machine );
   EXPECT_EQ( helper->publisher().notificationCount(), published );
   const ExporterConfig::Ptr exporter = exporterIs( trackerIs( "ft" ), "exp" );
   using Lumo::TypeData;
   EXPECT_EQ( machine->typeData(), ( TypeData{ "FerroTcamSystemAcl", 3 } ) );
   EXPECT_EQ( tracker( "ft" )->typeData(), ( TypeData{ "FerroTcamSystemAcl", 2 } ) );
   EXPECT_EQ( tracker( "ft" )->collProgrammerSm().at( "exp" )->typeData(),
              ( TypeData{ "FerroTcamSystemAcl", 1 } ) );
}

}  // namespace
}  // namespace IpfixTest
