// PTP mode changes: the five PTP entries are switched on or off, and the two
// L2 entries gain or lose the action that the stronger behaviour asks for.
// Mode 0 is PTP off; the elevator serves only modes 1, 2 and 7.
#include "FerroTcamSystemAcl/CheckedCall.h"
#include "FerroTcamSystemAcl/Helper.h"
#include "FerroTcamSystemAcl/LibraryGlobals.h"

namespace FerroTcamSystemAcl {

namespace {

bool ptpOn( Ptp::PtpMode mode ) { return mode != Ptp::PtpMode( 0 ); }

bool elevatorMode( Ptp::PtpMode mode ) {
   return mode == Ptp::PtpMode( 1 ) || mode == Ptp::PtpMode( 2 ) || mode == Ptp::PtpMode( 7 );
}

}  // namespace

void Helper::configPTPActions( U16 unit, Ptp::PtpMode mode, bool enable ) {
   FERRO_TRACE( 8, "configPTPActions" << " unit: " << unit );
   if ( tapAggregationEnabled ) {
      FERRO_TRACE( 2, "PTP Not supported modeTapAgg, returning" );
      return;
   }
   configPTPElevatorCosq( unit, mode );
   configIpv4McastPTP( unit, mode, enable );
   configIpv4UnicastFwdPTP( unit, mode, enable );
   configureL2McastPTP( unit, mode, enable );
   configureL2UnicastPTP( unit, mode, enable );
}

// The results of enableEntry are not looked at: an entry that is not there
// has nothing to switch.
void Helper::configPTPElevatorCosq( U16 unit, Ptp::PtpMode mode ) {
   FERRO_TRACE( 8, "configPTPElevatorCosq" << " unit: " << unit );
   l3TcamEntryManager()->enableEntry( unit, ipv4ElevatorPtpRule( unit ), elevatorMode( mode ),
                                      BCM_FIELD_ENTRY_ENABLE_STATUS );
}

void Helper::configIpv4McastPTP( U16 unit, Ptp::PtpMode mode, bool enable ) {
   FERRO_TRACE( 8, "configIpv4McastPTP" << " unit: " << unit );
   l3TcamEntryManager()->enableEntry( unit, ipv4McastPtpRule( unit ), ptpOn( mode ) && enable,
                                      BCM_FIELD_ENTRY_ENABLE_STATUS );
}

void Helper::configIpv4UnicastFwdPTP( U16 unit, Ptp::PtpMode mode, bool enable ) {
   FERRO_TRACE( 8, "configIpv4UnicastFwdPTP" << " unit: " << unit );
   l3TcamEntryManager()->enableEntry( unit, ipv4UnicastFwdPtpRule( unit ),
                                      ptpOn( mode ) && enable,
                                      BCM_FIELD_ENTRY_ENABLE_STATUS );
}

void Helper::configureL2McastPTP( U16 unit, Ptp::PtpMode mode, bool enable ) {
   FERRO_TRACE( 8, "configureL2McastPTP" << " unit: " << unit );
   const FerroBoundedTcamEntryManager::Ptr& manager = l2TcamEntryManager();
   const U32 entry = l2McastPtpRule( unit );
   manager->getEntry( unit, entry, "L2 Mcast PTP", FerroTcam::RequestKey::defaultKey() );
   if ( ptpOn( mode ) && enable ) {
      BCM_CHECK( bcm_field_action_add( unit, entry, bcmFieldActionDrop, 0, 0 ) );
   } else {
      // Absent when the mode did not ask for it before: that is fine.
      BCM_NO_RC_CHECK( bcm_field_action_remove( unit, entry, bcmFieldActionDrop ) );
   }
   const int rc = manager->installEntry( unit, entry );
   FERRO_ASSERT( rc == BCM_E_NONE && "installEntry failed" );
   // On whenever PTP is, whatever the flag.
   manager->enableEntry( unit, entry, ptpOn( mode ), BCM_FIELD_ENTRY_ENABLE_STATUS );
}

void Helper::configureL2UnicastPTP( U16 unit, Ptp::PtpMode mode, bool enable ) {
   FERRO_TRACE( 8, "configureL2UnicastPTP" << " unit: " << unit );
   const FerroBoundedTcamEntryManager::Ptr& manager = l2TcamEntryManager();
   const U32 entry = l2UnicastPtpRule( unit );
   manager->getEntry( unit, entry, "L2 Unicast PTP", FerroTcam::RequestKey::defaultKey() );
   if ( ptpOn( mode ) && enable ) {
      BCM_CHECK( bcm_field_action_add( unit, entry, bcmFieldActionSwitchToCpuCancel, 0, 0 ) );
   } else {
      BCM_NO_RC_CHECK( bcm_field_action_remove( unit, entry, bcmFieldActionSwitchToCpuCancel ) );
   }
   const int rc = manager->installEntry( unit, entry );
   FERRO_ASSERT( rc == BCM_E_NONE && "installEntry failed" );
   manager->enableEntry( unit, entry, ptpOn( mode ), BCM_FIELD_ENTRY_ENABLE_STATUS );
}

}  // namespace FerroTcamSystemAcl
