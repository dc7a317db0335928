#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace orvane {

// The texts of values as rapidjson's writer makes them, written to `out`; each returns the end of what it wrote.

inline constexpr size_t kMaxNumberText = 25;

char* writeNumber(char* out, int32_t value);
char* writeNumber(char* out, int64_t value);
// Of a double that is finite. A value of few decimals, as prices and amounts mostly are, takes a path of its own.
char* writeNumber(char* out, double value);

// Whether a text goes out as it stands, without an escape and without a NUL that would end it.
bool isPlain(std::string_view text);

}  // namespace orvane
