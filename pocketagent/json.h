#pragma once

// The only file that includes and configures rapidjson. Its assertions are on in every build type, because they are
// what stops a decoder at an element that is not an object. The SIMD paths are off, because they leave some control
// characters unescaped.

// clang-format off
#pragma push_macro("NDEBUG")
#undef NDEBUG
#include <cassert>

#include <rapidjson/document.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>
#pragma pop_macro("NDEBUG")
#include <cassert>  // NOLINT(readability-duplicate-include): restores assert for the including file
// clang-format on

#if defined(RAPIDJSON_SSE2) || defined(RAPIDJSON_SSE42) || defined(RAPIDJSON_NEON)
#error "rapidjson's SIMD paths must stay off"
#endif

namespace orvane {

// Text behind the root value is ignored. Iterative, because the recursive parser overflows the stack on deep nesting.
// Not at full precision: numbers of up to 15 digits are exact without it, and with it rapidjson misreads zeros such as
// 0e38.
inline constexpr unsigned kParseFlags = rapidjson::kParseStopWhenDoneFlag | rapidjson::kParseIterativeFlag;

using JsonValue = rapidjson::Value;

}  // namespace orvane
