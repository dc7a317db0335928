#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace orvane {

// Each writes a number to `out` exactly as rapidjson's writer does and returns the end of the text.

inline constexpr size_t kMaxNumberText = 25;  // as rapidjson reserves for a double

char* writeNumber(char* out, int32_t value);
char* writeNumber(char* out, int64_t value);
// `value` must be finite. Has a faster path for up to three decimals, as most prices and amounts have.
char* writeNumber(char* out, double value);

// Whether a text needs no escaping and has no NUL.
bool isPlain(std::string_view text);

}  // namespace orvane
