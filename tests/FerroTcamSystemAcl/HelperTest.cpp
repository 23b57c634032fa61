// What the Helper does before any rule family is involved: ownership of the IPFIX port
// programmer and its notifications, its small queries, the operations that are inert on
// these chips, and its reflected attributes.
#include <gtest/gtest.h>

#include <any>
#include <tuple>
#include <utility>
#include <vector>

#include "FerroTcamSystemAcl/Helper.h"
#include "tests/FerroTcamSystemAcl/FrameFixture.h"

namespace {

using namespace FrameTest;
using FerroTcamSystemAcl::Helper;
using FerroTcamSystemAcl::HelperBase;
using FerroTcamSystemAcl::IpfixPortProgrammerSm;
using Access = Lumo::ReflectAccess;
using Result = Lumo::ReflectResult;

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

// A Helper attached to the default switch, with its notifications logged.
class HelperTest : public SwitchFixture {
  protected:
   void SetUp() override {
      SwitchFixture::SetUp();
      helper = Lumo::makePtr<Helper>( "helper" );
      sw->attach( *helper );
      log.notifierIs( &helper->publisher() );
   }
   void TearDown() override {
      helper.reset();
      SwitchFixture::TearDown();
   }

   // One reflected access, to be answered with `expected`; what it handed back.
   std::any inspect( Lumo::AttributeId attribute, Access access,
                     std::vector<std::any> args = {}, Result expected = Result::ok ) {
      Lumo::ReflectIo io;
      io.args = std::move( args );
      EXPECT_EQ( helper->inspectOperation( attribute, access, io ), expected )
         << "attribute " << attribute << " access " << int( access );
      return io.result;
   }

   Lumo::Ptr<Helper> helper;
   NotificationLog log;
};

TEST_F( HelperTest, IpfixPortProgrammerSmIsPublishedOncePerChange ) {
   const HwFlowTracking::Config::Ptr config = sw->flowTracking;
   const auto other = Lumo::makePtr<HwFlowTracking::Config>();
   EXPECT_FALSE( helper->ipfixPortProgrammerSmDel() );
   EXPECT_TRUE( log.attributes.empty() );

   const auto first = helper->ipfixPortProgrammerSmIs( config, helper.get() );
   ASSERT_TRUE( first );
   EXPECT_TRUE( first->config() == config );
   EXPECT_EQ( first->helperBase(), helper.get() );
   EXPECT_TRUE( first->hasNotificationActive() );
   EXPECT_TRUE( helper->ipfixPortProgrammerSmIs( config, helper.get() ) == first );
   EXPECT_EQ( log.attributes, smChanges( 1 ) );

   // Another configuration, or the same one for another helper, is another machine.
   const auto second = helper->ipfixPortProgrammerSmIs( other, helper.get() );
   EXPECT_FALSE( second == first );
   EXPECT_EQ( first->refCount(), 1u );  // the helper let go of the first one
   const auto third = helper->ipfixPortProgrammerSmIs( other, nullptr );
   EXPECT_FALSE( third == second );
   EXPECT_TRUE( helper->ipfixPortProgrammerSm() == third );
   EXPECT_EQ( log.attributes, smChanges( 3 ) );

   EXPECT_TRUE( helper->ipfixPortProgrammerSmDel() == third );
   EXPECT_FALSE( third->hasNotificationActive() );
   EXPECT_FALSE( helper->ipfixPortProgrammerSm() );
   EXPECT_FALSE( helper->ipfixPortProgrammerSmDel() );
   EXPECT_EQ( log.attributes, smChanges( 4 ) );

   // Destroying the helper deletes the machine it holds.
   const auto last = helper->ipfixPortProgrammerSmIs( config, helper.get() );
   helper.reset();
   EXPECT_FALSE( last->hasNotificationActive() );
   EXPECT_EQ( last->refCount(), 1u );
   EXPECT_EQ( log.attributes, smChanges( 6 ) );
}

TEST_F( HelperTest, ModelOfAKnownAndOfAnUnknownUnit ) {
   const U8 unknown = FerroCentral::ChipInfo().model;
   ASSERT_NE( sw->chip( 0 )->model, unknown );
   EXPECT_EQ( helper->model( 0 ), sw->chip( 0 )->model );
   sw->groupManager->modChipInfo[ 9 ].model = 77;
   EXPECT_EQ( helper->model( 9 ), 77 );
   EXPECT_EQ( helper->model( 200 ), unknown );
   // A helper that was never attached has no group manager to ask.
   EXPECT_EQ( Helper( "detached" ).model( 0 ), unknown );
}

TEST_F( HelperTest, RequestKeyOfTheL2ControlClassesAndAbortForAnyOther ) {
   for ( U32 classId : { 1u, 2u, 3u, 8u } ) {
      const FerroTcam::RequestKey key = helper->getRequestKeyForProtocol( classId );
      EXPECT_EQ( key.tag(), "PBMP_E_ALL for l2 ctrl group" ) << "class " << classId;
      EXPECT_FALSE( key.flag() ) << "class " << classId;
   }
   for ( U32 classId : { 0u, 4u } ) {
      EXPECT_DEATH( helper->getRequestKeyForProtocol( classId ),
                    "Helper::getRequestKeyForProtocol\\(.*\\) const: "
                    "Assertion `0 && \"Invalid classId type\"' failed\\." )
         << "class " << classId;
   }
}

TEST_F( HelperTest, InertOperationsMakeNoSdkCall ) {
   // Called through the base, as the agent calls them.
#define OPERATION( call ) { #call, []( HelperBase& h, U16 u ) { h.call; } }
   const std::pair<const char*, void ( * )( HelperBase&, U16 )> operations[] = {
      OPERATION( doInstallMvrpRule( u ) ),
      OPERATION( doInstallL2McastPTPRule( u ) ),
      OPERATION( doInstallL2UnicastPTPRule( u ) ),
      OPERATION( doInstallIpv4McastPTPRule( u ) ),
      OPERATION( doInstallIpv4UnicastFwdPTPRule( u ) ),
      OPERATION( doInstallIpv4ElevatorPTPRule( u ) ),
      OPERATION( configureCosQueueMap( u ) ),
      OPERATION( configureMvrpTrapToCpuAction( u, true ) ),
      OPERATION( configureMvrpTrapToCpuAction( u, false ) ),
   };
#undef OPERATION
   for ( const auto& [ name, operation ] : operations ) {
      for ( U16 u : { 0, 1, 7 } ) {
         operation( *helper, u );
         EXPECT_TRUE( chip().journal().empty() ) << name << " unit " << u;
      }
   }
   EXPECT_EQ( chip().preCallHookCount(), 0 );
}

TEST_F( HelperTest, ReflectionAnswersWhatIsOfferedAndRefusesTheRest ) {
   using SmPtr = IpfixPortProgrammerSm::Ptr;
   const auto sm = Helper::attrIpfixPortProgrammerSm;
   const auto model = Helper::attrModel;
   HelperBase* base = helper.get();
   const auto created =
      std::any_cast<SmPtr>( inspect( sm, Access::set, { sw->flowTracking, base } ) );
   ASSERT_TRUE( created );
   EXPECT_TRUE( created == helper->ipfixPortProgrammerSm() );
   EXPECT_TRUE( created->config() == sw->flowTracking );
   EXPECT_TRUE( std::any_cast<SmPtr>( inspect( sm, Access::read ) ) == created );
   EXPECT_TRUE( std::any_cast<SmPtr>( inspect( sm, Access::del ) ) == created );
   EXPECT_FALSE( helper->ipfixPortProgrammerSm() );
   EXPECT_FALSE( std::any_cast<SmPtr>( inspect( sm, Access::read ) ) );
   EXPECT_EQ( std::any_cast<U8>( inspect( model, Access::call, { U16( 1 ) } ) ),
              sw->chip( 1 )->model );
   // Below the Helper's range HelperBase answers: its name, and no more.
   EXPECT_EQ( std::any_cast<Lumo::String>( inspect( 1, Access::read ) ), "helper" );

   const std::tuple<Lumo::AttributeId, Access, std::vector<std::any>, Result> cases[] = {
      { sm - 1, Access::read, {}, Result::unknownAttribute },
      { sm, Access::call, {}, Result::accessRefused },
      { sm, Access::set, { sw->flowTracking }, Result::badArguments },
      { model, Access::call, { 1 }, Result::badArguments },  // not a U16
      // The operations are only called.
      { Helper::attrTrapViaInPortForEntryInt, Access::read, {}, Result::accessRefused },
      { Helper::attrGetPbmpForL2ProfileRule, Access::set, {}, Result::accessRefused },
      { model, Access::del, { U16( 0 ) }, Result::accessRefused },
      { model + 1, Access::read, {}, Result::unknownAttribute },
   };
   for ( const auto& [ attribute, access, args, result ] : cases ) {
      inspect( attribute, access, args, result );
   }
   EXPECT_FALSE( helper->ipfixPortProgrammerSm() );
   EXPECT_EQ( log.attributes, smChanges( 2 ) );
}

}  // namespace
