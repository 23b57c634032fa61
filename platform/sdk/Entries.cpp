// Groups and entries: creation, priority, and the move of the software copy of
// an entry into hardware (install, reinstall, enable, remove).
#include <algorithm>

#include "platform/sdk/SimState.h"

namespace Sim {

int FieldProcessor::State::removeFromHardware( Entry& entry ) {
   entry.installed = false;
   entry.enabled = false;
   entry.hardware.clearQualifiers();
   entry.hardware.clearActions();
   return 0;
}

int FieldProcessor::bcm_field_group_create_id( int unit, bcm_field_qset_t qset, int pri,
                                               bcm_field_group_t group ) {
   State& s = *state_;
   return s.unitCall(
       "bcm_field_group_create_id", unit,
       [&]() -> int {
          Unit* u = s.findUnit( unit );
          if ( u == nullptr ) {
             return BCM_E_UNIT;
          }
          const bool ingress = BCM_FIELD_QSET_TEST( qset, bcmFieldQualifyStageIngress );
          const bool lookup = BCM_FIELD_QSET_TEST( qset, bcmFieldQualifyStageLookup );
          if ( ingress == lookup || ( qset.w[0] >> kQualifierCount ) != 0 ) {
             return BCM_E_PARAM;
          }
          if ( ( qset.w[0] & u->unsupportedQualifiers ) != 0 ) {
             return BCM_E_UNAVAIL;
          }
          auto [it, created] = u->groups.try_emplace( group );
          if ( !created ) {
             return BCM_E_EXISTS;
          }
          Group& g = it->second;
          g.id = group;
          g.stage = ingress ? bcmFieldStageIngress : bcmFieldStageLookup;
          g.priority = pri;
          g.qset = qset;
          return 0;
       },
       [&]( ArgWriter& w ) { w.dec( unit ).qset( qset ).dec( pri ).dec( group ); } );
}

int FieldProcessor::bcm_field_group_destroy( int unit, bcm_field_group_t group ) {
   State& s = *state_;
   return s.unitCall(
       "bcm_field_group_destroy", unit,
       [&]() -> int {
          Unit* u = s.findUnit( unit );
          if ( u == nullptr ) {
             return BCM_E_UNIT;
          }
          auto it = u->groups.find( group );
          if ( it == u->groups.end() ) {
             return BCM_E_NOT_FOUND;
          }
          if ( !it->second.entries.empty() ) {
             return BCM_E_BUSY;
          }
          u->groups.erase( it );
          return 0;
       },
       [&]( ArgWriter& w ) { w.dec( unit ).dec( group ); } );
}

int FieldProcessor::bcm_field_entry_create_id( int unit, bcm_field_group_t group,
                                               bcm_field_entry_t entry ) {
   State& s = *state_;
   return s.entryCall(
       "bcm_field_entry_create_id", unit, entry,
       [&]() -> int {
          Unit* u = s.findUnit( unit );
          if ( u == nullptr ) {
             return BCM_E_UNIT;
          }
          auto g = u->groups.find( group );
          if ( g == u->groups.end() ) {
             return BCM_E_NOT_FOUND;
          }
          auto [it, created] = u->entries.try_emplace( entry );
          if ( !created ) {
             return BCM_E_EXISTS;
          }
          it->second.id = entry;
          it->second.group = &g->second;
          g->second.entries.push_back( &it->second );
          return 0;
       },
       [&]( ArgWriter& w ) { w.dec( unit ).dec( group ).dec( entry ); } );
}

int FieldProcessor::bcm_field_entry_destroy( int unit, bcm_field_entry_t entry ) {
   State& s = *state_;
   return s.entryCall(
       "bcm_field_entry_destroy", unit, entry,
       [&]() -> int {
          int rc = 0;
          Entry* e = s.callEntry( unit, entry, rc );
          if ( e == nullptr ) {
             return rc;
          }
          if ( e->installed ) {
             s.removeFromHardware( *e );
          }
          std::erase( e->group->entries, e );
          s.findUnit( unit )->entries.erase( entry );
          return 0;
       },
       [&]( ArgWriter& w ) { w.dec( unit ).dec( entry ); } );
}

// The priority belongs to the entry, not to a copy: as on the chip, changing it
// moves an installed entry in the TCAM at once, without a reinstall.
int FieldProcessor::bcm_field_entry_prio_set( int unit, bcm_field_entry_t entry,
                                              int prio ) {
   State& s = *state_;
   return s.entryCall(
       "bcm_field_entry_prio_set", unit, entry,
       [&]() -> int {
          int rc = 0;
          Entry* e = s.callEntry( unit, entry, rc );
          if ( e == nullptr ) {
             return rc;
          }
          e->priority = prio;
          return 0;
       },
       [&]( ArgWriter& w ) { w.dec( unit ).dec( entry ).dec( prio ); } );
}

int FieldProcessor::bcm_field_entry_prio_get( int unit, bcm_field_entry_t entry,
                                              int* prio ) {
   State& s = *state_;
   return s.entryCall(
       "bcm_field_entry_prio_get", unit, entry,
       [&]() -> int {
          int rc = 0;
          Entry* e = s.callEntry( unit, entry, rc, prio != nullptr );
          if ( e == nullptr ) {
             return rc;
          }
          *prio = e->priority;
          return 0;
       },
       [&]( ArgWriter& w ) { w.dec( unit ).dec( entry ).out( prio, "prio" ); } );
}

// Installing an installed entry rewrites it like a reinstall, and also turns it
// back on.
int FieldProcessor::bcm_field_entry_install( int unit, bcm_field_entry_t entry ) {
   State& s = *state_;
   return s.entryCall(
       "bcm_field_entry_install", unit, entry,
       [&]() -> int {
          int rc = 0;
          Entry* e = s.callEntry( unit, entry, rc );
          if ( e == nullptr ) {
             return rc;
          }
          e->hardware = e->software;
          e->installed = true;
          e->enabled = true;
          return 0;
       },
       [&]( ArgWriter& w ) { w.dec( unit ).dec( entry ); } );
}

// A reinstall keeps the entry's enable state: a disabled entry stays disabled
// with its new contents.
int FieldProcessor::bcm_field_entry_reinstall( int unit, bcm_field_entry_t entry ) {
   State& s = *state_;
   return s.entryCall(
       "bcm_field_entry_reinstall", unit, entry,
       [&]() -> int {
          int rc = 0;
          Entry* e = s.callEntry( unit, entry, rc );
          if ( e == nullptr ) {
             return rc;
          }
          if ( !e->installed ) {
             return BCM_E_PARAM;
          }
          e->hardware = e->software;
          return 0;
       },
       [&]( ArgWriter& w ) { w.dec( unit ).dec( entry ); } );
}

int FieldProcessor::bcm_field_entry_remove( int unit, bcm_field_entry_t entry ) {
   State& s = *state_;
   return s.entryCall(
       "bcm_field_entry_remove", unit, entry,
       [&]() -> int {
          int rc = 0;
          Entry* e = s.callEntry( unit, entry, rc );
          if ( e == nullptr ) {
             return rc;
          }
          if ( !e->installed ) {
             return BCM_E_PARAM;
          }
          return s.removeFromHardware( *e );
       },
       [&]( ArgWriter& w ) { w.dec( unit ).dec( entry ); } );
}

int FieldProcessor::bcm_field_entry_enable_set( int unit, bcm_field_entry_t entry,
                                                int enable ) {
   State& s = *state_;
   return s.entryCall(
       "bcm_field_entry_enable_set", unit, entry,
       [&]() -> int {
          int rc = 0;
          Entry* e = s.callEntry( unit, entry, rc );
          if ( e == nullptr ) {
             return rc;
          }
          if ( !e->installed ) {
             return BCM_E_PARAM;
          }
          e->enabled = enable != 0;
          return 0;
       },
       [&]( ArgWriter& w ) { w.dec( unit ).dec( entry ).dec( enable ); } );
}

int FieldProcessor::bcm_field_entry_enable_get( int unit, bcm_field_entry_t entry,
                                                int* enable ) {
   State& s = *state_;
   return s.entryCall(
       "bcm_field_entry_enable_get", unit, entry,
       [&]() -> int {
          int rc = 0;
          Entry* e = s.callEntry( unit, entry, rc, enable != nullptr );
          if ( e == nullptr ) {
             return rc;
          }
          *enable = e->installed && e->enabled ? 1 : 0;
          return 0;
       },
       [&]( ArgWriter& w ) { w.dec( unit ).dec( entry ).out( enable, "enable" ); } );
}

}  // namespace Sim
