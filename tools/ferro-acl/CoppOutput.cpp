#include "tools/ferro-acl/CoppOutput.h"

#include "tools/ferro-acl/ChipStateText.h"
#include "tools/ferro-acl/TextTable.h"

namespace FerroAcl {

namespace {

using Json = nlohmann::ordered_json;

std::string hitText( const CoppHit& hit ) {
   const std::string rule =
       hit.rule.empty() ? "entry " + std::to_string( hit.entry ) : hit.rule;
   return hit.group.empty() ? rule : hit.group + ": " + rule;
}

TextCell hitsCell( const std::vector<CoppHit>& hits ) {
   TextCell cell;
   for ( size_t i = 0; i < hits.size(); ++i ) {
      TextCell words = wordCell( hitText( hits[i] ) );
      if ( i + 1 < hits.size() ) {
         words.back() += ",";
      }
      cell.insert( cell.end(), words.begin(), words.end() );
   }
   return cell.empty() ? TextCell{ "-" } : cell;
}

std::string number( const std::optional<uint32_t>& value ) {
   return value ? std::to_string( *value ) : "-";
}

TextCell forwardingCell( const Pipeline::Fate& fate ) {
   std::vector<std::string> items{ fate.forwarded ? "forwarded"
                                   : fate.dropped ? "dropped: " + fate.dropReason
                                                  : "trapped" };
   if ( fate.classDest ) {
      items.push_back( "class-dest " + std::to_string( *fate.classDest ) );
   }
   if ( fate.newClassId ) {
      items.push_back( "class-id " + std::to_string( *fate.newClassId ) );
   }
   if ( fate.egressClassSelect ) {
      items.push_back( "egress-class-select " +
                       std::to_string( *fate.egressClassSelect ) );
   }
   return listCell( items, "," );
}

// Reasons wrap between their words.
TextCell reasonsCell( const Pipeline::Fate& fate ) {
   std::string text;
   for ( Pipeline::CpuReason reason : fate.reasons ) {
      text +=
          ( text.empty() ? "" : ", " ) + std::string( Pipeline::cpuReasonName( reason ) );
   }
   for ( Pipeline::CpuReason reason : fate.cancelled ) {
      text += ( text.empty() ? "cancelled: " : ", cancelled: " ) +
              std::string( Pipeline::cpuReasonName( reason ) );
   }
   return wordCell( text );
}

void printUnit( std::ostream& out, const CoppUnit& unit ) {
   out << "unit " << unit.unit << ": ingress " << Pipeline::toString( unit.ingress )
       << ", " << unit.rows.size() << ( unit.rows.size() == 1 ? " packet" : " packets" )
       << '\n';
   TextTable table( { { false, 24 },
                      { false, 30 },
                      {},
                      { true },
                      { true },
                      { false, 16 },
                      { false, 16 } },
                    terminalWidth, 2 );
   table.addRow( { { "packet" },
                   { "rule hit" },
                   { "cpu" },
                   { "queue" },
                   { "tc" },
                   { "forwarding" },
                   { "reasons" } } );
   for ( const CoppRow& row : unit.rows ) {
      const Pipeline::Fate& fate = row.fate;
      TextCell packet = wordCell( row.packet );
      if ( row.ingress != unit.ingress ) {
         packet.push_back( "(from " + Pipeline::toString( row.ingress ) + ")" );
      }
      table.addRow( { packet,
                      hitsCell( row.hits ),
                      { Pipeline::deliveryName( fate.toCpu ) },
                      { number( fate.cpuQueue ) },
                      { number( fate.trafficClass ) },
                      forwardingCell( fate ),
                      reasonsCell( fate ) } );
   }
   table.print( out );
   for ( const CoppRow& row : unit.rows ) {
      if ( row.explain ) {
         out << "\n  " << row.packet << ":\n";
         printExplain( out, *row.explain );
      }
   }
}

Json optionalJson( const std::optional<uint32_t>& value ) {
   return value ? Json( *value ) : Json( nullptr );
}

Json reasonsJson( const std::vector<Pipeline::CpuReason>& reasons ) {
   Json names = Json::array();
   for ( Pipeline::CpuReason reason : reasons ) {
      names.push_back( Pipeline::cpuReasonName( reason ) );
   }
   return names;
}

Json rowJson( const CoppRow& row ) {
   Json hits = Json::array();
   for ( const CoppHit& hit : row.hits ) {
      hits.push_back( Json{ { "entry", hit.entry },
                            { "stage", hit.stage },
                            { "group", hit.group },
                            { "rule", hit.rule } } );
   }
   const Pipeline::Fate& fate = row.fate;
   Json json{ { "name", row.packet },
                { "ingress", Pipeline::toString( row.ingress ) },
                { "hits", hits },
                { "toCpu", Pipeline::deliveryName( fate.toCpu ) },
                { "cpuQueue", optionalJson( fate.cpuQueue ) },
                { "trafficClass", optionalJson( fate.trafficClass ) },
                { "forwarded", fate.forwarded },
                { "dropped", fate.dropped },
                { "dropReason", fate.dropReason },
                { "reasons", reasonsJson( fate.reasons ) },
                { "cancelled", reasonsJson( fate.cancelled ) },
                { "classDest", optionalJson( fate.classDest ) },
                { "newClassId", optionalJson( fate.newClassId ) },
                { "egressClassSelect", optionalJson( fate.egressClassSelect ) } };
   if ( row.explain ) {
      json["explain"] = explainJson( *row.explain );
   }
   return json;
}

}  // namespace

void printCopp( std::ostream& out, const std::vector<CoppUnit>& units ) {
   for ( const CoppUnit& unit : units ) {
      printUnit( out, unit );
   }
}

Json coppJson( const std::vector<CoppUnit>& units ) {
   Json result = Json::array();
   for ( const CoppUnit& unit : units ) {
      Json packets = Json::array();
      for ( const CoppRow& row : unit.rows ) {
         packets.push_back( rowJson( row ) );
      }
      result.push_back( Json{ { "unit", unit.unit },
                              { "ingress", Pipeline::toString( unit.ingress ) },
                              { "packets", packets } } );
   }
   return Json{ { "units", result } };
}

}  // namespace FerroAcl
