// FerroTcamSystemAcl::HelperBase: what the agent supplies to the system ACL
// helper. It owns the per-unit rule tables (unit -> entry id of each installed
// system rule), the CPU queue and traffic-class constants, the entry managers
// and the agent state the helper reads, and declares every operation the helper
// library implements, in virtual-slot order.
#pragma once

#include <utility>
#include <vector>

#include "platform/agent/FerroCommon.h"
#include "platform/agent/FerroTypes.h"
#include "platform/agent/HwFlowTracking.h"
#include "platform/agent/TcamEntryManager.h"
#include "platform/runtime/Containers.h"
#include "platform/runtime/Ptr.h"
#include "platform/runtime/Publisher.h"
#include "platform/runtime/Reflect.h"
#include "platform/runtime/TypeRegistry.h"

// Every per-unit rule table: X( lowerName, UpperName ) makes the table
// HN_<UpperName>Rule, the setter <lowerName>RuleIs( unit, entry ), the
// presence test <lowerName>RuleHas( unit ) and the getter <lowerName>Rule( unit ).
#define FERRO_RULE_TABLES( X )                 \
   X( isisL1L2FpPrio, IsisL1L2FpPrio )         \
   X( isisL1L2CpuPrio, IsisL1L2CpuPrio )       \
   X( isisAllISFpPrio, IsisAllISFpPrio )       \
   X( isisAllISCpuPrio, IsisAllISCpuPrio )     \
   X( sourceCpuPortDrop, SourceCpuPortDrop )   \
   X( bgp, Bgp )                               \
   X( vrrp, Vrrp )                             \
   X( bfd, Bfd )                               \
   X( bfdEcho, BfdEcho )                       \
   X( microBfdPrio, MicroBfdPrio )             \
   X( multihopBfd, MultihopBfd )               \
   X( pim, Pim )                               \
   X( pimV6, PimV6 )                           \
   X( pimNullRegister, PimNullRegister )       \
   X( pimRegister, PimRegister )               \
   X( ospf, Ospf )                             \
   X( ospfMcast, OspfMcast )                   \
   X( ospfV3, OspfV3 )                         \
   X( ospfAuthEspMcast, OspfAuthEspMcast )     \
   X( ospfAuthEspUcast, OspfAuthEspUcast )     \
   X( ipGreIsis, IpGreIsis )                   \
   X( l3PrioHighCos, L3PrioHighCos )           \
   X( l3PrioHighDscp, L3PrioHighDscp )         \
   X( l3Prio, L3Prio )                         \
   X( ipfix, Ipfix )                           \
   X( glean, Glean )                           \
   X( icmpv6GleanExclude, Icmpv6GleanExclude ) \
   X( l3McCpuOif, L3McCpuOif )                 \
   X( icmpV6Mld, IcmpV6Mld )                   \
   X( linkLocalMcast, LinkLocalMcast )         \
   X( bpduPrio, BpduPrio )                     \
   X( lacpPrio, LacpPrio )                     \
   X( lldpPrio, LldpPrio )                     \
   X( vxlanCoreLldpPrio, VxlanCoreLldpPrio )   \
   X( mvrp, Mvrp )                             \
   X( eapol, Eapol )                           \
   X( linkLocalPtp, LinkLocalPtp )             \
   X( vxlanCoreLinkLocalPtp, VxlanCoreLinkLocalPtp ) \
   X( l2McastPtp, L2McastPtp )                 \
   X( l2UnicastPtp, L2UnicastPtp )             \
   X( ipv4McastPtp, Ipv4McastPtp )             \
   X( ipv4UnicastFwdPtp, Ipv4UnicastFwdPtp )   \
   X( ipv4ElevatorPtp, Ipv4ElevatorPtp )

namespace FerroTcamSystemAcl {

typedef Lumo::HashMap<U32, U32> RuleTable;

class HelperBase : public Lumo::Node {
  public:
   typedef Lumo::Ptr<HelperBase> Ptr;

   // CPU CoS queues.
   static constexpr U32 cpuCosqDrop_ = 0;
   static constexpr U32 cpuCosqIpfix_ = 3;
   static constexpr U32 cpuCosqOther_ = 4;
   static constexpr U32 cpuCosqL3SlowPath_ = 27;
   static constexpr U32 cpuCosqGlean_ = 31;
   static constexpr U32 cpuCosqPtp_ = 35;
   static constexpr U32 cpuCosqPIM_ = 36;
   static constexpr U32 cpuCosqOspfIsis_ = 37;
   static constexpr U32 cpuCosqBGP_ = 38;
   static constexpr U32 cpuCosqLLDP_ = 39;
   static constexpr U32 cpuCosqVRRP_ = 40;
   static constexpr U32 cpuCosqSelfIp_ = 42;
   static constexpr U32 cpuCosqSelfIpTc6To7_ = 43;
   static constexpr U32 cpuCosqBFD_ = 45;
   static constexpr U32 cpuCosqLacp_ = 46;
   static constexpr U32 cpuCosqBpdu_ = 47;
   // Traffic classes (internal priority).
   static constexpr U32 TC_ISIS = 6;
   static constexpr U32 TC_LLDP_DOT1X = 13;

   explicit HelperBase( const Lumo::String& name ) : name_( name ) {}
   ~HelperBase() override = default;

   const Lumo::String& name() const { return name_; }

   // HelperBase's own virtual operations.
   virtual Lumo::Publisher& publisher() { return publisher_; }
   virtual Lumo::TypeData typeData() const = 0;
   virtual Lumo::Node* handleParent() const { return nullptr; }
   // Reflection: the attribute ids HelperBase answers itself are below
   // firstHelperAttribute; a subclass answers its own and defers the rest.
   static constexpr Lumo::AttributeId firstHelperAttribute = 1000;
   virtual Lumo::ReflectResult inspectOperation( Lumo::AttributeId attribute,
                                                 Lumo::ReflectAccess access,
                                                 Lumo::ReflectIo& io );

   // The operations of the system ACL helper, in virtual-slot order.
   virtual void doInstallMvrpRule( U16 unit ) = 0;
   virtual void doInstallAclRules( U16 unit ) = 0;
   virtual void doInstallL2TrapRules( U16 unit ) = 0;
   virtual void doInstallTH3SystemAclRule( U16 unit ) = 0;
   virtual void programSourceCpuPortDropRule( U16 unit, U32 entry ) = 0;
   virtual void doInstallL2McastPTPRule( U16 unit ) = 0;
   virtual void doInstallL2McastPTPRuleCommon( U16 unit ) = 0;
   virtual void doInstallL2UnicastPTPRule( U16 unit ) = 0;
   virtual void doInstallL2UnicastPTPRuleCommon( U16 unit ) = 0;
   virtual void doInstallLinkLocalPTPRule( U16 unit, U32 entry, const Lumo::String& name ) = 0;
   virtual void doInstallEapolFwdRule( U16 unit ) = 0;
   virtual void doInstallIpv4McastPTPRule( U16 unit ) = 0;
   virtual void doInstallIpv4McastPTPRuleCommon( U16 unit ) = 0;
   virtual void doInstallIpv4UnicastFwdPTPRule( U16 unit ) = 0;
   virtual void doInstallIpv4UnicastFwdPTPRuleCommon( U16 unit ) = 0;
   virtual void doInstallIpv4ElevatorPTPRule( U16 unit ) = 0;
   virtual void doInstallIpv4ElevatorPTPRuleCommon( U16 unit ) = 0;
   virtual void updateInPortForClassEntry( U32 unit, Wirex::IntfId intf, bool enable,
                                           Lamo::L2Pt::L2PtTrafficType trafficType ) = 0;
   virtual void updateInPortForEtherType( U32 unit, Wirex::IntfId intf, bool enable ) = 0;
   virtual void trapViaInPortForClass( U32 classId, bool enable ) = 0;
   virtual void configIpv4McastPTP( U16 unit, Ptp::PtpMode mode, bool enable ) = 0;
   virtual void configIpv4UnicastFwdPTP( U16 unit, Ptp::PtpMode mode, bool enable ) = 0;
   virtual void configureL2McastPTP( U16 unit, Ptp::PtpMode mode, bool enable ) = 0;
   virtual void configureL2UnicastPTP( U16 unit, Ptp::PtpMode mode, bool enable ) = 0;
   virtual void configPTPElevatorCosq( U16 unit, Ptp::PtpMode mode ) = 0;
   virtual void configPTPActions( U16 unit, Ptp::PtpMode mode, bool enable ) = 0;
   virtual void configureCosQueueMap( U16 unit ) = 0;
   virtual void configureMvrpTrapToCpuAction( U16 unit, bool enable ) = 0;
   virtual void updateL2ProtoFwdRule( U32 unit, U32 entry,
                                      Lamo::L2Pt::L2PtProtocol protocol ) = 0;
   virtual void updateL2ProtoFwdRules() = 0;
   virtual void updateL2PfRule( U32 unit, U32 entry, Wirex::IntfId intf ) = 0;
   virtual void updateNonL2PfRule( U32 unit, U32 entry ) = 0;
   virtual void updatePbmpEAllSystemAclRules( U32 unit, Wirex::IntfId intf ) = 0;
   virtual void doInstallVxlanCpuPortDropRule() = 0;
   virtual void verifyInstalledAclRules( U16 unit ) = 0;
   virtual void verifyInstalledL2TrapRules( U16 unit ) = 0;
   virtual void doInstallIpFixPort( U16 port, bool enable ) = 0;
   virtual void doCollectorDbConfig() = 0;
   virtual void updateCopyPimToCpuTcam( U16 unit, bool enable ) = 0;
   virtual void updateCopyToCpuCancelLLMcastTcam( U16 unit, bool enable ) = 0;
   virtual bool l2ProtocolFwdSupported() const = 0;
   virtual void updateEapolDstMac( U32 unit, U32 entry, const Wirex::EthAddr& address ) = 0;
   virtual bcm_pbmp_t updateDevicePortBitmapForTcamEntry(
      U16 unit, int entry, const bcm_pbmp_t& pbmp, const FerroTypes::FerroPort& port,
      Lamo::L2Pt::L2PtTrafficType trafficType,
      Lamo::L2Pt::L2PtProtocol protocol ) const = 0;
   virtual void installL2ControlSystemTcamEntry(
      U16 unit, const FerroBoundedTcamEntryManager::Ptr& entryManager, int entry,
      const Lumo::String& name, U32 dstClassId, U32 dstClassIdMask, U32 newTc,
      U32 newCpuQ, Lamo::L2Pt::L2PtProtocol protocol ) = 0;
   virtual void verifyL2ControlSystemTcamEntry( U16 unit, int entry, U32 dstClassId,
                                                U32 dstClassIdMask, U32 newTc, U32 newCpuQ,
                                                Lamo::L2Pt::L2PtProtocol protocol ) = 0;

   // Per-unit rule tables.
#define FERRO_RULE_TABLE_MEMBERS( lower, Upper )                                    \
   typedef RuleTable HN_##Upper##Rule;                                              \
   void lower##RuleIs( U32 unit, U32 entry ) { lower##Rule_[ unit ] = entry; }      \
   bool lower##RuleHas( U32 unit ) const { return lower##Rule_.count( unit ) != 0; } \
   U32 lower##Rule( U32 unit ) const {                                              \
      auto it = lower##Rule_.find( unit );                                          \
      return it == lower##Rule_.end() ? 0 : it->second;                             \
   }                                                                                \
   const HN_##Upper##Rule& lower##RuleTable() const { return lower##Rule_; }
   FERRO_RULE_TABLES( FERRO_RULE_TABLE_MEMBERS )
#undef FERRO_RULE_TABLE_MEMBERS

   // Every table by its setter name without "Is" ("bgpRule"), in declaration
   // order, for tools that show which tables hold an entry.
   std::vector<std::pair<const char*, const RuleTable*>> ruleTables() const;

   // Entry managers.
   const FerroBoundedTcamEntryManager::Ptr& l2TcamEntryManager() const { return l2Manager_; }
   const FerroBoundedTcamEntryManager::Ptr& macsecEapolFwdTcamEntryManager() const {
      return eapolManager_;
   }
   // The L3 control group, which holds the system ACL's L3 rules.
   const FerroBoundedTcamEntryManager::Ptr& l3TcamEntryManager() const { return l3Manager_; }
   const FerroBoundedTcamEntryManager::Ptr& systemAclTcamEntryManager() const {
      return l3Manager_;
   }
   const FerroBoundedTcamEntryManager::Ptr& vlanTcamEntryManager() const {
      return vlanManager_;
   }
   const FerroTcamGroupManager::Ptr& systemAclGroupManager() const { return groupManager_; }
   void l2TcamEntryManagerIs( FerroBoundedTcamEntryManager::Ptr m ) { l2Manager_ = m; }
   void macsecEapolFwdTcamEntryManagerIs( FerroBoundedTcamEntryManager::Ptr m ) {
      eapolManager_ = m;
   }
   void l3TcamEntryManagerIs( FerroBoundedTcamEntryManager::Ptr m ) { l3Manager_ = m; }
   void vlanTcamEntryManagerIs( FerroBoundedTcamEntryManager::Ptr m ) { vlanManager_ = m; }
   void systemAclGroupManagerIs( FerroTcamGroupManager::Ptr m ) { groupManager_ = m; }

   // Agent state.
   const FerroCommonSmData::Ptr& smData() const { return smData_; }
   void smDataIs( FerroCommonSmData::Ptr smData ) { smData_ = smData; }
   const HwFlowTracking::Config::Ptr& hwFlowTrackingConfig() const { return ftConfig_; }
   void hwFlowTrackingConfigIs( HwFlowTracking::Config::Ptr c ) { ftConfig_ = c; }
   const FerroCommon::FerroL2ProtocolFwd::Ptr& l2ProtocolFwd() const { return l2Pf_; }
   void l2ProtocolFwdIs( FerroCommon::FerroL2ProtocolFwd::Ptr c ) { l2Pf_ = c; }

   // Only the BPDU and LACPDU traps are installed while either is set.
   bool reducedL2TrapsA = false;
   bool reducedL2TrapsB = false;
   // Tap aggregation mode: PTP is not supported and not configured.
   bool tapAggregationEnabled = false;
   // Verification of the installed L3 rules is skipped while either is set: the
   // agent came back from a hitless restart and has not reconciled yet, or the
   // operator disabled verification.
   bool hitlessRestartInProgress = false;
   bool aclVerificationDisabled = false;

  protected:
   Lumo::Publisher publisher_;

  private:
   Lumo::String name_;
#define FERRO_RULE_TABLE_STORAGE( lower, Upper ) HN_##Upper##Rule lower##Rule_;
   FERRO_RULE_TABLES( FERRO_RULE_TABLE_STORAGE )
#undef FERRO_RULE_TABLE_STORAGE
   FerroBoundedTcamEntryManager::Ptr l2Manager_;
   FerroBoundedTcamEntryManager::Ptr eapolManager_;
   FerroBoundedTcamEntryManager::Ptr l3Manager_;
   FerroBoundedTcamEntryManager::Ptr vlanManager_;
   FerroTcamGroupManager::Ptr groupManager_;
   FerroCommonSmData::Ptr smData_;
   HwFlowTracking::Config::Ptr ftConfig_;
   FerroCommon::FerroL2ProtocolFwd::Ptr l2Pf_;
};

}  // namespace FerroTcamSystemAcl
