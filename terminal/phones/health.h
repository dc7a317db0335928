#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace orvane::terminal {

enum class HealthStatus : uint8_t { Pass, Warn, Fail };

// One thing that was looked at.
struct HealthCheck {
  std::string name;  // such as "quotes:age"
  HealthStatus status = HealthStatus::Pass;
  std::string output = {};             // what is wrong; empty where nothing is. UTF-8
  std::optional<double> seconds = {};  // what was measured
};

using HealthProbe = std::function<std::vector<HealthCheck>()>;

// The worst of them.
HealthStatus worstOf(const std::vector<HealthCheck>& checks);

// As application/health+json, UTF-8: the checks, and the worst of them as the status of all.
std::string writeHealth(const std::vector<HealthCheck>& checks);

}  // namespace orvane::terminal
