#include "tools/ferro-acl/ProfileLoader.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <set>
#include <variant>

#include "tools/ferro-acl/ChipAttributeFields.h"
#include "tools/ferro-acl/JsonFields.h"

namespace FerroAcl {

namespace {

using Agent::SwitchConfig;

// A flag of one of the switch-wide sections, with the values it may take.
struct SwitchField {
   const char* key;
   std::variant<bool SwitchConfig::*, U8 SwitchConfig::*> member;
   int64_t max = 0;  // integer members
};

const SwitchField platformFields[] = {
    { "l2ProtocolFwdSupported", &SwitchConfig::l2ProtocolFwdSupported },
    { "mayRunAsSimulation", &SwitchConfig::mayRunAsSimulation },
    { "aclGroupManagers", &SwitchConfig::aclGroupManagers },
};
const SwitchField sharedStateFields[] = {
    { "vxlanEnabled", &SwitchConfig::vxlanEnabled },
    { "skipInPortQualify", &SwitchConfig::skipInPortQualify, 255 },
    { "platformCode", &SwitchConfig::platformCode, 255 },
    { "nextHopToCpuGleanDisabled", &SwitchConfig::nextHopToCpuGleanDisabled },
    // A shift of a 32-bit class id: anything wider shifts the id out.
    { "ipClassIdShift", &SwitchConfig::ipClassIdShift, 31 },
};
const SwitchField helperFields[] = {
    { "reducedL2TrapsA", &SwitchConfig::reducedL2TrapsA },
    { "reducedL2TrapsB", &SwitchConfig::reducedL2TrapsB },
    { "tapAggregationEnabled", &SwitchConfig::tapAggregationEnabled },
};

template <size_t N>
void readSection( const Json& section, const std::string& path,
                  const SwitchField ( &fields )[N], SwitchConfig& config ) {
   expectObject( section, path );
   for ( const auto& [key, value] : section.items() ) {
      const std::string at = memberPath( path, key );
      const SwitchField* field = std::find_if(
          fields, fields + N, [&key]( const SwitchField& f ) { return key == f.key; } );
      if ( field == fields + N ) {
         std::string names;
         for ( const SwitchField& known : fields ) {
            names += ( names.empty() ? "" : ", " ) + std::string( known.key );
         }
         throw FieldError{ at, "unknown key; expected one of " + names };
      }
      if ( auto* flag = std::get_if<bool SwitchConfig::*>( &field->member ) ) {
         bool SwitchConfig::*member = *flag;
         config.*member = readBool( value, at );
      } else {
         config.*std::get<U8 SwitchConfig::*>( field->member ) =
             U8( readInteger( value, at, 0, field->max ) );
      }
   }
}

Sim::SdkVersion readSdkVersion( const Json& value, const std::string& path ) {
   if ( value == "6.5" ) {
      return Sim::SdkVersion::V6_5;
   }
   if ( value == "6.6" ) {
      return Sim::SdkVersion::V6_6;
   }
   fieldError( path, "\"6.5\" or \"6.6\"", value );
}

void readChips( const Json& chips, const std::string& path, SwitchConfig& config ) {
   expectObject( chips, path );
   if ( chips.empty() ) {
      throw FieldError{ path, "expected at least one chip family" };
   }
   for ( const auto& [family, chip] : chips.items() ) {
      const std::string at = memberPath( path, family );
      if ( family.empty() ) {
         throw FieldError{ at, "a chip family needs a name" };
      }
      expectObject( chip, at );
      rejectUnknownKeys( chip, at, { "chipType", "model", "attributes" } );
      Agent::ChipProfile profile;
      profile.family = family;
      profile.chipType =
          U32( readInteger( requiredMember( chip, at, "chipType" ),
                            memberPath( at, "chipType" ), 0, int64_t( UINT32_MAX ) ) );
      profile.model = U8( readInteger( requiredMember( chip, at, "model" ),
                                       memberPath( at, "model" ), 0, 255 ) );
      if ( const Json* attributes = optionalMember( chip, "attributes" ) ) {
         readChipAttributes( *attributes, memberPath( at, "attributes" ),
                             profile.attributes );
      }
      config.chips.push_back( profile );
   }
}

FerroCentral::BringupStage readBringupStage( const Json& value,
                                             const std::string& path ) {
   using Stage = FerroCentral::BringupStage;
   constexpr Stage stages[] = { Stage::powerOn,
                                Stage::sdkAttached,
                                Stage::portsCreated,
                                Stage::fieldGroupsCreated,
                                Stage::systemAclInstalled,
                                Stage::aclVerifiable,
                                Stage::complete };
   std::string expected = "a bring-up stage (";
   for ( Stage stage : stages ) {
      expected +=
          std::to_string( int( stage ) ) + ( stage == Stage::complete ? ")" : ", " );
      if ( value.is_number_integer() && value == int( stage ) ) {
         return stage;
      }
   }
   fieldError( path, expected, value );
}

std::vector<U16> readInactivePorts( const Json& value, const std::string& path,
                                    int portCount ) {
   expectList( value, path );
   std::vector<U16> ports;
   for ( size_t i = 0; i < value.size(); ++i ) {
      const std::string at = elementPath( path, i );
      // Port 0 is the CPU port, which is never down.
      const U16 port = U16( readInteger( value[i], at, 1, portCount - 1 ) );
      if ( std::find( ports.begin(), ports.end(), port ) != ports.end() ) {
         throw FieldError{ at, "port " + std::to_string( port ) + " listed twice" };
      }
      ports.push_back( port );
   }
   return ports;
}

const Agent::ChipProfile& readUnitChip( const Json& unit, const std::string& path,
                                        const SwitchConfig& config ) {
   const std::string at = memberPath( path, "chip" );
   const std::string family = readString( requiredMember( unit, path, "chip" ), at );
   std::string known;
   for ( const Agent::ChipProfile& chip : config.chips ) {
      if ( chip.family == family ) {
         return chip;
      }
      known += ( known.empty() ? "" : ", " ) + chip.family;
   }
   throw FieldError{
       at, "no chip family \"" + family + "\" in chips; expected one of " + known };
}

void readUnits( const Json& units, const std::string& path, SwitchConfig& config ) {
   expectList( units, path );
   if ( units.empty() ) {
      throw FieldError{ path, "expected at least one unit" };
   }
   std::set<U16> seen;
   for ( size_t i = 0; i < units.size(); ++i ) {
      const std::string at = elementPath( path, i );
      const Json& unit = units[i];
      expectObject( unit, at );
      rejectUnknownKeys( unit, at,
                         { "unit", "modId", "chip", "bringupStage", "inactivePorts" } );
      Agent::UnitSpec parsed;
      const std::string unitPath = memberPath( at, "unit" );
      parsed.unit =
          U16( readInteger( requiredMember( unit, at, "unit" ), unitPath, 0, 65535 ) );
      if ( !seen.insert( parsed.unit ).second ) {
         throw FieldError{ unitPath,
                           "unit " + std::to_string( parsed.unit ) + " listed twice" };
      }
      parsed.modId = bcm_module_t( readInteger( requiredMember( unit, at, "modId" ),
                                                memberPath( at, "modId" ), 0, 255 ) );
      const Agent::ChipProfile& chip = readUnitChip( unit, at, config );
      parsed.chip = chip.family;
      if ( const Json* stage = optionalMember( unit, "bringupStage" ) ) {
         parsed.bringupStage =
             readBringupStage( *stage, memberPath( at, "bringupStage" ) );
      }
      if ( const Json* ports = optionalMember( unit, "inactivePorts" ) ) {
         parsed.inactivePorts = readInactivePorts(
             *ports, memberPath( at, "inactivePorts" ), chip.attributes.portCount );
      }
      config.units.push_back( parsed );
   }
}

Lamo::L2Pt::L2PtTrafficType readTrafficType( const Json& value, const std::string& path ) {
   for ( auto type : { Lamo::L2Pt::l2PtTrafficTypeAll, Lamo::L2Pt::l2PtTrafficTypeVxlanDecap } ) {
      if ( value.is_string() && value == Lamo::L2Pt::name( type ) ) {
         return type;
      }
   }
   fieldError( path, "\"all\" or \"vxlanDecap\"", value );
}

// Interfaces on which a protocol is forwarded instead of trapped. An Ethernet
// interface that maps to no port is kept: the library must pass over it.
void readL2ProtocolForwarding( const Json& list, const std::string& path,
                               SwitchConfig& config ) {
   expectList( list, path );
   for ( size_t i = 0; i < list.size(); ++i ) {
      const std::string at = elementPath( path, i );
      const Json& item = list[i];
      expectObject( item, at );
      rejectUnknownKeys( item, at, { "protocol", "interface", "traffic" } );
      Agent::L2ProtocolForwarding fwd;
      const std::string protocolPath = memberPath( at, "protocol" );
      const std::string protocol =
          readString( requiredMember( item, at, "protocol" ), protocolPath );
      if ( !l2ProtocolByName( protocol, fwd.protocol ) ) {
         fieldError( protocolPath, "one of " + l2ProtocolNames(),
                     item.at( "protocol" ) );
      }
      const std::string intfPath = memberPath( at, "interface" );
      const auto intf = Wirex::IntfId::fromName(
          readString( requiredMember( item, at, "interface" ), intfPath ) );
      if ( !intf ) {
         fieldError( intfPath, "an interface name such as \"Ethernet5\" or \"Port-Channel3\"",
                     item.at( "interface" ) );
      }
      fwd.intf = *intf;
      if ( const Json* traffic = optionalMember( item, "traffic" ) ) {
         fwd.trafficType = readTrafficType( *traffic, memberPath( at, "traffic" ) );
      }
      for ( const Agent::L2ProtocolForwarding& seen : config.l2ProtocolForwarding ) {
         if ( seen.protocol == fwd.protocol && seen.intf == fwd.intf ) {
            throw FieldError{ intfPath, protocol + " forwarding on " + fwd.intf.name() +
                                            " listed twice" };
         }
      }
      config.l2ProtocolForwarding.push_back( fwd );
   }
}

SwitchConfig readProfile( const Json& root ) {
   expectObject( root, "" );
   rejectUnknownKeys(
       root, "",
       { "name", "sdkVersion", "platform", "sharedState", "helper", "chips", "units",
         "l2ProtocolForwarding", "network" } );
   SwitchConfig config;
   if ( const Json* name = optionalMember( root, "name" ) ) {
      config.name = readString( *name, "name" );
   }
   if ( const Json* version = optionalMember( root, "sdkVersion" ) ) {
      config.sdkVersion = readSdkVersion( *version, "sdkVersion" );
   }
   if ( const Json* platform = optionalMember( root, "platform" ) ) {
      readSection( *platform, "platform", platformFields, config );
   }
   if ( const Json* shared = optionalMember( root, "sharedState" ) ) {
      readSection( *shared, "sharedState", sharedStateFields, config );
   }
   if ( const Json* helper = optionalMember( root, "helper" ) ) {
      readSection( *helper, "helper", helperFields, config );
   }
   readChips( requiredMember( root, "", "chips" ), "chips", config );
   readUnits( requiredMember( root, "", "units" ), "units", config );
   if ( const Json* fwd = optionalMember( root, "l2ProtocolForwarding" ) ) {
      readL2ProtocolForwarding( *fwd, "l2ProtocolForwarding", config );
   }
   return config;
}

}  // namespace

Result<SwitchConfig> parseProfile( std::string_view text, const std::string& source ) {
   Result<Json> document = parseJsonText( text, source );
   if ( !document ) {
      return Error{ document.error() };
   }
   try {
      return readProfile( document.value() );
   } catch ( const FieldError& e ) {
      return Error{ source + ": " + e.message() };
   }
}

Result<std::string> readProfileText( const std::string& path ) {
   const int fd = ::open( path.c_str(), O_RDONLY | O_CLOEXEC );
   if ( fd < 0 ) {
      return Error{ path + ": cannot open: " + std::strerror( errno ) };
   }
   std::string text;
   char buffer[8192];
   for ( ;; ) {
      const ssize_t n = ::read( fd, buffer, sizeof buffer );
      if ( n < 0 && errno == EINTR ) {
         continue;
      }
      if ( n < 0 ) {
         const int error = errno;
         ::close( fd );
         return Error{ path + ": cannot read: " + std::strerror( error ) };
      }
      if ( n == 0 ) {
         break;
      }
      text.append( buffer, size_t( n ) );
   }
   ::close( fd );
   return text;
}

Result<SwitchConfig> loadProfile( const std::string& path ) {
   Result<std::string> text = readProfileText( path );
   if ( !text ) {
      return Error{ text.error() };
   }
   return parseProfile( text.value(), path );
}

}  // namespace FerroAcl
