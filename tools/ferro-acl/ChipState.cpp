#include "tools/ferro-acl/ChipState.h"

#include <algorithm>

#include "platform/sdk/Simulator.h"

namespace FerroAcl {

namespace {

const char* stageName( bcm_field_stage_t stage ) {
   switch ( stage ) {
      case bcmFieldStageIngress:
         return "ingress";
      case bcmFieldStageLookup:
         return "vlan";
   }
   return "ingress";
}

EntryState entryState(
    const Sim::EntryView& view, U16 unit, const Agent::Switch& sw,
    const std::vector<std::pair<const char*, const FerroTcamSystemAcl::RuleTable*>>&
        tables ) {
   EntryState entry;
   entry.id = view.id;
   entry.stage = stageName( view.stage );
   entry.priority = view.priority;
   entry.installed = view.installed;
   entry.enabled = view.enabled;
   const U32 id = U32( view.id );
   EntryOwner owner = entryOwner( sw, unit, id );
   entry.group = std::move( owner.group );
   entry.name = std::move( owner.name );
   for ( const Sim::QualifierView& qualifier : view.software.qualifiers ) {
      entry.qualifiers.push_back( describeQualifier( qualifier ) );
   }
   for ( const Sim::ActionView& action : view.software.actions ) {
      entry.actions.push_back( ActionState{ action.name, action.param0, action.param1 } );
   }
   for ( const auto& [name, table] : tables ) {
      auto it = table->find( unit );
      if ( it != table->end() && it->second == id ) {
         entry.recordedAs.push_back( name );
      }
   }
   return entry;
}

// A slot of a pre-allocated pool that no rule has asked for or touched: it
// exists on the chip but is not part of the system ACL.
bool freePoolSlot( const Sim::EntryView& view, U16 unit, const Agent::Switch& sw ) {
   if ( view.installed || !view.software.qualifiers.empty() ||
        !view.software.actions.empty() || !sw.groupManager ) {
      return false;
   }
   const U32 id = U32( view.id );
   for ( const FerroTcamEntryManager::Ptr& manager : sw.groupManager->managers() ) {
      const auto* pool = dynamic_cast<const FerroBoundedTcamEntryManager*>( manager.get() );
      if ( pool && pool->preallocated() && id >= pool->baseEntryId() &&
           id - pool->baseEntryId() < pool->size() ) {
         return pool->record( unit, id ) == nullptr;
      }
   }
   return false;
}

}  // namespace

EntryOwner entryOwner( const Agent::Switch& sw, U16 unit, U32 id ) {
   EntryOwner owner;
   if ( sw.groupManager ) {
      if ( auto manager = sw.groupManager->managerForEntry( id ) ) {
         owner.group = manager->name();
         if ( const TcamEntryRecord* record = manager->record( unit, id ) ) {
            owner.name = record->ruleName;
         }
      }
   }
   return owner;
}

ChipState collectChipState( const Agent::Switch& sw,
                            const FerroTcamSystemAcl::HelperBase& helper,
                            const BringupPlan& plan ) {
   ChipState state;
   const auto tables = helper.ruleTables();
   const Sim::FieldProcessor& chip = Sim::FieldProcessor::instance();
   for ( U16 unit : plan.units ) {
      UnitState& unitState = state.units.emplace_back();
      unitState.unit = unit;
      if ( const Agent::ChipProfile* profile = sw.chip( unit ) ) {
         unitState.chip = profile->family;
         unitState.model = profile->model;
      }
      unitState.unverifiedReason = plan.unverifiedReason( unit );
      unitState.verified = unitState.unverifiedReason.empty();
      for ( const Sim::EntryView& view : chip.entries( unit ) ) {
         if ( !freePoolSlot( view, unit, sw ) ) {
            unitState.entries.push_back( entryState( view, unit, sw, tables ) );
         }
      }
      std::sort( unitState.entries.begin(), unitState.entries.end(),
                 []( const EntryState& a, const EntryState& b ) { return a.id < b.id; } );
   }
   for ( const SkippedStep& skipped : plan.skipped ) {
      state.skipped.push_back( SkippedState{ skipped.step->name, skipped.reason } );
   }
   return state;
}

}  // namespace FerroAcl
