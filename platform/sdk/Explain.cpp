// lookup() step by step, for people asking why a packet took the entry it
// took. It walks each group's entries in lookup order, checks each
// qualifier on its own and stops at the winner; the packet's value of a field
// is shown in the same form as the entry's.
#include <algorithm>

#include "platform/sdk/SimState.h"

namespace Sim {

namespace {

// The packet's value of `q` as an entry copy holding it exactly.
CopyState packetValue( const Unit& unit, const CopyState& entry, bcm_field_qualify_t q,
                       const PacketKey& key, const PacketFields& p, SdkVersion version ) {
   CopyState copy;
   if ( entry.hasPlain( q ) ) {
      copy.qualified = uint64_t( 1 ) << q;
      switch ( fieldKind( q ) ) {
         case FieldKind::PortBitmap:
            bcm_pbmp_port_add( copy.inPortsData, p.inPort );
            copy.inPortsMask = unit.validPorts;
            break;
         case FieldKind::Ip6:
            copy.ip6Data = p.dstIp6;
            copy.ip6Mask.fill( 0xff );
            break;
         case FieldKind::IpType:
            copy.fields[q] = { uint64_t( ipTypeValue( version, p.ipType ) ), fieldMax( unit, q ) };
            break;
         default:
            copy.fields[q] = { key[q], fieldMax( unit, q ) };
            break;
      }
   }
   if ( auto field = compressedFieldOf( q ) ) {
      if ( !entry.compressed[static_cast<size_t>( *field )].empty() ) {
         Shim::CompressedValue value;
         value.data = compressedKey( p, *field );
         std::fill_n( value.mask.bytes.begin(), compressedBytes( *field ), uint8_t( 0xff ) );
         copy.compressed[static_cast<size_t>( *field )].push_back( value );
      }
   }
   return copy;
}

bool qualifierMatches( const CopyState& copy, bcm_field_qualify_t q, const PacketKey& key,
                       const PacketFields& p, SdkVersion version ) {
   const auto field = compressedFieldOf( q );
   return ( !copy.hasPlain( q ) || plainMatches( copy, q, key, p, version ) ) &&
          ( !field || compressedFieldMatches( copy, *field, p ) );
}

EntryCheck checkEntry( const Unit& unit, const Entry& e, const PacketKey& key,
                       const PacketFields& p, SdkVersion version ) {
   EntryCheck check{ e.id, e.priority, true, {} };
   for ( bcm_field_qualify_t q : qualifiersInOrder( e.hardware ) ) {
      QualifierCheck& qc = check.qualifiers.emplace_back();
      qc.entry = qualifierView( unit, e.hardware, q );
      qc.packet = qualifierView( unit, packetValue( unit, e.hardware, q, key, p, version ), q );
      qc.matched = qualifierMatches( e.hardware, q, key, p, version );
      if ( !qc.matched ) {
         check.hit = false;
         break;
      }
   }
   return check;
}

StageCheck explainStage( const Unit& unit, bcm_field_stage_t stage, const PacketFields& p,
                         SdkVersion version ) {
   const PacketKey key = packetKey( unit, p, version );
   StageCheck result;
   for ( const Group* group : stageGroups( unit, stage ) ) {
      std::vector<const Entry*> live;
      for ( const Entry* e : group->entries ) {
         if ( e->installed && e->enabled ) {
            live.push_back( e );
         }
      }
      std::sort( live.begin(), live.end(),
                 []( const Entry* a, const Entry* b ) { return entryBefore( *a, *b ); } );
      GroupCheck& g = result.groups.emplace_back();
      g.group = group->id;
      for ( const Entry* e : live ) {
         g.entries.push_back( checkEntry( unit, *e, key, p, version ) );
         if ( g.entries.back().hit ) {
            break;
         }
      }
   }
   return result;
}

}  // namespace

Explanation FieldProcessor::explain( int unit, const PacketFields& packet ) const {
   std::lock_guard guard( state_->mutex );
   Explanation result;
   const Unit* u = state_->findUnit( unit );
   if ( u == nullptr || !u->portValid( packet.inPort ) ) {
      return result;
   }
   result.vlan = explainStage( *u, bcmFieldStageLookup, packet, state_->version );
   const StageResult vlan = lookupStage( *u, bcmFieldStageLookup, packet, state_->version );
   result.ingress = explainStage( *u, bcmFieldStageIngress, ingressPacket( packet, vlan ),
                                  state_->version );
   return result;
}

}  // namespace Sim
