// Typed, strict reading of JSON values for the profile loader. Every reader
// names the value by its path in the document ("units[1].chip") and, when the
// value is not what was expected, throws FieldError saying what was expected
// and what was found. Throwing keeps the schema code a straight read of the
// schema; the loader catches FieldError and nothing else escapes it.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>

#include "tools/ferro-acl/JsonText.h"

namespace FerroAcl {

struct FieldError {
   std::string path;     // "" for the document itself
   std::string problem;  // "expected an integer 0-255, got \"x\""
   std::string message() const { return path.empty() ? problem : path + ": " + problem; }
};

// "a.b" ("b" at the top level) and "a[3]".
std::string memberPath( const std::string& path, std::string_view key );
std::string elementPath( const std::string& path, size_t index );

// The value as JSON text, shortened for messages.
std::string describeValue( const Json& value );

[[noreturn]] void fieldError( const std::string& path, const std::string& expected,
                              const Json& got );

void expectObject( const Json& value, const std::string& path );
void expectList( const Json& value, const std::string& path );
// Rejects every member of `object` whose key is not in `known`.
void rejectUnknownKeys( const Json& object, const std::string& path,
                        std::initializer_list<std::string_view> known );
const Json& requiredMember( const Json& object, const std::string& path,
                            std::string_view key );
// Null when the member is absent.
const Json* optionalMember( const Json& object, std::string_view key );

bool readBool( const Json& value, const std::string& path );
int64_t readInteger( const Json& value, const std::string& path, int64_t min,
                     int64_t max );
std::string readString( const Json& value, const std::string& path );

}  // namespace FerroAcl
