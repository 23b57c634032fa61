#include "tools/ferro-acl/EntryWords.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <string_view>

#include "tools/ferro-acl/ChipStateText.h"

namespace FerroAcl {

namespace {

// "L4DstPort" -> "l4-dst-port", "DstClassL2" -> "dst-class-l2", "DSCP" -> "dscp".
std::string dashed( std::string_view name ) {
   if ( name == "HiGig" ) {
      return "higig";
   }
   std::string text;
   for ( size_t i = 0; i < name.size(); ++i ) {
      const unsigned char c = static_cast<unsigned char>( name[i] );
      const unsigned char previous = i ? static_cast<unsigned char>( name[i - 1] ) : 0;
      if ( std::isupper( c ) && ( std::islower( previous ) || std::isdigit( previous ) ) ) {
         text += '-';
      }
      text += char( std::tolower( c ) );
   }
   return text;
}

std::string hexText( uint64_t value ) {
   char text[24];
   std::snprintf( text, sizeof text, "0x%llx", (unsigned long long)value );
   return text;
}

std::string ipTypeWord( const std::string& name ) {
   if ( name == "Ipv4Any" ) {
      return "ipv4";
   }
   return name == "NonIp" ? "non-ip" : dashed( name );
}

std::string fieldWords( const std::string& qualifier, const FieldText& text, bool isMask ) {
   if ( auto number = std::get_if<uint64_t>( &text ) ) {
      // Masks are bit patterns and ether types are read in hex everywhere.
      return isMask || qualifier == "EtherType" ? hexText( *number )
                                                : std::to_string( *number );
   }
   if ( auto ports = std::get_if<std::vector<int>>( &text ) ) {
      return portRanges( *ports );
   }
   const std::string& word = std::get<std::string>( text );
   if ( isMask ) {
      return word;
   }
   if ( qualifier == "IpType" ) {
      return ipTypeWord( word );
   }
   if ( qualifier == "PacketRes" ) {
      return dashed( word );
   }
   return word;
}

bool masksNothingListed( const FieldValue& value ) {
   const auto* data = std::get_if<std::vector<int>>( &value.data );
   const auto* mask = std::get_if<std::vector<int>>( &value.mask );
   return data && mask &&
          std::all_of( data->begin(), data->end(), [&]( int port ) {
             return std::find( mask->begin(), mask->end(), port ) != mask->end();
          } );
}

std::string valueWords( const std::string& qualifier, const FieldValue& value ) {
   std::string text = fieldWords( qualifier, value.data, false );
   if ( !value.exact && !masksNothingListed( value ) ) {
      text += "/" + fieldWords( qualifier, value.mask, true );
   }
   return text;
}

struct ActionWord {
   std::string_view name;
   const char* word;
   bool valued;  // its first parameter is always shown
};

const ActionWord actionWordTable[] = {
    { "CosQCpuNew", "cpu-queue", true },       { "PrioIntNew", "tc", true },
    { "CopyToCpu", "copy-to-cpu", false },     { "Drop", "drop", false },
    { "SwitchToCpuCancel", "cancel-cpu", false }, { "ClassDestSet", "class-dest", true },
    { "NewClassId", "new-class", true },       { "EgressClassSelect", "egress-class", true },
};

}  // namespace

std::string qualifierWords( const QualifierState& qualifier ) {
   std::string values;
   for ( const FieldValue& value : qualifier.values ) {
      values += ( values.empty() ? "" : "|" ) + valueWords( qualifier.name, value );
   }
   return dashed( qualifier.name ) + " " + values;
}

std::string actionWords( const ActionState& action ) {
   std::string word = dashed( action.name );
   bool valued = false;
   for ( const ActionWord& known : actionWordTable ) {
      if ( known.name == action.name ) {
         word = known.word;
         valued = known.valued;
      }
   }
   if ( valued || action.param0 != 0 || action.param1 != 0 ) {
      word += " " + std::to_string( action.param0 );
   }
   if ( action.param1 != 0 ) {
      word += "," + std::to_string( action.param1 );
   }
   return word;
}

}  // namespace FerroAcl
