// Which operation a failure or trace line belongs to. A helper that programs or
// checks rules on behalf of an operation, or a lambda inside one, declares
// these names itself: checkedCallOperation as the operation's
// __PRETTY_FUNCTION__ (named by assertions) and checkedCallFunction as its
// name (attached to trace lines). Everywhere else these null declarations are
// found and the enclosing function is named.
#pragma once

inline constexpr const char* checkedCallOperation = nullptr;
inline constexpr const char* checkedCallFunction = nullptr;

#define FERRO_OPERATION_TEXT \
   ( checkedCallOperation ? checkedCallOperation : __PRETTY_FUNCTION__ )
#define FERRO_FUNCTION_NAME ( checkedCallFunction ? checkedCallFunction : __func__ )
