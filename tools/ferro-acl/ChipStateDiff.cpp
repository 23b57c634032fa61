#include "tools/ferro-acl/ChipStateDiff.h"

#include <map>

#include "tools/ferro-acl/ChipStateText.h"

namespace FerroAcl {

namespace {

using Json = nlohmann::ordered_json;

// Entries by rule name, repeated names numbered in id order.
std::vector<std::pair<std::string, const Json*>> keyedEntries( const Json& unit ) {
   std::vector<std::pair<std::string, const Json*>> keyed;
   std::map<std::string, int> seen;
   for ( const Json& entry : unit.at( "entries" ) ) {
      const std::string name = entry.at( "name" ).get<std::string>();
      const std::string base = name.empty() ? "(unnamed)" : name;
      const int n = ++seen[base];
      keyed.emplace_back( n == 1 ? base : base + " #" + std::to_string( n ), &entry );
   }
   return keyed;
}

const Json* findKey( const std::vector<std::pair<std::string, const Json*>>& keyed,
                     const std::string& key ) {
   for ( const auto& [k, entry] : keyed ) {
      if ( k == key ) {
         return entry;
      }
   }
   return nullptr;
}

// Members of two objects (qualifiers or actions) that differ, A's order first.
void diffMembers( const Json& a, const Json& b, const std::string& kind,
                  std::vector<FieldDifference>& out ) {
   for ( const auto& [name, value] : a.items() ) {
      if ( !b.contains( name ) || b.at( name ) != value ) {
         out.push_back( { kind + " " + name, value, b.value( name, Json() ) } );
      }
   }
   for ( const auto& [name, value] : b.items() ) {
      if ( !a.contains( name ) ) {
         out.push_back( { kind + " " + name, Json(), value } );
      }
   }
}

EntryDifference diffEntry( const std::string& rule, const Json& a, const Json& b ) {
   EntryDifference difference{ rule, {} };
   for ( const char* scalar : { "priority", "installed", "enabled" } ) {
      if ( a.at( scalar ) != b.at( scalar ) ) {
         difference.fields.push_back( { scalar, a.at( scalar ), b.at( scalar ) } );
      }
   }
   diffMembers( a.at( "qualifiers" ), b.at( "qualifiers" ), "qualifier", difference.fields );
   diffMembers( a.at( "actions" ), b.at( "actions" ), "action", difference.fields );
   return difference;
}

UnitDifference diffUnit( int number, const Json* a, const Json* b ) {
   UnitDifference unit;
   unit.unit = number;
   unit.chipA = a ? a->at( "chip" ).get<std::string>() : "";
   unit.chipB = b ? b->at( "chip" ).get<std::string>() : "";
   const auto entriesA = a ? keyedEntries( *a ) : decltype( keyedEntries( {} ) ){};
   const auto entriesB = b ? keyedEntries( *b ) : decltype( keyedEntries( {} ) ){};
   for ( const auto& [key, entry] : entriesA ) {
      if ( const Json* other = findKey( entriesB, key ) ) {
         EntryDifference difference = diffEntry( key, *entry, *other );
         if ( !difference.fields.empty() ) {
            unit.changed.push_back( difference );
         }
      } else {
         unit.onlyInA.push_back( key );
      }
   }
   for ( const auto& [key, entry] : entriesB ) {
      if ( !findKey( entriesA, key ) ) {
         unit.onlyInB.push_back( key );
      }
   }
   return unit;
}

// A qualifier or action value as the text form shows it.
std::string valueText( const Json& value ) {
   if ( value.is_null() ) {
      return "absent";
   }
   if ( value.is_string() ) {
      return value.get<std::string>();
   }
   if ( value.is_object() && value.contains( "data" ) ) {
      return valueText( value.at( "data" ) ) + "/" + valueText( value.at( "mask" ) );
   }
   if ( value.is_array() && !value.empty() && value.front().is_object() ) {
      std::string text;
      for ( const Json& item : value ) {
         text += ( text.empty() ? "" : "|" ) + valueText( item );
      }
      return text;
   }
   if ( value.is_array() ) {
      return portRanges( value.get<std::vector<int>>() );
   }
   return value.dump();
}

std::string actionText( const Json& value ) {
   if ( !value.is_array() ) {
      return valueText( value );
   }
   return value.at( 1 ) == 0 ? value.at( 0 ).dump()
                             : value.at( 0 ).dump() + "," + value.at( 1 ).dump();
}

}  // namespace

std::string differenceText( const std::string& field, const Json& value ) {
   if ( field.starts_with( "action " ) ) {
      return actionText( value );
   }
   return field.starts_with( "qualifier " ) ? valueText( value ) : value.dump();
}

bool ChipStateDiff::identical() const {
   for ( const UnitDifference& unit : units ) {
      if ( !unit.identical() ) {
         return false;
      }
   }
   return true;
}

ChipStateDiff diffChipStates( const Json& a, const Json& b ) {
   std::map<int, std::pair<const Json*, const Json*>> units;
   for ( const Json& unit : a.at( "units" ) ) {
      units[unit.at( "unit" ).get<int>()].first = &unit;
   }
   for ( const Json& unit : b.at( "units" ) ) {
      units[unit.at( "unit" ).get<int>()].second = &unit;
   }
   ChipStateDiff diff;
   for ( const auto& [number, pair] : units ) {
      diff.units.push_back( diffUnit( number, pair.first, pair.second ) );
   }
   return diff;
}

void printDiff( std::ostream& out, const ChipStateDiff& diff ) {
   for ( const UnitDifference& unit : diff.units ) {
      out << "unit " << unit.unit << ": " << ( unit.chipA.empty() ? "absent" : unit.chipA )
          << " (A) vs " << ( unit.chipB.empty() ? "absent" : unit.chipB ) << " (B)"
          << ( unit.identical() ? ": identical" : "" ) << '\n';
      for ( const std::string& rule : unit.onlyInA ) {
         out << "  only in A: \"" << rule << "\"\n";
      }
      for ( const std::string& rule : unit.onlyInB ) {
         out << "  only in B: \"" << rule << "\"\n";
      }
      for ( const EntryDifference& entry : unit.changed ) {
         for ( const FieldDifference& field : entry.fields ) {
            out << "  \"" << entry.rule << "\": " << field.field << ": "
                << differenceText( field.field, field.a ) << " -> "
                << differenceText( field.field, field.b )
                << '\n';
         }
      }
   }
   out << ( diff.identical() ? "identical\n" : "different\n" );
}

Json diffJson( const ChipStateDiff& diff ) {
   Json units = Json::array();
   for ( const UnitDifference& unit : diff.units ) {
      Json changed = Json::array();
      for ( const EntryDifference& entry : unit.changed ) {
         Json fields = Json::array();
         for ( const FieldDifference& field : entry.fields ) {
            fields.push_back( Json{ { "field", field.field }, { "a", field.a }, { "b", field.b } } );
         }
         changed.push_back( Json{ { "rule", entry.rule }, { "fields", fields } } );
      }
      units.push_back( Json{ { "unit", unit.unit },
                             { "chipA", unit.chipA },
                             { "chipB", unit.chipB },
                             { "onlyInA", unit.onlyInA },
                             { "onlyInB", unit.onlyInB },
                             { "changed", changed } } );
   }
   return Json{ { "identical", diff.identical() }, { "units", units } };
}

}  // namespace FerroAcl
