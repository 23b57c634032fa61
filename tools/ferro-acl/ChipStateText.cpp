#include "tools/ferro-acl/ChipStateText.h"

#include <algorithm>
#include <cstdio>
#include <map>

#include "tools/ferro-acl/EntryWords.h"
#include "tools/ferro-acl/TextTable.h"

namespace FerroAcl {

namespace {

// Masks are bit patterns, so numbers read best in hex there.
std::string fieldText( const FieldText& text, bool isMask ) {
   if ( auto number = std::get_if<uint64_t>( &text ) ) {
      char buffer[24];
      std::snprintf( buffer, sizeof buffer, isMask ? "0x%llx" : "%llu",
                     (unsigned long long)*number );
      return buffer;
   }
   if ( auto ports = std::get_if<std::vector<int>>( &text ) ) {
      return portRanges( *ports );
   }
   return std::get<std::string>( text );
}

std::string entryState( const EntryState& entry ) {
   if ( !entry.installed ) {
      return "not installed";
   }
   return entry.enabled ? "enabled" : "disabled";
}

template <typename Item, typename Format>
std::vector<std::string> words( const std::vector<Item>& items, Format format ) {
   std::vector<std::string> result;
   for ( const Item& item : items ) {
      result.push_back( format( item ) );
   }
   return result;
}

TextRow entryRow( const EntryState& entry ) {
   return TextRow{ { std::to_string( entry.id ) },
                   { std::to_string( entry.priority ) },
                   { entryState( entry ) },
                   wordCell( entry.name ),
                   listCell( words( entry.qualifiers, qualifierWords ), "," ),
                   listCell( words( entry.actions, actionWords ), "," ),
                   listCell( entry.recordedAs, "," ) };
}

struct GroupKey {
   int stageOrder;  // the VLAN stage meets packets first
   int firstId;     // groups in the order of their entry pools
   std::string stage;
   std::string group;
   bool operator<( const GroupKey& other ) const {
      return std::tie( stageOrder, firstId ) < std::tie( other.stageOrder, other.firstId );
   }
};

void printUnit( std::ostream& out, const UnitState& unit ) {
   out << "unit " << unit.unit << ": " << unit.chip << ", model " << unit.model << ", "
       << unit.entries.size() << ( unit.entries.size() == 1 ? " entry" : " entries" )
       << '\n';
   std::map<std::pair<std::string, std::string>, std::vector<const EntryState*>> groups;
   for ( const EntryState& entry : unit.entries ) {
      groups[{ entry.stage, entry.group }].push_back( &entry );
   }
   std::map<GroupKey, std::vector<const EntryState*>> ordered;
   for ( auto& [key, entries] : groups ) {
      std::sort( entries.begin(), entries.end(), []( const EntryState* a, const EntryState* b ) {
         return a->priority != b->priority ? a->priority > b->priority : a->id < b->id;
      } );
      const int firstId = ( *std::min_element( entries.begin(), entries.end(),
                                               []( const EntryState* a, const EntryState* b ) {
                                                  return a->id < b->id;
                                               } ) )->id;
      ordered[{ key.first == "vlan" ? 0 : 1, firstId, key.first, key.second }] = entries;
   }
   TextTable table( { { true }, { true }, {}, { false, 20 }, { false, 40 }, { false, 20 },
                      { false, 16 } },
                    terminalWidth, 4 );
   table.addRow( { { "id" }, { "prio" }, { "state" }, { "rule" }, { "match" }, { "actions" },
                   { "tables" } } );
   for ( const auto& [key, entries] : ordered ) {
      table.addLine( "  " + key.stage + " stage, " +
                     ( key.group.empty() ? "no group" : "group \"" + key.group + "\"" ) +
                     " (" + std::to_string( entries.size() ) +
                     ( entries.size() == 1 ? " entry)" : " entries)" ) );
      for ( const EntryState* entry : entries ) {
         table.addRow( entryRow( *entry ) );
      }
   }
   table.print( out );
}

}  // namespace

std::string portRanges( const std::vector<int>& ports ) {
   std::string text;
   for ( size_t i = 0; i < ports.size(); ) {
      size_t j = i;
      while ( j + 1 < ports.size() && ports[j + 1] == ports[j] + 1 ) {
         ++j;
      }
      text += ( text.empty() ? "" : "," ) + std::to_string( ports[i] );
      if ( j > i ) {
         text += "-" + std::to_string( ports[j] );
      }
      i = j + 1;
   }
   return text.empty() ? "none" : text;
}

std::string qualifierText( const QualifierState& qualifier ) {
   std::string values;
   for ( const FieldValue& value : qualifier.values ) {
      values += ( values.empty() ? "" : "|" ) + fieldText( value.data, false ) +
                ( value.exact ? "" : "/" + fieldText( value.mask, true ) );
   }
   return qualifier.name + "=" + values;
}

void printChipState( std::ostream& out, const ChipState& state ) {
   for ( const UnitState& unit : state.units ) {
      printUnit( out, unit );
   }
   for ( const SkippedState& step : state.skipped ) {
      out << "skipped: " << step.name << " (" << step.reason << ")\n";
   }
   for ( const UnitState& unit : state.units ) {
      out << "unit " << unit.unit << ": "
          << ( unit.verified ? "verified" : "not verified (" + unit.unverifiedReason + ")" )
          << '\n';
   }
}

}  // namespace FerroAcl
