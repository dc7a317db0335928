#pragma once

// The one place that sets rapidjson up and includes it. Its assertions stand in every build type: they end the process
// where a body holds what a decoder must not read on. The SSE paths stay off, since they leave some control
// characters unescaped.

// clang-format off
#pragma push_macro("NDEBUG")
#undef NDEBUG
#include <cassert>

#include <rapidjson/document.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>
#pragma pop_macro("NDEBUG")
#include <cassert>  // NOLINT(readability-duplicate-include): assert as the including file has it
// clang-format on

#if defined(RAPIDJSON_SSE2) || defined(RAPIDJSON_SSE42) || defined(RAPIDJSON_NEON)
#error "rapidjson's SIMD paths must stay off"
#endif

namespace orvane {

// Stops behind the root value; a million opening brackets cost no stack. Not at full precision: prices and amounts of
// up to 15 digits are read to the last bit without it, and with it rapidjson makes any number at all of a zero like
// 0e38.
inline constexpr unsigned kParseFlags = rapidjson::kParseStopWhenDoneFlag | rapidjson::kParseIterativeFlag;

using JsonValue = rapidjson::Value;

}  // namespace orvane
