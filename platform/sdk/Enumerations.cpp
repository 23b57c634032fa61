// Run-time enumeration values, names and return-code texts.
//
// Each SDK version numbers its action, IP-type and packet-resolution
// enumerations differently, and none of them by the position of the name in
// Shim.h: a caller that compiled a constant in instead of asking sdk_ programs
// the wrong action, which the tests of the layers above then see.
#include <array>

#include "platform/sdk/SimState.h"

namespace Sim {

namespace {

constexpr int kIpTypeCount = static_cast<int>( Shim::FieldIpType::Count );
constexpr int kPacketResCount = static_cast<int>( Shim::PacketRes::Count );
constexpr int kConstantCount = static_cast<int>( Shim::SdkConstant::Count );
constexpr int kVersionCount = 2;

int versionIndex( SdkVersion version ) {
   switch ( version ) {
      case SdkVersion::V6_5:
         return 0;
      case SdkVersion::V6_6:
         return 1;
   }
   return 0;
}

// Indexed by [version][position in Shim.h].
constexpr std::array<std::array<int, kActionCount>, kVersionCount> kActionValues{ {
    // CopyToCpu, CosQCpuNew, PrioIntNew, Drop, SwitchToCpuCancel, ClassDestSet,
    // NewClassId, EgressClassSelect
    { 14, 25, 62, 21, 103, 176, 91, 88 },
    { 17, 29, 68, 24, 112, 191, 97, 95 },
} };
constexpr std::array<std::array<int, kIpTypeCount>, kVersionCount> kIpTypeValues{ {
    // Any, NonIp, Ip, Ipv4Any, Ipv6
    { 4, 0, 3, 1, 2 },
    { 7, 9, 8, 5, 6 },
} };
constexpr std::array<std::array<uint32_t, kPacketResCount>, kVersionCount>
    kPacketResValues{ {
        // Unknown, Control, Bpdu, L2Bc, L2Uc, L2Unknown, L2McKnown, L2McUnknown,
        // L3UcKnown, L3UcUnknown, L3McKnown, L3McUnknown, Ieee1588
        { 0x11, 0x13, 0x12, 0x14, 0x16, 0x15, 0x17, 0x19, 0x18, 0x1b, 0x1a, 0x1c, 0x1d },
        { 0x21, 0x25, 0x22, 0x2a, 0x23, 0x24, 0x26, 0x27, 0x28, 0x29, 0x2b, 0x2c, 0x2d },
    } };
constexpr std::array<std::array<int, kConstantCount>, kVersionCount> kConstantValues{ {
    // ErrorNone, EgressClassSelectNew, EntryEnableStatus
    { 0, 11, 4 },
    { 0, 13, 8 },
} };

template <typename Name, typename Value, size_t N>
std::optional<Name> decode( const std::array<Value, N>& values, Value value ) {
   for ( size_t i = 0; i < N; ++i ) {
      if ( values[i] == value ) {
         return static_cast<Name>( i );
      }
   }
   return std::nullopt;
}

constexpr std::array<const char*, 23> kErrorTexts{
    "Ok",
    "Internal error",
    "Out of memory",
    "Invalid unit",
    "Invalid parameter",
    "Table empty",
    "Table full",
    "Entry not found",
    "Entry exists",
    "Operation timed out",
    "Operation still running",
    "Operation failed",
    "Operation disabled",
    "Invalid identifier",
    "No resources for operation",
    "Invalid configuration",
    "Feature unavailable",
    "Feature not initialized",
    "Invalid port",
    "I/O error",
    "Access error",
    "No handler",
    "Partial success",
};

}  // namespace

bcm_field_action_t actionValue( SdkVersion version, Shim::FieldAction action ) {
   const auto i = static_cast<size_t>( action );
   return i < kActionCount ? kActionValues[versionIndex( version )][i] : -1;
}
std::optional<Shim::FieldAction> decodeAction( SdkVersion version, int value ) {
   return decode<Shim::FieldAction>( kActionValues[versionIndex( version )], value );
}
bcm_field_IpType_t ipTypeValue( SdkVersion version, Shim::FieldIpType type ) {
   const auto i = static_cast<size_t>( type );
   return i < kIpTypeCount ? kIpTypeValues[versionIndex( version )][i] : -1;
}
std::optional<Shim::FieldIpType> decodeIpType( SdkVersion version, int value ) {
   return decode<Shim::FieldIpType>( kIpTypeValues[versionIndex( version )], value );
}
uint32_t packetResValue( SdkVersion version, Shim::PacketRes res ) {
   const auto i = static_cast<size_t>( res );
   return i < kPacketResCount ? kPacketResValues[versionIndex( version )][i] : ~0u;
}
std::optional<Shim::PacketRes> decodePacketRes( SdkVersion version, uint32_t value ) {
   return decode<Shim::PacketRes>( kPacketResValues[versionIndex( version )], value );
}
int constantValue( SdkVersion version, Shim::SdkConstant constant ) {
   const auto i = static_cast<size_t>( constant );
   return i < kConstantCount ? kConstantValues[versionIndex( version )][i] : -1;
}

const char* FieldProcessor::ipTypeName( Shim::FieldIpType type ) {
   switch ( type ) {
      case Shim::FieldIpType::Any:
         return "Any";
      case Shim::FieldIpType::NonIp:
         return "NonIp";
      case Shim::FieldIpType::Ip:
         return "Ip";
      case Shim::FieldIpType::Ipv4Any:
         return "Ipv4Any";
      case Shim::FieldIpType::Ipv6:
         return "Ipv6";
      case Shim::FieldIpType::Count:
         break;
   }
   return "?";
}

const char* FieldProcessor::packetResName( Shim::PacketRes res ) {
   switch ( res ) {
      case Shim::PacketRes::Unknown:
         return "UNKNOWN";
      case Shim::PacketRes::Control:
         return "CONTROL";
      case Shim::PacketRes::Bpdu:
         return "BPDU";
      case Shim::PacketRes::L2Bc:
         return "L2BC";
      case Shim::PacketRes::L2Uc:
         return "L2UC";
      case Shim::PacketRes::L2Unknown:
         return "L2UNKNOWN";
      case Shim::PacketRes::L2McKnown:
         return "L2MCKNOWN";
      case Shim::PacketRes::L2McUnknown:
         return "L2MCUNKNOWN";
      case Shim::PacketRes::L3UcKnown:
         return "L3UCKNOWN";
      case Shim::PacketRes::L3UcUnknown:
         return "L3UCUNKNOWN";
      case Shim::PacketRes::L3McKnown:
         return "L3MCKNOWN";
      case Shim::PacketRes::L3McUnknown:
         return "L3MCUNKNOWN";
      case Shim::PacketRes::Ieee1588:
         return "IEEE1588";
      case Shim::PacketRes::Count:
         break;
   }
   return "?";
}

const char* compressedFieldName( Shim::CompressedField field ) {
   return FieldProcessor::qualifierName( sdkQualifier( field ) );
}

const char* FieldProcessor::actionName( Shim::FieldAction action ) {
   switch ( action ) {
      case Shim::FieldAction::CopyToCpu:
         return "CopyToCpu";
      case Shim::FieldAction::CosQCpuNew:
         return "CosQCpuNew";
      case Shim::FieldAction::PrioIntNew:
         return "PrioIntNew";
      case Shim::FieldAction::Drop:
         return "Drop";
      case Shim::FieldAction::SwitchToCpuCancel:
         return "SwitchToCpuCancel";
      case Shim::FieldAction::ClassDestSet:
         return "ClassDestSet";
      case Shim::FieldAction::NewClassId:
         return "NewClassId";
      case Shim::FieldAction::EgressClassSelect:
         return "EgressClassSelect";
      case Shim::FieldAction::Count:
         break;
   }
   return "?";
}

std::optional<Shim::FieldAction> FieldProcessor::actionFromValue(
    bcm_field_action_t value ) const {
   return decodeAction( state_->version, value );
}

std::optional<Shim::FieldIpType> FieldProcessor::ipTypeFromValue(
    bcm_field_IpType_t value ) const {
   return decodeIpType( state_->version, value );
}

std::optional<Shim::PacketRes> FieldProcessor::packetResFromValue( uint32_t value ) const {
   return decodePacketRes( state_->version, value );
}

bcm_field_action_t FieldProcessor::fieldAction( Shim::FieldAction name ) {
   return actionValue( state_->version, name );
}
bcm_field_IpType_t FieldProcessor::fieldIpType( Shim::FieldIpType name ) {
   return ipTypeValue( state_->version, name );
}
uint32_t FieldProcessor::packetRes( Shim::PacketRes name ) {
   return packetResValue( state_->version, name );
}
int FieldProcessor::constant( Shim::SdkConstant name ) {
   return constantValue( state_->version, name );
}

const char* FieldProcessor::bcm_errmsg( int rc ) {
   if ( rc > 0 || rc < -static_cast<int>( kErrorTexts.size() - 1 ) ) {
      return "Unknown error";
   }
   return kErrorTexts[static_cast<size_t>( -rc )];
}

}  // namespace Sim
