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

struct UnitConfig {
   int portCount = 65;            // logical ports 0 .. portCount-1; port 0 is the CPU
   int cpuQueueCount = 48;        // CPU CoS queues 0 .. cpuQueueCount-1
   int classIdBits = 8;           // width of the L2/interface/new class ids
   bcm_module_t modid = 0;        // module id of the unit's own ports
   std::vector<bcm_field_qualify_t> unsupportedQualifiers;  // chip lacks these
   std::vector<Shim::FieldAction> unsupportedActions;       // chip lacks these
};

// Fail matching calls with a chosen code. A call matches when its function name
// (e.g. "bcm_field_action_add"; empty: any), unit and entry (absent: any) match.
// nth counts matching calls from 1 (0: every matching call); `once` retires the
// fault after it fired.
struct Fault {
   std::string function;
   std::optional<int> unit;
   std::optional<int> entry;
   int nth = 1;
   int rc = BCM_E_PARAM;
   bool once = true;
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
   StageResult vlan;     // looked up first; its ClassDestSet feeds the ingress
                         // DstClassL2 qualifier when the L2 lookup gave no class
   StageResult ingress;
};

class FieldProcessor : public Shim::Sdk {
  public:
   static FieldProcessor& instance();

   // Forget every unit, fault, hook and journal line, and hand out the
   // enumeration values of `version` from now on.
   void reset( SdkVersion version = SdkVersion::V6_5 );
   SdkVersion version() const;

   int attachUnit( int unit, const UnitConfig& config );
   bool unitExists( int unit ) const;
   std::vector<int> units() const;

   // Fault injection and the call journal.
   void injectFault( const Fault& fault );
   void clearFaults();
   const std::vector<JournalEntry>& journal() const;
   void clearJournal();
   void journalEnabledIs( bool enabled );

   // When on, every SDK call records a violation if the calling thread holds
   // Kel::activityLock().
   void checkActivityLockIs( bool check );
   const std::vector<std::string>& lockViolations() const;

   void preCallHookIs( std::function<void()> hook );
   void failureHookIs( std::function<void()> hook );

   // Inspection (not SDK calls: no journal, no faults).
   std::vector<EntryView> entries( int unit ) const;
   std::optional<EntryView> entry( int unit, bcm_field_entry_t id ) const;
   static const char* actionName( Shim::FieldAction action );
   static const char* qualifierName( bcm_field_qualify_t qualifier );
   // Decodes a run-time action value of the current version; nullopt if unknown.
   std::optional<Shim::FieldAction> actionFromValue( bcm_field_action_t value ) const;

   LookupResult lookup( int unit, const PacketFields& packet ) const;

   // Shim::Sdk: every operation is overridden here (declarations to be listed
   // one by one, in the order of Shim.h).

  private:
   FieldProcessor();
   struct State;
   State* state_;
};

}  // namespace Sim
