#pragma once

#include <chrono>
#include <thread>

namespace orvane::test {

// Tries `condition` again and again until it holds. False if it does not within 30 seconds.
template <typename Condition>
bool holdsSoon(const Condition& condition) {
  const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(30);
  while (!condition()) {
    if (std::chrono::steady_clock::now() > end) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  return true;
}

}  // namespace orvane::test
