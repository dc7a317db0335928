#pragma once

#include <cstdint>
#include <string>

namespace orvane {

// Text conversion. Any thread. Cannot fail: the host chooses what invalid bytes become.
class CodeConvert {
 public:
  static std::string gbk_to_utf8(const std::string& text);
  static std::string utf8_to_gbk(const std::string& text);
};

enum class OrvTimeZone : int32_t { Default = 0 };

// The time of a log line. Any thread.
struct Timestamp {
  static Timestamp now(OrvTimeZone zone);
  std::string toISO8601String() const;

  int64_t microseconds = 0;  // since 1970
  OrvTimeZone zone = OrvTimeZone::Default;
};

// Whether log lines start with the time. Any thread.
bool isTimeEnabled();

}  // namespace orvane
