#include "tools/ferro-acl/FaultOption.h"

#include <cctype>
#include <charconv>
#include <climits>
#include <string>

namespace FerroAcl {

namespace {

struct NamedCode {
   std::string_view name;
   int code;
};

const NamedCode returnCodes[] = {
    { "BCM_E_INTERNAL", BCM_E_INTERNAL },
    { "BCM_E_MEMORY", BCM_E_MEMORY },
    { "BCM_E_UNIT", BCM_E_UNIT },
    { "BCM_E_PARAM", BCM_E_PARAM },
    { "BCM_E_EMPTY", BCM_E_EMPTY },
    { "BCM_E_FULL", BCM_E_FULL },
    { "BCM_E_NOT_FOUND", BCM_E_NOT_FOUND },
    { "BCM_E_EXISTS", BCM_E_EXISTS },
    { "BCM_E_TIMEOUT", BCM_E_TIMEOUT },
    { "BCM_E_BUSY", BCM_E_BUSY },
    { "BCM_E_FAIL", BCM_E_FAIL },
    { "BCM_E_DISABLED", BCM_E_DISABLED },
    { "BCM_E_BADID", BCM_E_BADID },
    { "BCM_E_RESOURCE", BCM_E_RESOURCE },
    { "BCM_E_CONFIG", BCM_E_CONFIG },
    { "BCM_E_UNAVAIL", BCM_E_UNAVAIL },
    { "BCM_E_INIT", BCM_E_INIT },
    { "BCM_E_PORT", BCM_E_PORT },
    { "BCM_E_IO", BCM_E_IO },
    { "BCM_E_ACCESS", BCM_E_ACCESS },
    { "BCM_E_NO_HANDLER", BCM_E_NO_HANDLER },
    { "BCM_E_PARTIAL", BCM_E_PARTIAL },
};

Error malformed( std::string_view text, const std::string& problem ) {
   return Error{ "--fail \"" + std::string( text ) + "\": " + problem +
                 "; expected FUNCTION[@N][=RC], e.g. bcm_field_action_add@2=BCM_E_FULL "
                 "(N 1 or more, RC a BCM_E_ name or a negative number)" };
}

// Every SDK function is bcm_<identifier>; anything else could never match a
// call and would leave the person waiting for a failure that cannot happen.
bool isSdkFunction( std::string_view name ) {
   if ( name.size() <= 4 || name.substr( 0, 4 ) != "bcm_" ) {
      return false;
   }
   for ( char c : name ) {
      if ( !std::isalnum( static_cast<unsigned char>( c ) ) && c != '_' ) {
         return false;
      }
   }
   return true;
}

// A whole decimal integer, sign allowed only where the caller allows it.
std::optional<long long> wholeNumber( std::string_view text ) {
   long long value = 0;
   const char* end = text.data() + text.size();
   auto [next, error] = std::from_chars( text.data(), end, value );
   if ( text.empty() || error != std::errc() || next != end ) {
      return std::nullopt;
   }
   return value;
}

}  // namespace

std::optional<int> returnCodeByName( std::string_view name ) {
   for ( const NamedCode& known : returnCodes ) {
      if ( known.name == name ) {
         return known.code;
      }
   }
   return std::nullopt;
}

Result<Sim::Fault> parseFaultOption( std::string_view text ) {
   std::string_view function = text;
   std::string_view nth;
   std::string_view rc;
   bool hasNth = false;
   bool hasRc = false;
   if ( const size_t equals = function.find( '=' ); equals != std::string_view::npos ) {
      rc = function.substr( equals + 1 );
      function = function.substr( 0, equals );
      hasRc = true;
   }
   if ( const size_t at = function.find( '@' ); at != std::string_view::npos ) {
      nth = function.substr( at + 1 );
      function = function.substr( 0, at );
      hasNth = true;
   }
   if ( !isSdkFunction( function ) ) {
      return malformed( text, "FUNCTION must be an SDK function name (bcm_...)" );
   }

   Sim::Fault fault;
   fault.function = std::string( function );
   fault.once = true;
   if ( hasNth ) {
      // Digits only: "+2" or " 2" are typos, not counts.
      const auto n = nth.empty() || !std::isdigit( static_cast<unsigned char>( nth[0] ) )
                         ? std::nullopt
                         : wholeNumber( nth );
      if ( !n || *n < 1 || *n > INT_MAX ) {
         return malformed( text, "N must be a whole number 1 or more" );
      }
      fault.nth = int( *n );
   }
   if ( hasRc ) {
      if ( auto named = returnCodeByName( rc ) ) {
         fault.rc = *named;
      } else if ( auto number =
                      rc.size() > 1 && rc[0] == '-' ? wholeNumber( rc ) : std::nullopt;
                  number && *number < 0 && *number >= INT_MIN ) {
         fault.rc = int( *number );
      } else {
         return malformed( text, "RC must be a BCM_E_ name or a negative number" );
      }
   }
   return fault;
}

}  // namespace FerroAcl
