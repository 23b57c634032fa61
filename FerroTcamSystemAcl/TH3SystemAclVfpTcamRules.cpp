#include "FerroTcamSystemAcl/TH3SystemAclVfpTcamRules.h"

#include <stdexcept>
#include <string>

namespace FerroTcamSystemAcl {

namespace {

using R = TH3SystemAclVfpTcamRules;

constexpr std::pair<uint8_t, const char*> entry( R value, const char* name ) {
   return { uint8_t( value ), name };
}

// Made when the library is loaded, like the Helper's registration: a lookup
// never waits on its construction.
const Lumo::Enum8Type type(
   "FerroTcamSystemAcl::TH3SystemAclVfpTcamRules",
   { entry( R::ospfMulticastMacRule, "ospfMulticastMacRule" ),
     entry( R::pimMulticastIpRule, "pimMulticastIpRule" ),
     entry( R::ospfMulticastIpRule, "ospfMulticastIpRule" ),
     entry( R::igmpFloodLLMIpRule, "igmpFloodLLMIpRule" ),
     entry( R::igmpMulticastMacRule, "igmpMulticastMacRule" ),
     entry( R::mlagPortRule, "mlagPortRule" ),
     entry( R::kixHBPortRule, "kixHBPortRule" ),
     entry( R::kixControllerPortRule, "kixControllerPortRule" ),
     entry( R::kixClientPortRule, "kixClientPortRule" ),
     entry( R::bgpPortRule, "bgpPortRule" ),
     entry( R::dhcpV4ServerPortRule, "dhcpV4ServerPortRule" ),
     entry( R::dhcpV6ServerPortRule, "dhcpV6ServerPortRule" ),
     entry( R::dhcpV4ClientPortRule, "dhcpV4ClientPortRule" ),
     entry( R::neighborSolicitRule, "neighborSolicitRule" ),
     entry( R::neighborAdvertRule, "neighborAdvertRule" ),
     entry( R::mldQueryRule, "mldQueryRule" ),
     entry( R::mldV1ReportRule, "mldV1ReportRule" ),
     entry( R::mldDoneRule, "mldDoneRule" ),
     entry( R::mldV2ReportRule, "mldV2ReportRule" ) } );

}  // namespace

const Lumo::Enum8Type& TH3SystemAclVfpTcamRulesType() { return type; }

TH3SystemAclVfpTcamRules TH3SystemAclVfpTcamRulesInstance( U32 value ) {
   if ( value > 0xFF || !type.name( uint8_t( value ) ) ) {
      throw std::out_of_range( std::string( type.typeName() ) + ": no value " +
                               std::to_string( value ) );
   }
   return R( value );
}

TH3SystemAclVfpTcamRules TH3SystemAclVfpTcamRulesInstance( const Lumo::String& name ) {
   const auto value = type.value( name );
   if ( !value ) {
      throw std::invalid_argument( std::string( type.typeName() ) + ": no value named \"" +
                                   name + "\"" );
   }
   return R( *value );
}

bool sequenceToValue( Lumo::CharRange range, TH3SystemAclVfpTcamRules* value ) {
   uint8_t parsed;
   if ( !value || !type.sequenceToValue( range, &parsed ) ) {
      return false;
   }
   *value = R( parsed );
   return true;
}

Lumo::String stringValue( TH3SystemAclVfpTcamRules value ) {
   const char* name = type.name( uint8_t( value ) );
   return name ? Lumo::String( name ) : std::to_string( unsigned( value ) );
}

std::ostream& operator<<( std::ostream& os, TH3SystemAclVfpTcamRules value ) {
   const char* name = type.name( uint8_t( value ) );
   return name ? os << name : os << unsigned( value );
}

}  // namespace FerroTcamSystemAcl
