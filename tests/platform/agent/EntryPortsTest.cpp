#include "AgentTestSupport.h"
#include "platform/agent/TcamEntryManager.h"
#include "platform/agent/TcamHelpers.h"

using namespace AgentTest;

namespace {

class EntryPortsTest : public SwitchTest {
  protected:
   bool hits( int inPort, U32 entry, bcm_field_group_t group = l3Group ) {
      return hit( 0, tcpPacket( inPort ), group ) == bcm_field_entry_t( entry );
   }
};

// ACL-group managers on a chip with two port-class bits.
class PortClassTest : public EntryPortsTest {
  protected:
   void SetUp() override {
      Agent::SwitchConfig config = Agent::defaultSwitchConfig();
      config.aclGroupManagers = true;
      config.chips[ 0 ].attributes.classIdBits = 2;
      bringUp( config );
   }
};

}  // namespace

TEST_F( EntryPortsTest, InPortsRestrictLookupAndAreRecorded ) {
   auto& m = *sw_->l3Manager;
   const U32 entry = tcpEntry( l3Base, 38 );
   m.setTcamEntryBcmPbmpPermanent( 0, entry, true );
   ASSERT_EQ( m.addInPortsForEntry( 0, entry, ports( { 2, 3 } ),
                                    FerroTcam::getPbmpAll( *sw_->smData, 0 ) ),
              0 );
   ASSERT_EQ( m.installEntry( 0, entry ), 0 );

   for ( int port : { 1, 2, 3, 4 } ) {
      EXPECT_EQ( hits( port, entry ), port == 2 || port == 3 ) << port;
   }
   EXPECT_TRUE( BCM_PBMP_EQ( m.tcamEntryBcmPbmp( 0, entry ), ports( { 2, 3 } ) ) );
   EXPECT_TRUE( BCM_PBMP_EQ( m.getProgrammedIpbm( 0, entry ), ports( { 2, 3 } ) ) );
   EXPECT_TRUE( m.record( 0, entry )->pbmp->permanent );
   // Only ACL-group managers bind by port class.
   EXPECT_EQ( m.qualifyPortsClassId( 0, entry, ports( { 1 } ), false ), BCM_E_UNAVAIL );
}

// An entry never bound starts from no port; ports of another unit are passed
// over; the chip sees a change only once the entry is reinstalled.
TEST_F( EntryPortsTest, UpdateAddsAndRemovesPortsOfTheUnitOnly ) {
   auto& m = *sw_->l3Manager;
   const U32 entry = tcpEntry( l3Base, 38 );
   ASSERT_EQ( m.updateInPortsForEntry( 0, entry, { { 0, 0, 2 } }, true, false ), 0 );
   ASSERT_EQ( m.installEntry( 0, entry ), 0 );
   EXPECT_TRUE( hits( 2, entry ) );
   EXPECT_FALSE( hits( 1, entry ) );

   const FerroTypes::FerroPortList added = { { 0, 0, 5 }, { 1, 1, 6 } };
   ASSERT_EQ( m.updateInPortsForEntry( 0, entry, added, true, true ), 0 );
   EXPECT_TRUE( hits( 5, entry ) );
   EXPECT_FALSE( hits( 6, entry ) );
   EXPECT_TRUE( BCM_PBMP_EQ( m.tcamEntryBcmPbmp( 0, entry ), ports( { 2, 5 } ) ) );

   ASSERT_EQ( m.updateInPortsForEntry( 0, entry, { { 0, 0, 2 } }, false, false ), 0 );
   EXPECT_TRUE( hits( 2, entry ) );
   EXPECT_TRUE( BCM_PBMP_EQ( m.getProgrammedIpbm( 0, entry ), ports( { 5 } ) ) );
   ASSERT_EQ( m.reinstallEntry( 0, entry ), 0 );
   EXPECT_FALSE( hits( 2, entry ) );
   EXPECT_TRUE( hits( 5, entry ) );
}

// Two managers, two sets sharing port 2: each entry keeps its own class bit.
TEST_F( PortClassTest, EntriesMatchExactlyTheirPortSets ) {
   auto& l3 = *sw_->l3Manager;
   auto& l2 = *sw_->l2Manager;
   const U32 l2Entry = Agent::ManagerLayout::l2Base;
   ASSERT_EQ( l3.getEntry( 0, l3Base, "a", {} ), l3Base );
   ASSERT_EQ( l2.getEntry( 0, l2Entry, "b", {} ), l2Entry );
   ASSERT_EQ( l3.qualifyPortsClassId( 0, l3Base, ports( { 1, 2 } ), true ), 0 );
   ASSERT_EQ( l2.qualifyPortsClassId( 0, l2Entry, ports( { 2, 3 } ), false ), 0 );
   ASSERT_EQ( l3.installEntry( 0, l3Base ), 0 );
   ASSERT_EQ( l2.installEntry( 0, l2Entry ), 0 );

   for ( int port : { 1, 2, 3, 4 } ) {
      EXPECT_EQ( hits( port, l3Base ), port == 1 || port == 2 ) << port;
      EXPECT_EQ( hits( port, l2Entry, l2Group ), port == 2 || port == 3 ) << port;
   }
   const auto l3Class = l3.record( 0, l3Base )->portClassId;
   const auto l2Class = l2.record( 0, l2Entry )->portClassId;
   ASSERT_TRUE( l3Class && l2Class );
   EXPECT_NE( *l3Class, *l2Class );
   EXPECT_TRUE( l3.record( 0, l3Base )->pbmp->permanent );
}

TEST_F( PortClassTest, IdenticalSetsShareAClassUntilTheBitsRunOut ) {
   auto& m = *sw_->l3Manager;
   for ( U32 e = l3Base; e < l3Base + 4; ++e ) {
      ASSERT_EQ( m.getEntry( 0, e, "e", {} ), e );
   }
   ASSERT_EQ( m.qualifyPortsClassId( 0, l3Base, ports( { 1 } ), false ), 0 );
   ASSERT_EQ( m.qualifyPortsClassId( 0, l3Base + 1, ports( { 1 } ), false ), 0 );
   EXPECT_EQ( m.record( 0, l3Base )->portClassId, m.record( 0, l3Base + 1 )->portClassId );
   ASSERT_EQ( m.qualifyPortsClassId( 0, l3Base + 2, ports( { 2 } ), false ), 0 );
   EXPECT_EQ( m.qualifyPortsClassId( 0, l3Base + 3, ports( { 3 } ), false ),
              BCM_E_RESOURCE );
   // Each unit's port classes are its own.
   ASSERT_EQ( m.getEntry( 1, l3Base + 3, "e", {} ), l3Base + 3 );
   EXPECT_EQ( m.qualifyPortsClassId( 1, l3Base + 3, ports( { 3 } ), false ), 0 );
}
