// What the agent knows about each chip: its identity and bring-up progress
// (ChipInfo) and what it can do (ChipAttributes). Code decides on attributes,
// never on chip names; only profiles name chip families.
#pragma once

#include <string>
#include <vector>

#include "platform/agent/FerroTypes.h"
#include "platform/runtime/Containers.h"
#include "platform/runtime/Ptr.h"

namespace FerroCentral {

// Stages of a chip's bring-up, in order. Verification of the L3 rules needs the
// chip to have reached aclVerifiable.
enum class BringupStage : U8 {
   powerOn = 0,
   sdkAttached = 10,
   portsCreated = 40,
   fieldGroupsCreated = 60,
   systemAclInstalled = 80,
   aclVerifiable = 91,
   complete = 100,
};

struct ChipInfo {
   Lumo::String chipName;   // the chip's family as the profile names it ("" when unknown)
   U32 chipType = 0;        // the agent's chip type number
   U8 model = 0;            // chip model number; 32-35 are the models with a loose
                            // STP-state mask read-back
   BringupStage bringupStage = BringupStage::complete;
};

// True while the chip's bring-up has not yet reached `stage`.
bool isBlocked( const ChipInfo& chipInfo, BringupStage stage );

// Read-only capabilities of one chip family. The fields live in a plain base
// so that a profile can hold them by value and copy them into the shared,
// reference-counted ChipAttributes of the platform table.
struct ChipCapabilities {
   // L3 rules
   bool dstClassL3Supported = false;      // L3 lookup gives a destination class the
                                          // field processor can match (else next-hop id)
   bool espWarRequired = false;           // ESP/WESP packets need the class-id workaround
   bool extensionHeaderTypeQualifierSupported = false;  // WESP matched as IPv6 ext header
   bool ipfixSupported = false;           // the chip exports IPFIX through the CPU
   U8 ipfixInPort = 0;                    // the only in-port of the IPFIX trap
   bool gleanViaNextHopToCpu = false;     // glean caught by the CPU next hop's module id
   bool gleanClassIdSupported = false;    // glean caught by the glean class / next-hop id
   bool l3McCpuOifCosqSupported = false;  // "L3MC Cpu OIF" may also set a CPU queue
   bool ipv6MulticastSupported = false;   // MLD is trapped and PIMv6 is verified
   bool dstIpv6ClassSupported = false;    // IPv6 destinations matched by compressed class
                                          // (else by destination MAC)
   // BFD, in the order the BFD installer reads them
   bool bfdEchoCheckEnabled = false;      // verification looks at the echo rule
   bool bfdEchoRuleSuppressed = false;    // echo shares the control entry: no echo rule
   bool bfdEchoSupported = false;         // the chip can trap BFD echo at all
   // L2 rules
   U32 l2PfDevicePbmpSupported = 0;       // per-device port bitmaps for L2 protocol forwarding
   U8 linkLocalPtpSupported = 0;          // link-local PTP rules; LLDP also matches ether type
   U8 etherTypeChipFlag = 0;              // chip flag handed to setEtherType
   U8 l2CacheHitSupported = 0;            // L2 rules also qualify on an L2 cache hit
   std::vector<Lamo::L2Pt::L2PtProtocol> vxlanCoreL2PFSupportedProtocols;  // split
                                          // rules into VXLAN-core and non-VXLAN-core variants
   // VLAN stage
   bool vlanStageClassRulesSupported = false;  // control packets are classified in the
                                               // VLAN stage (TH3 family)
   bool igmpVlanClassRulesSuppressed = false;  // no IGMP class rules in the VLAN stage
   // Field processor geometry, handed to the simulated SDK
   int portCount = 65;                    // logical ports, CPU port 0 included
   int cpuQueueCount = 48;                // CPU CoS queues
   int classIdBits = 8;                   // width of L2/interface class ids
   U8 stpStateMaskReadBack = 0xFF;        // STP-state mask bits the chip reads back
                                          // (0x03 on models that keep two bits)
};

class ChipAttributes : public Lumo::Node, public ChipCapabilities {
  public:
   typedef Lumo::PtrConst<ChipAttributes> PtrConst;
   typedef Lumo::Ptr<ChipAttributes> Ptr;

   ChipAttributes() = default;
   // Copies the capabilities only; the copy starts without references.
   ChipAttributes( const ChipAttributes& other ) : Lumo::Node(), ChipCapabilities( other ) {}
   ChipAttributes& operator=( const ChipAttributes& other ) {
      ChipCapabilities::operator=( other );
      return *this;
   }

   bool hasVxlanCoreProtocol( Lamo::L2Pt::L2PtProtocol protocol ) const;
};

// Platform-wide attributes and the chip attribute table.
class FerroAttributes : public Lumo::Node {
  public:
   typedef Lumo::PtrConst<FerroAttributes> PtrConst;

   bool l2ProtocolFwdSupported = false;  // the platform offers L2 protocol forwarding
   bool mayRunAsSimulation = false;      // a simulated platform: SIMULATION_VMID may be set

   // Attributes of the chip of `chipInfo`; a default record for an unknown chip.
   ChipAttributes::PtrConst chipAttributes( const ChipInfo& chipInfo ) const;
   void chipAttributesIs( const Lumo::String& chipName, ChipAttributes::PtrConst attributes );

  private:
   Lumo::HashMap<Lumo::String, ChipAttributes::PtrConst> chips_;
};

FerroAttributes::PtrConst ferroAttributes();
void ferroAttributesIs( FerroAttributes::PtrConst attributes );

}  // namespace FerroCentral
