#include "platform/agent/HelperBase.h"

namespace FerroTcamSystemAcl {

namespace {
// Reflected attributes of HelperBase itself.
constexpr Lumo::AttributeId attrName = 1;
}  // namespace

std::vector<std::pair<const char*, const RuleTable*>> HelperBase::ruleTables() const {
   return {
#define FERRO_RULE_TABLE_ENTRY( lower, Upper ) { #lower "Rule", &lower##Rule_ },
      FERRO_RULE_TABLES( FERRO_RULE_TABLE_ENTRY )
#undef FERRO_RULE_TABLE_ENTRY
   };
}

Lumo::ReflectResult HelperBase::inspectOperation( Lumo::AttributeId attribute,
                                                  Lumo::ReflectAccess access,
                                                  Lumo::ReflectIo& io ) {
   if ( attribute != attrName ) {
      return Lumo::ReflectResult::unknownAttribute;
   }
   switch ( access ) {
      case Lumo::ReflectAccess::read:
         io.result = Lumo::String( name_ );
         return Lumo::ReflectResult::ok;
      case Lumo::ReflectAccess::set:
      case Lumo::ReflectAccess::del:
      case Lumo::ReflectAccess::call:
         // The name is the helper's identity in the agent's directory.
         return Lumo::ReflectResult::accessRefused;
   }
   return Lumo::ReflectResult::accessRefused;
}

}  // namespace FerroTcamSystemAcl
