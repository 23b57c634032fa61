// Brings up a simulated switch: resets the simulated SDK, attaches every unit
// with its chip's geometry, fills the agent's shared state (module table, port
// sets, CPU ports, interface maps), publishes the chip attributes and creates
// the system ACL's entry managers with their groups on every unit. The result
// is handed to a HelperBase with attach().
#pragma once

#include <vector>

#include "platform/agent/FerroCentral.h"
#include "platform/agent/FerroCommon.h"
#include "platform/agent/HelperBase.h"
#include "platform/agent/HwFlowTracking.h"
#include "platform/agent/TcamEntryManager.h"
#include "platform/sdk/Simulator.h"

namespace Agent {

struct ChipProfile {
   Lumo::String family;                     // "Trident3", "Tomahawk3", ...
   U32 chipType = 0;
   U8 model = 0;
   FerroCentral::ChipAttributes attributes;  // copied into the platform table
};

struct UnitSpec {
   U16 unit = 0;
   bcm_module_t modId = 0;
   Lumo::String chip;  // a ChipProfile family
   FerroCentral::BringupStage bringupStage = FerroCentral::BringupStage::complete;
   std::vector<U16> inactivePorts;  // front-panel ports that are not up
};

// One interface on which a protocol is forwarded rather than trapped.
struct L2ProtocolForwarding {
   Lamo::L2Pt::L2PtProtocol protocol = Lamo::L2Pt::L2PtProtocol::lldp;
   Wirex::IntfId intf;
   Lamo::L2Pt::L2PtTrafficType trafficType = Lamo::L2Pt::l2PtTrafficTypeAll;
};

struct SwitchConfig {
   Lumo::String name = "switch";
   Sim::SdkVersion sdkVersion = Sim::SdkVersion::V6_5;
   std::vector<ChipProfile> chips;
   std::vector<UnitSpec> units;
   // platform
   bool l2ProtocolFwdSupported = false;
   bool mayRunAsSimulation = false;
   bool aclGroupManagers = false;  // the entry managers bind rules by port class
   // shared state
   bool vxlanEnabled = false;
   U8 skipInPortQualify = 0;
   U8 platformCode = 0;
   bool nextHopToCpuGleanDisabled = false;
   U8 ipClassIdShift = 0;
   std::vector<L2ProtocolForwarding> l2ProtocolForwarding;
   // helper flags
   bool reducedL2TrapsA = false;
   bool reducedL2TrapsB = false;
   bool tapAggregationEnabled = false;
};

// Entry-id pools and groups of the system ACL's managers.
struct ManagerLayout {
   static constexpr U32 l3Base = 1024, l3Size = 256;
   static constexpr U32 l2Base = 2048, l2Size = 16;
   static constexpr U32 vlanBase = 3072, vlanSize = 64;
   static constexpr U32 eapolBase = 4096, eapolSize = 8;
   static constexpr bcm_field_group_t l3Group = 10, l2Group = 11, vlanGroup = 12,
                                      eapolGroup = 13;
   // Higher wins a conflict between groups of the ingress stage.
   static constexpr int l3GroupPriority = 40, l2GroupPriority = 50,
                        eapolGroupPriority = 60, vlanGroupPriority = 10;
};

class Switch : public Lumo::Node {
  public:
   typedef Lumo::Ptr<Switch> Ptr;

   SwitchConfig config;
   FerroCommonSmData::Ptr smData;
   FerroTcamGroupManager::Ptr groupManager;
   FerroBoundedTcamEntryManager::Ptr l3Manager;
   FerroBoundedTcamEntryManager::Ptr l2Manager;
   FerroBoundedTcamEntryManager::Ptr vlanManager;
   FerroBoundedTcamEntryManager::Ptr eapolManager;
   HwFlowTracking::Config::Ptr flowTracking;
   FerroCommon::FerroL2ProtocolFwd::Ptr l2ProtocolFwd;

   // The chip profile of a unit; null for an unknown unit.
   const ChipProfile* chip( U16 unit ) const;

   // Port set changes, as the agent sees them when a front-panel port comes or
   // goes (a port-resource change, or an interface of the Mesa fabric). Adding
   // brings the port back on the chip and into the shared state's port sets
   // and interface map, and, for a Mesa fabric interface, into that table;
   // removing takes it out of the chip, the port sets and the interface map,
   // and leaves the fabric table to the caller, which drops the interface
   // once the rules have let its port go. Both return the port's interface;
   // the system rules follow once the helper's updatePbmpEAllSystemAclRules
   // runs for it. Throw std::invalid_argument naming what is wrong: an
   // unknown unit, a port outside 1..portCount-1, a port already present
   // (add) or absent (remove).
   Wirex::IntfId ethernetPortAdd( U16 unit, U16 port, bool mesaFabric );
   Wirex::IntfId ethernetPortRemove( U16 unit, U16 port );
   // The interface of a unit's front-panel port.
   static Wirex::IntfId ethernetIntf( U16 unit, U16 port );
   // Hands managers, shared state and flags to the helper.
   void attach( FerroTcamSystemAcl::HelperBase& helper ) const;
};

// Checks the configuration (unknown chip family, duplicate unit, port counts),
// then brings the switch up. Throws std::invalid_argument naming what is wrong.
Switch::Ptr bringUp( const SwitchConfig& config );

// A two-unit switch with one chip family, used when nothing else is given.
SwitchConfig defaultSwitchConfig();

}  // namespace Agent
