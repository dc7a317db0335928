#pragma once

#include <cstddef>
#include <string>

namespace orvane::bench {

struct FleetSize {
  size_t terminals = 50;
  size_t phones = 5000;
  size_t pushes = 20;  // of each terminal
};

// Phones on two relays and terminals that are small hosts in this process: all log in, then each terminal sends pushes
// to all of its phones. Returns a Markdown table. Throws std::runtime_error if a phone misses a push, gets one twice or
// is closed.
std::string measureFleet(const FleetSize& size);

}  // namespace orvane::bench
