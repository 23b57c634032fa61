#include "tools/ferro-acl/ChipAttributeFields.h"

#include <algorithm>
#include <iterator>
#include <limits>

#include "platform/sdk/Bcm.h"
#include "tools/ferro-acl/JsonFields.h"

namespace FerroAcl {

namespace {

using Caps = FerroCentral::ChipCapabilities;
constexpr int64_t u8Max = 255;
constexpr int64_t u32Max = std::numeric_limits<U32>::max();

// Geometry limits are the simulated chip's: it refuses a unit outside them.
const ChipAttributeField fields[] = {
    { "dstClassL3Supported", &Caps::dstClassL3Supported },
    { "espWarRequired", &Caps::espWarRequired },
    { "extensionHeaderTypeQualifierSupported",
      &Caps::extensionHeaderTypeQualifierSupported },
    { "ipfixSupported", &Caps::ipfixSupported },
    { "ipfixInPort", &Caps::ipfixInPort, 0, u8Max },
    { "gleanViaNextHopToCpu", &Caps::gleanViaNextHopToCpu },
    { "gleanClassIdSupported", &Caps::gleanClassIdSupported },
    { "l3McCpuOifCosqSupported", &Caps::l3McCpuOifCosqSupported },
    { "ipv6MulticastSupported", &Caps::ipv6MulticastSupported },
    { "dstIpv6ClassSupported", &Caps::dstIpv6ClassSupported },
    { "bfdEchoCheckEnabled", &Caps::bfdEchoCheckEnabled },
    { "bfdEchoRuleSuppressed", &Caps::bfdEchoRuleSuppressed },
    { "bfdEchoSupported", &Caps::bfdEchoSupported },
    { "l2PfDevicePbmpSupported", &Caps::l2PfDevicePbmpSupported, 0, u32Max },
    { "linkLocalPtpSupported", &Caps::linkLocalPtpSupported, 0, u8Max },
    { "etherTypeChipFlag", &Caps::etherTypeChipFlag, 0, u8Max },
    { "l2CacheHitSupported", &Caps::l2CacheHitSupported, 0, u8Max },
    { "vxlanCoreL2PFSupportedProtocols", &Caps::vxlanCoreL2PFSupportedProtocols },
    { "vlanStageClassRulesSupported", &Caps::vlanStageClassRulesSupported },
    { "igmpVlanClassRulesSuppressed", &Caps::igmpVlanClassRulesSuppressed },
    { "portCount", &Caps::portCount, 2, BCM_PBMP_PORT_MAX },
    { "cpuQueueCount", &Caps::cpuQueueCount, 1, 1024 },
    { "classIdBits", &Caps::classIdBits, 1, 32 },
    { "stpStateMaskReadBack", &Caps::stpStateMaskReadBack, 0, u8Max },
};

constexpr auto lastProtocol = Lamo::L2Pt::L2PtProtocol::microBfd;

}  // namespace

std::string l2ProtocolNames() {
   std::string names;
   for ( int p = 0; p <= int( lastProtocol ); ++p ) {
      names += ( names.empty() ? "" : ", " ) +
               std::string( Lamo::L2Pt::name( Lamo::L2Pt::L2PtProtocol( p ) ) );
   }
   return names;
}

namespace {

ProtocolList readProtocols( const Json& value, const std::string& path ) {
   expectList( value, path );
   ProtocolList protocols;
   for ( size_t i = 0; i < value.size(); ++i ) {
      const std::string at = elementPath( path, i );
      Lamo::L2Pt::L2PtProtocol protocol;
      if ( !value[i].is_string() ||
           !l2ProtocolByName( value[i].get<std::string>(), protocol ) ) {
         fieldError( at, "one of " + l2ProtocolNames(), value[i] );
      }
      if ( std::find( protocols.begin(), protocols.end(), protocol ) !=
           protocols.end() ) {
         throw FieldError{ at, "protocol listed twice" };
      }
      protocols.push_back( protocol );
   }
   return protocols;
}

struct FieldReader {
   const ChipAttributeField& field;
   const Json& value;
   const std::string& path;
   Caps& into;

   void operator()( bool Caps::*member ) const { into.*member = readBool( value, path ); }
   void operator()( U8 Caps::*member ) const {
      into.*member = U8( readInteger( value, path, field.min, field.max ) );
   }
   void operator()( U32 Caps::*member ) const {
      into.*member = U32( readInteger( value, path, field.min, field.max ) );
   }
   void operator()( int Caps::*member ) const {
      into.*member = int( readInteger( value, path, field.min, field.max ) );
   }
   void operator()( ProtocolList Caps::*member ) const {
      into.*member = readProtocols( value, path );
   }
};

}  // namespace

std::span<const ChipAttributeField> chipAttributeFields() {
   return fields;
}

bool l2ProtocolByName( std::string_view name, Lamo::L2Pt::L2PtProtocol& protocol ) {
   for ( int p = 0; p <= int( lastProtocol ); ++p ) {
      if ( name == Lamo::L2Pt::name( Lamo::L2Pt::L2PtProtocol( p ) ) ) {
         protocol = Lamo::L2Pt::L2PtProtocol( p );
         return true;
      }
   }
   return false;
}

void readChipAttributes( const Json& object, const std::string& path, Caps& into ) {
   expectObject( object, path );
   for ( const auto& [key, value] : object.items() ) {
      const std::string at = memberPath( path, key );
      auto field = std::find_if( std::begin( fields ), std::end( fields ),
                                 [&key]( const auto& f ) { return key == f.name; } );
      if ( field == std::end( fields ) ) {
         std::string names;
         for ( const ChipAttributeField& known : fields ) {
            names += ( names.empty() ? "" : ", " ) + std::string( known.name );
         }
         throw FieldError{ at, "unknown chip attribute; expected one of " + names };
      }
      std::visit( FieldReader{ *field, value, at, into }, field->member );
   }
}

}  // namespace FerroAcl
