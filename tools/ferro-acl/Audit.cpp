#include "tools/ferro-acl/Audit.h"

#include <algorithm>

#include "tools/ferro-acl/ChipState.h"

namespace FerroAcl {

namespace {

struct DesignShadow {
   const char* rule;
   const char* reason;
};

// The entries the system ACL installs knowing that no packet reaches them.
const DesignShadow designShadows[] = {
    { "BFD Echo",
      "behind \"BFD\": its port 3785 under mask 0xfffe equals the control entry's 3784 "
      "under the same mask, so every echo packet hits the control entry first" },
    { "IPV4 PTP",
      "behind \"IPV4 UNICAST FORWARD PTP\", which matches every IEEE 1588 IP packet "
      "while it is enabled; a PTP mode without its flag disables that entry and lets "
      "this one raise PTP to its queue" },
    { "ISIS IS-L1L2 Entry CPU Port",
      "its in-ports are the front-panel ports while its source port is the CPU port, "
      "so no packet meets both" },
    { "ISIS ALL-IS Entry Cpu Ports",
      "its in-ports are the front-panel ports while its source port is the CPU port, "
      "so no packet meets both" },
};

std::string nameOf( const Agent::Switch& sw, U16 unit, bcm_field_entry_t id ) {
   const EntryOwner owner = entryOwner( sw, unit, U32( id ) );
   return owner.name.empty() ? "entry " + std::to_string( id ) : owner.name;
}

bool hits( const Sim::LookupResult& lookup, const Sim::EntryView& entry ) {
   const Sim::StageResult& stage =
       entry.stage == bcmFieldStageLookup ? lookup.vlan : lookup.ingress;
   return std::any_of( stage.hits.begin(), stage.hits.end(), [&]( const Sim::StageHit& h ) {
      return h.entry == entry.id;
   } );
}

}  // namespace

const char* shadowedByDesign( const std::string& ruleName ) {
   for ( const DesignShadow& d : designShadows ) {
      if ( ruleName == d.rule ) {
         return d.reason;
      }
   }
   return nullptr;
}

std::vector<AuditFinding> auditUnit( const Agent::Switch& sw, U16 unit ) {
   const Sim::FieldProcessor& chip = Sim::FieldProcessor::instance();
   std::vector<AuditFinding> findings;
   for ( const Sim::EntryView& entry : chip.entries( unit ) ) {
      if ( !entry.installed || !entry.enabled ) {
         continue;
      }
      AuditFinding f;
      f.id = entry.id;
      const EntryOwner owner = entryOwner( sw, unit, U32( entry.id ) );
      f.name = owner.name;
      f.group = owner.group;
      f.stage = entry.stage == bcmFieldStageLookup ? "vlan" : "ingress";
      f.byDesign = shadowedByDesign( f.name );
      const Sim::WitnessResult w = chip.witness( unit, entry.id );
      f.witness = w.packet;
      f.confirmed = w.packet && hits( chip.lookup( unit, *w.packet ), entry );
      for ( bcm_field_entry_t shadower : w.shadowers ) {
         f.shadowedBy.push_back( nameOf( sw, unit, shadower ) );
      }
      f.contradictions = w.contradictions;
      findings.push_back( std::move( f ) );
   }
   return findings;
}

}  // namespace FerroAcl
