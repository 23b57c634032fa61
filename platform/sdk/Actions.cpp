// Actions of an entry's software copy, and the whole-entry action edits.
#include "platform/sdk/SimState.h"

namespace Sim {

namespace {

using Shim::FieldAction;

bool stageSupports( bcm_field_stage_t stage, FieldAction action ) {
   switch ( stage ) {
      case bcmFieldStageLookup:
         // The VLAN stage only classifies; forwarding decisions come later.
         return action == FieldAction::ClassDestSet || action == FieldAction::Drop;
      case bcmFieldStageIngress:
         return action != FieldAction::ClassDestSet;
   }
   return false;
}

int checkParams( const Unit& unit, FieldAction action, uint32_t param0 ) {
   switch ( action ) {
      case FieldAction::CosQCpuNew:
         return param0 >= static_cast<uint32_t>( unit.config.cpuQueueCount ) ? BCM_E_PARAM
                                                                             : 0;
      case FieldAction::PrioIntNew:
         return param0 > 15 ? BCM_E_PARAM : 0;
      case FieldAction::NewClassId:
      case FieldAction::ClassDestSet:
         return param0 > unit.classIdMax ? BCM_E_PARAM : 0;
      case FieldAction::CopyToCpu:
      case FieldAction::Drop:
      case FieldAction::SwitchToCpuCancel:
      case FieldAction::EgressClassSelect:
      case FieldAction::Count:
         break;
   }
   return 0;
}

// Copying to the CPU and cancelling the switch to the CPU contradict each
// other; the SDK refuses the second one whichever comes first.
bool conflicts( const CopyState& copy, FieldAction action ) {
   switch ( action ) {
      case FieldAction::CopyToCpu:
         return copy.hasAction( FieldAction::SwitchToCpuCancel );
      case FieldAction::SwitchToCpuCancel:
         return copy.hasAction( FieldAction::CopyToCpu );
      case FieldAction::CosQCpuNew:
      case FieldAction::PrioIntNew:
      case FieldAction::Drop:
      case FieldAction::ClassDestSet:
      case FieldAction::NewClassId:
      case FieldAction::EgressClassSelect:
      case FieldAction::Count:
         break;
   }
   return false;
}

}  // namespace

int FieldProcessor::bcm_field_action_add( int unit, bcm_field_entry_t entry,
                                          bcm_field_action_t action, uint32 param0,
                                          uint32 param1 ) {
   State& s = *state_;
   return s.entryCall(
       "bcm_field_action_add", unit, entry,
       [&]() -> int {
          Unit* u = s.findUnit( unit );
          if ( u == nullptr ) {
             return BCM_E_UNIT;
          }
          const auto a = decodeAction( s.version, action );
          if ( !a ) {
             return BCM_E_PARAM;
          }
          if ( int rc = checkParams( *u, *a, param0 ); rc != 0 ) {
             return rc;
          }
          Entry* e = u->findEntry( entry );
          if ( e == nullptr ) {
             return BCM_E_NOT_FOUND;
          }
          const int bit = static_cast<int>( *a );
          if ( ( ( u->unsupportedActions >> bit ) & 1 ) ||
               !stageSupports( e->group->stage, *a ) ) {
             return BCM_E_UNAVAIL;
          }
          CopyState& sw = e->software;
          if ( sw.hasAction( *a ) || conflicts( sw, *a ) ) {
             return BCM_E_CONFIG;
          }
          sw.actionsPresent |= 1u << bit;
          sw.actions[bit] = ActionParams{ param0, param1 };
          sw.actionRank[bit] = sw.nextRank++;
          return 0;
       },
       [&]( ArgWriter& w ) {
          w.dec( unit ).dec( entry ).action( action ).dec( param0 ).dec( param1 );
       } );
}

int FieldProcessor::bcm_field_action_remove( int unit, bcm_field_entry_t entry,
                                             bcm_field_action_t action ) {
   State& s = *state_;
   return s.entryCall(
       "bcm_field_action_remove", unit, entry,
       [&]() -> int {
          Unit* u = s.findUnit( unit );
          if ( u == nullptr ) {
             return BCM_E_UNIT;
          }
          const auto a = decodeAction( s.version, action );
          if ( !a ) {
             return BCM_E_PARAM;
          }
          Entry* e = u->findEntry( entry );
          if ( e == nullptr ) {
             return BCM_E_NOT_FOUND;
          }
          CopyState& sw = e->software;
          if ( !sw.hasAction( *a ) ) {
             return BCM_E_NOT_FOUND;
          }
          const int bit = static_cast<int>( *a );
          sw.actionsPresent &= ~( 1u << bit );
          sw.actions[bit] = ActionParams{};
          sw.actionRank[bit] = 0;
          return 0;
       },
       [&]( ArgWriter& w ) { w.dec( unit ).dec( entry ).action( action ); } );
}

int FieldProcessor::bcm_field_action_get( int unit, bcm_field_entry_t entry,
                                          bcm_field_action_t action, uint32* param0,
                                          uint32* param1 ) {
   State& s = *state_;
   return s.entryCall(
       "bcm_field_action_get", unit, entry,
       [&]() -> int {
          const Unit* u = s.findUnit( unit );
          if ( u == nullptr ) {
             return BCM_E_UNIT;
          }
          const auto a = decodeAction( s.version, action );
          if ( !a || param0 == nullptr || param1 == nullptr ) {
             return BCM_E_PARAM;
          }
          const Entry* e = u->findEntry( entry );
          if ( e == nullptr ) {
             return BCM_E_NOT_FOUND;
          }
          if ( !e->software.hasAction( *a ) ) {
             return BCM_E_NOT_FOUND;
          }
          const ActionParams& p = e->software.actions[static_cast<size_t>( *a )];
          *param0 = p.param0;
          *param1 = p.param1;
          return 0;
       },
       [&]( ArgWriter& w ) {
          w.dec( unit )
              .dec( entry )
              .action( action )
              .out( param0, "param0" )
              .out( param1, "param1" );
       } );
}

int FieldProcessor::bcm_field_action_remove_all( int unit, bcm_field_entry_t entry ) {
   State& s = *state_;
   return s.entryCall(
       "bcm_field_action_remove_all", unit, entry,
       [&]() -> int {
          int rc = 0;
          Entry* e = s.callEntry( unit, entry, rc );
          if ( e == nullptr ) {
             return rc;
          }
          e->software.clearActions();
          return 0;
       },
       [&]( ArgWriter& w ) { w.dec( unit ).dec( entry ); } );
}

// The simulated chip has no meters, so no entry ever has a policer attached;
// detaching all of them is still valid on any existing entry.
int FieldProcessor::bcm_field_entry_policer_detach_all( int unit,
                                                        bcm_field_entry_t entry ) {
   State& s = *state_;
   return s.entryCall(
       "bcm_field_entry_policer_detach_all", unit, entry,
       [&]() -> int {
          const Unit* u = s.findUnit( unit );
          if ( u == nullptr ) {
             return BCM_E_UNIT;
          }
          return u->findEntry( entry ) == nullptr ? BCM_E_NOT_FOUND : 0;
       },
       [&]( ArgWriter& w ) { w.dec( unit ).dec( entry ); } );
}

}  // namespace Sim
