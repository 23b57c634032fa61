// The stages of the switch before the field processor, in the order a chip
// runs them: ingress port (existence, STP state, HiGig, VXLAN decap), VLAN
// classification and ingress filtering, the L2 table (reserved MACs, the
// router MAC, flooding), the L3 lookup (self IP, neighbours, glean, multicast
// routes), the protocol traps (IGMP, MLD, IEEE 1588). Their verdict and the
// packet's metadata go to the simulated field processor; decideFate() does
// the rest.
#include "pipeline/SwitchModel.h"

#include <algorithm>

#include "pipeline/PacketParser.h"
#include "pipeline/ReservedMacs.h"
#include "platform/agent/FerroCommon.h"

namespace Pipeline {

namespace {

using Shim::PacketRes;

constexpr MacAddress broadcastMac{ 0xff, 0xff, 0xff, 0xff, 0xff, 0xff };
constexpr uint8_t protocolIgmp = 2;
constexpr uint8_t protocolIcmpv6 = 58;
// The ICMPv6 types MLD uses: query, v1 report, done, v2 report.
constexpr uint8_t mldTypes[] = { 130, 131, 132, 143 };
// Next-hop ids of resolved neighbours start here, clear of the reserved ids
// the system ACL matches (self IP 3, glean 4).
constexpr uint32_t neighbourNextHopBase = 100000;

std::optional<IpAddress> destinationIp( const ParsedPacket& p ) {
   if ( p.has( Field::DstIp ) ) {
      return IpAddress::ofV4( p.fields.dstIp );
   }
   if ( p.has( Field::DstIp6 ) ) {
      return IpAddress::ofV6( p.fields.dstIp6 );
   }
   return std::nullopt;
}

bool isMld( const ParsedPacket& p ) {
   return p.fields.ipType == Shim::FieldIpType::Ipv6 &&
          p.fields.ipProtocol == protocolIcmpv6 && p.icmp &&
          std::find( std::begin( mldTypes ), std::end( mldTypes ), p.icmp->type ) !=
              std::end( mldTypes );
}

// One packet on its way through the stages; each stage reads what the
// earlier ones wrote.
class Walk {
  public:
   Walk( const NetworkContext& network, const UnitModel& unit, Classification& c )
       : net_( network ), unit_( unit ), c_( c ), f_( c.fields ) {}

   ChipVerdict run() {
      ingressPort();
      vlan();
      l2();
      if ( verdict_.dropReason.empty() ) {
         l3();
         protocolTraps();
      }
      f_.drop = !verdict_.dropReason.empty();
      std::sort( verdict_.reasons.begin(), verdict_.reasons.end() );
      return verdict_;
   }

  private:
   void reason( CpuReason r ) { verdict_.reasons.push_back( r ); }
   void drop( std::string why ) {
      if ( verdict_.dropReason.empty() ) {
         verdict_.dropReason = std::move( why );
      }
   }

   void ingressPort() {
      const PortRef& in = c_.ingress;
      f_.inPort = in.port;
      f_.srcModid = unit_.modId;
      f_.dstModid = unit_.modId;
      f_.dstPort = 0;
      f_.higig = net_.higig( in );
      f_.stpState = net_.stpBlocked( in ) ? BCM_STG_STP_BLOCK : BCM_STG_STP_FORWARD;
      // Decapsulated VXLAN traffic arrives on a tunnel's virtual port, which
      // carries class 0; plain L2 interfaces carry class 1.
      f_.interfaceClassVPort = net_.vxlanDecap( in ) ? 0 : 1;
   }

   void vlan() {
      const Interface* native = net_.nativeInterface( c_.ingress );
      c_.vlan = native ? native->vlan : 1;
      const std::optional<VlanTag>& tag = c_.parsed.outerVlan;
      if ( tag && tag->vid != 0 ) {
         if ( !net_.isMember( c_.ingress, tag->vid ) ) {
            drop( "VLAN " + std::to_string( tag->vid ) + " not allowed on the port" );
         }
         c_.vlan = tag->vid;
      }
      c_.interface = net_.vlanInterface( c_.vlan );
      routed_ = c_.interface && c_.interface->routed();
      f_.interfaceClassL2 = routed_ ? FerroCommon::VlanClassIds::classSviConfigured_ : 0;
   }

   void l2() {
      const MacAddress& dst = c_.parsed.fields.dstMac;
      const ReservedMac* reserved = reservedMac( dst );
      if ( reserved ) {
         // Reserved MACs reach the CPU whatever the port's STP state: that is
         // how BPDUs get through a blocking port.
         c_.reservedMac = reserved->name;
         f_.dstClassL2 = reserved->dstClass;
         f_.l2CacheHit = true;
         f_.packetRes = reserved->dstClass == FerroCommon::classBpdu_ ? PacketRes::Bpdu
                                                                      : PacketRes::Control;
         reason( CpuReason::ReservedMac );
      } else if ( f_.stpState != BCM_STG_STP_FORWARD ) {
         drop( "STP blocking" );
      } else if ( isBridgeReserved( dst ) ) {
         drop( "reserved bridge address" );
      }
      multicastMac_ = dst[0] & 1;
      toRouter_ = !multicastMac_ && ( net_.anyRouterMac || dst == net_.routerMac );
      if ( !reserved ) {
         f_.packetRes = dst == broadcastMac ? PacketRes::L2Bc
                        : multicastMac_     ? PacketRes::L2McUnknown
                                            : PacketRes::L2Uc;
      }
      if ( !verdict_.dropReason.empty() || !routed_ ) {
         return;
      }
      if ( dst == broadcastMac ) {
         reason( CpuReason::Broadcast );
      } else if ( toRouter_ && f_.ipType == Shim::FieldIpType::NonIp ) {
         reason( CpuReason::RouterMacNonIp );
      }
   }

   void l3() {
      const std::optional<IpAddress> dst = destinationIp( c_.parsed );
      if ( !dst || !routed_ ) {
         return;
      }
      if ( dst->isMulticast() ) {
         if ( multicastMac_ ) {
            multicast( *dst );
         }
      } else if ( toRouter_ ) {
         unicast( *dst );
      }
   }

   void multicast( const IpAddress& group ) {
      f_.l3Routable = true;
      if ( group.isLinkLocalMulticast() ) {
         reason( CpuReason::LinkLocalMulticast );
         return;
      }
      const MulticastRoute* route = net_.multicastRoute( group );
      f_.packetRes = route ? PacketRes::L3McKnown : PacketRes::L3McUnknown;
      if ( route && route->cpuOif ) {
         f_.dstClassL3 = FerroCommon::classMcastCpuOif_;
         reason( CpuReason::MulticastCpuOif );
      }
   }

   void unicast( const IpAddress& dst ) {
      f_.l3Routable = true;
      if ( net_.owner( dst ) ) {
         f_.packetRes = PacketRes::L3UcKnown;
         if ( unit_.dstClassL3Supported ) {
            f_.dstClassL3 = FerroCommon::selfIpClassId_;
         } else {
            f_.dstL3EgressNextHop = FerroCommon::selfIpNextHopTcamId_;
         }
         reason( CpuReason::SelfIp );
         return;
      }
      if ( c_.parsed.has( Field::Ttl ) && f_.ttl <= 1 ) {
         reason( CpuReason::TtlExpired );
         return;
      }
      const Neighbour* next = net_.neighbour( dst );
      if ( !next && net_.connected( dst ) ) {
         glean();
         return;
      }
      if ( !next ) {
         const auto gateway =
             std::find_if( net_.gateways.begin(), net_.gateways.end(),
                           [&]( const IpAddress& g ) { return g.isV6 == dst.isV6; } );
         next = gateway == net_.gateways.end() ? nullptr : net_.neighbour( *gateway );
      }
      if ( !next ) {
         drop( "no route" );
         return;
      }
      f_.packetRes = PacketRes::L3UcKnown;
      f_.dstPort = next->port.port;
      f_.dstL3EgressNextHop =
          neighbourNextHopBase + uint32_t( next - net_.neighbours.data() );
   }

   // The subnet route points at the CPU until the neighbour resolves; chips
   // tell the field processor so by a class, a next-hop id, or the CPU next
   // hop's module id.
   void glean() {
      f_.packetRes = PacketRes::L3UcUnknown;
      if ( unit_.gleanViaNextHopToCpu ) {
         f_.dstModid = FerroCommon::cpuNhInvalidModId_;
      } else if ( unit_.dstClassL3Supported ) {
         f_.dstClassL3 = FerroCommon::gleanClassId_;
      } else {
         f_.dstL3EgressNextHop = FerroCommon::gleanNextHopTcamId_;
      }
      reason( CpuReason::Glean );
   }

   void protocolTraps() {
      const ParsedPacket& p = c_.parsed;
      if ( p.fields.ipType == Shim::FieldIpType::Ipv4Any && p.fields.ipProtocol == protocolIgmp ) {
         reason( CpuReason::IgmpSnooping );
      }
      if ( isMld( p ) ) {
         reason( CpuReason::MldSnooping );
      }
      if ( p.ptp ) {
         f_.packetRes = PacketRes::Ieee1588;
         if ( net_.ptpEnabled ) {
            reason( CpuReason::Ieee1588 );
         }
      }
   }

   const NetworkContext& net_;
   const UnitModel& unit_;
   Classification& c_;
   Sim::PacketFields& f_;
   ChipVerdict verdict_;
   bool routed_ = false;
   bool multicastMac_ = false;
   bool toRouter_ = false;
};

bool portExists( const PortRef& port ) {
   auto& chip = Sim::FieldProcessor::instance();
   return chip.unitExists( port.unit ) &&
          bcm_pbmp_member( chip.portBitmapAll( port.unit ), port.port );
}

}  // namespace

std::vector<UnitModel> unitModels( const Agent::SwitchConfig& config ) {
   std::vector<UnitModel> units;
   for ( const Agent::UnitSpec& spec : config.units ) {
      const auto chip = std::find_if(
          config.chips.begin(), config.chips.end(),
          [&]( const Agent::ChipProfile& c ) { return c.family == spec.chip; } );
      UnitModel unit{ spec.unit, spec.modId };
      if ( chip != config.chips.end() ) {
         unit.dstClassL3Supported = chip->attributes.dstClassL3Supported;
         unit.gleanViaNextHopToCpu = chip->attributes.gleanViaNextHopToCpu;
      }
      units.push_back( unit );
   }
   return units;
}

SwitchModel::SwitchModel( NetworkContext network, std::vector<UnitModel> units )
    : network_( std::move( network ) ), units_( std::move( units ) ) {}

const UnitModel* SwitchModel::unit( uint16_t unit ) const {
   const auto found = std::find_if( units_.begin(), units_.end(),
                                    [&]( const UnitModel& u ) { return u.unit == unit; } );
   return found == units_.end() ? nullptr : &*found;
}

Classification SwitchModel::classify( std::span<const uint8_t> frame,
                                      const PortRef& ingress ) const {
   return classify( parsePacket( frame ), ingress );
}

Classification SwitchModel::classify( ParsedPacket parsed, const PortRef& ingress ) const {
   Classification c;
   c.parsed = std::move( parsed );
   c.ingress = ingress;
   c.fields = c.parsed.fields;
   const UnitModel* model = unit( ingress.unit );
   if ( !model || !portExists( ingress ) ) {
      c.fate.dropped = true;
      c.fate.dropReason = "no such port";
      return c;
   }
   const ChipVerdict verdict = Walk( network_, *model, c ).run();
   c.lookup = Sim::FieldProcessor::instance().lookup( ingress.unit, c.fields );
   c.fate = decideFate( verdict, c.lookup, network_.defaultCpuQueue );
   return c;
}

}  // namespace Pipeline
