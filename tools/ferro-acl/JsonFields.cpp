#include "tools/ferro-acl/JsonFields.h"

namespace FerroAcl {

std::string memberPath( const std::string& path, std::string_view key ) {
   return path.empty() ? std::string( key ) : path + "." + std::string( key );
}

std::string elementPath( const std::string& path, size_t index ) {
   return path + "[" + std::to_string( index ) + "]";
}

std::string describeValue( const Json& value ) {
   constexpr size_t longest = 40;
   std::string text = value.dump();
   if ( text.size() > longest ) {
      text = text.substr( 0, longest - 3 ) + "...";
   }
   return text;
}

void fieldError( const std::string& path, const std::string& expected, const Json& got ) {
   throw FieldError{ path, "expected " + expected + ", got " + describeValue( got ) };
}

void expectObject( const Json& value, const std::string& path ) {
   if ( !value.is_object() ) {
      fieldError( path, "an object", value );
   }
}

void expectList( const Json& value, const std::string& path ) {
   if ( !value.is_array() ) {
      fieldError( path, "a list", value );
   }
}

void rejectUnknownKeys( const Json& object, const std::string& path,
                        std::initializer_list<std::string_view> known ) {
   for ( const auto& [key, value] : object.items() ) {
      bool isKnown = false;
      for ( std::string_view name : known ) {
         isKnown = isKnown || name == key;
      }
      if ( !isKnown ) {
         std::string names;
         for ( std::string_view name : known ) {
            names += ( names.empty() ? "" : ", " ) + std::string( name );
         }
         throw FieldError{ memberPath( path, key ),
                           "unknown key; expected one of " + names };
      }
   }
}

const Json& requiredMember( const Json& object, const std::string& path,
                            std::string_view key ) {
   const Json* member = optionalMember( object, key );
   if ( member == nullptr ) {
      throw FieldError{ memberPath( path, key ), "required key missing" };
   }
   return *member;
}

const Json* optionalMember( const Json& object, std::string_view key ) {
   auto it = object.find( key );
   return it == object.end() ? nullptr : &*it;
}

bool readBool( const Json& value, const std::string& path ) {
   if ( !value.is_boolean() ) {
      fieldError( path, "true or false", value );
   }
   return value.get<bool>();
}

int64_t readInteger( const Json& value, const std::string& path, int64_t min,
                     int64_t max ) {
   const std::string expected =
       "an integer " + std::to_string( min ) + "-" + std::to_string( max );
   if ( !value.is_number_integer() ) {
      fieldError( path, expected, value );
   }
   if ( value.is_number_unsigned() ) {
      const uint64_t number = value.get<uint64_t>();
      if ( max < 0 || number > uint64_t( max ) || int64_t( number ) < min ) {
         fieldError( path, expected, value );
      }
      return int64_t( number );
   }
   const int64_t number = value.get<int64_t>();
   if ( number < min || number > max ) {
      fieldError( path, expected, value );
   }
   return number;
}

std::string readString( const Json& value, const std::string& path ) {
   if ( !value.is_string() ) {
      fieldError( path, "a string", value );
   }
   return value.get<std::string>();
}

}  // namespace FerroAcl
