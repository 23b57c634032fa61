#include "tools/ferro-acl/ChipStateText.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <iomanip>

namespace FerroAcl {

namespace {

std::string numberText( uint64_t value, bool hex ) {
   char text[24];
   std::snprintf( text, sizeof text, hex ? "0x%llx" : "%llu", (unsigned long long)value );
   return text;
}

// Masks are bit patterns, so numbers read best in hex there.
std::string fieldText( const FieldText& text, bool isMask ) {
   if ( auto number = std::get_if<uint64_t>( &text ) ) {
      return numberText( *number, isMask );
   }
   if ( auto ports = std::get_if<std::vector<int>>( &text ) ) {
      return portRanges( *ports );
   }
   return std::get<std::string>( text );
}

std::string valueText( const FieldValue& value ) {
   std::string text = fieldText( value.data, false );
   if ( !value.exact ) {
      text += "/" + fieldText( value.mask, true );
   }
   return text;
}

std::string entryState( const EntryState& entry ) {
   if ( !entry.installed ) {
      return "software";
   }
   return entry.enabled ? "enabled" : "disabled";
}

template <typename Item, typename Format>
std::string joined( const std::vector<Item>& items, const char* separator,
                    Format format ) {
   std::string text;
   for ( const Item& item : items ) {
      text += ( text.empty() ? "" : separator ) + format( item );
   }
   return text;
}

constexpr size_t columnCount = 8;
using Row = std::array<std::string, columnCount>;
// Columns that hold numbers are right-aligned.
constexpr std::array<bool, columnCount> rightAligned{ true, true };

Row entryRow( const EntryState& entry ) {
   return Row{
       std::to_string( entry.id ),
       std::to_string( entry.priority ),
       entryState( entry ),
       entry.group.empty() ? "-" : entry.group,
       entry.name.empty() ? "-" : entry.name,
       joined( entry.qualifiers, " ", qualifierText ),
       joined( entry.actions, " ", actionText ),
       joined( entry.recordedAs, ",", []( const std::string& s ) { return s; } ) };
}

void printRows( std::ostream& out, const std::vector<Row>& rows ) {
   std::array<size_t, columnCount> widths{};
   for ( const Row& row : rows ) {
      for ( size_t c = 0; c < columnCount; ++c ) {
         widths[c] = std::max( widths[c], row[c].size() );
      }
   }
   for ( const Row& row : rows ) {
      std::string line = "  ";
      for ( size_t c = 0; c < columnCount; ++c ) {
         const size_t pad = widths[c] - row[c].size();
         if ( rightAligned[c] ) {
            line += std::string( pad, ' ' ) + row[c];
         } else {
            line += row[c] + ( c + 1 == columnCount ? "" : std::string( pad, ' ' ) );
         }
         line += c + 1 == columnCount ? "" : "  ";
      }
      line.erase( line.find_last_not_of( ' ' ) + 1 );
      out << line << '\n';
   }
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
   return qualifier.name + "=" + joined( qualifier.values, "|", valueText );
}

std::string actionText( const ActionState& action ) {
   if ( action.param1 != 0 ) {
      return action.name + "(" + std::to_string( action.param0 ) + "," +
             std::to_string( action.param1 ) + ")";
   }
   if ( action.param0 != 0 ) {
      return action.name + "(" + std::to_string( action.param0 ) + ")";
   }
   return action.name;
}

void printChipState( std::ostream& out, const ChipState& state ) {
   for ( const UnitState& unit : state.units ) {
      out << "unit " << unit.unit << ": " << unit.chip << ", model " << unit.model << ", "
          << unit.entries.size() << ( unit.entries.size() == 1 ? " entry" : " entries" )
          << '\n';
      std::vector<Row> rows{ Row{ "id", "prio", "state", "group", "name", "qualifiers",
                                  "actions", "tables" } };
      for ( const EntryState& entry : unit.entries ) {
         rows.push_back( entryRow( entry ) );
      }
      printRows( out, rows );
   }
   for ( const SkippedState& step : state.skipped ) {
      out << "skipped: " << step.name << " (" << step.reason << ")\n";
   }
   for ( const UnitState& unit : state.units ) {
      out << "unit " << unit.unit << ": "
          << ( unit.verified ? "verified"
                             : "not verified (" + unit.unverifiedReason + ")" )
          << '\n';
   }
}

}  // namespace FerroAcl
