// What the Helper does before any rule family is involved: ownership of the IPFIX port
// programmer and its notifications, its small queries, the operations that are inert on
// these chips, and its reflected attributes.
#include <gtest/gtest.h>

#include <any>
#include <functional>
#include <utility>
#include <vector>

#include "FerroTcamSystemAcl/Helper.h"
#include "tests/FerroTcamSystemAcl/FrameFixture.h"

namespace {

using namespace FrameTest;
using FerroTcamSystemAcl::Helper;
using FerroTcamSystemAcl::HelperBase;
using FerroTcamSystemAcl::IpfixPortProgrammerSm;
using Lumo::ReflectAccess;
using Lumo::ReflectResult;

class NotificationLog : public Lumo::Reactor {
  public:
   void onAttributeChange( const Lumo::Notification& notification ) override {
      attributes.push_back( notification.attribute );
   }
   std::vector<Lumo::AttributeId> attributes;
};

// `count` changes of the ipfixPortProgrammerSm attribute.
std::vector<Lumo::AttributeId> smChanges( size_t count ) {
   return std::vector<Lumo::AttributeId>( count, Helper::attrIpfixPortProgrammerSm );
}

// The key of every entry of the L2 control group.
FerroTcam::RequestKey l2ControlKey() {
   return FerroTcam::RequestKey( "PBMP_E_ALL for l2 ctrl group", false );
}

// A Helper created by name as the agent creates it, on the default switch, with its
// notifications logged.
class HelperFixture : public SwitchFixture {
  protected:
   void SetUp() override {
      SwitchFixture::SetUp();
      Lumo::Ptr<Lumo::Node> node =
         Lumo::TypeRegistry::instance().create( "FerroTcamSystemAcl::Helper", "helper" );
      helper = Lumo::Ptr<Helper>( dynamic_cast<Helper*>( node.get() ) );
      ASSERT_TRUE( helper );
      sw->attach( *helper );
      log.notifierIs( &helper->publisher() );
   }
   void TearDown() override {
      helper.reset();
      SwitchFixture::TearDown();
   }

   Lumo::Ptr<Helper> helper;
   NotificationLog log;
};

using HelperIpfixPortProgrammerSm = HelperFixture;
using HelperQueries = HelperFixture;
using HelperEmptyOperations = HelperFixture;
using HelperReflection = HelperFixture;

TEST_F( HelperIpfixPortProgrammerSm, KeptForTheSameConfigAndHelperReplacedOtherwise ) {
   const HwFlowTracking::Config::Ptr config = sw->flowTracking;
   const auto other = Lumo::makePtr<HwFlowTracking::Config>();

   const IpfixPortProgrammerSm::Ptr first =
      helper->ipfixPortProgrammerSmIs( config, helper.get() );
   ASSERT_TRUE( first );
   EXPECT_TRUE( first->config() == config );
   EXPECT_EQ( first->helperBase(), helper.get() );
   EXPECT_TRUE( first->hasNotificationActive() );
   EXPECT_TRUE( helper->ipfixPortProgrammerSm() == first );
   EXPECT_EQ( log.attributes, smChanges( 1 ) );

   EXPECT_TRUE( helper->ipfixPortProgrammerSmIs( config, helper.get() ) == first );
   EXPECT_EQ( log.attributes, smChanges( 1 ) );

   const auto second = helper->ipfixPortProgrammerSmIs( other, helper.get() );
   EXPECT_FALSE( second == first );
   EXPECT_TRUE( second->config() == other );
   EXPECT_TRUE( second->hasNotificationActive() );
   EXPECT_TRUE( helper->ipfixPortProgrammerSm() == second );
   EXPECT_EQ( log.attributes, smChanges( 2 ) );
   EXPECT_EQ( first->refCount(), 1u );  // the helper let go of the first one

   // The same configuration for another helper is another machine too.
   const auto third = helper->ipfixPortProgrammerSmIs( other, nullptr );
   EXPECT_FALSE( third == second );
   EXPECT_EQ( third->helperBase(), nullptr );
   EXPECT_EQ( log.attributes, smChanges( 3 ) );
}

TEST_F( HelperIpfixPortProgrammerSm, DeletedOnceAndOnDestruction ) {
   EXPECT_FALSE( helper->ipfixPortProgrammerSmDel() );
   EXPECT_TRUE( log.attributes.empty() );

   const auto held = helper->ipfixPortProgrammerSmIs( sw->flowTracking, helper.get() );
   const auto deleted = helper->ipfixPortProgrammerSmDel();
   EXPECT_TRUE( deleted == held );
   EXPECT_FALSE( deleted->hasNotificationActive() );
   EXPECT_FALSE( helper->ipfixPortProgrammerSm() );
   EXPECT_EQ( log.attributes, smChanges( 2 ) );
   EXPECT_FALSE( helper->ipfixPortProgrammerSmDel() );
   EXPECT_EQ( log.attributes, smChanges( 2 ) );

   const auto last = helper->ipfixPortProgrammerSmIs( sw->flowTracking, helper.get() );
   ASSERT_EQ( last->refCount(), 2u );
   helper.reset();
   EXPECT_FALSE( last->hasNotificationActive() );
   EXPECT_EQ( last->refCount(), 1u );
   EXPECT_EQ( log.attributes, smChanges( 4 ) );
}

TEST_F( HelperQueries, ModelFromTheGroupManagersChipInfo ) {
   const U8 unknown = FerroCentral::ChipInfo().model;
   for ( U16 u : { 0, 1 } ) {
      ASSERT_NE( sw->chip( u )->model, unknown );
      EXPECT_EQ( helper->model( u ), sw->chip( u )->model ) << "unit " << u;
   }
   sw->groupManager->modChipInfo[ 9 ].model = 77;
   EXPECT_EQ( helper->model( 9 ), 77 );
   EXPECT_EQ( helper->model( 200 ), unknown );
   // A helper that was never attached has no group manager to ask.
   Helper detached( "detached" );
   EXPECT_EQ( detached.model( 0 ), unknown );
}

TEST_F( HelperQueries, L2ProtocolFwdSupportedFollowsThePlatformAtEveryCall ) {
   const FerroCentral::FerroAttributes::PtrConst saved = FerroCentral::ferroAttributes();
   for ( bool supported : { true, false, true } ) {
      auto attributes = Lumo::makePtr<FerroCentral::FerroAttributes>();
      attributes->l2ProtocolFwdSupported = supported;
      FerroCentral::ferroAttributesIs( attributes );
      EXPECT_EQ( helper->l2ProtocolFwdSupported(), supported );
   }
   FerroCentral::ferroAttributesIs( saved );
}

TEST_F( HelperQueries, RequestKeyOfTheL2ControlClasses ) {
   for ( U32 classId : { 1u, 2u, 3u, 8u } ) {
      const FerroTcam::RequestKey key = helper->getRequestKeyForProtocol( classId );
      EXPECT_TRUE( key.isEq( l2ControlKey() ) ) << "class " << classId;
      EXPECT_EQ( key.tag(), "PBMP_E_ALL for l2 ctrl group" );
      EXPECT_FALSE( key.flag() );
   }
   for ( U32 classId : { 0u, 4u } ) {
      EXPECT_DEATH( helper->getRequestKeyForProtocol( classId ),
                    "Helper::getRequestKeyForProtocol\\(.*\\) const: "
                    "Assertion `0 && \"Invalid classId type\"' failed\\." )
         << "class " << classId;
   }
}

TEST_F( HelperEmptyOperations, TouchNeitherTheChipNorTheRuleTables ) {
   using Operation = std::function<void( HelperBase&, U16 )>;
   const std::pair<const char*, Operation> operations[] = {
      { "doInstallMvrpRule", []( HelperBase& h, U16 u ) { h.doInstallMvrpRule( u ); } },
      { "doInstallL2McastPTPRule",
        []( HelperBase& h, U16 u ) { h.doInstallL2McastPTPRule( u ); } },
      { "doInstallL2UnicastPTPRule",
        []( HelperBase& h, U16 u ) { h.doInstallL2UnicastPTPRule( u ); } },
      { "doInstallIpv4McastPTPRule",
        []( HelperBase& h, U16 u ) { h.doInstallIpv4McastPTPRule( u ); } },
      { "doInstallIpv4UnicastFwdPTPRule",
        []( HelperBase& h, U16 u ) { h.doInstallIpv4UnicastFwdPTPRule( u ); } },
      { "doInstallIpv4ElevatorPTPRule",
        []( HelperBase& h, U16 u ) { h.doInstallIpv4ElevatorPTPRule( u ); } },
      { "configureCosQueueMap",
        []( HelperBase& h, U16 u ) { h.configureCosQueueMap( u ); } },
      { "configureMvrpTrapToCpuAction on",
        []( HelperBase& h, U16 u ) { h.configureMvrpTrapToCpuAction( u, true ); } },
      { "configureMvrpTrapToCpuAction off",
        []( HelperBase& h, U16 u ) { h.configureMvrpTrapToCpuAction( u, false ); } },
   };
   const auto entriesBefore = chip().entries( 0 ).size();
   for ( const auto& [ name, operation ] : operations ) {
      for ( U16 u : { 0, 1, 7 } ) {
         operation( *helper, u );  // through the base, as the agent calls them
         EXPECT_TRUE( chip().journal().empty() ) << name << " unit " << u;
      }
   }
   EXPECT_EQ( chip().preCallHookCount(), 0 );
   EXPECT_EQ( chip().entries( 0 ).size(), entriesBefore );
   for ( const auto& [ table, rules ] : helper->ruleTables() ) {
      EXPECT_TRUE( rules->empty() ) << table;
   }
   EXPECT_TRUE( log.attributes.empty() );
}

// One reflected access; the result is the runtime's answer and what it handed back.
std::pair<ReflectResult, std::any> inspect( Helper& helper, Lumo::AttributeId attribute,
                                            ReflectAccess access,
                                            std::vector<std::any> args = {} ) {
   Lumo::ReflectIo io;
   io.args = std::move( args );
   const ReflectResult result = helper.inspectOperation( attribute, access, io );
   return { result, io.result };
}

TEST_F( HelperReflection, IpfixPortProgrammerSmReadSetAndDelete ) {
   const auto smOf = []( const std::any& value ) {
      return std::any_cast<IpfixPortProgrammerSm::Ptr>( value );
   };
   const auto attr = Helper::attrIpfixPortProgrammerSm;
   auto [ readNone, none ] = inspect( *helper, attr, ReflectAccess::read );
   EXPECT_EQ( readNone, ReflectResult::ok );
   EXPECT_FALSE( smOf( none ) );

   HelperBase* base = helper.get();
   auto [ set, created ] =
      inspect( *helper, attr, ReflectAccess::set, { sw->flowTracking, base } );
   ASSERT_EQ( set, ReflectResult::ok );
   EXPECT_TRUE( smOf( created ) == helper->ipfixPortProgrammerSm() );
   EXPECT_TRUE( helper->ipfixPortProgrammerSm()->config() == sw->flowTracking );
   EXPECT_EQ( log.attributes, smChanges( 1 ) );
   EXPECT_EQ( inspect( *helper, attr, ReflectAccess::set, { sw->flowTracking } ).first,
              ReflectResult::badArguments );

   auto [ read, held ] = inspect( *helper, attr, ReflectAccess::read );
   EXPECT_EQ( read, ReflectResult::ok );
   EXPECT_TRUE( smOf( held ) == smOf( created ) );
   EXPECT_EQ( inspect( *helper, attr, ReflectAccess::call ).first,
              ReflectResult::accessRefused );

   auto [ del, deleted ] = inspect( *helper, attr, ReflectAccess::del );
   EXPECT_EQ( del, ReflectResult::ok );
   EXPECT_TRUE( smOf( deleted ) == smOf( created ) );
   EXPECT_FALSE( helper->ipfixPortProgrammerSm() );
   EXPECT_EQ( log.attributes, smChanges( 2 ) );
}

TEST_F( HelperReflection, OperationsOnlyByCallAndLowerIdsToHelperBase ) {
   auto [ model, unitModel ] =
      inspect( *helper, Helper::attrModel, ReflectAccess::call, { U16( 1 ) } );
   EXPECT_EQ( model, ReflectResult::ok );
   EXPECT_EQ( std::any_cast<U8>( unitModel ), sw->chip( 1 )->model );
   EXPECT_EQ( inspect( *helper, Helper::attrModel, ReflectAccess::call, { 1 } ).first,
              ReflectResult::badArguments );

   auto [ key, requestKey ] = inspect( *helper, Helper::attrGetRequestKeyForProtocol,
                                       ReflectAccess::call, { 8u } );
   EXPECT_EQ( key, ReflectResult::ok );
   EXPECT_TRUE( std::any_cast<FerroTcam::RequestKey>( requestKey ).isEq( l2ControlKey() ) );

   for ( Lumo::AttributeId operation :
         { Helper::attrInstallL2ControlSystemTcamEntry,
           Helper::attrGetRequestKeyForProtocol, Helper::attrTrapViaInPortForEntryInt,
           Helper::attrUpdateInPortsForEntryHelper, Helper::attrGetPbmpForL2ProfileRule,
           Helper::attrModel } ) {
      for ( ReflectAccess access : { ReflectAccess::read, ReflectAccess::set,
                                     ReflectAccess::del } ) {
         EXPECT_EQ( inspect( *helper, operation, access, { U16( 0 ) } ).first,
                    ReflectResult::accessRefused )
            << "attribute " << operation << " access " << int( access );
      }
   }
   EXPECT_EQ( inspect( *helper, Helper::attrModel + 1, ReflectAccess::call ).first,
              ReflectResult::unknownAttribute );

   // HelperBase answers below the Helper's range: its name, and nothing else.
   auto [ name, helperName ] = inspect( *helper, 1, ReflectAccess::read );
   EXPECT_EQ( name, ReflectResult::ok );
   EXPECT_EQ( std::any_cast<Lumo::String>( helperName ), "helper" );
   EXPECT_EQ( inspect( *helper, 1, ReflectAccess::set, { Lumo::String( "x" ) } ).first,
              ReflectResult::accessRefused );
   const Lumo::AttributeId belowHelper = HelperBase::firstHelperAttribute - 1;
   EXPECT_EQ( inspect( *helper, belowHelper, ReflectAccess::read ).first,
              ReflectResult::unknownAttribute );
}

}  // namespace
