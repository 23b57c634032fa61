#include "tools/ferro-acl/ScenarioRun.h"

#include <algorithm>
#include <stdexcept>
#include <string>

#include "platform/sdk/Shim.h"

namespace FerroAcl {

ScenarioRun::ScenarioRun( Agent::Switch::Ptr sw, FerroTcamSystemAcl::HelperBase& helper )
      : switch_( sw ), helper_( helper ), events_( sw, helper ) {}

std::vector<U16> ScenarioRun::unitsOf( const ScenarioEvent& event ) const {
   std::vector<U16> units;
   for ( const Agent::UnitSpec& spec : switch_->config.units ) {
      units.push_back( spec.unit );
   }
   std::sort( units.begin(), units.end() );
   if ( !event.unit ) {
      return units;
   }
   if ( std::find( units.begin(), units.end(), *event.unit ) == units.end() ) {
      throw std::invalid_argument( "unit " + std::to_string( *event.unit ) +
                                   " is not a unit of this switch" );
   }
   return { *event.unit };
}

void ScenarioRun::apply( const ScenarioEvent& event ) {
   const std::vector<U16> units = unitsOf( event );
   FerroTcamSystemAcl::HelperBase& h = helper_;
   switch ( event.kind ) {
      case EventKind::ptpMode:
         // As the agent does: PTP is configured only where its rules were
         // installed (chips with reduced L2 traps have none).
         for ( U16 unit : units ) {
            if ( !h.l2McastPtpRuleHas( unit ) ) {
               continue;
            }
            h.configPTPActions( unit, Ptp::PtpMode( event.number ), event.flag );
         }
         return;
      case EventKind::ptpTapAggregation:
         h.tapAggregationEnabled = event.on;
         return;
      case EventKind::pimCopy:
         for ( U16 unit : units ) {
            h.updateCopyPimToCpuTcam( unit, event.on );
         }
         return;
      case EventKind::llMcastCancel:
         for ( U16 unit : units ) {
            h.updateCopyToCpuCancelLLMcastTcam( unit, event.on );
         }
         return;
      case EventKind::eapolMac:
         // The agent reinstalls the rule after moving it to the new MAC.
         for ( U16 unit : units ) {
            if ( h.eapolRuleHas( unit ) ) {
               h.updateEapolDstMac( unit, h.eapolRule( unit ), event.mac );
               h.macsecEapolFwdTcamEntryManager()->reinstallEntry( unit, h.eapolRule( unit ) );
            }
         }
         return;
      case EventKind::eapolEnable:
         for ( U16 unit : units ) {
            if ( h.eapolRuleHas( unit ) ) {
               h.macsecEapolFwdTcamEntryManager()->enableEntry(
                  unit, h.eapolRule( unit ), event.on,
                  Shim::sdk_->constant( Shim::SdkConstant::EntryEnableStatus ) );
            }
         }
         return;
      case EventKind::vxlan:
         switch_->smData->vxlanEnabled = event.on;
         h.doInstallVxlanCpuPortDropRule();
         return;
      case EventKind::port:
         if ( event.on ) {
            events_.portAdd( event.targetUnit, event.targetPort, event.mesa );
         } else {
            events_.portRemove( event.targetUnit, event.targetPort );
         }
         return;
      case EventKind::l2pf: {
         const Wirex::IntfId intf =
            Agent::Switch::ethernetIntf( event.targetUnit, event.targetPort );
         if ( event.traffic ) {
            events_.l2ProtocolForwardingIs( event.protocol, intf, *event.traffic );
         } else {
            events_.l2ProtocolForwardingDel( event.protocol, intf );
         }
         return;
      }
      case EventKind::verify:
         for ( U16 unit : units ) {
            h.verifyInstalledAclRules( unit );
            h.verifyInstalledL2TrapRules( unit );
         }
         return;
      default:
         ipfix( event );
   }
}

void ScenarioRun::ipfix( const ScenarioEvent& event ) {
   HwFlowTracking::Config& config = *switch_->flowTracking;
   const auto tracker = config.hwFtConfig().find( event.tracker );
   switch ( event.kind ) {
      case EventKind::ipfixSwExport:
         config.swExportIs( event.on );
         return;
      case EventKind::ipfixTracker:
         if ( event.on ) {
            config.hwFtConfigIs( event.tracker, Lumo::makePtr<HwFlowTracking::FtConfig>() );
         } else {
            config.hwFtConfigDel( event.tracker );
         }
         return;
      case EventKind::ipfixExporter:
         if ( event.on ) {
            tracker->second->expConfigIs( event.exporter,
                                          Lumo::makePtr<HwFlowTracking::ExporterConfig>() );
         } else {
            tracker->second->expConfigDel( event.exporter );
         }
         return;
      case EventKind::ipfixCollector: {
         HwFlowTracking::ExporterConfig& exporter =
            *tracker->second->expConfig().at( event.exporter );
         if ( !event.on ) {
            exporter.collectorIpAndPortDel( event.collector );
            exporter.collectorIp6AndPortDel( event.collector );
         } else if ( event.ipv6 ) {
            exporter.collectorIp6AndPortIs( event.collector, { event.ip6, event.collectorPort } );
         } else {
            exporter.collectorIpAndPortIs( event.collector, { event.ipv4, event.collectorPort } );
         }
         return;
      }
      case EventKind::ipfixLocalCollector:
         tracker->second->localCollectorConfigIs( Lumo::makePtr<HwFlowTracking::LocalCollectorConfig>(
            U16( event.number ), event.on ) );
         return;
      default:
         return;
   }
}

}  // namespace FerroAcl
