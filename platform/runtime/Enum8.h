// Support for 8-bit enumerations: value <-> name, and parsing a name out of a
// character range. Names are kept sorted so that a lookup by name is a binary
// search; values index a separate table.
#pragma once

#include <array>
#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

namespace Lumo {

struct CharRange {
   const char* begin;
   const char* end;
   std::string_view view() const { return { begin, size_t( end - begin ) }; }
};

class Enum8Type {
  public:
   // Values must be distinct; names must be distinct.
   Enum8Type( const char* typeName,
              std::initializer_list<std::pair<uint8_t, const char*>> values );

   const char* typeName() const { return typeName_; }
   // Null for a value that has no name.
   const char* name( uint8_t value ) const { return byValue_[ value ]; }
   std::optional<uint8_t> value( std::string_view name ) const;
   // Parses the whole range as a value name; false (and *value untouched) when
   // it names no value.
   bool sequenceToValue( CharRange range, uint8_t* value ) const;
   size_t size() const { return byName_.size(); }

  private:
   const char* typeName_;
   std::array<const char*, 256> byValue_{};
   std::vector<std::pair<std::string_view, uint8_t>> byName_;  // sorted by name
};

}  // namespace Lumo
