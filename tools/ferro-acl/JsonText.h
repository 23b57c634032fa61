// Strict parsing of JSON text. A syntax error is reported as FILE:LINE:COLUMN
// (computed from the parser's byte offset, so that editors jump to it), and a
// key given twice in one object is an error instead of the usual silent
// last-one-wins, which would let a profile quietly override itself.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include <nlohmann/json.hpp>

#include "tools/ferro-acl/Result.h"

namespace FerroAcl {

// Members keep the order of the file, so errors and output follow it.
using Json = nlohmann::ordered_json;

// `source` names the text in messages (a file name).
Result<Json> parseJsonText( std::string_view text, const std::string& source );

// 1-based line and column of the byte at 0-based `offset` of `text`.
struct TextPosition {
   size_t line;
   size_t column;
};
TextPosition positionOf( std::string_view text, size_t offset );

}  // namespace FerroAcl
