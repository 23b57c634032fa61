// Packet lookup over the installed, enabled hardware copies.
//
// Within a group the matching entry with the largest priority value wins, the
// lower entry id on a tie. Every group of a stage looks the packet up in
// parallel; their winners' actions are merged with the higher group priority
// (then the lower group id) taking a single-valued action, while the flag
// actions accumulate.
#include <algorithm>

#include "platform/sdk/SimState.h"

namespace Sim {

namespace {

using Shim::FieldAction;

uint64_t packMac( const std::array<uint8_t, 6>& mac ) {
   uint64_t value = 0;
   for ( uint8_t byte : mac ) {
      value = ( value << 8 ) | byte;
   }
   return value;
}

uint64_t keyValue( const Unit& unit, const PacketFields& p, SdkVersion version,
                   bcm_field_qualify_t q ) {
   switch ( q ) {
      case bcmFieldQualifySrcPort:
         return ( ( static_cast<uint64_t>( p.srcModid ) & 0xff ) << 8 ) |
                ( p.inPort & 0xff );
      case bcmFieldQualifyDstPort:
         return ( ( static_cast<uint64_t>( p.dstModid ) & 0xff ) << 8 ) |
                ( p.dstPort & 0xff );
      case bcmFieldQualifyDstMac:
         return packMac( p.dstMac );
      case bcmFieldQualifyEtherType:
         return p.etherType;
      case bcmFieldQualifyDstIp:
         return p.dstIp;
      case bcmFieldQualifyIpProtocol:
         return p.ipProtocol;
      case bcmFieldQualifyExtensionHeaderType:
         return p.extensionHeaderType;
      case bcmFieldQualifyL4SrcPort:
         return p.l4SrcPort;
      case bcmFieldQualifyL4DstPort:
         return p.l4DstPort;
      case bcmFieldQualifyTtl:
         return p.ttl;
      case bcmFieldQualifyDSCP:
         return p.tos;
      case bcmFieldQualifyOuterVlanPri:
         return p.outerVlanPri;
      case bcmFieldQualifyDrop:
         return p.drop;
      case bcmFieldQualifyIngressStpState:
         return p.stpState;
      case bcmFieldQualifyHiGig:
         return p.higig;
      case bcmFieldQualifyInterfaceClassL2:
         return p.interfaceClassL2;
      case bcmFieldQualifyInterfaceClassVPort:
         return p.interfaceClassVPort;
      case bcmFieldQualifyInterfaceClassPort:
         return p.inPort >= 0 && p.inPort < unit.config.portCount
                    ? unit.portClass[static_cast<size_t>( p.inPort )]
                    : 0;
      case bcmFieldQualifyDstClassL2:
         return p.dstClassL2;
      case bcmFieldQualifyDstClassL3:
         return p.dstClassL3;
      case bcmFieldQualifyDstClassField:
         return p.dstClassField;
      case bcmFieldQualifyDstL3EgressNextHops:
         return p.dstL3EgressNextHop;
      case bcmFieldQualifyL2CacheHit:
         return p.l2CacheHit;
      case bcmFieldQualifyL3Routable:
         return p.l3Routable;
      case bcmFieldQualifyPacketRes:
         // The chip compares its own resolution code, i.e. the SDK value.
         return packetResValue( version, p.packetRes );
      case bcmFieldQualifyStageIngress:
      case bcmFieldQualifyStageLookup:
      case bcmFieldQualifyInPorts:
      case bcmFieldQualifyDstIp6:
      case bcmFieldQualifyIpType:
      case bcmFieldQualifyCount:
         break;
   }
   return 0;
}

bool ipTypeMatches( SdkVersion version, uint64_t value, Shim::FieldIpType packetType ) {
   const bool v4 = packetType == Shim::FieldIpType::Ipv4Any;
   const bool v6 = packetType == Shim::FieldIpType::Ipv6;
   const bool ip = v4 || v6 || packetType == Shim::FieldIpType::Ip;
   const auto type = decodeIpType( version, static_cast<int>( value ) );
   if ( !type ) {
      return false;
   }
   switch ( *type ) {
      case Shim::FieldIpType::Any:
         return true;
      case Shim::FieldIpType::NonIp:
         return !ip;
      case Shim::FieldIpType::Ip:
         return ip;
      case Shim::FieldIpType::Ipv4Any:
         return v4;
      case Shim::FieldIpType::Ipv6:
         return v6;
      case Shim::FieldIpType::Count:
         break;
   }
   return false;
}

bool compressedMatches( const std::vector<Shim::CompressedValue>& values,
                        const Shim::FieldBytes& key ) {
   return std::any_of(
       values.begin(), values.end(), [&]( const Shim::CompressedValue& v ) {
          for ( size_t i = 0; i < key.bytes.size(); ++i ) {
             if ( ( key.bytes[i] & v.mask.bytes[i] ) != v.data.bytes[i] ) {
                return false;
             }
          }
          return true;
       } );
}

}  // namespace

Shim::FieldBytes compressedKey( const PacketFields& p, Shim::CompressedField field ) {
   Shim::FieldBytes key;
   auto& b = key.bytes;
   switch ( field ) {
      case Shim::CompressedField::IpProtocol:
         b[0] = p.ipProtocol;
         break;
      case Shim::CompressedField::L4SrcPort:
         b[0] = static_cast<uint8_t>( p.l4SrcPort >> 8 );
         b[1] = static_cast<uint8_t>( p.l4SrcPort );
         break;
      case Shim::CompressedField::L4DstPort:
         b[0] = static_cast<uint8_t>( p.l4DstPort >> 8 );
         b[1] = static_cast<uint8_t>( p.l4DstPort );
         break;
      case Shim::CompressedField::EtherType:
         b[0] = static_cast<uint8_t>( p.etherType >> 8 );
         b[1] = static_cast<uint8_t>( p.etherType );
         break;
      case Shim::CompressedField::DstIp:
         for ( int i = 0; i < 4; ++i ) {
            b[i] = static_cast<uint8_t>( p.dstIp >> ( 24 - 8 * i ) );
         }
         break;
      case Shim::CompressedField::DstIp6:
         std::copy( p.dstIp6.begin(), p.dstIp6.end(), b.begin() );
         break;
      case Shim::CompressedField::DstMac:
         std::copy( p.dstMac.begin(), p.dstMac.end(), b.begin() );
         break;
      case Shim::CompressedField::Count:
         break;
   }
   return key;
}

bool plainMatches( const CopyState& copy, bcm_field_qualify_t q, const PacketKey& key,
                   const PacketFields& p, SdkVersion version ) {
   switch ( fieldKind( q ) ) {
      case FieldKind::Ternary:
      case FieldKind::ModulePort:
      case FieldKind::StpState:
      case FieldKind::PacketRes:
         return ( key[q] & copy.fields[q].mask ) == copy.fields[q].data;
      case FieldKind::IpType:
         return ipTypeMatches( version, copy.fields[q].data, p.ipType );
      case FieldKind::PortBitmap:
         // Ports outside the mask are don't-care; a port inside it must be in data.
         return !bcm_pbmp_member( copy.inPortsMask, p.inPort ) ||
                bcm_pbmp_member( copy.inPortsData, p.inPort );
      case FieldKind::Ip6:
         for ( size_t i = 0; i < 16; ++i ) {
            if ( ( p.dstIp6[i] & copy.ip6Mask[i] ) != copy.ip6Data[i] ) {
               return false;
            }
         }
         return true;
      case FieldKind::Stage:
         return true;
   }
   return true;
}

bool compressedFieldMatches( const CopyState& copy, Shim::CompressedField field,
                             const PacketFields& p ) {
   const auto& values = copy.compressed[static_cast<size_t>( field )];
   return values.empty() || compressedMatches( values, compressedKey( p, field ) );
}

bool matches( const CopyState& copy, const PacketKey& key, const PacketFields& p,
              SdkVersion version ) {
   for ( uint64_t bits = copy.qualified; bits != 0; bits &= bits - 1 ) {
      const auto q = static_cast<bcm_field_qualify_t>( __builtin_ctzll( bits ) );
      if ( !plainMatches( copy, q, key, p, version ) ) {
         return false;
      }
   }
   for ( int f = 0; f < kCompressedCount; ++f ) {
      if ( !compressedFieldMatches( copy, static_cast<Shim::CompressedField>( f ), p ) ) {
         return false;
      }
   }
   return true;
}

PacketKey packetKey( const Unit& unit, const PacketFields& p, SdkVersion version ) {
   PacketKey key{};
   for ( int q = 0; q < kQualifierCount; ++q ) {
      key[q] = keyValue( unit, p, version, static_cast<bcm_field_qualify_t>( q ) );
   }
   return key;
}

std::vector<const Group*> stageGroups( const Unit& unit, bcm_field_stage_t stage ) {
   std::vector<const Group*> groups;
   for ( const auto& [id, group] : unit.groups ) {
      if ( group.stage == stage ) {
         groups.push_back( &group );
      }
   }
   std::sort( groups.begin(), groups.end(), []( const Group* a, const Group* b ) {
      return a->priority != b->priority ? a->priority > b->priority : a->id < b->id;
   } );
   return groups;
}

PacketFields ingressPacket( const PacketFields& packet, const StageResult& vlan ) {
   PacketFields ingress = packet;
   if ( vlan.classDest ) {
      ingress.dstClassField = *vlan.classDest;
   }
   return ingress;
}

bool entryBefore( const Entry& a, const Entry& b ) {
   return a.priority != b.priority ? a.priority > b.priority : a.id < b.id;
}

namespace {

template <typename T>
void takeFirst( std::optional<T>& slot, T value ) {
   if ( !slot ) {
      slot = value;
   }
}

void apply( const CopyState& copy, StageResult& result ) {
   for ( int i = 0; i < kActionCount; ++i ) {
      const auto action = static_cast<FieldAction>( i );
      if ( !copy.hasAction( action ) ) {
         continue;
      }
      const uint32_t param0 = copy.actions[static_cast<size_t>( i )].param0;
      switch ( action ) {
         case FieldAction::CopyToCpu:
            result.copyToCpu = true;
            break;
         case FieldAction::CosQCpuNew:
            takeFirst( result.cpuQueue, param0 );
            break;
         case FieldAction::PrioIntNew:
            takeFirst( result.internalPriority, param0 );
            break;
         case FieldAction::Drop:
            result.drop = true;
            break;
         case FieldAction::SwitchToCpuCancel:
            result.switchToCpuCancel = true;
            break;
         case FieldAction::ClassDestSet:
            takeFirst( result.classDest, param0 );
            break;
         case FieldAction::NewClassId:
            takeFirst( result.newClassId, param0 );
            break;
         case FieldAction::EgressClassSelect:
            takeFirst( result.egressClassSelect, param0 );
            break;
         case FieldAction::Count:
            break;
      }
   }
}

}  // namespace

StageResult lookupStage( const Unit& unit, bcm_field_stage_t stage, const PacketFields& p,
                         SdkVersion version ) {
   const PacketKey key = packetKey( unit, p, version );
   StageResult result;
   for ( const Group* group : stageGroups( unit, stage ) ) {
      const Entry* winner = nullptr;
      for ( const Entry* e : group->entries ) {
         if ( !e->installed || !e->enabled || !matches( e->hardware, key, p, version ) ) {
            continue;
         }
         if ( winner == nullptr || entryBefore( *e, *winner ) ) {
            winner = e;
         }
      }
      if ( winner != nullptr ) {
         result.hits.push_back( StageHit{ winner->id, group->id } );
         apply( winner->hardware, result );
      }
   }
   return result;
}

LookupResult FieldProcessor::lookup( int unit, const PacketFields& packet ) const {
   std::lock_guard guard( state_->mutex );
   LookupResult result;
   const Unit* u = state_->findUnit( unit );
   // No packet arrives on a port the unit does not have.
   if ( u == nullptr || !u->portValid( packet.inPort ) ) {
      return result;
   }
   result.vlan = lookupStage( *u, bcmFieldStageLookup, packet, state_->version );
   result.ingress = lookupStage( *u, bcmFieldStageIngress, ingressPacket( packet, result.vlan ),
                                 state_->version );
   return result;
}

}  // namespace Sim
