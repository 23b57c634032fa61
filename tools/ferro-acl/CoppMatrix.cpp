#include "tools/ferro-acl/CoppMatrix.h"

#include <algorithm>

namespace FerroAcl {

namespace {

void addHits( const Sim::StageResult& stage, const UnitState& unit,
              std::vector<CoppHit>& hits ) {
   for ( const Sim::StageHit& hit : stage.hits ) {
      const auto entry =
          std::find_if( unit.entries.begin(), unit.entries.end(),
                        [&]( const EntryState& e ) { return e.id == hit.entry; } );
      hits.push_back(
          entry == unit.entries.end()
              ? CoppHit{ hit.entry, "", "", "" }
              : CoppHit{ hit.entry, entry->stage, entry->group, entry->name } );
   }
}

}  // namespace

std::vector<CoppHit> namedHits( const Sim::LookupResult& lookup, const UnitState& unit ) {
   std::vector<CoppHit> hits;
   addHits( lookup.vlan, unit, hits );
   addHits( lookup.ingress, unit, hits );
   return hits;
}

CoppRow coppRow( const Pipeline::SwitchModel& model,
                 const Pipeline::CanonicalPacket& packet, const UnitState& unit ) {
   const Pipeline::Classification c = model.classify( packet.bytes, packet.ingress );
   return CoppRow{ packet.name, packet.ingress, namedHits( c.lookup, unit ), c.fate,
                   std::nullopt };
}

std::optional<Pipeline::PortRef> firstRoutedPortOf(
    const Pipeline::NetworkContext& network, uint16_t unit ) {
   Pipeline::NetworkContext unitOnly = network;
   for ( Pipeline::Interface& intf : unitOnly.interfaces ) {
      std::erase_if( intf.ports, [unit]( const Pipeline::PortRef& port ) {
         return port.unit != unit;
      } );
   }
   return unitOnly.firstRoutedPort();
}

std::optional<Pipeline::PortRef> ipfixInPortOf( const Agent::Switch& sw, uint16_t unit ) {
   const Agent::ChipProfile* chip = sw.chip( unit );
   if ( !chip || !chip->attributes.ipfixSupported || chip->attributes.ipfixInPort == 0 ) {
      return std::nullopt;
   }
   return Pipeline::PortRef{ unit, chip->attributes.ipfixInPort };
}

CoppUnit coppUnit( const Pipeline::SwitchModel& model, const Agent::Switch& sw,
                   const UnitState& unit, const Pipeline::PortRef& ingress, bool explain ) {
   CoppUnit result{ uint16_t( unit.unit ), ingress, {} };
   for ( const Pipeline::CanonicalPacket& packet : Pipeline::canonicalPackets(
             model.network(), ingress, ipfixInPortOf( sw, ingress.unit ) ) ) {
      result.rows.push_back( coppRow( model, packet, unit ) );
      if ( explain ) {
         result.rows.back().explain =
             explainPacket( sw, model.classify( packet.bytes, packet.ingress ) );
      }
   }
   return result;
}

}  // namespace FerroAcl
