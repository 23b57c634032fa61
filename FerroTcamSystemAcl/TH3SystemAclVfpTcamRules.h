// The VLAN-stage class rules by name, as an 8-bit enumeration of the type
// runtime, so that the agent's reflection and configuration can name a rule.
// Only the names are an interface: the values follow the installation order
// for readability, and nothing may depend on them.
#pragma once

#include <ostream>

#include "platform/runtime/Containers.h"
#include "platform/runtime/Enum8.h"
#include "platform/runtime/IntTypes.h"

namespace FerroTcamSystemAcl {

enum class TH3SystemAclVfpTcamRules : U8 {
   ospfMulticastMacRule,
   pimMulticastIpRule,
   ospfMulticastIpRule,
   igmpFloodLLMIpRule,
   igmpMulticastMacRule,
   mlagPortRule,
   kixHBPortRule,
   kixControllerPortRule,
   kixClientPortRule,
   bgpPortRule,
   dhcpV4ServerPortRule,
   dhcpV6ServerPortRule,
   dhcpV4ClientPortRule,
   neighborSolicitRule,
   neighborAdvertRule,
   mldQueryRule,
   mldV1ReportRule,
   mldDoneRule,
   mldV2ReportRule,
};

// The runtime's description of the type: "FerroTcamSystemAcl::TH3SystemAclVfpTcamRules".
const Lumo::Enum8Type& TH3SystemAclVfpTcamRulesType();

// Throw std::out_of_range for a value, std::invalid_argument for a name, that
// names no enumerator.
TH3SystemAclVfpTcamRules TH3SystemAclVfpTcamRulesInstance( U32 value );
TH3SystemAclVfpTcamRules TH3SystemAclVfpTcamRulesInstance( const Lumo::String& name );

// False, and *value untouched, when the whole range is not a value name.
bool sequenceToValue( Lumo::CharRange range, TH3SystemAclVfpTcamRules* value );
// The value name; a value without a name as its number.
Lumo::String stringValue( TH3SystemAclVfpTcamRules value );
std::ostream& operator<<( std::ostream& os, TH3SystemAclVfpTcamRules value );

}  // namespace FerroTcamSystemAcl
