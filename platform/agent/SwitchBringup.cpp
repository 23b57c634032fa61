// Bring-up of a simulated switch: configuration checks, the simulated chips,
// the agent's shared state and the system ACL's entry managers.
#include "platform/agent/SwitchBringup.h"

#include <algorithm>
#include <set>
#include <sstream>
#include <stdexcept>

#include "platform/sdk/Shim.h"

namespace Agent {

namespace {

constexpr U32 cpuIntfBase = 0x20000000;  // CPU interfaces: one per unit
constexpr int minPortCount = 2;           // the CPU port and one front-panel port
constexpr int maxPortCount = BCM_PBMP_PORT_MAX;

[[noreturn]] void invalid( const std::string& message ) {
   throw std::invalid_argument( message );
}

const ChipProfile* findChip( const SwitchConfig& config, const Lumo::String& family ) {
   for ( const ChipProfile& chip : config.chips ) {
      if ( chip.family == family ) {
         return &chip;
      }
   }
   return nullptr;
}

std::string knownFamilies( const SwitchConfig& config ) {
   std::string names;
   for ( const ChipProfile& chip : config.chips ) {
      names += ( names.empty() ? "" : ", " ) + chip.family;
   }
   return names.empty() ? "(no chip profiles)" : names;
}

void validate( const SwitchConfig& config ) {
   if ( config.units.empty() ) {
      invalid( "switch '" + config.name + "' has no units; expected at least one unit" );
   }
   std::set<Lumo::String> families;
   for ( const ChipProfile& chip : config.chips ) {
      if ( !families.insert( chip.family ).second ) {
         invalid( "chip family '" + chip.family +
                  "' is listed twice; expected each family once" );
      }
      const int ports = chip.attributes.portCount;
      if ( ports < minPortCount || ports > maxPortCount ) {
         invalid( "chip family '" + chip.family + "' has portCount " +
                  std::to_string( ports ) + "; expected " +
                  std::to_string( minPortCount ) + ".." +
                  std::to_string( maxPortCount ) );
      }
   }
   std::set<U16> units;
   for ( const UnitSpec& desc : config.units ) {
      const std::string unit = "unit " + std::to_string( desc.unit );
      if ( !units.insert( desc.unit ).second ) {
         invalid( unit + " is listed twice; expected each unit once" );
      }
      const ChipProfile* chip = findChip( config, desc.chip );
      if ( chip == nullptr ) {
         invalid( unit + " names unknown chip family '" + desc.chip +
                  "'; expected one of " + knownFamilies( config ) );
      }
      for ( U16 port : desc.inactivePorts ) {
         if ( port < 1 || port >= chip->attributes.portCount ) {
            invalid( unit + " lists inactive port " + std::to_string( port ) +
                     "; expected a front-panel port 1.." +
                     std::to_string( chip->attributes.portCount - 1 ) );
         }
      }
   }
}

std::string sdkError( int rc ) {
   std::ostringstream text;
   text << Shim::sdk_->bcm_errmsg( rc ) << " (" << rc << ")";
   return text.str();
}

Sim::UnitConfig unitConfig( const UnitSpec& desc,
                            const FerroCentral::ChipAttributes& chip ) {
   Sim::UnitConfig config;
   config.portCount = chip.portCount;
   config.cpuQueueCount = chip.cpuQueueCount;
   config.classIdBits = chip.classIdBits;
   config.stpStateMaskReadBack = chip.stpStateMaskReadBack;
   config.modid = desc.modId;
   // The simulated chip refuses what the real one lacks, so a rule that uses
   // a qualifier against its chip's attributes fails here as it would there.
   if ( !chip.extensionHeaderTypeQualifierSupported ) {
      config.unsupportedQualifiers.push_back( bcmFieldQualifyExtensionHeaderType );
   }
   return config;
}

FerroUnitPorts unitPorts( int portCount, const std::vector<U16>& inactivePorts ) {
   FerroUnitPorts ports;
   for ( int port = 0; port < portCount; ++port ) {
      BCM_PBMP_PORT_ADD( ports.pbmpAll, port );
      if ( port != 0 ) {  // port 0 is the CPU
         BCM_PBMP_PORT_ADD( ports.pbmpEAll, port );
      }
   }
   ports.activePorts = ports.pbmpEAll;
   for ( U16 port : inactivePorts ) {
      BCM_PBMP_PORT_REMOVE( ports.activePorts, port );
   }
   return ports;
}

FerroCommonSmData::Ptr sharedState( const SwitchConfig& config,
                                    const std::vector<const UnitSpec*>& units ) {
   auto smData = Lumo::makePtr<FerroCommonSmData>();
   smData->vxlanEnabled = config.vxlanEnabled;
   smData->skipInPortQualify = config.skipInPortQualify;
   smData->platformCode = config.platformCode;
   smData->nextHopToCpuGleanDisabled = config.nextHopToCpuGleanDisabled;
   smData->ipClassIdShift = config.ipClassIdShift;
   for ( const UnitSpec* desc : units ) {
      const ChipProfile& chip = *findChip( config, desc->chip );
      const int portCount = chip.attributes.portCount;
      smData->modules.push_back( FerroModule{
         desc->unit, desc->modId,
         FerroCentral::ChipInfo{ chip.family, chip.chipType, chip.model,
                                 desc->bringupStage } } );
      smData->unitPorts[ desc->unit ] = unitPorts( portCount, desc->inactivePorts );
      const Wirex::IntfId cpuIntf( cpuIntfBase + desc->unit );
      smData->cpuPorts[ cpuIntf ] = FerroTypes::FerroPort( desc->modId, desc->unit, 0 );
      smData->cpuPortOrder.push_back( cpuIntf );
      for ( int port = 1; port < portCount; ++port ) {
         const Wirex::IntfId intf = Switch::ethernetIntf( desc->unit, U16( port ) );
         smData->intfToPort[ intf ] =
            FerroTypes::FerroPort( desc->modId, desc->unit, U16( port ) );
      }
   }
   return smData;
}

void publishAttributes( const SwitchConfig& config ) {
   auto attributes = Lumo::makePtr<FerroCentral::FerroAttributes>();
   attributes->l2ProtocolFwdSupported = config.l2ProtocolFwdSupported;
   attributes->mayRunAsSimulation = config.mayRunAsSimulation;
   for ( const ChipProfile& chip : config.chips ) {
      attributes->chipAttributesIs(
         chip.family, Lumo::makePtr<FerroCentral::ChipAttributes>( chip.attributes ) );
   }
   FerroCentral::ferroAttributesIs( attributes );
}

void createGroup( FerroTcamEntryManager& manager, const UnitSpec& desc,
                  const FerroCentral::ChipAttributes& chip ) {
   const int rc = manager.unitIs( desc.unit, chip );
   if ( BCM_FAILURE( rc ) ) {
      throw std::runtime_error( "unit " + std::to_string( desc.unit ) +
                                ": creating group " +
                                std::to_string( manager.groupId() ) + " (" +
                                manager.name() + ") failed: " + sdkError( rc ) );
   }
}

}  // namespace

const ChipProfile* Switch::chip( U16 unit ) const {
   for ( const UnitSpec& desc : config.units ) {
      if ( desc.unit == unit ) {
         return findChip( config, desc.chip );
      }
   }
   return nullptr;
}

void Switch::attach( FerroTcamSystemAcl::HelperBase& helper ) const {
   helper.l3TcamEntryManagerIs( l3Manager );
   helper.l2TcamEntryManagerIs( l2Manager );
   helper.vlanTcamEntryManagerIs( vlanManager );
   helper.macsecEapolFwdTcamEntryManagerIs( eapolManager );
   helper.systemAclGroupManagerIs( groupManager );
   helper.smDataIs( smData );
   helper.hwFlowTrackingConfigIs( flowTracking );
   helper.l2ProtocolFwdIs( l2ProtocolFwd );
   helper.reducedL2TrapsA = config.reducedL2TrapsA;
   helper.reducedL2TrapsB = config.reducedL2TrapsB;
   helper.tapAggregationEnabled = config.tapAggregationEnabled;
}

Switch::Ptr bringUp( const SwitchConfig& config ) {
   validate( config );

   std::vector<const UnitSpec*> units;
   for ( const UnitSpec& desc : config.units ) {
      units.push_back( &desc );
   }
   std::sort( units.begin(), units.end(),
              []( const UnitSpec* a, const UnitSpec* b ) { return a->unit < b->unit; } );

   Sim::FieldProcessor& chip = Sim::FieldProcessor::instance();
   chip.reset( config.sdkVersion );
   for ( const UnitSpec* desc : units ) {
      const ChipProfile& profile = *findChip( config, desc->chip );
      const int rc =
         chip.attachUnit( desc->unit, unitConfig( *desc, profile.attributes ) );
      if ( BCM_FAILURE( rc ) ) {
         throw std::runtime_error( "unit " + std::to_string( desc->unit ) +
                                   ": attaching a '" + profile.family +
                                   "' chip failed: " + sdkError( rc ) );
      }
   }

   auto sw = Lumo::makePtr<Switch>();
   sw->config = config;
   sw->smData = sharedState( config, units );
   publishAttributes( config );

   sw->groupManager = Lumo::makePtr<FerroTcamGroupManager>();
   for ( const UnitSpec* desc : units ) {
      const ChipProfile& profile = *findChip( config, desc->chip );
      sw->groupManager->modChipInfo[ desc->unit ] = FerroCentral::ChipInfo{
         profile.family, profile.chipType, profile.model, desc->bringupStage };
   }

   using Layout = ManagerLayout;
   const bool aclGroups = config.aclGroupManagers;
   sw->l3Manager = Lumo::makePtr<FerroBoundedTcamEntryManager>(
      "L3 control", bcmFieldStageIngress, Layout::l3Group, Layout::l3GroupPriority,
      aclGroups, Layout::l3Base, Layout::l3Size );
   sw->l2Manager = Lumo::makePtr<FerroBoundedTcamEntryManager>(
      "L2 control", bcmFieldStageIngress, Layout::l2Group, Layout::l2GroupPriority,
      aclGroups, Layout::l2Base, Layout::l2Size );
   // The L2 traps sit at fixed places in a block that exists before them: the
   // installer qualifies some of them in place before requesting them.
   sw->l2Manager->preallocatedIs( true );
   sw->eapolManager = Lumo::makePtr<FerroBoundedTcamEntryManager>(
      "MACsec EAPoL forwarding", bcmFieldStageIngress, Layout::eapolGroup,
      Layout::eapolGroupPriority, aclGroups, Layout::eapolBase, Layout::eapolSize );
   // The VLAN stage has no port classes: its rules classify packets for the
   // ingress stage and are never bound to ports.
   sw->vlanManager = Lumo::makePtr<FerroBoundedTcamEntryManager>(
      "VLAN control", bcmFieldStageLookup, Layout::vlanGroup, Layout::vlanGroupPriority,
      false, Layout::vlanBase, Layout::vlanSize );
   for ( const auto& manager :
         { sw->l3Manager, sw->l2Manager, sw->eapolManager, sw->vlanManager } ) {
      sw->groupManager->managerIs( manager );
   }

   for ( const UnitSpec* desc : units ) {
      const FerroCentral::ChipAttributes& attributes =
         findChip( config, desc->chip )->attributes;
      createGroup( *sw->l3Manager, *desc, attributes );
      createGroup( *sw->l2Manager, *desc, attributes );
      createGroup( *sw->eapolManager, *desc, attributes );
      if ( attributes.vlanStageClassRulesSupported ) {
         createGroup( *sw->vlanManager, *desc, attributes );
      }
   }

   sw->flowTracking = Lumo::makePtr<HwFlowTracking::Config>();
   sw->l2ProtocolFwd = Lumo::makePtr<FerroCommon::FerroL2ProtocolFwd>();
   for ( const L2ProtocolForwarding& fwd : config.l2ProtocolForwarding ) {
      sw->l2ProtocolFwd->intfIs( fwd.protocol, fwd.intf, fwd.trafficType );
   }
   return sw;
}

SwitchConfig defaultSwitchConfig() {
   ChipProfile trident3;
   trident3.family = "Trident3";
   trident3.chipType = 10;
   trident3.model = 5;
   FerroCentral::ChipAttributes& a = trident3.attributes;
   a.dstClassL3Supported = true;
   a.gleanClassIdSupported = true;
   a.l3McCpuOifCosqSupported = true;
   a.ipv6MulticastSupported = true;
   a.ipfixSupported = true;
   a.ipfixInPort = 1;
   a.bfdEchoCheckEnabled = true;
   a.bfdEchoSupported = true;
   a.linkLocalPtpSupported = 1;
   a.portCount = 65;

   SwitchConfig config;
   config.chips.push_back( trident3 );
   for ( U16 unit : { 0, 1 } ) {
      UnitSpec desc;
      desc.unit = unit;
      desc.modId = unit;
      desc.chip = trident3.family;
      config.units.push_back( desc );
   }
   return config;
}

}  // namespace Agent
