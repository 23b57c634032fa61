// Constants shared between the agent and the library, and the agent's common
// shared state (FerroCommonSmData) that the library reads.
#pragma once

#include <vector>

#include "platform/agent/FerroCentral.h"
#include "platform/agent/FerroTypes.h"
#include "platform/runtime/Containers.h"
#include "platform/runtime/Ptr.h"
#include "platform/runtime/Publisher.h"
#include "platform/sdk/Bcm.h"

namespace FerroCommon {

// L2 interface class bits written by the VLAN table.
struct VlanClassIds {
   static constexpr U32 classSviConfigured_ = 0x10;  // an L3 interface exists on the VLAN
};

// Destination L3 class ids assigned by the L3 lookup.
enum L3LookupClassIds : U32 {
   selfIpClassId_ = 1,
   classMcastCpuOif_ = 2,
   gleanClassId_ = 1023,
   l3LookupClassIdMax_ = 1023,
};
// Egress next-hop ids given by the L3 lookup on chips without class ids.
typedef U32 L3NextHopTcamId;
constexpr L3NextHopTcamId selfIpNextHopTcamId_ = 3;
constexpr L3NextHopTcamId gleanNextHopTcamId_ = 4;

// The CPU next hop's module id, and the mask of a module-id match.
constexpr bcm_module_t cpuNhInvalidModId_ = 250;
constexpr bcm_module_t maskModId_ = 0xFF;

// Egress class ids the ingress stage gives ESP and WESP packets.
constexpr U32 ifpClassWespWar_ = 24;
constexpr U32 ifpClassEspWar_ = 25;

// L2 destination classes written by the L2 table for reserved MACs.
constexpr U32 classBpdu_ = 1;
constexpr U32 classLacp_ = 2;
constexpr U32 classLldp_ = 3;
constexpr U32 classMicroBfd_ = 8;
constexpr U32 classL2Mask_ = 15;
inline constexpr U32 classLldp() { return classLldp_; }
inline constexpr U32 classL2Mask() { return classL2Mask_; }

// Destination class ids written by the VLAN-stage class rules.
constexpr U32 classOspfMulticastMac_ = 1;
constexpr U32 classPimMulticastIp_ = 2;
constexpr U32 classOspfMulticastIp_ = 3;
constexpr U32 classIgmpFloodLLMIp_ = 4;
constexpr U32 classIgmpPtpIpMulticastMac_ = 5;
constexpr U32 classDhcpV4ServerPort_ = 7;
constexpr U32 classDhcpV6ServerPort_ = 8;
constexpr U32 classBgpPort_ = 9;
constexpr U32 classMlagPort_ = 10;
constexpr U32 classKixHBPort_ = 11;
constexpr U32 classKixControllerAttrLogPort_ = 12;
constexpr U32 classKixClientAttrLogPort_ = 13;
constexpr U32 classNeighborSolicitation_ = 14;
constexpr U32 classDhcpV4ClientPort_ = 15;
constexpr U32 classMldSubTypes_ = 16;
constexpr U32 classNeighborAdvertisement_ = 17;

// L2 protocol forwarding configuration: per protocol, the interfaces on which
// the protocol is forwarded instead of trapped, and for which traffic. Every
// change is published under attrFwdInfo, keyed by the protocol's name.
struct FerroL2ProtocolFwdInfo {
   Lumo::HashMap<Wirex::IntfId, Lamo::L2Pt::L2PtTrafficType> intf;
};
class FerroL2ProtocolFwd : public Lumo::Node {
  public:
   typedef Lumo::Ptr<FerroL2ProtocolFwd> Ptr;
   static constexpr Lumo::AttributeId attrFwdInfo = 301;

   // Null when nothing of `protocol` is forwarded.
   const FerroL2ProtocolFwdInfo* info( Lamo::L2Pt::L2PtProtocol protocol ) const;
   // Forwards `protocol` on `intf` for `trafficType` (replacing an earlier type).
   void intfIs( Lamo::L2Pt::L2PtProtocol protocol, Wirex::IntfId intf,
                Lamo::L2Pt::L2PtTrafficType trafficType );
   // Traps `protocol` on `intf` again; a protocol left without interfaces is
   // dropped from the configuration. Publishes nothing when nothing changed.
   void intfDel( Lamo::L2Pt::L2PtProtocol protocol, Wirex::IntfId intf );
   Lumo::Publisher& publisher() { return publisher_; }

  private:
   Lumo::HashMap<U8, FerroL2ProtocolFwdInfo> fwdInfo_;  // keyed by L2PtProtocol value
   Lumo::Publisher publisher_;
};

}  // namespace FerroCommon

// One module (a chip unit) of the switch.
struct FerroModule {
   U16 unit = 0;
   bcm_module_t modId = 0;
   FerroCentral::ChipInfo chipInfo;
};

// Per-unit port sets as the agent keeps them.
struct FerroUnitPorts {
   bcm_pbmp_t pbmpAll{};     // every port, CPU included
   bcm_pbmp_t pbmpEAll{};    // front-panel Ethernet ports
   bcm_pbmp_t activePorts{}; // ports that are up and in use
};

// The agent's common shared state.
class FerroCommonSmData : public Lumo::Node {
  public:
   typedef Lumo::Ptr<FerroCommonSmData> Ptr;
   typedef Lumo::PtrConst<FerroCommonSmData> PtrConst;

   std::vector<FerroModule> modules;                   // module table, in unit order
   Lumo::HashMap<U32, FerroUnitPorts> unitPorts;       // unit -> port sets
   bool vxlanEnabled = false;                          // VXLAN routing is configured
   Lumo::HashMap<Wirex::IntfId, FerroTypes::FerroPort> cpuPorts;  // CPU interface -> port
   std::vector<Wirex::IntfId> cpuPortOrder;            // CPU interfaces in table order
   Lumo::HashMap<Wirex::IntfId, FerroTypes::FerroPort> mesaFabricIntfToPort;  // fabric intfs
   Lumo::HashMap<Wirex::IntfId, FerroTypes::FerroPort> intfToPort;  // every mapped intf
   U8 skipInPortQualify = 0;                           // install rules without in-ports
   U8 platformCode = 0;                                // 7: L2 elevators also copy to CPU
   bool nextHopToCpuGleanDisabled = false;             // leave out next-hop-to-CPU glean
   U8 ipClassIdShift = 0;                              // chip position of the IP class id

   // The unit's module entry; null when the unit has none.
   const FerroModule* module( U32 unit ) const;
   // The unit's chip info, or a default one.
   FerroCentral::ChipInfo chipInfo( U32 unit ) const;
   // The first CPU port of the CPU-port table, or the invalid port.
   FerroTypes::FerroPort firstCpuPort() const;
};
