#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace orvane::terminal {

enum class HealthStatus : uint8_t { Pass, Warn, Fail };

// The result of one check.
struct HealthCheck {
  std::string name;  // such as "quotes:age"
  HealthStatus status = HealthStatus::Pass;
  std::string output = {};             // what is wrong, UTF-8; empty if nothing is
  std::optional<double> seconds = {};  // what was measured
};

using HealthProbe = std::function<std::vector<HealthCheck>()>;

// The worst status; Pass if there are no checks.
HealthStatus worstOf(const std::vector<HealthCheck>& checks);

// The checks as application/health+json, UTF-8. The overall status is the worst of theirs.
std::string writeHealth(const std::vector<HealthCheck>& checks);

}  // namespace orvane::terminal
