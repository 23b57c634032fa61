#include "platform/runtime/Enum8.h"

#include <algorithm>
#include <stdexcept>
#include <string>

namespace Lumo {

Enum8Type::Enum8Type( const char* typeName,
                      std::initializer_list<std::pair<uint8_t, const char*>> values )
      : typeName_( typeName ) {
   for ( const auto& [ value, name ] : values ) {
      if ( byValue_[ value ] ) {
         throw std::logic_error( std::string( typeName ) + ": value " +
                                 std::to_string( value ) + " named twice" );
      }
      byValue_[ value ] = name;
      byName_.emplace_back( name, value );
   }
   std::sort( byName_.begin(), byName_.end() );
   auto dup = std::adjacent_find( byName_.begin(), byName_.end(),
                                  []( auto& a, auto& b ) { return a.first == b.first; } );
   if ( dup != byName_.end() ) {
      throw std::logic_error( std::string( typeName ) + ": name " +
                              std::string( dup->first ) + " used twice" );
   }
}

std::optional<uint8_t> Enum8Type::value( std::string_view name ) const {
   auto it = std::lower_bound( byName_.begin(), byName_.end(), name,
                               []( const auto& entry, std::string_view n ) {
                                  return entry.first < n;
                               } );
   if ( it == byName_.end() || it->first != name ) {
      return std::nullopt;
   }
   return it->second;
}

bool Enum8Type::sequenceToValue( CharRange range, uint8_t* value ) const {
   if ( !value || !range.begin || range.end < range.begin ) {
      return false;
   }
   auto found = this->value( range.view() );
   if ( !found ) {
      return false;
   }
   *value = *found;
   return true;
}

}  // namespace Lumo
