#include "tools/ferro-acl/ChipStateDiff.h"

#include <map>

#include "tools/ferro-acl/ChipStateText.h"

namespace FerroAcl {

namespace {

// A qualifier's values as the entry lines show them, without its name.
std::string valuesText( const QualifierState& qualifier ) {
   return qualifierText( qualifier ).substr( qualifier.name.size() + 1 );
}

std::string paramsText( const ActionState& action ) {
   return action.param1 == 0 ? std::to_string( action.param0 )
                             : std::to_string( action.param0 ) + "," +
                                  std::to_string( action.param1 );
}

// Named values of one kind, in the order first seen in `before`, then `after`.
template <typename Item, typename Text>
void diffNamed( const std::vector<Item>& before, const std::vector<Item>& after,
                const char* kind, Text text, std::vector<FieldChange>& changes ) {
   std::vector<std::string> order;
   std::map<std::string, std::pair<std::string, std::string>> values;
   for ( const Item& item : before ) {
      order.push_back( item.name );
      values[ item.name ].first = text( item );
   }
   for ( const Item& item : after ) {
      if ( !values.count( item.name ) ) {
         order.push_back( item.name );
      }
      values[ item.name ].second = text( item );
   }
   for ( const std::string& name : order ) {
      const auto& [ was, is ] = values[ name ];
      if ( was != is ) {
         changes.push_back( FieldChange{ kind, name, was, is } );
      }
   }
}

std::vector<FieldChange> entryChanges( const EntryState& before, const EntryState& after ) {
   std::vector<FieldChange> changes;
   auto state = [ & ]( const char* field, const std::string& was, const std::string& is ) {
      if ( was != is ) {
         changes.push_back( FieldChange{ "state", field, was, is } );
      }
   };
   auto flag = []( bool value ) { return std::string( value ? "true" : "false" ); };
   state( "installed", flag( before.installed ), flag( after.installed ) );
   state( "enabled", flag( before.enabled ), flag( after.enabled ) );
   state( "priority", std::to_string( before.priority ), std::to_string( after.priority ) );
   diffNamed( before.qualifiers, after.qualifiers, "qualifier", valuesText, changes );
   diffNamed( before.actions, after.actions, "action", paramsText, changes );
   return changes;
}

}  // namespace

std::vector<EntryChange> diffChipStates( const ChipState& before, const ChipState& after ) {
   std::map<std::pair<int, int>, const EntryState*> was, is;
   for ( const UnitState& unit : before.units ) {
      for ( const EntryState& entry : unit.entries ) {
         was[ { unit.unit, entry.id } ] = &entry;
      }
   }
   for ( const UnitState& unit : after.units ) {
      for ( const EntryState& entry : unit.entries ) {
         is[ { unit.unit, entry.id } ] = &entry;
      }
   }
   std::map<std::pair<int, int>, EntryChange> changes;
   for ( const auto& [ key, entry ] : was ) {
      auto now = is.find( key );
      if ( now == is.end() ) {
         changes[ key ] = EntryChange{ key.first, key.second, entry->name, "removed", {} };
         continue;
      }
      std::vector<FieldChange> fields = entryChanges( *entry, *now->second );
      if ( !fields.empty() ) {
         changes[ key ] = EntryChange{ key.first, key.second, now->second->name, "changed",
                                       std::move( fields ) };
      }
   }
   for ( const auto& [ key, entry ] : is ) {
      if ( !was.count( key ) ) {
         changes[ key ] = EntryChange{ key.first, key.second, entry->name, "added", {} };
      }
   }
   std::vector<EntryChange> ordered;
   for ( auto& [ key, change ] : changes ) {
      ordered.push_back( std::move( change ) );
   }
   return ordered;
}

}  // namespace FerroAcl
