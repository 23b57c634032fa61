// Views of the simulator's entries for tests and tools. Not SDK calls: no
// journal line, no fault, no lock check.
#include <algorithm>

#include "platform/sdk/SimState.h"

namespace Sim {

namespace {

std::vector<uint8_t> bigEndian( uint64_t value, int bytes ) {
   std::vector<uint8_t> out( static_cast<size_t>( bytes ) );
   for ( int i = bytes - 1; i >= 0; --i, value >>= 8 ) {
      out[static_cast<size_t>( i )] = static_cast<uint8_t>( value );
   }
   return out;
}

// Highest port in the first byte, port 0 in the low bit of the last.
std::vector<uint8_t> bitmapBytes( const bcm_pbmp_t& bitmap, int portCount ) {
   const int bytes = ( portCount + 7 ) / 8;
   std::vector<uint8_t> out( static_cast<size_t>( bytes ) );
   for ( int port = 0; port < portCount; ++port ) {
      if ( bcm_pbmp_member( bitmap, port ) ) {
         out[static_cast<size_t>( bytes - 1 - port / 8 )] |=
             static_cast<uint8_t>( 1u << ( port % 8 ) );
      }
   }
   return out;
}

void fillPlain( const Unit& unit, const CopyState& copy, bcm_field_qualify_t q,
                QualifierView& view ) {
   switch ( fieldKind( q ) ) {
      case FieldKind::PortBitmap:
         view.data = bitmapBytes( copy.inPortsData, unit.config.portCount );
         view.mask = bitmapBytes( copy.inPortsMask, unit.config.portCount );
         return;
      case FieldKind::Ip6:
         view.data.assign( copy.ip6Data.begin(), copy.ip6Data.end() );
         view.mask.assign( copy.ip6Mask.begin(), copy.ip6Mask.end() );
         return;
      case FieldKind::Ternary:
      case FieldKind::ModulePort:
      case FieldKind::IpType:
      case FieldKind::PacketRes:
      case FieldKind::StpState:
      case FieldKind::Stage:
         view.data = bigEndian( copy.fields[q].data, fieldBytes( unit, q ) );
         view.mask = bigEndian( copy.fields[q].mask, fieldBytes( unit, q ) );
         return;
   }
}

EntryCopy viewOf( const Unit& unit, const CopyState& copy ) {
   EntryCopy view;
   for ( bcm_field_qualify_t q : qualifiersInOrder( copy ) ) {
      view.qualifiers.push_back( qualifierView( unit, copy, q ) );
   }

   std::vector<Shim::FieldAction> actions;
   for ( int i = 0; i < kActionCount; ++i ) {
      if ( copy.hasAction( static_cast<Shim::FieldAction>( i ) ) ) {
         actions.push_back( static_cast<Shim::FieldAction>( i ) );
      }
   }
   std::sort( actions.begin(), actions.end(), [&]( auto a, auto b ) {
      return copy.actionRank[static_cast<size_t>( a )] <
             copy.actionRank[static_cast<size_t>( b )];
   } );
   for ( Shim::FieldAction a : actions ) {
      const ActionParams& p = copy.actions[static_cast<size_t>( a )];
      view.actions.push_back(
          ActionView{ a, FieldProcessor::actionName( a ), p.param0, p.param1 } );
   }
   return view;
}

EntryView entryView( const Unit& unit, const Entry& entry ) {
   EntryView view;
   view.id = entry.id;
   view.group = entry.group->id;
   view.stage = entry.group->stage;
   view.priority = entry.priority;
   view.installed = entry.installed;
   view.enabled = entry.installed && entry.enabled;
   view.software = viewOf( unit, entry.software );
   if ( entry.installed ) {
      view.hardware = viewOf( unit, entry.hardware );
   }
   return view;
}

}  // namespace

std::optional<Shim::CompressedField> compressedFieldOf( bcm_field_qualify_t q ) {
   for ( int f = 0; f < kCompressedCount; ++f ) {
      const auto field = static_cast<Shim::CompressedField>( f );
      if ( sdkQualifier( field ) == q ) {
         return field;
      }
   }
   return std::nullopt;
}

std::vector<bcm_field_qualify_t> qualifiersInOrder( const CopyState& copy ) {
   std::vector<bcm_field_qualify_t> present;
   for ( int i = 0; i < kQualifierCount; ++i ) {
      if ( copy.qualifierRank[i] != 0 ) {
         present.push_back( static_cast<bcm_field_qualify_t>( i ) );
      }
   }
   std::sort( present.begin(), present.end(), [&]( auto a, auto b ) {
      return copy.qualifierRank[a] < copy.qualifierRank[b];
   } );
   return present;
}

QualifierView qualifierView( const Unit& unit, const CopyState& copy, bcm_field_qualify_t q ) {
   QualifierView qv;
   qv.name = FieldProcessor::qualifierName( q );
   if ( copy.hasPlain( q ) ) {
      fillPlain( unit, copy, q, qv );
   }
   if ( auto field = compressedFieldOf( q ) ) {
      const auto& values = copy.compressed[static_cast<size_t>( *field )];
      qv.isCompressed = !values.empty();
      qv.compressed = values;
   }
   return qv;
}


std::vector<EntryView> FieldProcessor::entries( int unit ) const {
   std::lock_guard guard( state_->mutex );
   std::vector<EntryView> views;
   const Unit* u = state_->findUnit( unit );
   if ( u == nullptr ) {
      return views;
   }
   for ( const auto& [id, entry] : u->entries ) {
      views.push_back( entryView( *u, entry ) );
   }
   std::sort( views.begin(), views.end(),
              []( const EntryView& a, const EntryView& b ) { return a.id < b.id; } );
   return views;
}

std::optional<EntryView> FieldProcessor::entry( int unit, bcm_field_entry_t id ) const {
   std::lock_guard guard( state_->mutex );
   const Unit* u = state_->findUnit( unit );
   const Entry* e = u == nullptr ? nullptr : u->findEntry( id );
   if ( e == nullptr ) {
      return std::nullopt;
   }
   return entryView( *u, *e );
}

}  // namespace Sim
