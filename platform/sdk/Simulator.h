// The simulated field processor behind Shim::sdk_. It keeps real per-unit state
// (groups, entries, software and hardware copies of every entry), rejects what
// the chip's SDK would reject, answers read-backs, and looks packets up over the
// installed, enabled hardware copies.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "platform/sdk/Shim.h"

namespace Sim {

// SDK versions differ in the numeric values of their enumerations.
enum class SdkVersion : uint8_t { V6_5, V6_6 };

// The CPU's logical port on every simulated unit.
constexpr bcm_port_t cpuPortNumber = 0;

struct UnitConfig {
   int portCount = 65;            // logical ports 0 .. portCount-1; port 0 is the CPU
   int cpuQueueCount = 48;        // CPU CoS queues 0 .. cpuQueueCount-1
   int classIdBits = 8;           // width of the L2/interface/new class ids
   bcm_module_t modid = 0;        // module id of the unit's own ports
   // Mask bits of the ingress STP-state qualifier the chip reads back; some
   // chip models keep only the two bits that encode the state and report a
   // narrower mask than was written (the state itself reads back intact).
   uint8_t stpStateMaskReadBack = 0xFF;
   std::vector<bcm_field_qualify_t> unsupportedQualifiers;  // chip lacks these
   std::vector<Shim::FieldAction> unsupportedActions;       // chip lacks these
};

// Fail matching calls with a chosen code. A call matches when its function name
// (e.g. "bcm_field_action_add"; empty: any), unit and entry (absent: any) match.
// nth counts matching calls from 1 (0: every matching call); `once` retires the
// fault after it fired.
// A fault with an entry never matches a call that names no entry (group and
// port calls). Without `once`, the nth matching call and every later one fail.
struct Fault {
   std::string function{};
   std::optional<int> unit{};
   std::optional<int> entry{};
   int nth = 1;
   int rc = BCM_E_PARAM;
   bool once = true;
};

// An injected fault and what it has done so far. When several faults are due
// on one call, the earliest injected one supplies the code and all count it as
// fired.
struct FaultRecord {
   Fault fault;
   int matched = 0;       // matching calls seen while active
   int fired = 0;         // calls it failed
   bool retired = false;  // a `once` fault that fired
};

struct JournalEntry {
   const char* function;     // SDK function name
   std::string arguments;    // "unit, entry, ..." in decimal/hex as called
   int rc;
   std::string toString() const;  // "bcm_field_action_add(0, 12, ...) = 0"
};

// The state of one qualifier of one entry, for inspection and display.
struct QualifierView {
   std::string name;                   // SDK name without prefix: "DstMac", "InPorts"
   std::vector<uint8_t> data;          // big-endian bytes, field width
   std::vector<uint8_t> mask;
   std::vector<Shim::CompressedValue> compressed;  // compressed fields only
   bool isCompressed = false;
};
struct ActionView {
   Shim::FieldAction action;
   std::string name;                   // "CosQCpuNew"
   uint32_t param0 = 0;
   uint32_t param1 = 0;
};
struct EntryCopy {
   std::vector<QualifierView> qualifiers;  // in the order first qualified
   std::vector<ActionView> actions;        // in the order added
};
struct EntryView {
   bcm_field_entry_t id = 0;
   bcm_field_group_t group = 0;
   bcm_field_stage_t stage = bcmFieldStageIngress;
   int priority = 0;
   bool installed = false;
   bool enabled = false;
   EntryCopy software;
   EntryCopy hardware;   // empty unless installed
};

// A packet as the field processor sees it: parsed fields plus the metadata the
// earlier pipeline stages attach.
struct PacketFields {
   bcm_port_t inPort = 1;
   bcm_module_t srcModid = 0;
   bcm_module_t dstModid = 0;
   bcm_port_t dstPort = 0;
   std::array<uint8_t, 6> dstMac{};
   uint16_t etherType = 0;
   Shim::FieldIpType ipType = Shim::FieldIpType::NonIp;  // NonIp, Ipv4Any or Ipv6
   uint32_t dstIp = 0;
   std::array<uint8_t, 16> dstIp6{};
   uint8_t ipProtocol = 0;
   uint8_t extensionHeaderType = 0;
   uint16_t l4SrcPort = 0;  // ICMP: type in the high byte, code in the low byte
   uint16_t l4DstPort = 0;
   uint8_t ttl = 64;
   uint8_t tos = 0;          // the whole TOS / traffic-class byte
   uint8_t outerVlanPri = 0;
   bool drop = false;
   uint8_t stpState = BCM_STG_STP_FORWARD;
   bool higig = false;
   bool l2CacheHit = false;
   bool l3Routable = false;
   Shim::PacketRes packetRes = Shim::PacketRes::Unknown;
   uint32_t interfaceClassL2 = 0;
   uint32_t interfaceClassVPort = 0;
   uint32_t dstClassL2 = 0;
   uint32_t dstClassL3 = 0;
   uint32_t dstClassField = 0;  // the VLAN stage's class; lookup sets it from that stage
   uint32_t dstL3EgressNextHop = 0;
};

struct StageHit {
   bcm_field_entry_t entry;
   bcm_field_group_t group;
};
// Actions of one stage after combining the winners of its groups (a higher
// group priority wins a conflict).
struct StageResult {
   std::vector<StageHit> hits;        // one per group that matched, highest group first
   std::optional<uint32_t> cpuQueue;  // CosQCpuNew
   std::optional<uint32_t> internalPriority;  // PrioIntNew
   bool copyToCpu = false;
   bool drop = false;
   bool switchToCpuCancel = false;
   std::optional<uint32_t> newClassId;
   std::optional<uint32_t> egressClassSelect;
   std::optional<uint32_t> classDest;  // ClassDestSet (VLAN stage)
};
struct LookupResult {
   // Looked up first. Its ClassDestSet is the class field the ingress stage
   // reads as DstClassField; the L2 destination class stays the L2 table's.
   StageResult vlan;
   StageResult ingress;
};

// Why a packet hit what it hit: per stage and group, the entries looked at
// before the one that won (each with its first qualifier that failed) and the
// winner with every qualifier, each beside the packet's value of the field.
struct QualifierCheck {
   QualifierView entry;   // the entry's data and mask, or its compressed values
   QualifierView packet;  // the packet's value, under a full mask
   bool matched = false;
};
struct EntryCheck {
   bcm_field_entry_t entry = 0;
   int priority = 0;
   bool hit = false;
   // The winner: every qualifier. A miss: its qualifiers up to and
   // including the first that failed, in the order they were qualified.
   std::vector<QualifierCheck> qualifiers;
};
struct GroupCheck {
   bcm_field_group_t group = 0;
   std::vector<EntryCheck> entries;  // installed, enabled entries in lookup order, up to the winner
};
struct StageCheck {
   std::vector<GroupCheck> groups;  // the group that wins a conflict first
};
struct Explanation {
   StageCheck vlan;
   StageCheck ingress;
};

// A packet that hits one entry, or why there is none.
struct WitnessResult {
   std::optional<PacketFields> packet;  // matches the entry and nothing its group looks at first
   // No packet: the entries looked at first that match whatever meets the
   // entry (each on its own, or the one the search could not get past).
   std::vector<bcm_field_entry_t> shadowers;
   // No packet because the entry's own qualifiers contradict each other on
   // these fields ("InPorts and SrcPort").
   std::vector<std::string> contradictions;
};

class FieldProcessor : public Shim::Sdk {
  public:
   static FieldProcessor& instance();

   // Forget every unit, fault, hook and journal line, and hand out the
   // enumeration values of `version` from now on.
   void reset( SdkVersion version = SdkVersion::V6_5 );
   SdkVersion version() const;

   // BCM_E_EXISTS if the unit is attached already, BCM_E_PARAM for a config the
   // chip cannot have (port count outside 1..BCM_PBMP_PORT_MAX, no CPU queue,
   // class ids outside 1..32 bits).
   int attachUnit( int unit, const UnitConfig& config );
   // Flexes a front-panel port in or out of existence, as a port-resource
   // change does on a chip: an absent port keeps its number but is refused by
   // every per-port call and in-port data, and takes no packets. BCM_E_PORT for
   // the CPU port or a port beyond the unit's count.
   int portValidIs( int unit, bcm_port_t port, bool valid );
   bool unitExists( int unit ) const;
   std::vector<int> units() const;

   // Fault injection and the call journal.
   void injectFault( const Fault& fault );
   void clearFaults();
   std::vector<FaultRecord> faults() const;  // in injection order
   // journal() and lockViolations() hand out the simulator's own vectors: read
   // them while no other thread is calling the SDK.
   const std::vector<JournalEntry>& journal() const;
   void clearJournal();
   void journalEnabledIs( bool enabled );

   // When on, every SDK call records a violation if the calling thread holds
   // Kel::activityLock().
   void checkActivityLockIs( bool check );
   const std::vector<std::string>& lockViolations() const;

   void preCallHookIs( std::function<void()> hook );
   void failureHookIs( std::function<void()> hook );
   // Calls of preCallHook()/failureHook() since the last reset, installed hook or not.
   int preCallHookCount() const;
   int failureHookCount() const;

   // Inspection (not SDK calls: no journal, no faults).
   std::vector<EntryView> entries( int unit ) const;
   std::optional<EntryView> entry( int unit, bcm_field_entry_t id ) const;
   static const char* actionName( Shim::FieldAction action );
   static const char* qualifierName( bcm_field_qualify_t qualifier );
   static const char* ipTypeName( Shim::FieldIpType type );    // "Ipv4Any"
   static const char* packetResName( Shim::PacketRes res );    // "IEEE1588"
   // Decodes a run-time action value of the current version; nullopt if unknown.
   std::optional<Shim::FieldAction> actionFromValue( bcm_field_action_t value ) const;
   std::optional<Shim::FieldIpType> ipTypeFromValue( bcm_field_IpType_t value ) const;
   std::optional<Shim::PacketRes> packetResFromValue( uint32_t value ) const;

   // Equal group priorities go to the lower group id. An entry's priority is
   // not part of its copies: prio_set moves an installed entry at once. A
   // packet on a port the unit does not have (now) hits nothing.
   LookupResult lookup( int unit, const PacketFields& packet ) const;
   // lookup() step by step; empty for a port the unit does not have.
   Explanation explain( int unit, const PacketFields& packet ) const;
   // A packet that hits `entry` (installed, enabled or not) in its group,
   // built from the ternary data/mask of the entries (Witness.cpp says how
   // and at what cost). Empty for an entry the unit lacks or has not installed.
   WitnessResult witness( int unit, bcm_field_entry_t entry ) const;

   // Shim::Sdk, in the order of Shim.h.
   void preCallHook() override;
   void failureHook() override;
   const char* bcm_errmsg( int rc ) override;

   bcm_field_action_t fieldAction( Shim::FieldAction name ) override;
   bcm_field_IpType_t fieldIpType( Shim::FieldIpType name ) override;
   uint32_t packetRes( Shim::PacketRes name ) override;
   int constant( Shim::SdkConstant name ) override;

   bcm_pbmp_t portBitmapAll( int unit ) override;
   bcm_port_t cpuPort( int unit ) override;
   int bcm_port_config_get( int unit, bcm_port_config_t* config ) override;
   int bcm_port_class_set( int unit, bcm_port_t port, bcm_port_class_t pclass,
                           uint32 classId ) override;
   int bcm_port_class_get( int unit, bcm_port_t port, bcm_port_class_t pclass,
                           uint32* classId ) override;

   int bcm_field_group_create_id( int unit, bcm_field_qset_t qset, int pri,
                                  bcm_field_group_t group ) override;
   int bcm_field_group_destroy( int unit, bcm_field_group_t group ) override;
   int bcm_field_entry_create_id( int unit, bcm_field_group_t group,
                                  bcm_field_entry_t entry ) override;
   int bcm_field_entry_destroy( int unit, bcm_field_entry_t entry ) override;
   int bcm_field_entry_prio_set( int unit, bcm_field_entry_t entry, int prio ) override;
   int bcm_field_entry_prio_get( int unit, bcm_field_entry_t entry, int* prio ) override;
   int bcm_field_entry_install( int unit, bcm_field_entry_t entry ) override;
   int bcm_field_entry_reinstall( int unit, bcm_field_entry_t entry ) override;
   int bcm_field_entry_remove( int unit, bcm_field_entry_t entry ) override;
   int bcm_field_entry_enable_set( int unit, bcm_field_entry_t entry, int enable ) override;
   int bcm_field_entry_enable_get( int unit, bcm_field_entry_t entry, int* enable ) override;

   int bcm_field_qualify_clear( int unit, bcm_field_entry_t entry ) override;
   int bcm_field_action_remove_all( int unit, bcm_field_entry_t entry ) override;
   int bcm_field_entry_policer_detach_all( int unit, bcm_field_entry_t entry ) override;

   int bcm_field_action_add( int unit, bcm_field_entry_t entry, bcm_field_action_t action,
                             uint32 param0, uint32 param1 ) override;
   int bcm_field_action_remove( int unit, bcm_field_entry_t entry,
                                bcm_field_action_t action ) override;
   int bcm_field_action_get( int unit, bcm_field_entry_t entry, bcm_field_action_t action,
                             uint32* param0, uint32* param1 ) override;

   int bcm_field_qualify_InPorts( int unit, bcm_field_entry_t entry, bcm_pbmp_t data,
                                  bcm_pbmp_t mask ) override;
   int bcm_field_qualify_InPorts_get( int unit, bcm_field_entry_t entry, bcm_pbmp_t* data,
                                      bcm_pbmp_t* mask ) override;
   int bcm_field_qualify_SrcPort( int unit, bcm_field_entry_t entry, bcm_module_t dataModid,
                                  bcm_module_t maskModid, bcm_port_t dataPort,
                                  bcm_port_t maskPort ) override;
   int bcm_field_qualify_SrcPort_get( int unit, bcm_field_entry_t entry,
                                      bcm_module_t* dataModid, bcm_module_t* maskModid,
                                      bcm_port_t* dataPort, bcm_port_t* maskPort ) override;
   int bcm_field_qualify_DstPort( int unit, bcm_field_entry_t entry, bcm_module_t dataModid,
                                  bcm_module_t maskModid, bcm_port_t dataPort,
                                  bcm_port_t maskPort ) override;
   int bcm_field_qualify_DstPort_get( int unit, bcm_field_entry_t entry,
                                      bcm_module_t* dataModid, bcm_module_t* maskModid,
                                      bcm_port_t* dataPort, bcm_port_t* maskPort ) override;
   int bcm_field_qualify_DstMac( int unit, bcm_field_entry_t entry, const bcm_mac_t data,
                                 const bcm_mac_t mask ) override;
   int bcm_field_qualify_DstMac_get( int unit, bcm_field_entry_t entry, bcm_mac_t* data,
                                     bcm_mac_t* mask ) override;
   int bcm_field_qualify_EtherType( int unit, bcm_field_entry_t entry, uint16 data,
                                    uint16 mask ) override;
   int bcm_field_qualify_EtherType_get( int unit, bcm_field_entry_t entry, uint16* data,
                                        uint16* mask ) override;
   int bcm_field_qualify_IpType( int unit, bcm_field_entry_t entry,
                                 bcm_field_IpType_t type ) override;
   int bcm_field_qualify_IpType_get( int unit, bcm_field_entry_t entry,
                                     bcm_field_IpType_t* type ) override;
   int bcm_field_qualify_DstIp( int unit, bcm_field_entry_t entry, bcm_ip_t data,
                                bcm_ip_t mask ) override;
   int bcm_field_qualify_DstIp_get( int unit, bcm_field_entry_t entry, bcm_ip_t* data,
                                    bcm_ip_t* mask ) override;
   int bcm_field_qualify_DstIp6( int unit, bcm_field_entry_t entry, const bcm_ip6_t data,
                                 const bcm_ip6_t mask ) override;
   int bcm_field_qualify_DstIp6_get( int unit, bcm_field_entry_t entry, bcm_ip6_t* data,
                                     bcm_ip6_t* mask ) override;

#define FERRO_SIM_QUALIFIER( NAME, TYPE )                                                 \
   int bcm_field_qualify_##NAME( int unit, bcm_field_entry_t entry, TYPE data, TYPE mask ) \
      override;                                                                            \
   int bcm_field_qualify_##NAME##_get( int unit, bcm_field_entry_t entry, TYPE* data,     \
                                       TYPE* mask ) override;
   FERRO_SIM_QUALIFIER( IpProtocol, uint8 )
   FERRO_SIM_QUALIFIER( ExtensionHeaderType, uint8 )
   FERRO_SIM_QUALIFIER( L4SrcPort, bcm_l4_port_t )
   FERRO_SIM_QUALIFIER( L4DstPort, bcm_l4_port_t )
   FERRO_SIM_QUALIFIER( Ttl, uint8 )
   FERRO_SIM_QUALIFIER( DSCP, uint8 )
   FERRO_SIM_QUALIFIER( OuterVlanPri, uint8 )
   FERRO_SIM_QUALIFIER( Drop, uint8 )
   FERRO_SIM_QUALIFIER( IngressStpState, uint8 )
   FERRO_SIM_QUALIFIER( HiGig, uint8 )
   FERRO_SIM_QUALIFIER( L2CacheHit, uint8 )
   FERRO_SIM_QUALIFIER( L3Routable, uint8 )
   FERRO_SIM_QUALIFIER( InterfaceClassL2, uint32 )
   FERRO_SIM_QUALIFIER( InterfaceClassVPort, uint32 )
   FERRO_SIM_QUALIFIER( InterfaceClassPort, uint32 )
   FERRO_SIM_QUALIFIER( DstClassL2, uint32 )
   FERRO_SIM_QUALIFIER( DstClassL3, uint32 )
   FERRO_SIM_QUALIFIER( DstClassField, uint32 )
   FERRO_SIM_QUALIFIER( DstL3EgressNextHops, uint32 )
   FERRO_SIM_QUALIFIER( PacketRes, uint32 )
#undef FERRO_SIM_QUALIFIER

   int bcm_field_qualify_compressed_add( int unit, bcm_field_entry_t entry,
                                         Shim::CompressedField field,
                                         const Shim::FieldBytes& data,
                                         const Shim::FieldBytes& mask, uint32 classId,
                                         uint32 classMask ) override;
   int bcm_field_qualify_compressed_clear( int unit, bcm_field_entry_t entry,
                                           Shim::CompressedField field ) override;
   int bcm_field_qualify_compressed_get( int unit, bcm_field_entry_t entry,
                                         Shim::CompressedField field,
                                         Shim::CompressedValue* values, int max,
                                         int* count ) override;

   struct State;  // defined in SimState.h, shared by the simulator's sources

  private:
   FieldProcessor();
   ~FieldProcessor() override;
   State* state_;
};

}  // namespace Sim
