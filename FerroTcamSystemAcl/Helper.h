// FerroTcamSystemAcl::Helper: the system ACL helper for the simulated switch
// chips. It holds nothing of its own but the IPFIX port programmer; every rule
// is recorded in HelperBase's per-unit tables. Each rule family lives in its
// own source file.
#pragma once

#include "FerroTcamSystemAcl/IpfixPortProgrammerSm.h"
#include "FerroTcamSystemAcl/LibraryModule.h"
#include "platform/agent/FerroCentral.h"
#include "platform/agent/HelperBase.h"
#include "platform/runtime/TypeRegistry.h"

namespace FerroTcamSystemAcl {

class Helper : public HelperBase {
  public:
   typedef Lumo::Ptr<Helper> Ptr;

   // Type indices of the library's reflected types within its module.
   static constexpr const char* moduleName = libraryModule;
   static constexpr U32 typeIndex = 4;
   // Reflected attribute ids of Helper.
   enum Attribute : Lumo::AttributeId {
      attrIpfixPortProgrammerSm = firstHelperAttribute,
      attrInstallL2ControlSystemTcamEntry,
      attrGetRequestKeyForProtocol,
      attrTrapViaInPortForEntryInt,
      attrUpdateInPortsForEntryHelper,
      attrGetPbmpForL2ProfileRule,
      attrModel,
   };

   explicit Helper( const Lumo::String& name );
   ~Helper() override;
   // Every Helper allocation is recorded in memAllocationTracker_ and
   // withdrawn again by the deleting destructor, or when construction throws.
   static void* operator new( size_t size );
   static void operator delete( void* p );

   // The factory the type registry calls: takes no further arguments.
   static Lumo::Ptr<Lumo::Node> create( const Lumo::String& name, Lumo::Directory* directory,
                                        const Lumo::CreationArgs& extra );
   static Lumo::AllocationTracker memAllocationTracker_;

   Lumo::TypeData typeData() const override { return { moduleName, typeIndex }; }
   Lumo::ReflectResult inspectOperation( Lumo::AttributeId attribute,
                                         Lumo::ReflectAccess access,
                                         Lumo::ReflectIo& io ) override;

   // The operations, in virtual-slot order.
   void doInstallMvrpRule( U16 unit ) override;
   void doInstallAclRules( U16 unit ) override;
   void doInstallL2TrapRules( U16 unit ) override;
   void doInstallTH3SystemAclRule( U16 unit ) override;
   void programSourceCpuPortDropRule( U16 unit, U32 entry ) override;
   void doInstallL2McastPTPRule( U16 unit ) override;
   void doInstallL2McastPTPRuleCommon( U16 unit ) override;
   void doInstallL2UnicastPTPRule( U16 unit ) override;
   void doInstallL2UnicastPTPRuleCommon( U16 unit ) override;
   void doInstallLinkLocalPTPRule( U16 unit, U32 entry, const Lumo::String& name ) override;
   void doInstallEapolFwdRule( U16 unit ) override;
   void doInstallIpv4McastPTPRule( U16 unit ) override;
   void doInstallIpv4McastPTPRuleCommon( U16 unit ) override;
   void doInstallIpv4UnicastFwdPTPRule( U16 unit ) override;
   void doInstallIpv4UnicastFwdPTPRuleCommon( U16 unit ) override;
   void doInstallIpv4ElevatorPTPRule( U16 unit ) override;
   void doInstallIpv4ElevatorPTPRuleCommon( U16 unit ) override;
   void updateInPortForClassEntry( U32 unit, Wirex::IntfId intf, bool enable,
                                   Lamo::L2Pt::L2PtTrafficType trafficType ) override;
   void updateInPortForEtherType( U32 unit, Wirex::IntfId intf, bool enable ) override;
   void trapViaInPortForClass( U32 classId, bool enable ) override;
   void configIpv4McastPTP( U16 unit, Ptp::PtpMode mode, bool enable ) override;
   void configIpv4UnicastFwdPTP( U16 unit, Ptp::PtpMode mode, bool enable ) override;
   void configureL2McastPTP( U16 unit, Ptp::PtpMode mode, bool enable ) override;
   void configureL2UnicastPTP( U16 unit, Ptp::PtpMode mode, bool enable ) override;
   void configPTPElevatorCosq( U16 unit, Ptp::PtpMode mode ) override;
   void configPTPActions( U16 unit, Ptp::PtpMode mode, bool enable ) override;
   void configureCosQueueMap( U16 unit ) override;
   void configureMvrpTrapToCpuAction( U16 unit, bool enable ) override;
   void updateL2ProtoFwdRule( U32 unit, U32 entry,
                              Lamo::L2Pt::L2PtProtocol protocol ) override;
   void updateL2ProtoFwdRules() override;
   void updateL2PfRule( U32 unit, U32 entry, Wirex::IntfId intf ) override;
   void updateNonL2PfRule( U32 unit, U32 entry ) override;
   void updatePbmpEAllSystemAclRules( U32 unit, Wirex::IntfId intf ) override;
   void doInstallVxlanCpuPortDropRule() override;
   void verifyInstalledAclRules( U16 unit ) override;
   void verifyInstalledL2TrapRules( U16 unit ) override;
   void doInstallIpFixPort( U16 port, bool enable ) override;
   void doCollectorDbConfig() override;
   void updateCopyPimToCpuTcam( U16 unit, bool enable ) override;
   void updateCopyToCpuCancelLLMcastTcam( U16 unit, bool enable ) override;
   bool l2ProtocolFwdSupported() const override;
   void updateEapolDstMac( U32 unit, U32 entry, const Wirex::EthAddr& address ) override;
   bcm_pbmp_t updateDevicePortBitmapForTcamEntry(
      U16 unit, int entry, const bcm_pbmp_t& pbmp, const FerroTypes::FerroPort& port,
      Lamo::L2Pt::L2PtTrafficType trafficType,
      Lamo::L2Pt::L2PtProtocol protocol ) const override;
   void installL2ControlSystemTcamEntry( U16 unit,
                                         const FerroBoundedTcamEntryManager::Ptr& entryManager,
                                         int entry, const Lumo::String& name, U32 dstClassId,
                                         U32 dstClassIdMask, U32 newTc, U32 newCpuQ,
                                         Lamo::L2Pt::L2PtProtocol protocol ) override;
   void verifyL2ControlSystemTcamEntry( U16 unit, int entry, U32 dstClassId,
                                        U32 dstClassIdMask, U32 newTc, U32 newCpuQ,
                                        Lamo::L2Pt::L2PtProtocol protocol ) override;

   // Non-virtual operations.
   U8 model( U16 unit ) const;
   FerroTcam::RequestKey getRequestKeyForProtocol( U32 dstClassId ) const;
   void qualifyInPorts( int unit, int entry, const bcm_pbmp_t& data, const bcm_pbmp_t& mask,
                        U32 model );
   U16 programBfdControlAndEchoRules( U16 unit, bcm_field_entry_t entry );
   bcm_pbmp_t getPbmpForL2ProfileRule( U32 unit, U32 entry );
   void trapViaInPortForEntryInt( U16 unit, U32 entry, bool enable );
   void updateInPortsForEntryHelper( U32 unit, Wirex::IntfId intf, bool enable, U32 entryId,
                                     const FerroTcamEntryManager::Ptr& manager );

   // The IPFIX port programmer.
   const IpfixPortProgrammerSm::Ptr& ipfixPortProgrammerSm() const {
      return ipfixPortProgrammerSm_;
   }
   IpfixPortProgrammerSm::Ptr ipfixPortProgrammerSmIs( const HwFlowTracking::Config::Ptr& config,
                                                       HelperBase* base );
   IpfixPortProgrammerSm::Ptr ipfixPortProgrammerSmDel();

  private:
   // What the L3 installer carries from the routing-protocol traps into the
   // elevator, glean and IPv6 rules of the same call.
   struct L3InstallState {
      U16 unit;
      U32 entry;  // the running entry number: the id of the last rule
      FerroCentral::ChipAttributes::PtrConst attributes;
      FerroTcam::RequestKey key;
      bool ipv6Pim;  // the chip traps PIM for IPv6
   };
   void installL3ElevatorAndIpv6Rules( L3InstallState& state,
                                       const char* checkedCallOperation );
   // installEntry on the L3 control group, asserted, then the rule's setter.
   void installL3Rule( U16 unit, U32 entry, void ( HelperBase::*setter )( U32, U32 ),
                       const char* checkedCallOperation );
   // Binds an entry to every Ethernet port, unless port classes do that; a
   // permanent binding survives the manager's port refreshes.
   void bindToEthernetPorts( U16 unit, U32 entry, bool permanent = false );

   // One of the two L2 PTP rules, which differ in name and destination MAC.
   void installL2PtpRule( U16 unit, U32 entry, const char* name, const U8 ( &mac )[ 6 ],
                          const U8 ( &macMask )[ 6 ], const char* checkedCallOperation );
   // Takes the ports on which `protocol` is forwarded rather than trapped out
   // of `data`; false when the protocol has no forwarding configuration.
   bool removeL2ForwardingPorts( U16 unit, int entry, Lamo::L2Pt::L2PtProtocol protocol,
                                 bcm_pbmp_t& data ) const;
   // Reads an L2 rule's port binding back: the in-ports recorded for it, or
   // its port class.
   void verifyL2RulePorts( U16 unit, U32 entry, const char* checkedCallOperation );

   // One BFD entry: control, echo or multihop.
   void programBfdRules( U16 unit, const FerroCentral::ChipAttributes::PtrConst& attributes,
                         const FerroTcamGroupManager::Ptr& groupManager,
                         bcm_field_entry_t entry, U16 port, U16 portMask, U32 selector );

   // Verification checks nothing before the chip's bring-up allows it, after a
   // hitless restart that has not reconciled, or when the operator disabled it.
   bool verificationSkipped( const FerroCentral::ChipInfo& chipInfo ) const {
      return FerroCentral::isBlocked( chipInfo, FerroCentral::BringupStage::aclVerifiable ) ||
             hitlessRestartInProgress || aclVerificationDisabled;
   }

   // The unit's chip attributes (a default record for a unit without chip info).
   FerroCentral::ChipAttributes::PtrConst chipAttributes( U32 unit ) const;

   IpfixPortProgrammerSm::Ptr ipfixPortProgrammerSm_;
};

}  // namespace FerroTcamSystemAcl
