// Compressed fields: several values per field on one entry, any of which matches.
#include <algorithm>

#include "platform/sdk/SimState.h"

namespace Sim {

namespace {

using State = FieldProcessor::State;

bool validField( Shim::CompressedField field ) {
   return static_cast<int>( field ) < kCompressedCount;
}

// Resolves unit, field and entry in the SDK's order; null with rc on failure.
Entry* compressedEntry( State& s, int unit, bcm_field_entry_t entry,
                        Shim::CompressedField field, int& rc ) {
   Unit* u = s.findUnit( unit );
   if ( u == nullptr ) {
      rc = BCM_E_UNIT;
      return nullptr;
   }
   if ( !validField( field ) ) {
      rc = BCM_E_PARAM;
      return nullptr;
   }
   Entry* e = u->findEntry( entry );
   if ( e == nullptr || !groupHas( *e->group, sdkQualifier( field ) ) ) {
      rc = BCM_E_NOT_FOUND;
      return nullptr;
   }
   return e;
}

}  // namespace

int FieldProcessor::bcm_field_qualify_compressed_add( int unit, bcm_field_entry_t entry,
                                                      Shim::CompressedField field,
                                                      const Shim::FieldBytes& data,
                                                      const Shim::FieldBytes& mask,
                                                      uint32 classId, uint32 classMask ) {
   State& s = *state_;
   return s.entryCall(
       "bcm_field_qualify_compressed_add", unit, entry,
       [&]() -> int {
          if ( s.findUnit( unit ) != nullptr && validField( field ) ) {
             const int width = compressedBytes( field );
             for ( int i = width; i < 16; ++i ) {
                if ( data.bytes[i] != 0 ) {
                   return BCM_E_PARAM;
                }
             }
          }
          int rc = 0;
          Entry* e = compressedEntry( s, unit, entry, field, rc );
          if ( e == nullptr ) {
             return rc;
          }
          Shim::CompressedValue value;
          value.classId = classId;
          value.classMask = classMask;
          const int width = compressedBytes( field );
          for ( int i = 0; i < width; ++i ) {
             value.mask.bytes[i] = mask.bytes[i];
             value.data.bytes[i] = data.bytes[i] & mask.bytes[i];
          }
          auto& values = e->software.compressed[static_cast<size_t>( field )];
          const bool known =
              std::any_of( values.begin(), values.end(), [&]( const auto& v ) {
                 return v.data == value.data && v.mask == value.mask;
              } );
          if ( !known ) {
             values.push_back( value );
          }
          e->software.noteCompressed( sdkQualifier( field ) );
          return 0;
       },
       [&]( ArgWriter& w ) {
          w.dec( unit ).dec( entry ).text( compressedFieldName( field ) );
          w.fieldBytes( field, data, false ).fieldBytes( field, mask, true );
          w.dec( classId ).hex( classMask );
       } );
}

int FieldProcessor::bcm_field_qualify_compressed_clear( int unit, bcm_field_entry_t entry,
                                                        Shim::CompressedField field ) {
   State& s = *state_;
   return s.entryCall(
       "bcm_field_qualify_compressed_clear", unit, entry,
       [&]() -> int {
          int rc = 0;
          Entry* e = compressedEntry( s, unit, entry, field, rc );
          if ( e == nullptr ) {
             return rc;
          }
          e->software.compressed[static_cast<size_t>( field )].clear();
          e->software.dropRankIfAbsent( sdkQualifier( field ), field );
          return 0;
       },
       [&]( ArgWriter& w ) {
          w.dec( unit ).dec( entry ).text( compressedFieldName( field ) );
       } );
}

int FieldProcessor::bcm_field_qualify_compressed_get( int unit, bcm_field_entry_t entry,
                                                      Shim::CompressedField field,
                                                      Shim::CompressedValue* values,
                                                      int max, int* count ) {
   State& s = *state_;
   return s.entryCall(
       "bcm_field_qualify_compressed_get", unit, entry,
       [&]() -> int {
          if ( s.findUnit( unit ) != nullptr &&
               ( count == nullptr || max < 0 || ( values == nullptr && max > 0 ) ) ) {
             return BCM_E_PARAM;
          }
          int rc = 0;
          const Entry* e = compressedEntry( s, unit, entry, field, rc );
          if ( e == nullptr ) {
             return rc;
          }
          const auto& stored = e->software.compressed[static_cast<size_t>( field )];
          const size_t copied = std::min( stored.size(), static_cast<size_t>( max ) );
          std::copy_n( stored.begin(), copied, values );
          *count = static_cast<int>( stored.size() );
          return 0;
       },
       [&]( ArgWriter& w ) {
          w.dec( unit ).dec( entry ).text( compressedFieldName( field ) );
          w.out( values, "values" ).dec( max ).out( count, "count" );
       } );
}

}  // namespace Sim
