#include "tools/ferro-acl/ExplainReport.h"

#include "tools/ferro-acl/ChipState.h"
#include "tools/ferro-acl/EntryWords.h"

namespace FerroAcl {

namespace {

// show's words for a qualifier, without the name in front.
std::string valueWords( const Sim::QualifierView& view ) {
   const std::string words = qualifierWords( describeQualifier( view ) );
   const size_t space = words.find( ' ' );
   return space == std::string::npos ? words : words.substr( space + 1 );
}

std::string nameWords( const Sim::QualifierView& view ) {
   const std::string words = qualifierWords( describeQualifier( view ) );
   return words.substr( 0, words.find( ' ' ) );
}

QualifierCheckReport qualifierReport( const Sim::QualifierCheck& check ) {
   return { nameWords( check.entry ), valueWords( check.packet ), valueWords( check.entry ),
            check.matched };
}

void addStage( const Agent::Switch& sw, U16 unit, const char* stage,
               const Sim::StageCheck& checks, ExplainReport& report ) {
   for ( const Sim::GroupCheck& group : checks.groups ) {
      GroupCheckReport g;
      g.stage = stage;
      for ( const Sim::EntryCheck& entry : group.entries ) {
         const EntryOwner owner = entryOwner( sw, unit, U32( entry.entry ) );
         g.group = owner.group;
         EntryCheckReport e{ entry.entry, owner.name, entry.priority, entry.hit, {} };
         if ( entry.hit ) {
            for ( const Sim::QualifierCheck& q : entry.qualifiers ) {
               e.qualifiers.push_back( qualifierReport( q ) );
            }
         } else if ( !entry.qualifiers.empty() ) {
            e.qualifiers.push_back( qualifierReport( entry.qualifiers.back() ) );
         }
         g.entries.push_back( std::move( e ) );
      }
      if ( !g.entries.empty() ) {
         report.groups.push_back( std::move( g ) );
      }
   }
}

// The first entry hit, highest group first, that sets the CPU queue.
std::string queueSetter( const Agent::Switch& sw, U16 unit, const Sim::StageResult& ingress ) {
   for ( const Sim::StageHit& hit : ingress.hits ) {
      const std::optional<Sim::EntryView> view =
          Sim::FieldProcessor::instance().entry( unit, hit.entry );
      for ( const Sim::ActionView& action : view->hardware.actions ) {
         if ( action.action == Shim::FieldAction::CosQCpuNew ) {
            return "\"" + entryOwner( sw, unit, U32( hit.entry ) ).name + "\"";
         }
      }
   }
   return "the network's default";
}

}  // namespace

ExplainReport explainPacket( const Agent::Switch& sw, const Pipeline::Classification& packet ) {
   ExplainReport report;
   const U16 unit = packet.ingress.unit;
   const Sim::Explanation why = Sim::FieldProcessor::instance().explain( unit, packet.fields );
   addStage( sw, unit, "vlan", why.vlan, report );
   addStage( sw, unit, "ingress", why.ingress, report );
   for ( Pipeline::CpuReason reason : packet.fate.reasons ) {
      report.reasons.push_back( Pipeline::cpuReasonName( reason ) );
   }
   for ( Pipeline::CpuReason reason : packet.fate.cancelled ) {
      report.cancelled.push_back( Pipeline::cpuReasonName( reason ) );
   }
   if ( packet.fate.cpuQueue ) {
      report.queueFrom = queueSetter( sw, unit, packet.lookup.ingress );
   }
   report.dropReason = packet.fate.dropReason;
   return report;
}

Json explainJson( const ExplainReport& report ) {
   Json groups = Json::array();
   for ( const GroupCheckReport& g : report.groups ) {
      Json entries = Json::array();
      for ( const EntryCheckReport& e : g.entries ) {
         Json qualifiers = Json::array();
         for ( const QualifierCheckReport& q : e.qualifiers ) {
            qualifiers.push_back( Json{ { "qualifier", q.name },
                                        { "packet", q.packet },
                                        { "entry", q.entry },
                                        { "matched", q.matched } } );
         }
         entries.push_back( Json{ { "id", e.id },
                                  { "name", e.name },
                                  { "priority", e.priority },
                                  { "hit", e.hit },
                                  { "qualifiers", qualifiers } } );
      }
      groups.push_back(
          Json{ { "stage", g.stage }, { "group", g.group }, { "entries", entries } } );
   }
   return Json{ { "groups", groups },
                { "cpuReasons", report.reasons },
                { "cancelled", report.cancelled },
                { "queueFrom", report.queueFrom.empty() ? Json() : Json( report.queueFrom ) },
                { "dropReason", report.dropReason.empty() ? Json() : Json( report.dropReason ) } };
}

void printExplain( std::ostream& out, const ExplainReport& report ) {
   for ( const GroupCheckReport& g : report.groups ) {
      out << "      " << g.stage << " \"" << g.group << "\":\n";
      for ( const EntryCheckReport& e : g.entries ) {
         out << "        " << ( e.hit ? "hit " : "miss" ) << " " << e.id << " \"" << e.name
             << "\" (priority " << e.priority << ")";
         if ( !e.hit && !e.qualifiers.empty() ) {
            const QualifierCheckReport& q = e.qualifiers.front();
            out << ": " << q.name << " " << q.packet << " is not " << q.entry;
         }
         out << '\n';
         if ( e.hit ) {
            for ( const QualifierCheckReport& q : e.qualifiers ) {
               out << "          " << q.name << " " << q.packet << " matches " << q.entry
                   << '\n';
            }
         }
      }
   }
   std::string reasons;
   for ( const std::string& r : report.reasons ) {
      reasons += ( reasons.empty() ? "" : ", " ) + r;
   }
   out << "      to CPU because: " << ( reasons.empty() ? "nothing" : reasons );
   for ( const std::string& c : report.cancelled ) {
      out << "; cancelled: " << c;
   }
   if ( !report.queueFrom.empty() ) {
      out << "; queue from " << report.queueFrom;
   }
   if ( !report.dropReason.empty() ) {
      out << "; dropped: " << report.dropReason;
   }
   out << '\n';
}

}  // namespace FerroAcl
