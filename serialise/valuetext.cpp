#include "serialise/valuetext.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "pocketagent/json.h"

namespace orvane {

namespace {

constexpr double kShortDecimalLimit = 1e12;  // below it, the text with three decimals is the shortest
constexpr uint64_t kThousandths = 1000;

// Writes at least one decimal, and no trailing zero after it.
char* writeThousandths(char* out, uint64_t thousandths) {
  out = rapidjson::internal::u64toa(thousandths / kThousandths, out);
  const auto fraction = static_cast<unsigned>(thousandths % kThousandths);
  const char digits[] = {static_cast<char>('0' + fraction / 100), static_cast<char>('0' + fraction / 10 % 10),
                         static_cast<char>('0' + fraction % 10)};
  const size_t count = digits[2] != '0' ? 3 : digits[1] != '0' ? 2 : 1;
  *out++ = '.';
  return std::copy_n(digits, count, out);
}

}  // namespace

char* writeNumber(char* out, int32_t value) { return rapidjson::internal::i32toa(value, out); }
char* writeNumber(char* out, int64_t value) { return rapidjson::internal::i64toa(value, out); }

char* writeNumber(char* out, double value) {
  const double size = std::fabs(value);
  if (size < kShortDecimalLimit) {
    // The nearest thousandth. Dividing back shows whether it is exact, because a division rounds as a parser does.
    // NOLINTNEXTLINE(bugprone-incorrect-roundings)
    const auto thousandths = static_cast<uint64_t>(size * static_cast<double>(kThousandths) + 0.5);
    if (static_cast<double>(thousandths) / static_cast<double>(kThousandths) == size) {
      if (std::signbit(value)) *out++ = '-';
      return writeThousandths(out, thousandths);
    }
  }
  return rapidjson::internal::dtoa(value, out, rapidjson::Writer<rapidjson::StringBuffer>::kDefaultMaxDecimalPlaces);
}

bool isPlain(std::string_view text) {
  return std::all_of(text.begin(), text.end(),
                     [](char c) { return static_cast<unsigned char>(c) >= 0x20 && c != '"' && c != '\\'; });
}

}  // namespace orvane
