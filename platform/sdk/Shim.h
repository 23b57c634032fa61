// Shim::sdk_ is the process-wide table of SDK operations: every bcm_field_* call
// the system makes goes through it, together with the hooks around a call, the
// error text of a return code and the run-time values of the SDK enumerations.
// The table is implemented by the simulated field processor (Simulator.h);
// tests may point sdk_ at a subclass that forwards to it.
#pragma once

#include <array>
#include <cstdint>

#include "platform/sdk/Bcm.h"

namespace Shim {

// Enumerations whose numeric values depend on the SDK version. Callers name
// them through the objects at the end of this file, which ask sdk_ for the
// value at the moment it is used.
enum class FieldAction : uint8_t {
   CopyToCpu,
   CosQCpuNew,
   PrioIntNew,
   Drop,
   SwitchToCpuCancel,
   ClassDestSet,
   NewClassId,
   EgressClassSelect,
   Count
};
enum class FieldIpType : uint8_t { Any, NonIp, Ip, Ipv4Any, Ipv6, Count };
enum class PacketRes : uint8_t {
   Unknown,
   Control,
   Bpdu,
   L2Bc,
   L2Uc,
   L2Unknown,
   L2McKnown,
   L2McUnknown,
   L3UcKnown,
   L3UcUnknown,
   L3McKnown,
   L3McUnknown,
   Ieee1588,
   Count
};
enum class SdkConstant : uint8_t {
   ErrorNone,                  // BCM_E_NONE
   EgressClassSelectNew,       // BCM_FIELD_EGRESS_CLASS_SELECT_NEW
   EntryEnableStatus,          // status handed to an entry manager's enableEntry
   Count
};

// Fields that the agent's TCAM helpers program through the chip's field
// compression: every value added to an entry is matched (an entry programmed
// with several L4 source ports matches each of them), and clearing the field
// releases them all.
enum class CompressedField : uint8_t {
   IpProtocol,
   L4SrcPort,
   L4DstPort,
   EtherType,
   DstIp,
   DstIp6,
   DstMac,
   Count
};
// A compressed field value: big-endian bytes, left-aligned (an L4 port uses
// bytes[0..1], an IPv4 address bytes[0..3], a MAC bytes[0..5]).
struct FieldBytes {
   std::array<uint8_t, 16> bytes{};
   bool operator==( const FieldBytes& ) const = default;
};
struct CompressedValue {
   FieldBytes data;
   FieldBytes mask;
   uint32_t classId = 0;    // the compressed class the value was given
   uint32_t classMask = 0;
};

class Sdk {
  public:
   virtual ~Sdk() = default;

   // Hooks around every checked call and the text of a return code.
   virtual void preCallHook() = 0;
   virtual void failureHook() = 0;
   virtual const char* bcm_errmsg( int rc ) = 0;

   // Run-time enumeration values.
   virtual bcm_field_action_t fieldAction( FieldAction name ) = 0;
   virtual bcm_field_IpType_t fieldIpType( FieldIpType name ) = 0;
   virtual uint32_t packetRes( PacketRes name ) = 0;
   virtual int constant( SdkConstant name ) = 0;

   // Ports of a unit. What the SDK keeps per unit and hands out without a
   // call: the bitmap of every port that exists now, CPU included (empty for
   // an unknown unit), and the CPU's port (-1 for an unknown unit).
   virtual bcm_pbmp_t portBitmapAll( int unit ) = 0;
   virtual bcm_port_t cpuPort( int unit ) = 0;
   virtual int bcm_port_config_get( int unit, bcm_port_config_t* config ) = 0;
   virtual int bcm_port_class_set( int unit, bcm_port_t port, bcm_port_class_t pclass,
                                   uint32 classId ) = 0;
   virtual int bcm_port_class_get( int unit, bcm_port_t port, bcm_port_class_t pclass,
                                   uint32* classId ) = 0;

   // Groups and entries (used by the agent's entry managers).
   virtual int bcm_field_group_create_id( int unit, bcm_field_qset_t qset, int pri,
                                          bcm_field_group_t group ) = 0;
   virtual int bcm_field_group_destroy( int unit, bcm_field_group_t group ) = 0;
   virtual int bcm_field_entry_create_id( int unit, bcm_field_group_t group,
                                          bcm_field_entry_t entry ) = 0;
   virtual int bcm_field_entry_destroy( int unit, bcm_field_entry_t entry ) = 0;
   virtual int bcm_field_entry_prio_set( int unit, bcm_field_entry_t entry, int prio ) = 0;
   virtual int bcm_field_entry_prio_get( int unit, bcm_field_entry_t entry, int* prio ) = 0;
   virtual int bcm_field_entry_install( int unit, bcm_field_entry_t entry ) = 0;
   virtual int bcm_field_entry_reinstall( int unit, bcm_field_entry_t entry ) = 0;
   virtual int bcm_field_entry_remove( int unit, bcm_field_entry_t entry ) = 0;
   virtual int bcm_field_entry_enable_set( int unit, bcm_field_entry_t entry,
                                           int enable ) = 0;
   virtual int bcm_field_entry_enable_get( int unit, bcm_field_entry_t entry,
                                           int* enable ) = 0;

   // Whole-entry edits.
   virtual int bcm_field_qualify_clear( int unit, bcm_field_entry_t entry ) = 0;
   virtual int bcm_field_action_remove_all( int unit, bcm_field_entry_t entry ) = 0;
   virtual int bcm_field_entry_policer_detach_all( int unit, bcm_field_entry_t entry ) = 0;

   // Actions.
   virtual int bcm_field_action_add( int unit, bcm_field_entry_t entry,
                                     bcm_field_action_t action, uint32 param0,
                                     uint32 param1 ) = 0;
   virtual int bcm_field_action_remove( int unit, bcm_field_entry_t entry,
                                        bcm_field_action_t action ) = 0;
   virtual int bcm_field_action_get( int unit, bcm_field_entry_t entry,
                                     bcm_field_action_t action, uint32* param0,
                                     uint32* param1 ) = 0;

   // Qualifiers, each with its read-back.
   virtual int bcm_field_qualify_InPorts( int unit, bcm_field_entry_t entry,
                                          bcm_pbmp_t data, bcm_pbmp_t mask ) = 0;
   virtual int bcm_field_qualify_InPorts_get( int unit, bcm_field_entry_t entry,
                                              bcm_pbmp_t* data, bcm_pbmp_t* mask ) = 0;
   virtual int bcm_field_qualify_SrcPort( int unit, bcm_field_entry_t entry,
                                          bcm_module_t dataModid, bcm_module_t maskModid,
                                          bcm_port_t dataPort, bcm_port_t maskPort ) = 0;
   virtual int bcm_field_qualify_SrcPort_get( int unit, bcm_field_entry_t entry,
                                              bcm_module_t* dataModid,
                                              bcm_module_t* maskModid,
                                              bcm_port_t* dataPort,
                                              bcm_port_t* maskPort ) = 0;
   virtual int bcm_field_qualify_DstPort( int unit, bcm_field_entry_t entry,
                                          bcm_module_t dataModid, bcm_module_t maskModid,
                                          bcm_port_t dataPort, bcm_port_t maskPort ) = 0;
   virtual int bcm_field_qualify_DstPort_get( int unit, bcm_field_entry_t entry,
                                              bcm_module_t* dataModid,
                                              bcm_module_t* maskModid,
                                              bcm_port_t* dataPort,
                                              bcm_port_t* maskPort ) = 0;
   virtual int bcm_field_qualify_DstMac( int unit, bcm_field_entry_t entry,
                                         const bcm_mac_t data, const bcm_mac_t mask ) = 0;
   virtual int bcm_field_qualify_DstMac_get( int unit, bcm_field_entry_t entry,
                                             bcm_mac_t* data, bcm_mac_t* mask ) = 0;
   virtual int bcm_field_qualify_EtherType( int unit, bcm_field_entry_t entry,
                                            uint16 data, uint16 mask ) = 0;
   virtual int bcm_field_qualify_EtherType_get( int unit, bcm_field_entry_t entry,
                                                uint16* data, uint16* mask ) = 0;
   virtual int bcm_field_qualify_IpType( int unit, bcm_field_entry_t entry,
                                         bcm_field_IpType_t type ) = 0;
   virtual int bcm_field_qualify_IpType_get( int unit, bcm_field_entry_t entry,
                                             bcm_field_IpType_t* type ) = 0;
   virtual int bcm_field_qualify_DstIp( int unit, bcm_field_entry_t entry, bcm_ip_t data,
                                        bcm_ip_t mask ) = 0;
   virtual int bcm_field_qualify_DstIp_get( int unit, bcm_field_entry_t entry,
                                            bcm_ip_t* data, bcm_ip_t* mask ) = 0;
   virtual int bcm_field_qualify_DstIp6( int unit, bcm_field_entry_t entry,
                                         const bcm_ip6_t data, const bcm_ip6_t mask ) = 0;
   virtual int bcm_field_qualify_DstIp6_get( int unit, bcm_field_entry_t entry,
                                             bcm_ip6_t* data, bcm_ip6_t* mask ) = 0;

#define FERRO_SDK_QUALIFIER( NAME, TYPE )                                               \
   virtual int bcm_field_qualify_##NAME( int unit, bcm_field_entry_t entry, TYPE data,  \
                                         TYPE mask ) = 0;                               \
   virtual int bcm_field_qualify_##NAME##_get( int unit, bcm_field_entry_t entry,       \
                                               TYPE* data, TYPE* mask ) = 0;
   FERRO_SDK_QUALIFIER( IpProtocol, uint8 )
   FERRO_SDK_QUALIFIER( ExtensionHeaderType, uint8 )
   FERRO_SDK_QUALIFIER( L4SrcPort, bcm_l4_port_t )
   FERRO_SDK_QUALIFIER( L4DstPort, bcm_l4_port_t )
   FERRO_SDK_QUALIFIER( Ttl, uint8 )
   FERRO_SDK_QUALIFIER( DSCP, uint8 )
   FERRO_SDK_QUALIFIER( OuterVlanPri, uint8 )
   FERRO_SDK_QUALIFIER( Drop, uint8 )
   FERRO_SDK_QUALIFIER( IngressStpState, uint8 )
   FERRO_SDK_QUALIFIER( HiGig, uint8 )
   FERRO_SDK_QUALIFIER( L2CacheHit, uint8 )
   FERRO_SDK_QUALIFIER( L3Routable, uint8 )
   FERRO_SDK_QUALIFIER( InterfaceClassL2, uint32 )
   FERRO_SDK_QUALIFIER( InterfaceClassVPort, uint32 )
   FERRO_SDK_QUALIFIER( InterfaceClassPort, uint32 )
   FERRO_SDK_QUALIFIER( DstClassL2, uint32 )
   FERRO_SDK_QUALIFIER( DstClassL3, uint32 )
   FERRO_SDK_QUALIFIER( DstClassField, uint32 )
   FERRO_SDK_QUALIFIER( DstL3EgressNextHops, uint32 )
   FERRO_SDK_QUALIFIER( PacketRes, uint32 )
#undef FERRO_SDK_QUALIFIER

   // Field compression (see CompressedField).
   virtual int bcm_field_qualify_compressed_add( int unit, bcm_field_entry_t entry,
                                                 CompressedField field,
                                                 const FieldBytes& data,
                                                 const FieldBytes& mask, uint32 classId,
                                                 uint32 classMask ) = 0;
   virtual int bcm_field_qualify_compressed_clear( int unit, bcm_field_entry_t entry,
                                                   CompressedField field ) = 0;
   // Copies at most `max` values into `values`; `count` gets how many there are.
   virtual int bcm_field_qualify_compressed_get( int unit, bcm_field_entry_t entry,
                                                 CompressedField field,
                                                 CompressedValue* values, int max,
                                                 int* count ) = 0;
};

// The process-wide table. Points at the simulated field processor unless a
// test has swapped it.
extern Sdk* sdk_;

// Names of run-time enumeration values. Each converts to the SDK's value when
// it is used, so one build serves SDK versions whose enumerations differ.
template <FieldAction A>
struct ActionName {
   operator bcm_field_action_t() const { return sdk_->fieldAction( A ); }
};
template <FieldIpType T>
struct IpTypeName {
   operator bcm_field_IpType_t() const { return sdk_->fieldIpType( T ); }
};
template <PacketRes R>
struct PacketResName {
   operator uint32_t() const { return sdk_->packetRes( R ); }
};
template <SdkConstant C>
struct ConstantName {
   operator int() const { return sdk_->constant( C ); }
};

}  // namespace Shim

inline constexpr Shim::ActionName<Shim::FieldAction::CopyToCpu> bcmFieldActionCopyToCpu{};
inline constexpr Shim::ActionName<Shim::FieldAction::CosQCpuNew> bcmFieldActionCosQCpuNew{};
inline constexpr Shim::ActionName<Shim::FieldAction::PrioIntNew> bcmFieldActionPrioIntNew{};
inline constexpr Shim::ActionName<Shim::FieldAction::Drop> bcmFieldActionDrop{};
inline constexpr Shim::ActionName<Shim::FieldAction::SwitchToCpuCancel>
   bcmFieldActionSwitchToCpuCancel{};
inline constexpr Shim::ActionName<Shim::FieldAction::ClassDestSet>
   bcmFieldActionClassDestSet{};
inline constexpr Shim::ActionName<Shim::FieldAction::NewClassId> bcmFieldActionNewClassId{};
inline constexpr Shim::ActionName<Shim::FieldAction::EgressClassSelect>
   bcmFieldActionEgressClassSelect{};

inline constexpr Shim::IpTypeName<Shim::FieldIpType::Any> bcmFieldIpTypeAny{};
inline constexpr Shim::IpTypeName<Shim::FieldIpType::NonIp> bcmFieldIpTypeNonIp{};
inline constexpr Shim::IpTypeName<Shim::FieldIpType::Ip> bcmFieldIpTypeIp{};
inline constexpr Shim::IpTypeName<Shim::FieldIpType::Ipv4Any> bcmFieldIpTypeIpv4Any{};
inline constexpr Shim::IpTypeName<Shim::FieldIpType::Ipv6> bcmFieldIpTypeIpv6{};

inline constexpr Shim::PacketResName<Shim::PacketRes::Unknown> BCM_FIELD_PKT_RES_UNKNOWN{};
inline constexpr Shim::PacketResName<Shim::PacketRes::Control> BCM_FIELD_PKT_RES_CONTROL{};
inline constexpr Shim::PacketResName<Shim::PacketRes::Bpdu> BCM_FIELD_PKT_RES_BPDU{};
inline constexpr Shim::PacketResName<Shim::PacketRes::L2Bc> BCM_FIELD_PKT_RES_L2BC{};
inline constexpr Shim::PacketResName<Shim::PacketRes::L2Uc> BCM_FIELD_PKT_RES_L2UC{};
inline constexpr Shim::PacketResName<Shim::PacketRes::L2Unknown> BCM_FIELD_PKT_RES_L2UNKNOWN{};
inline constexpr Shim::PacketResName<Shim::PacketRes::L2McKnown> BCM_FIELD_PKT_RES_L2MCKNOWN{};
inline constexpr Shim::PacketResName<Shim::PacketRes::L2McUnknown>
   BCM_FIELD_PKT_RES_L2MCUNKNOWN{};
inline constexpr Shim::PacketResName<Shim::PacketRes::L3UcKnown> BCM_FIELD_PKT_RES_L3UCKNOWN{};
inline constexpr Shim::PacketResName<Shim::PacketRes::L3UcUnknown>
   BCM_FIELD_PKT_RES_L3UCUNKNOWN{};
inline constexpr Shim::PacketResName<Shim::PacketRes::L3McKnown> BCM_FIELD_PKT_RES_L3MCKNOWN{};
inline constexpr Shim::PacketResName<Shim::PacketRes::L3McUnknown>
   BCM_FIELD_PKT_RES_L3MCUNKNOWN{};
inline constexpr Shim::PacketResName<Shim::PacketRes::Ieee1588> BCM_FIELD_PKT_RES_IEEE1588{};

inline constexpr Shim::ConstantName<Shim::SdkConstant::ErrorNone> BCM_E_NONE{};
inline constexpr Shim::ConstantName<Shim::SdkConstant::EgressClassSelectNew>
   BCM_FIELD_EGRESS_CLASS_SELECT_NEW{};
inline constexpr Shim::ConstantName<Shim::SdkConstant::EntryEnableStatus>
   BCM_FIELD_ENTRY_ENABLE_STATUS{};
