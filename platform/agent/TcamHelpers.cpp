// Field helpers over the SDK's field compression. Values travel as big-endian,
// left-aligned bytes; every value is kept in canonical form (data & mask) so
// that the same match written twice is recognised as one.
#include "platform/agent/TcamHelpers.h"

#include <vector>

#include "platform/sdk/Shim.h"

namespace Ferro {

namespace {

using Shim::CompressedField;
using Shim::FieldBytes;

template <typename T>
FieldBytes bigEndian( T value ) {
   FieldBytes out;
   for ( size_t i = 0; i < sizeof( T ); ++i ) {
      out.bytes[ i ] = U8( value >> ( 8 * ( sizeof( T ) - 1 - i ) ) );
   }
   return out;
}

FieldBytes fromBytes( const U8* bytes, size_t count ) {
   FieldBytes out;
   for ( size_t i = 0; i < count; ++i ) {
      out.bytes[ i ] = bytes[ i ];
   }
   return out;
}

FieldBytes masked( FieldBytes data, const FieldBytes& mask ) {
   for ( size_t i = 0; i < data.bytes.size(); ++i ) {
      data.bytes[ i ] &= mask.bytes[ i ];
   }
   return data;
}

// Every value the entry matches on `field`; the SDK's code on failure.
int programmedValues( U32 unit, U32 entry, CompressedField field,
                      std::vector<Shim::CompressedValue>& values ) {
   values.resize( 8 );
   int count = 0;
   int rc = Shim::sdk_->bcm_field_qualify_compressed_get(
      unit, entry, field, values.data(), int( values.size() ), &count );
   if ( BCM_SUCCESS( rc ) && count > int( values.size() ) ) {
      values.resize( size_t( count ) );
      rc = Shim::sdk_->bcm_field_qualify_compressed_get( unit, entry, field,
                                                        values.data(), count, &count );
   }
   values.resize( BCM_SUCCESS( rc ) ? size_t( std::max( count, 0 ) ) : 0 );
   return rc;
}

int addValue( U32 unit, U32 entry, CompressedField field, const FieldBytes& data,
              const FieldBytes& mask, U32 classId, U32 classMask ) {
   const FieldBytes value = masked( data, mask );
   std::vector<Shim::CompressedValue> values;
   const int rc = programmedValues( unit, entry, field, values );
   if ( BCM_FAILURE( rc ) ) {
      return rc;
   }
   for ( const Shim::CompressedValue& v : values ) {
      if ( v.mask == mask && masked( v.data, v.mask ) == value ) {
         return rc;  // already matched: a second copy would only use up a class
      }
   }
   return Shim::sdk_->bcm_field_qualify_compressed_add( unit, entry, field, value, mask,
                                                        classId, classMask );
}

int replaceValue( U32 unit, U32 entry, CompressedField field, const FieldBytes& data,
                  const FieldBytes& mask, U32 classId, U32 classMask ) {
   const int rc = Shim::sdk_->bcm_field_qualify_compressed_clear( unit, entry, field );
   if ( BCM_FAILURE( rc ) ) {
      return rc;
   }
   return addValue( unit, entry, field, data, mask, classId, classMask );
}

bool matchesExactly( U32 unit, U32 entry, CompressedField field, const FieldBytes& data,
                     const FieldBytes& mask ) {
   std::vector<Shim::CompressedValue> values;
   if ( BCM_FAILURE( programmedValues( unit, entry, field, values ) ) ||
        values.size() != 1 ) {
      return false;
   }
   const Shim::CompressedValue& v = values.front();
   return v.mask == mask && masked( v.data, v.mask ) == masked( data, mask );
}

bool dstIpv6ClassSupported( U32 unit, const GroupManager& gm ) {
   return gm && gm->chipAttributes( unit )->dstIpv6ClassSupported;
}

}  // namespace

int setEtherType( U32 unit, const GroupManager&, U32 entry, U8 chipFlag, U16 etherType,
                  U16 etherTypeMask, U32 classId, U32 classMask ) {
   // The flag selects how the chip's own ether-type handling treats the
   // value; compression matches the value the same way whatever it says.
   static_cast<void>( chipFlag );
   return addValue( unit, entry, CompressedField::EtherType, bigEndian( etherType ),
                    bigEndian( etherTypeMask ), classId, classMask );
}

int setIpProtocol( U32 unit, const GroupManager&, U32 entry, U8 protocol, U8 protocolMask,
                   U32 classId, U32 classMask ) {
   return addValue( unit, entry, CompressedField::IpProtocol, bigEndian( protocol ),
                    bigEndian( protocolMask ), classId, classMask );
}

int setL4SrcPort( U32 unit, const GroupManager&, U32 entry, U16 port, U16 portMask,
                  U32 classId, U32 classMask ) {
   return addValue( unit, entry, CompressedField::L4SrcPort, bigEndian( port ),
                    bigEndian( portMask ), classId, classMask );
}

int setL4DstPort( U32 unit, const GroupManager&, U32 entry, U16 port, U16 portMask,
                  U32 classId, U32 classMask ) {
   return addValue( unit, entry, CompressedField::L4DstPort, bigEndian( port ),
                    bigEndian( portMask ), classId, classMask );
}

int releaseOldAndSetL4SrcPort( U32 unit, const GroupManager&, U32 entry, U16 port,
                               U16 portMask, U32 classId, U32 classMask ) {
   return replaceValue( unit, entry, CompressedField::L4SrcPort, bigEndian( port ),
                        bigEndian( portMask ), classId, classMask );
}

int releaseOldAndSetL4DstPort( U32 unit, const GroupManager&, U32 entry, U16 port,
                               U16 portMask, U32 classId, U32 classMask ) {
   return replaceValue( unit, entry, CompressedField::L4DstPort, bigEndian( port ),
                        bigEndian( portMask ), classId, classMask );
}

int setDstIPv4( U32 unit, const GroupManager&, U32 entry, bcm_ip_t ip, bcm_ip_t ipMask,
                U32 classId, U32 classMask ) {
   return addValue( unit, entry, CompressedField::DstIp, bigEndian( ip ),
                    bigEndian( ipMask ), classId, classMask );
}

int setDstIPv6ClassOrDstMac( U32 unit, const GroupManager& gm, U32 entry,
                             const bcm_ip6_t ip6, const bcm_ip6_t ip6Mask,
                             U32 classId, U32 classMask, const bcm_mac_t mac,
                             const bcm_mac_t macMask ) {
   if ( dstIpv6ClassSupported( unit, gm ) ) {
      return addValue( unit, entry, CompressedField::DstIp6, fromBytes( ip6, 16 ),
                       fromBytes( ip6Mask, 16 ), classId, classMask );
   }
   return addValue( unit, entry, CompressedField::DstMac, fromBytes( mac, 6 ),
                    fromBytes( macMask, 6 ), classId, classMask );
}

bool verifyEtherType( U32 unit, const GroupManager&, U32 entry, U16 etherType,
                      U16 etherTypeMask ) {
   return matchesExactly( unit, entry, CompressedField::EtherType, bigEndian( etherType ),
                          bigEndian( etherTypeMask ) );
}

bool verifyIpProtocol( U32 unit, const GroupManager&, U32 entry, U8 protocol,
                       U8 protocolMask ) {
   return matchesExactly( unit, entry, CompressedField::IpProtocol, bigEndian( protocol ),
                          bigEndian( protocolMask ) );
}

bool verifyL4SrcPort( U32 unit, const GroupManager&, U32 entry, U16 port, U16 portMask ) {
   return matchesExactly( unit, entry, CompressedField::L4SrcPort, bigEndian( port ),
                          bigEndian( portMask ) );
}

bool verifyL4DstPort( U32 unit, const GroupManager&, U32 entry, U16 port, U16 portMask ) {
   return matchesExactly( unit, entry, CompressedField::L4DstPort, bigEndian( port ),
                          bigEndian( portMask ) );
}

bool verifyDstIPv4( U32 unit, const GroupManager&, U32 entry, bcm_ip_t ip,
                    bcm_ip_t ipMask ) {
   return matchesExactly( unit, entry, CompressedField::DstIp, bigEndian( ip ),
                          bigEndian( ipMask ) );
}

bool verifyDstIPv6ClassOrDstMac( U32 unit, const GroupManager& gm, U32 entry,
                                 const bcm_ip6_t ip6, const bcm_ip6_t ip6Mask,
                                 const bcm_mac_t mac, const bcm_mac_t macMask ) {
   if ( dstIpv6ClassSupported( unit, gm ) ) {
      return matchesExactly( unit, entry, CompressedField::DstIp6, fromBytes( ip6, 16 ),
                             fromBytes( ip6Mask, 16 ) );
   }
   return matchesExactly( unit, entry, CompressedField::DstMac, fromBytes( mac, 6 ),
                          fromBytes( macMask, 6 ) );
}

void getTranslatedIpClassId( const FerroCommonSmData& smData, U32 classValue,
                             U32 classMask, U32* data, U32* mask ) {
   // The chip keeps the IP class in a wider field, at a position that
   // differs between chips; the logical class and mask move up together.
   *data = classValue << smData.ipClassIdShift;
   *mask = classMask << smData.ipClassIdShift;
}

}  // namespace Ferro
