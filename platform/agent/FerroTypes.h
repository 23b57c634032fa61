// Small value types the agent hands to the library: interface ids, MAC
// addresses, chip ports, L2 protocol-forwarding protocols and PTP modes.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include "platform/runtime/IntTypes.h"

namespace Wirex {

// An interface id. Ethernet interfaces are numbered from 1; port-channels live
// in their own range so that the kind is visible in the id itself.
class IntfId {
  public:
   static constexpr U32 portChannelBase = 0x10000000;

   constexpr IntfId() = default;
   constexpr explicit IntfId( U32 value ) : value_( value ) {}
   static constexpr IntfId ethernet( U32 n ) { return IntfId( n ); }
   static constexpr IntfId portChannel( U32 n ) { return IntfId( portChannelBase + n ); }

   constexpr U32 value() const { return value_; }
   constexpr bool isPortChannel() const { return value_ >= portChannelBase; }
   std::string name() const;  // "Ethernet5", "Port-Channel3"
   // The interface a name() stands for; nullopt for any other text.
   static std::optional<IntfId> fromName( std::string_view name );
   constexpr bool operator==( const IntfId& ) const = default;
   constexpr auto operator<=>( const IntfId& ) const = default;

  private:
   U32 value_ = 0;
};
std::ostream& operator<<( std::ostream& os, const IntfId& intf );

// A MAC address, bytes in network order.
class EthAddr {
  public:
   constexpr EthAddr() = default;
   constexpr EthAddr( U8 a, U8 b, U8 c, U8 d, U8 e, U8 f ) : bytes_{ a, b, c, d, e, f } {}
   const U8* bytes() const { return bytes_.data(); }
   U8 operator[]( int i ) const { return bytes_[ i ]; }
   std::string toString() const;  // "01:80:c2:00:00:03"
   constexpr bool operator==( const EthAddr& ) const = default;

  private:
   std::array<U8, 6> bytes_{};
};
std::ostream& operator<<( std::ostream& os, const EthAddr& addr );

}  // namespace Wirex

namespace std {
template <>
struct hash<Wirex::IntfId> {
   size_t operator()( const Wirex::IntfId& i ) const { return hash<U32>()( i.value() ); }
};
}  // namespace std

namespace FerroTypes {

// A chip port: module id and logical port, plus the unit the port is on.
class FerroPort {
  public:
   constexpr FerroPort() = default;
   constexpr FerroPort( S32 modId, U16 unit, U16 logicalPort, bool isVirtual = false )
         : modId_( modId ), unit_( unit ), logicalPort_( logicalPort ),
           isVirtual_( isVirtual ) {}

   // What intfToPort returns for an interface it cannot map.
   static constexpr FerroPort invalid() {
      return FerroPort( S32( 0xFFFFDEAD ), 0xFFFF, 1023, false );
   }

   constexpr S32 modId() const { return modId_; }
   constexpr U16 unit() const { return unit_; }
   constexpr U16 logicalPort() const { return logicalPort_; }
   constexpr bool isVirtual() const { return isVirtual_; }
   constexpr bool operator==( const FerroPort& ) const = default;

  private:
   S32 modId_ = S32( 0xFFFFDEAD );
   U16 unit_ = 0xFFFF;
   U16 logicalPort_ = 1023;
   bool isVirtual_ = false;
};
using FerroPortList = std::vector<FerroPort>;

}  // namespace FerroTypes

namespace Lamo::L2Pt {

// Layer-2 control protocols subject to L2 protocol forwarding.
enum class L2PtProtocol : U8 {
   lacp = 0,
   lldp = 1,
   stp = 2,
   dot1x = 3,
   elmi = 4,
   pagp = 5,
   udld = 6,
   cdp = 7,
   microBfd = 8,
};
constexpr L2PtProtocol lldp() { return L2PtProtocol::lldp; }
const char* name( L2PtProtocol protocol );

// Which traffic of an interface the forwarding applies to.
enum class L2PtTrafficType : U8 {
   l2PtTrafficTypeAll = 0,
   l2PtTrafficTypeVxlanDecap = 1,
};
const char* name( L2PtTrafficType trafficType );  // "all", "vxlanDecap"
using L2PtTrafficType::l2PtTrafficTypeAll;
using L2PtTrafficType::l2PtTrafficTypeVxlanDecap;

}  // namespace Lamo::L2Pt

namespace Ptp {

// The switch's PTP mode; 0 is PTP off.
enum class PtpMode : U8 {
   ptpModeDisabled = 0,
   ptpModeBoundary = 1,
   ptpModeE2eTransparent = 2,
   ptpModeP2pTransparent = 3,
   ptpModeGptp = 4,
   ptpModeOrdinaryMaster = 5,
   ptpModeForwardOnly = 6,
   ptpModeBoundaryOneStep = 7,
};

}  // namespace Ptp
