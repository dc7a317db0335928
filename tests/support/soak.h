#pragma once

#include <chrono>
#include <cstdlib>
#include <string>

#include <unistd.h>

namespace orvane::test {

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
inline constexpr bool kSanitized = true;
#elif defined(__has_feature)
inline constexpr bool kSanitized = __has_feature(address_sanitizer);
#else
inline constexpr bool kSanitized = false;
#endif

// How long a soak runs: SOAK_SECONDS, or a few seconds.
inline std::chrono::seconds soakTime(int usually = 3) {
  const char* text = std::getenv("SOAK_SECONDS");
  return std::chrono::seconds(text == nullptr ? usually : std::stoi(text));
}

// Ends the process if the soak hangs.
inline void startWatchdog() { alarm(static_cast<unsigned>(soakTime().count()) + 60); }

}  // namespace orvane::test
