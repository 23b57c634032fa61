// State of the simulated field processor, shared by its source files (one per
// object family). Nothing outside platform/sdk includes this.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "platform/sdk/Simulator.h"

namespace Sim {

inline constexpr int kQualifierCount = bcmFieldQualifyCount;
inline constexpr int kActionCount = static_cast<int>( Shim::FieldAction::Count );
inline constexpr int kCompressedCount = static_cast<int>( Shim::CompressedField::Count );
static_assert( kQualifierCount <= 64, "qualified bits are kept in one word" );
static_assert( kActionCount <= 32, "action bits are kept in one word" );

// A ternary field of up to 64 bits, data kept in canonical form (data & mask).
struct Ternary {
   uint64_t data = 0;
   uint64_t mask = 0;
};
struct ActionParams {
   uint32_t param0 = 0;
   uint32_t param1 = 0;
};

// One copy of an entry's key and policy. The software and hardware copies have
// the same shape so that install is a plain assignment; everything but the
// compressed lists is fixed-size, so qualify and action calls never allocate.
struct CopyState {
   uint64_t qualified = 0;  // bit per bcm_field_qualify_t with a plain value
   std::array<Ternary, kQualifierCount> fields{};
   bcm_pbmp_t inPortsData{};  // InPorts and DstIp6 do not fit a Ternary
   bcm_pbmp_t inPortsMask{};
   std::array<uint8_t, 16> ip6Data{};
   std::array<uint8_t, 16> ip6Mask{};
   std::array<std::vector<Shim::CompressedValue>, kCompressedCount> compressed;

   uint32_t actionsPresent = 0;  // bit per Shim::FieldAction
   std::array<ActionParams, kActionCount> actions{};

   // Rank of first qualification / addition, for display in that order; 0
   // while absent.
   std::array<uint32_t, kQualifierCount> qualifierRank{};
   std::array<uint32_t, kActionCount> actionRank{};
   uint32_t nextRank = 1;

   bool hasPlain( bcm_field_qualify_t q ) const { return ( qualified >> q ) & 1; }
   bool hasAction( Shim::FieldAction a ) const {
      return ( actionsPresent >> static_cast<int>( a ) ) & 1;
   }
   // Marks q present (plain value) and ranks it if it was absent.
   void notePlain( bcm_field_qualify_t q );
   void noteCompressed( bcm_field_qualify_t q );
   // Forgets q's rank once neither a plain value nor compressed values remain.
   void dropRankIfAbsent( bcm_field_qualify_t q, Shim::CompressedField f );
   void clearQualifiers();
   void clearActions();
};

struct Group;
struct Entry {
   bcm_field_entry_t id = 0;
   Group* group = nullptr;
   int priority = 0;
   bool installed = false;  // a hardware copy exists
   bool enabled = false;    // the hardware copy takes part in lookup
   CopyState software;
   CopyState hardware;
};

struct Group {
   bcm_field_group_t id = 0;
   bcm_field_stage_t stage = bcmFieldStageIngress;
   int priority = 0;
   bcm_field_qset_t qset{};
   std::vector<Entry*> entries;  // in creation order
};

struct Unit {
   UnitConfig config;
   uint64_t unsupportedQualifiers = 0;  // bit per bcm_field_qualify_t
   uint32_t unsupportedActions = 0;     // bit per Shim::FieldAction
   uint32_t classIdMax = 0;             // largest class id the unit carries
   std::map<bcm_field_group_t, Group> groups;
   std::unordered_map<bcm_field_entry_t, Entry> entries;
   std::vector<uint32_t> portClass;  // bcmPortClassFieldIngress per port
   // Ports that exist now: 0 .. portCount-1 at attach; a flexed-out port
   // keeps its number but takes no traffic and no configuration.
   bcm_pbmp_t validPorts{};

   bool portValid( bcm_port_t port ) const { return bcm_pbmp_member( validPorts, port ); }

   Entry* findEntry( bcm_field_entry_t id ) {
      auto it = entries.find( id );
      return it == entries.end() ? nullptr : &it->second;
   }
   const Entry* findEntry( bcm_field_entry_t id ) const {
      auto it = entries.find( id );
      return it == entries.end() ? nullptr : &it->second;
   }
};

// Formats the arguments of one SDK call for the journal, as the call was made.
class ArgWriter {
 public:
   explicit ArgWriter( SdkVersion version ) : version_( version ) {}
   ArgWriter& dec( long long value );
   ArgWriter& hex( unsigned long long value );
   ArgWriter& text( const char* value );
   ArgWriter& out( const void* pointer, const char* name );  // "&name" or "NULL"
   ArgWriter& mac( const uint8_t* bytes );
   ArgWriter& ip4( uint32_t address );
   ArgWriter& ip6( const uint8_t* bytes );
   ArgWriter& ports( const bcm_pbmp_t& bitmap );
   ArgWriter& action( bcm_field_action_t value );
   ArgWriter& qset( const bcm_field_qset_t& qset );
   // A qualifier's data in the notation natural to the field (names for
   // enumerated codes, hex for ether types, decimal otherwise).
   ArgWriter& fieldData( bcm_field_qualify_t q, uint64_t value );
   ArgWriter& fieldBytes( Shim::CompressedField field, const Shim::FieldBytes& bytes,
                          bool isMask );
   std::string take() { return std::move( text_ ); }

 private:
   void separate();
   SdkVersion version_;
   std::string text_;
};

struct FieldProcessor::State {
   mutable std::mutex mutex;  // the SDK is callable from any thread
   SdkVersion version = SdkVersion::V6_5;
   std::map<int, Unit> units;

   std::vector<FaultRecord> faults;
   int activeFaults = 0;  // faults not retired; 0 keeps the call path cheap

   std::vector<JournalEntry> journal;
   bool journalEnabled = true;

   bool checkActivityLock = false;
   std::vector<std::string> lockViolations;

   std::function<void()> preCallHook;
   std::function<void()> failureHook;
   int preCallHookCount = 0;
   int failureHookCount = 0;

   Unit* findUnit( int unit ) {
      auto it = units.find( unit );
      return it == units.end() ? nullptr : &it->second;
   }
   const Unit* findUnit( int unit ) const {
      auto it = units.find( unit );
      return it == units.end() ? nullptr : &it->second;
   }

   // Runs one SDK call: lock check, fault injection, the operation, journal.
   // `entry` is null for calls that name no entry. The arguments are formatted
   // only when the journal is on.
   template <typename Operation, typename Format>
   int call( const char* function, int unit, const int* entry, Operation&& operation,
             Format&& format ) {
      std::lock_guard guard( mutex );
      if ( checkActivityLock && activityLockHeld() ) {
         noteLockViolation( function );
      }
      int rc = 0;
      if ( activeFaults == 0 || !faultFires( function, unit, entry, rc ) ) {
         rc = operation();
      }
      if ( journalEnabled ) {
         ArgWriter writer( version );
         format( writer );
         journal.push_back( JournalEntry{ function, writer.take(), rc } );
      }
      return rc;
   }
   template <typename Operation, typename Format>
   int unitCall( const char* function, int unit, Operation&& operation,
                 Format&& format ) {
      return call( function, unit, nullptr, operation, format );
   }
   template <typename Operation, typename Format>
   int entryCall( const char* function, int unit, bcm_field_entry_t entry,
                  Operation&& operation, Format&& format ) {
      return call( function, unit, &entry, operation, format );
   }

   static bool activityLockHeld();
   void noteLockViolation( const char* function );
   // Counts the call against every matching fault; true (and rc set) if one is due.
   bool faultFires( const char* function, int unit, const int* entry, int& rc );

   // Operations shared by several files; all run under `mutex`.
   // The entry of a per-entry call, checked in the SDK's order: the unit, then
   // the caller's output pointers (outputsGiven), then the entry. Null, with
   // rc set to BCM_E_UNIT, BCM_E_PARAM or BCM_E_NOT_FOUND, when one fails.
   Entry* callEntry( int unit, bcm_field_entry_t entry, int& rc, bool outputsGiven = true );
   int removeFromHardware( Entry& entry );
   // The entry a qualifier call edits: known, and its group's set has q.
   static Entry* qualifiedEntry( Unit& unit, bcm_field_entry_t entry,
                                 bcm_field_qualify_t q, int& rc );
   // A qualifier that fits a Ternary, checked and stored in canonical form.
   int qualifyWord( int unit, bcm_field_entry_t entry, bcm_field_qualify_t q,
                    uint64_t data, uint64_t mask );
   // Reads one back from the software copy; out0/out1 are the caller's
   // output pointers, only checked for null here.
   int readWord( int unit, bcm_field_entry_t entry, bcm_field_qualify_t q,
                 const void* out0, const void* out1, Ternary& value );
};

// Field widths and kinds (Fields.cpp).
enum class FieldKind : uint8_t {
   Stage,       // pseudo-qualifier naming the group's stage
   Ternary,     // data/mask of up to 64 bits in Ternary
   PortBitmap,  // InPorts
   ModulePort,  // SrcPort/DstPort: module id in bits 15..8, port in bits 7..0
   Ip6,         // DstIp6
   IpType,      // an enumerated IpType value, matched by its meaning
   PacketRes,   // an enumerated packet-resolution code
   StpState,    // one of the bcm_stg_stp_e values
};
// Inline: lookup asks it for every qualifier of every entry it compares.
constexpr FieldKind fieldKind( bcm_field_qualify_t q ) {
   switch ( q ) {
      case bcmFieldQualifyStageIngress:
      case bcmFieldQualifyStageLookup:
      case bcmFieldQualifyCount:
         return FieldKind::Stage;
      case bcmFieldQualifyInPorts:
         return FieldKind::PortBitmap;
      case bcmFieldQualifySrcPort:
      case bcmFieldQualifyDstPort:
         return FieldKind::ModulePort;
      case bcmFieldQualifyDstIp6:
         return FieldKind::Ip6;
      case bcmFieldQualifyIpType:
         return FieldKind::IpType;
      case bcmFieldQualifyPacketRes:
         return FieldKind::PacketRes;
      case bcmFieldQualifyIngressStpState:
         return FieldKind::StpState;
      case bcmFieldQualifyDstMac:
      case bcmFieldQualifyEtherType:
      case bcmFieldQualifyDstIp:
      case bcmFieldQualifyIpProtocol:
      case bcmFieldQualifyExtensionHeaderType:
      case bcmFieldQualifyL4SrcPort:
      case bcmFieldQualifyL4DstPort:
      case bcmFieldQualifyTtl:
      case bcmFieldQualifyDSCP:
      case bcmFieldQualifyOuterVlanPri:
      case bcmFieldQualifyDrop:
      case bcmFieldQualifyHiGig:
      case bcmFieldQualifyInterfaceClassL2:
      case bcmFieldQualifyInterfaceClassVPort:
      case bcmFieldQualifyInterfaceClassPort:
      case bcmFieldQualifyDstClassL2:
      case bcmFieldQualifyDstClassL3:
      case bcmFieldQualifyDstClassField:
      case bcmFieldQualifyDstL3EgressNextHops:
      case bcmFieldQualifyL2CacheHit:
      case bcmFieldQualifyL3Routable:
         return FieldKind::Ternary;
   }
   return FieldKind::Stage;
}
// Width in bits on `unit` (class-id fields follow UnitConfig::classIdBits).
int fieldBits( const Unit& unit, bcm_field_qualify_t q );
uint64_t fieldMax( const Unit& unit, bcm_field_qualify_t q );
int fieldBytes( const Unit& unit, bcm_field_qualify_t q );
bcm_field_qualify_t sdkQualifier( Shim::CompressedField field );
int compressedBytes( Shim::CompressedField field );
bool groupHas( const Group& group, bcm_field_qualify_t q );

// Packet matching (Lookup.cpp), shared by lookup and explain.
// The packet's value of every word-sized qualifier, in qualifier order.
using PacketKey = std::array<uint64_t, kQualifierCount>;
PacketKey packetKey( const Unit& unit, const PacketFields& p, SdkVersion version );
Shim::FieldBytes compressedKey( const PacketFields& p, Shim::CompressedField field );
// q's plain value against the packet; true when the copy has none.
bool plainMatches( const CopyState& copy, bcm_field_qualify_t q, const PacketKey& key,
                   const PacketFields& p, SdkVersion version );
// One of the field's compressed values matches; true when it has none.
bool compressedFieldMatches( const CopyState& copy, Shim::CompressedField field,
                             const PacketFields& p );
bool matches( const CopyState& copy, const PacketKey& key, const PacketFields& p,
              SdkVersion version );
// One stage of lookup(): each group's winner, their actions merged.
StageResult lookupStage( const Unit& unit, bcm_field_stage_t stage, const PacketFields& p,
                         SdkVersion version );
// The stage's groups, the one that wins a conflict first.
std::vector<const Group*> stageGroups( const Unit& unit, bcm_field_stage_t stage );
// The packet as the ingress stage sees it: with the VLAN stage's class.
PacketFields ingressPacket( const PacketFields& packet, const StageResult& vlan );
// a is looked at before b: higher priority, then lower id.
bool entryBefore( const Entry& a, const Entry& b );

// Views (EntryViews.cpp).
std::optional<Shim::CompressedField> compressedFieldOf( bcm_field_qualify_t q );
// q of `copy` as a view: its plain value and its compressed values.
QualifierView qualifierView( const Unit& unit, const CopyState& copy, bcm_field_qualify_t q );
// The qualifiers of `copy` in the order they were first qualified.
std::vector<bcm_field_qualify_t> qualifiersInOrder( const CopyState& copy );

// Run-time enumeration tables (Enumerations.cpp).
bcm_field_action_t actionValue( SdkVersion version, Shim::FieldAction action );
std::optional<Shim::FieldAction> decodeAction( SdkVersion version, int value );
bcm_field_IpType_t ipTypeValue( SdkVersion version, Shim::FieldIpType type );
std::optional<Shim::FieldIpType> decodeIpType( SdkVersion version, int value );
uint32_t packetResValue( SdkVersion version, Shim::PacketRes res );
std::optional<Shim::PacketRes> decodePacketRes( SdkVersion version, uint32_t value );
int constantValue( SdkVersion version, Shim::SdkConstant constant );
const char* compressedFieldName( Shim::CompressedField field );

}  // namespace Sim
