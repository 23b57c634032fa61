#include "tools/ferro-acl/ClassifyOutput.h"

#include <algorithm>
#include <iomanip>
#include <set>

#include "tools/ferro-acl/JsonText.h"

namespace FerroAcl {

namespace {

// How the text form and the rule counts name an entry no manager named.
std::string ruleName( const RuleHit& hit ) {
   return hit.name.empty() ? "entry " + std::to_string( hit.id ) : hit.name;
}

// "vlan: A | ingress: B + C", in the order of the hits; "no entry" when none.
std::string hitsText( const std::vector<RuleHit>& hits ) {
   std::string text;
   const std::string* stage = nullptr;
   for ( const RuleHit& hit : hits ) {
      if ( stage && *stage == hit.stage ) {
         text += " + " + ruleName( hit );
      } else {
         text += ( stage ? " | " : "" ) + hit.stage + ": " + ruleName( hit );
      }
      stage = &hit.stage;
   }
   return text.empty() ? "no entry" : text;
}

std::string queueText( const Pipeline::Fate& fate ) {
   return fate.cpuQueue ? "CPU queue " + std::to_string( *fate.cpuQueue ) : "CPU";
}

// "trap to CPU queue 38", "copy to CPU queue 4, forwarded", "dropped (ACL
// drop)", then the traffic class and class ids an entry gave.
std::string fateText( const Pipeline::Fate& fate ) {
   std::vector<std::string> parts;
   switch ( fate.toCpu ) {
      case Pipeline::CpuDelivery::None:
         break;
      case Pipeline::CpuDelivery::Trap:
         parts.push_back( "trap to " + queueText( fate ) );
         break;
      case Pipeline::CpuDelivery::Copy:
         parts.push_back( "copy to " + queueText( fate ) );
         break;
   }
   if ( fate.forwarded ) {
      parts.push_back( "forwarded" );
   }
   if ( fate.dropped ) {
      parts.push_back( "dropped (" + fate.dropReason + ")" );
   }
   if ( parts.empty() ) {
      parts.push_back( "not forwarded" );
   }
   const std::pair<const char*, const std::optional<uint32_t>&> numbers[] = {
       { "tc", fate.trafficClass },
       { "class-dest", fate.classDest },
       { "new-class", fate.newClassId },
       { "egress-class", fate.egressClassSelect },
   };
   for ( const auto& [word, value] : numbers ) {
      if ( value ) {
         parts.push_back( std::string( word ) + " " + std::to_string( *value ) );
      }
   }
   std::string text;
   for ( const std::string& part : parts ) {
      text += ( text.empty() ? "" : ", " ) + part;
   }
   return text;
}

Json optionalNumber( const std::optional<uint32_t>& value ) {
   return value ? Json( *value ) : Json( nullptr );
}

Json fateJson( const Pipeline::Fate& fate ) {
   Json classIds = Json::object();
   if ( fate.classDest ) {
      classIds["classDest"] = *fate.classDest;
   }
   if ( fate.newClassId ) {
      classIds["newClassId"] = *fate.newClassId;
   }
   if ( fate.egressClassSelect ) {
      classIds["egressClassSelect"] = *fate.egressClassSelect;
   }
   return Json{ { "toCpu", Pipeline::deliveryName( fate.toCpu ) },
                { "cpuQueue", optionalNumber( fate.cpuQueue ) },
                { "trafficClass", optionalNumber( fate.trafficClass ) },
                { "dropped", fate.dropped },
                { "classIds", classIds } };
}

std::string plural( size_t count, const char* noun ) {
   return std::to_string( count ) + " " + noun + ( count == 1 ? "" : "s" );
}

}  // namespace

void ClassifyPrinter::add( const PacketReport& report ) {
   count( report );
   if ( summaryOnly_ ) {
      return;
   }
   switch ( form_ ) {
      case ClassifyForm::Text:
         printText( report );
         return;
      case ClassifyForm::Json:
         printJson( report );
         return;
   }
}

void ClassifyPrinter::finish() {
   switch ( form_ ) {
      case ClassifyForm::Text:
         finishText();
         return;
      case ClassifyForm::Json:
         finishJson();
         return;
   }
}

void ClassifyPrinter::count( const PacketReport& report ) {
   ++packets_;
   if ( report.fate.cpuQueue ) {
      ++byQueue_[*report.fate.cpuQueue];
   } else {
      ++notToCpu_;
   }
   // A packet counts once per rule, even when both stages hit one of that name.
   std::set<std::string> rules;
   for ( const RuleHit& hit : report.hits ) {
      rules.insert( ruleName( hit ) );
   }
   for ( const std::string& rule : rules ) {
      ++byRule_[rule];
   }
}

void ClassifyPrinter::printText( const PacketReport& report ) {
   out_ << std::setw( 4 ) << report.index << "  " << report.summary << " | "
        << hitsText( report.hits ) << " | " << fateText( report.fate ) << '\n';
   if ( report.explain ) {
      printExplain( out_, *report.explain );
   }
}

void ClassifyPrinter::printJson( const PacketReport& report ) {
   Json hits = Json::array();
   for ( const RuleHit& hit : report.hits ) {
      hits.push_back( Json{ { "stage", hit.stage },
                            { "group", hit.group },
                            { "id", hit.id },
                            { "name", hit.name } } );
   }
   Json packet{ { "index", report.index },
                { "summary", report.summary },
                { "hits", hits },
                { "fate", fateJson( report.fate ) } };
   if ( report.explain ) {
      packet["explain"] = explainJson( *report.explain );
   }
   out_ << ( packets_ == 1 ? "{\"packets\":[\n" : ",\n" ) << packet.dump();
}

void ClassifyPrinter::finishText() {
   if ( !summaryOnly_ && packets_ > 0 ) {
      out_ << '\n';
   }
   out_ << plural( packets_, "packet" ) << "\nby CPU queue:\n";
   for ( const auto& [queue, packets] : byQueue_ ) {
      out_ << "  queue " << queue << ": " << packets << '\n';
   }
   out_ << "  not to CPU: " << notToCpu_ << "\nby rule:\n";
   std::vector<std::pair<std::string, size_t>> rules( byRule_.begin(), byRule_.end() );
   std::stable_sort( rules.begin(), rules.end(),
                     []( const auto& a, const auto& b ) { return a.second > b.second; } );
   for ( const auto& [rule, packets] : rules ) {
      out_ << "  " << rule << ": " << packets << '\n';
   }
}

void ClassifyPrinter::finishJson() {
   Json byQueue = Json::object();
   for ( const auto& [queue, packets] : byQueue_ ) {
      byQueue[std::to_string( queue )] = packets;
   }
   byQueue["none"] = notToCpu_;
   Json byRule = Json::object();
   for ( const auto& [rule, packets] : byRule_ ) {
      byRule[rule] = packets;
   }
   const Json summary{
       { "packets", packets_ }, { "byQueue", byQueue }, { "byRule", byRule } };
   out_ << ( !summaryOnly_ && packets_ > 0 ? "\n]" : "{\"packets\":[]" )
        << ",\"summary\":" << summary.dump() << "}\n";
}

}  // namespace FerroAcl
