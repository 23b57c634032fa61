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
   bcm_pbmp_t allPorts() { return FerroTcam::getPbmpAll( *sw_->smData, 0 ); }
};

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
   ASSERT_EQ( m.addInPortsForEntry( 0, entry, ports( { 2, 3 } ), allPorts() ), 0 );
   ASSERT_EQ( m.installEntry( 0, entry ), 0 );

   EXPECT_TRUE( hits( 2, entry ) );
   EXPECT_TRUE( hits( 3, entry ) );
   EXPECT_FALSE( hits( 4, entry ) );
   EXPECT_TRUE( BCM_PBMP_EQ( m.tcamEntryBcmPbmp( 0, entry ), ports( { 2, 3 } ) ) );
   EXPECT_TRUE( BCM_PBMP_EQ( m.getProgrammedIpbm( 0, entry ), ports( { 2, 3 } ) ) );
   EXPECT_TRUE( m.internalUnitEntry().at( 0 )->tcamEntryBcmPbmp( entry )->permanent );
   EXPECT_TRUE( BCM_PBMP_IS_NULL( m.tcamEntryBcmPbmp( 0, entry + 1 ) ) );
}

TEST_F( EntryPortsTest, UpdateAddsAndRemovesPortsOfTheUnitOnly ) {
   auto& m = *sw_->l3Manager;
   const U32 entry = tcpEntry( l3Base, 38 );
   ASSERT_EQ( m.addInPortsForEntry( 0, entry, ports( { 2 } ), allPorts() ), 0 );
   ASSERT_EQ( m.installEntry( 0, entry ), 0 );

   const FerroTypes::FerroPortList added = { { 0, 0, 5 }, { 1, 1, 6 } };
   ASSERT_EQ( m.updateInPortsForEntry( 0, entry, added, true, true ), 0 );
   EXPECT_TRUE( hits( 5, entry ) );
   EXPECT_FALSE( hits( 6, entry ) );
   EXPECT_TRUE( BCM_PBMP_EQ( m.tcamEntryBcmPbmp( 0, entry ), ports( { 2, 5 } ) ) );

   // Without the reinstall the chip keeps matching the old ports.
   ASSERT_EQ( m.updateInPortsForEntry( 0, entry, { { 0, 0, 2 } }, false, false ), 0 );
   EXPECT_TRUE( hits( 2, entry ) );
   EXPECT_TRUE( BCM_PBMP_EQ( m.getProgrammedIpbm( 0, entry ), ports( { 5 } ) ) );
   ASSERT_EQ( m.reinstallEntry( 0, entry ), 0 );
   EXPECT_FALSE( hits( 2, entry ) );
   EXPECT_TRUE( hits( 5, entry ) );
}

// An entry that was never bound matches exactly the ports added to it.
TEST_F( EntryPortsTest, UpdateOfAnUnboundEntryStartsFromNoPort ) {
   auto& m = *sw_->l3Manager;
   const U32 entry = tcpEntry( l3Base, 38 );
   ASSERT_EQ( m.updateInPortsForEntry( 0, entry, { { 0, 0, 7 } }, true, false ), 0 );
   ASSERT_EQ( m.installEntry( 0, entry ), 0 );
   EXPECT_TRUE( hits( 7, entry ) );
   EXPECT_FALSE( hits( 1, entry ) );
}

TEST_F( PortClassTest, EntriesMatchExactlyTheirPortSets ) {
   ASSERT_EQ( sw_->l3Manager->getEntry( 0, l3Base, "a", {} ), l3Base );
   const U32 l2Entry = Agent::ManagerLayout::l2Base;
   ASSERT_EQ( sw_->l2Manager->getEntry( 0, l2Entry, "b", {} ), l2Entry );
   // Two managers, two sets sharing port 2: each entry must keep its own class.
   auto& l3 = *sw_->l3Manager;
   auto& l2 = *sw_->l2Manager;
   ASSERT_EQ( l3.qualifyPortsClassId( 0, l3Base, ports( { 1, 2 } ), true ), 0 );
   ASSERT_EQ( l2.qualifyPortsClassId( 0, l2Entry, ports( { 2, 3 } ), false ), 0 );
   ASSERT_EQ( sw_->l3Manager->installEntry( 0, l3Base ), 0 );
   ASSERT_EQ( sw_->l2Manager->installEntry( 0, l2Entry ), 0 );

   const struct {
      int port;
      bool l3, l2;
   } rows[] = {
      { 1, true, false }, { 2, true, true }, { 3, false, true }, { 4, false, false } };
   for ( const auto& row : rows ) {
      SCOPED_TRACE( row.port );
      EXPECT_EQ( hits( row.port, l3Base ), row.l3 );
      EXPECT_EQ( hits( row.port, l2Entry, l2Group ), row.l2 );
   }
   const auto l3Class = sw_->l3Manager->record( 0, l3Base )->portClassId;
   const auto l2Class = sw_->l2Manager->record( 0, l2Entry )->portClassId;
   ASSERT_TRUE( l3Class && l2Class );
   EXPECT_NE( *l3Class, *l2Class );
   EXPECT_TRUE( sw_->l3Manager->record( 0, l3Base )->pbmp->permanent );
}

TEST_F( PortClassTest, IdenticalSetsShareAClassUntilTheBitsRunOut ) {
   auto& m = *sw_->l3Manager;
   for ( U32 e = l3Base; e < l3Base + 4; ++e ) {
      ASSERT_EQ( m.getEntry( 0, e, "e", {} ), e );
   }
   ASSERT_EQ( m.qualifyPortsClassId( 0, l3Base, ports( { 1 } ), false ), 0 );
   ASSERT_EQ( m.qualifyPortsClassId( 0, l3Base + 1, ports( { 1 } ), false ), 0 );
   EXPECT_EQ( m.record( 0, l3Base )->portClassId,
              m.record( 0, l3Base + 1 )->portClassId );
   ASSERT_EQ( m.qualifyPortsClassId( 0, l3Base + 2, ports( { 2 } ), false ), 0 );
   // The chip has two class bits.
   EXPECT_EQ( m.qualifyPortsClassId( 0, l3Base + 3, ports( { 3 } ), false ),
              BCM_E_RESOURCE );
   // Each unit's port classes are its own.
   ASSERT_EQ( m.getEntry( 1, l3Base + 3, "e", {} ), l3Base + 3 );
   EXPECT_EQ( m.qualifyPortsClassId( 1, l3Base + 3, ports( { 3 } ), false ), 0 );
}

TEST_F( EntryPortsTest, PortClassesNeedAnAclGroupManager ) {
   ASSERT_EQ( sw_->l3Manager->getEntry( 0, l3Base, "a", {} ), l3Base );
   EXPECT_EQ( sw_->l3Manager->qualifyPortsClassId( 0, l3Base, ports( { 1 } ), false ),
              BCM_E_UNAVAIL );
}
