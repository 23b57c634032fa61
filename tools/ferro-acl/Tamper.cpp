#include "tools/ferro-acl/Tamper.h"

#include <charconv>
#include <cstring>

#include "platform/sdk/Simulator.h"

namespace FerroAcl {

namespace {

struct ScalarQualifier {
   const char* name;
   uint64_t max;
   int ( *set )( int unit, int entry, uint64_t data, uint64_t mask );
   std::optional<Shim::CompressedField> compressed;  // held there by the TCAM helpers
};

#define FERRO_SCALAR( NAME, TYPE, MAX, COMPRESSED )                                   \
   ScalarQualifier {                                                                  \
      #NAME, MAX,                                                                     \
          []( int unit, int entry, uint64_t data, uint64_t mask ) {                   \
             return Shim::sdk_->bcm_field_qualify_##NAME( unit, entry, TYPE( data ),  \
                                                          TYPE( mask ) );             \
          },                                                                          \
          COMPRESSED                                                                  \
   }
const ScalarQualifier scalarQualifiers[] = {
    FERRO_SCALAR( Ttl, uint8, 0xff, std::nullopt ),
    FERRO_SCALAR( IpProtocol, uint8, 0xff, Shim::CompressedField::IpProtocol ),
    FERRO_SCALAR( L4SrcPort, bcm_l4_port_t, 0xffff, Shim::CompressedField::L4SrcPort ),
    FERRO_SCALAR( L4DstPort, bcm_l4_port_t, 0xffff, Shim::CompressedField::L4DstPort ),
    FERRO_SCALAR( EtherType, uint16, 0xffff, Shim::CompressedField::EtherType ),
    FERRO_SCALAR( DSCP, uint8, 0xff, std::nullopt ),
    FERRO_SCALAR( OuterVlanPri, uint8, 0x7, std::nullopt ),
    FERRO_SCALAR( Drop, uint8, 0x1, std::nullopt ),
    FERRO_SCALAR( IngressStpState, uint8, 0xff, std::nullopt ),
    FERRO_SCALAR( HiGig, uint8, 0x1, std::nullopt ),
    FERRO_SCALAR( L2CacheHit, uint8, 0x1, std::nullopt ),
    FERRO_SCALAR( L3Routable, uint8, 0x1, std::nullopt ),
    FERRO_SCALAR( DstClassL2, uint32, 0xffffffff, std::nullopt ),
    FERRO_SCALAR( DstClassL3, uint32, 0xffffffff, std::nullopt ),
    FERRO_SCALAR( DstClassField, uint32, 0xffffffff, std::nullopt ),
    FERRO_SCALAR( InterfaceClassL2, uint32, 0xffffffff, std::nullopt ),
    FERRO_SCALAR( InterfaceClassPort, uint32, 0xffffffff, std::nullopt ),
    FERRO_SCALAR( InterfaceClassVPort, uint32, 0xffffffff, std::nullopt ),
};
#undef FERRO_SCALAR

const ScalarQualifier* scalarQualifier( const std::string& name ) {
   for ( const ScalarQualifier& q : scalarQualifiers ) {
      if ( name == q.name ) {
         return &q;
      }
   }
   return nullptr;
}

std::optional<Shim::FieldAction> actionNamed( const std::string& name ) {
   for ( int a = 0; a < int( Shim::FieldAction::Count ); ++a ) {
      const auto action = Shim::FieldAction( a );
      if ( name == Sim::FieldProcessor::actionName( action ) ) {
         return action;
      }
   }
   return std::nullopt;
}

std::string actionNames() {
   std::string names;
   for ( int a = 0; a < int( Shim::FieldAction::Count ); ++a ) {
      names += std::string( names.empty() ? "" : ", " ) +
               Sim::FieldProcessor::actionName( Shim::FieldAction( a ) );
   }
   return names;
}

std::string fieldNames() {
   std::string names = actionNames();
   for ( const ScalarQualifier& q : scalarQualifiers ) {
      if ( !actionNamed( q.name ) ) {  // Drop is both
         names += std::string( ", " ) + q.name;
      }
   }
   return names + ", InPorts";
}

Error problem( const Tamper& tamper, const std::string& what ) {
   return Error{ "--tamper '" + tamper.text + "': " + what };
}

// Decimal or 0x-hexadecimal, at most `max`.
std::optional<uint64_t> number( std::string_view text, uint64_t max ) {
   int base = 10;
   if ( text.starts_with( "0x" ) || text.starts_with( "0X" ) ) {
      text.remove_prefix( 2 );
      base = 16;
   }
   uint64_t value = 0;
   const char* end = text.data() + text.size();
   auto [next, error] = std::from_chars( text.data(), end, value, base );
   if ( text.empty() || error != std::errc() || next != end || value > max ) {
      return std::nullopt;
   }
   return value;
}

// "1-4,6,8-64".
std::optional<bcm_pbmp_t> portList( std::string_view text ) {
   bcm_pbmp_t ports{};
   while ( !text.empty() ) {
      const size_t comma = text.find( ',' );
      const std::string_view range = text.substr( 0, comma );
      text = comma == std::string_view::npos ? "" : text.substr( comma + 1 );
      const size_t dash = range.find( '-' );
      const auto first = number( range.substr( 0, dash ), BCM_PBMP_PORT_MAX - 1 );
      const auto last = dash == std::string_view::npos
                            ? first
                            : number( range.substr( dash + 1 ), BCM_PBMP_PORT_MAX - 1 );
      if ( !first || !last || *last < *first ) {
         return std::nullopt;
      }
      for ( uint64_t port = *first; port <= *last; ++port ) {
         BCM_PBMP_PORT_ADD( ports, int( port ) );
      }
   }
   return ports;
}

uint64_t bigEndianNumber( const std::vector<uint8_t>& bytes ) {
   uint64_t value = 0;
   for ( uint8_t byte : bytes ) {
      value = ( value << 8 ) | byte;
   }
   return value;
}

const Sim::QualifierView* qualifierOf( const Sim::EntryView& view, const std::string& name ) {
   for ( const Sim::QualifierView& q : view.software.qualifiers ) {
      if ( q.name == name ) {
         return &q;
      }
   }
   return nullptr;
}

bool hasAction( const Sim::EntryView& view, const std::string& name ) {
   for ( const Sim::ActionView& a : view.software.actions ) {
      if ( a.name == name ) {
         return true;
      }
   }
   return false;
}

struct Target {
   int unit;
   int entry;
};

Result<Target> findTarget( const Tamper& tamper, const ChipState& state ) {
   for ( const UnitState& unit : state.units ) {
      if ( tamper.unit && *tamper.unit != unit.unit ) {
         continue;
      }
      std::vector<int> ids;
      for ( const EntryState& entry : unit.entries ) {
         if ( entry.name == tamper.rule ) {
            ids.push_back( entry.id );
         }
      }
      if ( ids.size() == 1 ) {
         return Target{ unit.unit, ids[0] };
      }
      if ( ids.size() > 1 ) {
         std::string list;
         for ( int id : ids ) {
            list += ( list.empty() ? "" : ", " ) + std::to_string( id );
         }
         return problem( tamper, "rule \"" + tamper.rule + "\" names entries " + list +
                                     " on unit " + std::to_string( unit.unit ) +
                                     "; expected a rule with one entry" );
      }
   }
   return problem( tamper, "no entry is named \"" + tamper.rule + "\"" +
                               ( tamper.unit ? " on unit " + std::to_string( *tamper.unit )
                                             : "" ) +
                               "; expected a rule name as show prints it" );
}

// The SDK's answer as the option's result.
Result<int> checked( const Tamper& tamper, const char* call, int rc ) {
   if ( rc < 0 ) {
      return problem( tamper, std::string( "the simulated SDK refused " ) + call + ": " +
                                  Shim::sdk_->bcm_errmsg( rc ) + " (" + std::to_string( rc ) +
                                  ")" );
   }
   return 0;
}

Result<int> setAction( const Tamper& tamper, Target target, Shim::FieldAction action,
                       bool present ) {
   Shim::Sdk& sdk = *Shim::sdk_;
   const bcm_field_action_t value = sdk.fieldAction( action );
   if ( tamper.remove && !present ) {
      return problem( tamper, "the entry has no " + tamper.field +
                                  " action; expected one of its actions" );
   }
   if ( present ) {
      auto removed = checked( tamper, "bcm_field_action_remove",
                              sdk.bcm_field_action_remove( target.unit, target.entry, value ) );
      if ( !removed || tamper.remove ) {
         return removed;
      }
   }
   uint64_t params[2] = {};
   const size_t comma = tamper.value.find( ',' );
   const std::string_view text( tamper.value );
   if ( !tamper.value.empty() ) {
      const auto p0 = number( text.substr( 0, comma ), 0xffffffff );
      const auto p1 = comma == std::string::npos ? std::optional<uint64_t>( 0 )
                                                 : number( text.substr( comma + 1 ), 0xffffffff );
      if ( !p0 || !p1 ) {
         return problem( tamper, "expected action parameters P0[,P1], numbers up to "
                                 "0xffffffff, got \"" + tamper.value + "\"" );
      }
      params[0] = *p0;
      params[1] = *p1;
   }
   return checked( tamper, "bcm_field_action_add",
                   sdk.bcm_field_action_add( target.unit, target.entry, value,
                                             uint32( params[0] ), uint32( params[1] ) ) );
}

Result<int> setInPorts( const Tamper& tamper, Target target ) {
   const auto ports = portList( tamper.value );
   if ( !ports ) {
      return problem( tamper, "expected a port list such as 1-4,6-64, got \"" +
                                  tamper.value + "\"" );
   }
   Shim::Sdk& sdk = *Shim::sdk_;
   bcm_pbmp_t data{}, mask{};
   if ( sdk.bcm_field_qualify_InPorts_get( target.unit, target.entry, &data, &mask ) < 0 ||
        BCM_PBMP_IS_NULL( mask ) ) {
      bcm_port_config_t config{};
      sdk.bcm_port_config_get( target.unit, &config );
      mask = config.all;
   }
   return checked( tamper, "bcm_field_qualify_InPorts",
                   sdk.bcm_field_qualify_InPorts( target.unit, target.entry, *ports, mask ) );
}

Result<int> setScalar( const Tamper& tamper, Target target, const ScalarQualifier& q,
                       const Sim::QualifierView* programmed ) {
   const size_t slash = tamper.value.find( '/' );
   const std::string_view text( tamper.value );
   const auto data = number( text.substr( 0, slash ), q.max );
   uint64_t mask = programmed && !programmed->mask.empty()
                       ? bigEndianNumber( programmed->mask )
                       : q.max;
   if ( slash != std::string::npos ) {
      const auto given = number( text.substr( slash + 1 ), q.max );
      mask = given.value_or( 0 );
      if ( !given ) {
         return problem( tamper, "expected DATA[/MASK] up to " + std::to_string( q.max ) +
                                     ", got \"" + tamper.value + "\"" );
      }
   }
   if ( !data ) {
      return problem( tamper, "expected DATA[/MASK] up to " + std::to_string( q.max ) +
                                  ", got \"" + tamper.value + "\"" );
   }
   // The tampered value replaces every value the field held, so that the
   // entry matches only it.
   if ( q.compressed && programmed && !programmed->compressed.empty() ) {
      auto cleared = checked( tamper, "bcm_field_qualify_compressed_clear",
                              Shim::sdk_->bcm_field_qualify_compressed_clear(
                                  target.unit, target.entry, *q.compressed ) );
      if ( !cleared ) {
         return cleared;
      }
   }
   const std::string call = std::string( "bcm_field_qualify_" ) + q.name;
   return checked( tamper, call.c_str(), q.set( target.unit, target.entry, *data, mask ) );
}

}  // namespace

Result<Tamper> parseTamper( const std::string& text ) {
   Tamper tamper;
   tamper.text = text;
   const size_t equals = text.find( '=' );
   const std::string target = text.substr( 0, equals );
   const size_t colon = target.rfind( ':' );
   if ( colon == std::string::npos || colon == 0 || colon + 1 == target.size() ) {
      return problem( tamper, "expected [UNIT/]RULE:FIELD=VALUE or [UNIT/]RULE:-ACTION" );
   }
   tamper.rule = target.substr( 0, colon );
   tamper.field = target.substr( colon + 1 );
   if ( equals != std::string::npos ) {
      tamper.value = text.substr( equals + 1 );
   }
   if ( const size_t slash = tamper.rule.find( '/' ); slash != std::string::npos ) {
      const auto unit = number( std::string_view( tamper.rule ).substr( 0, slash ), 0xffff );
      if ( unit ) {
         tamper.unit = int( *unit );
         tamper.rule = tamper.rule.substr( slash + 1 );
      }
   }
   if ( tamper.field.starts_with( '-' ) ) {
      tamper.remove = true;
      tamper.field.erase( 0, 1 );
      if ( !actionNamed( tamper.field ) || equals != std::string::npos ) {
         return problem( tamper, "expected -ACTION, ACTION one of " + actionNames() );
      }
      return tamper;
   }
   const bool action = actionNamed( tamper.field ).has_value();
   if ( !action && tamper.field != "InPorts" && !scalarQualifier( tamper.field ) ) {
      return problem( tamper, "cannot set \"" + tamper.field + "\"; expected one of " +
                                  fieldNames() );
   }
   if ( !action && tamper.value.empty() ) {
      return problem( tamper, "expected " + tamper.field + "=VALUE" );
   }
   return tamper;
}

Result<int> applyTamper( const Tamper& tamper, const ChipState& state ) {
   Result<Target> found = findTarget( tamper, state );
   if ( !found ) {
      return Error{ found.error() };
   }
   const Target target = found.value();
   Sim::FieldProcessor& chip = Sim::FieldProcessor::instance();
   const Sim::EntryView view = *chip.entry( target.unit, target.entry );
   const Sim::QualifierView* programmed = qualifierOf( view, tamper.field );
   const bool actionPresent = hasAction( view, tamper.field );
   const auto action = actionNamed( tamper.field );
   const ScalarQualifier* scalar = scalarQualifier( tamper.field );
   Result<int> changed = 0;
   if ( action && ( tamper.remove || !scalar || actionPresent || !programmed ) ) {
      changed = setAction( tamper, target, *action, actionPresent );
   } else if ( scalar ) {
      changed = setScalar( tamper, target, *scalar, programmed );
   } else {
      changed = setInPorts( tamper, target );
   }
   if ( !changed || !view.installed ) {
      return changed;
   }
   return checked( tamper, "bcm_field_entry_reinstall",
                   Shim::sdk_->bcm_field_entry_reinstall( target.unit, target.entry ) );
}

}  // namespace FerroAcl
