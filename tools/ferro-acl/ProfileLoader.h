// Chip profiles: JSON files describing a simulated switch (its chip families
// with their attributes, its units, platform and shared-state flags), read
// into the agent's Agent::SwitchConfig (the `network` section is the switch
// model's: NetworkProfile.h reads it). The schema is strict: an unknown key,
// a value of the wrong type or range, a unit naming a chip the profile does
// not describe, all give one message naming the file, the JSON path of the
// field and what was expected. The result is a whole configuration or that
// message, never something in between.
#pragma once

#include <string>
#include <string_view>

#include "platform/agent/SwitchBringup.h"
#include "tools/ferro-acl/Result.h"

namespace FerroAcl {

// `source` names the text in messages (normally its file name).
Result<Agent::SwitchConfig> parseProfile( std::string_view text,
                                          const std::string& source );

// The text of the file at `path`, or a message naming it and the system's error.
Result<std::string> readProfileText( const std::string& path );

// Reads and parses the file at `path`.
Result<Agent::SwitchConfig> loadProfile( const std::string& path );

}  // namespace FerroAcl
