// The difference between two switches' chip states, compared in their --json
// form unit by unit (same unit number): entries are matched by rule name (the
// second entry of one name with the second, and so on), and for the entries
// both have, each qualifier, action, priority and installed or enabled state
// that differs.
#pragma once

#include <ostream>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

namespace FerroAcl {

struct FieldDifference {
   std::string field;  // "priority", "installed", "enabled", "qualifier Ttl", "action Drop"
   nlohmann::ordered_json a;  // null when absent
   nlohmann::ordered_json b;
};

struct EntryDifference {
   std::string rule;  // "PIM Multicast IP #2" for the second entry of that name
   std::vector<FieldDifference> fields;
};

struct UnitDifference {
   int unit = 0;
   std::string chipA;  // "" when the unit is not on that switch
   std::string chipB;
   std::vector<std::string> onlyInA;
   std::vector<std::string> onlyInB;
   std::vector<EntryDifference> changed;
   bool identical() const { return onlyInA.empty() && onlyInB.empty() && changed.empty() && !chipA.empty() && !chipB.empty(); }
};

struct ChipStateDiff {
   std::vector<UnitDifference> units;  // ascending
   bool identical() const;
};

ChipStateDiff diffChipStates( const nlohmann::ordered_json& a,
                              const nlohmann::ordered_json& b );

// One side of a difference as the text form shows it: "absent", a
// qualifier's "data/mask" ("1-64/0-64" for ports), an action's parameters.
std::string differenceText( const std::string& field, const nlohmann::ordered_json& value );

// Per unit a header naming both chips, then one line per difference.
void printDiff( std::ostream& out, const ChipStateDiff& diff );
// {"identical":false,"units":[{"unit":0,"chipA":"..","chipB":"..","onlyInA":[..],
//   "onlyInB":[..],"changed":[{"rule":"VRRP","fields":[{"field":"qualifier Ttl",
//   "a":{"data":255,"mask":255},"b":{"data":254,"mask":255}}]}]}]}
nlohmann::ordered_json diffJson( const ChipStateDiff& diff );

}  // namespace FerroAcl
