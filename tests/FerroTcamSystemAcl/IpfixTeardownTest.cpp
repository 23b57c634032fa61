// How the IPFIX rule and the programmer machines end: teardown in every order,
// with reactions still pending, and the aborts of a failed reinstall.
#include <functional>

#include "IpfixFixture.h"

namespace IpfixTest {
namespace {

const RuleState resetAndDisabled{ 4739, true, false };

// A reactor of the agent's own that runs later, from the runtime's zombie
// queue, whatever it was given to do.
struct DeferredReaction : Lumo::Reactor {
   explicit DeferredReaction( std::function<void()> action ) : action( std::move( action ) ) {
      deferredIs( true );
   }
   // Runs once: what it does notifies it again.
   void onAttributeChange( const Lumo::Notification& ) override {
      if ( action ) {
         std::exchange( action, {} )();
      }
   }
   std::function<void()> action;
};

class IpfixTeardownTest : public IpfixFixture {};

TEST_F( IpfixTeardownTest, ConfigurationReleasedBeforeTheHelper ) {
   ExporterConfig::Ptr exporter = exporterIs( trackerIs( "ft" ), "exp" );
   exporter->collectorIpAndPortIs( "c", { 1, 2055 } );
   config.reset();
   sw->flowTracking.reset();
   helper->hwFlowTrackingConfigIs( nullptr );
   expectEveryUnit( { 2055, true, true } );  // the machines keep what they follow
   const U32 entries[] = { helper->ipfixRule( 0 ), helper->ipfixRule( 1 ) };
   helper.reset();
   for ( U16 unit : { 0, 1 } ) {
      EXPECT_EQ( ruleAt( unit, entries[ unit ] ), resetAndDisabled ) << "unit " << unit;
   }
   // The whole tree let go: configuration, tracker and exporter.
   EXPECT_EQ( exporter->refCount(), 1u );
   EXPECT_EQ( exporter->publisher().reactorCount(), 0u );
}

TEST_F( IpfixTeardownTest, ReplacedMachineResetsTheRuleAndUnsubscribes ) {
   exporterIs( trackerIs( "ft" ), "exp" )->collectorIpAndPortIs( "c", { 1, 2055 } );
   const auto other = Lumo::makePtr<Config>();
   helper->ipfixPortProgrammerSmIs( other, helper.get() );
   expectEveryUnit( resetAndDisabled );
   EXPECT_EQ( config->publisher().reactorCount(), 0u );
   config->hwFtConfigDel( "ft" );
   auto ft = Lumo::makePtr<FtConfig>();
   exporterIs( ft, "exp" )->collectorIpAndPortIs( "c", { 1, 2056 } );
   other->hwFtConfigIs( "ft", ft );
   expectEveryUnit( { 2056, true, false } );
   // Without a configuration there is nothing to follow.
   helper->ipfixPortProgrammerSmIs( nullptr, helper.get() );
   expectEveryUnit( resetAndDisabled );
   EXPECT_EQ( other->publisher().reactorCount(), 0u );
}

// The tracker's teardown runs the pending reactions of others; here one
// changes the dying tracker's exporter (which no longer listens) and builds the
// tracker again under the same name, from inside the removal of that name.
TEST_F( IpfixTeardownTest, TrackerTornDownWhileReactionsArePending ) {
   const ExporterConfig::Ptr exporter = exporterIs( trackerIs( "ft" ), "exp" );
   auto rebuilt = Lumo::makePtr<FtConfig>();
   exporterIs( rebuilt, "exp" )->collectorIpAndPortIs( "c", { 1, 7000 } );
   DeferredReaction pending( [ & ] {
      exporter->collectorIpAndPortIs( "c", { 1, 7777 } );
      config->hwFtConfigIs( "ft", rebuilt );
   } );
   pending.notifierIs( &exporter->publisher() );
   exporter->collectorIpAndPortIs( "c", { 1, 2055 } );
   ASSERT_EQ( Lumo::zombieReactorCount(), 1u );
   expectEveryUnit( { 2055, true, true } );

   config->hwFtConfigDel( "ft" );
   EXPECT_EQ( Lumo::zombieReactorCount(), 0u );
   expectEveryUnit( { 7000, true, false } );
   ASSERT_TRUE( tracker( "ft" ) );
   EXPECT_TRUE( tracker( "ft" )->config() == rebuilt );
   EXPECT_EQ( helper->ipfixPortProgrammerSm()->ipfixFtProgrammerSm().size(), 1u );
   EXPECT_EQ( exporter->publisher().reactorCount(), 1u );  // only `pending`
}

TEST_F( IpfixTeardownTest, DisablingResetsEveryUnitAndNoUnitsMeansNoCalls ) {
   helper->doInstallIpFixPort( 2055, true );
   expectEveryUnit( { 2055, true, true } );
   helper->doInstallIpFixPort( 0, false );
   expectEveryUnit( resetAndDisabled );
   sw->smData->modules.clear();
   chip().clearJournal();
   helper->doInstallIpFixPort( 2056, true );
   helper->doInstallIpFixPort( 0, false );
   EXPECT_TRUE( chip().journal().empty() );
}

const char* const reinstallFailed = "rc == BCM_E_NONE && \"reinstallEntry failed\"";

TEST_F( IpfixTeardownTest, FailedReinstallAborts ) {
   const ExporterConfig::Ptr exporter = exporterIs( trackerIs( "ft" ), "exp" );
   chip().injectFault( { "bcm_field_entry_reinstall", 1, {}, 1, BCM_E_INTERNAL } );
   EXPECT_DEATH( exporter->collectorIpAndPortIs( "c", { 1, 2055 } ), reinstallFailed );
   chip().clearFaults();
}

// A unit whose chip has no IPFIX entry is programmed at entry 0, which the
// chip does not know.
TEST( IpfixRuleTest, UnitWithoutIpfixEntryAbortsOnEntryZero ) {
   Agent::SwitchConfig cfg = Agent::defaultSwitchConfig();
   Agent::ChipProfile noIpfix = cfg.chips.front();
   noIpfix.family = "NoIpfix";
   noIpfix.attributes.ipfixSupported = false;
   cfg.chips.push_back( noIpfix );
   cfg.units.at( 1 ).chip = noIpfix.family;
   const Agent::Switch::Ptr sw = Agent::bringUp( cfg );
   const auto helper = Lumo::makePtr<FerroTcamSystemAcl::Helper>( "no-ipfix" );
   sw->attach( *helper );
   helper->doInstallAclRules( 0 );
   helper->doInstallAclRules( 1 );
   ASSERT_FALSE( helper->ipfixRuleHas( 1 ) );
   EXPECT_DEATH( helper->doInstallIpFixPort( 2055, true ), reinstallFailed );
   chip().reset();
}

}  // namespace
}  // namespace IpfixTest
