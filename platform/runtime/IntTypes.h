// The agent's fixed-width integer names, used in every operation signature.
#pragma once

#include <cstdint>

typedef uint8_t U8;
typedef uint16_t U16;
typedef uint32_t U32;
typedef uint64_t U64;
typedef int32_t S32;
