#include "terminal/health.h"

#include <algorithm>
#include <array>
#include <string_view>

#include <fmt/format.h>

#include "terminal/json.h"

namespace orvane::terminal {
namespace {

constexpr std::array<std::string_view, 3> kStatusNames{"pass", "warn", "fail"};

std::string_view nameOf(HealthStatus status) { return kStatusNames.at(static_cast<size_t>(status)); }

std::string writeCheck(const HealthCheck& check) {
  std::string text = fmt::format(R"({}:[{{"status":"{}")", jsonString(check.name), nameOf(check.status));
  if (check.seconds) text += fmt::format(R"(,"observedValue":{:.3f},"observedUnit":"s")", *check.seconds);
  if (!check.output.empty()) text += ",\"output\":" + jsonString(check.output);
  return text + "}]";
}

}  // namespace

HealthStatus worstOf(const std::vector<HealthCheck>& checks) {
  HealthStatus worst = HealthStatus::Pass;
  for (const HealthCheck& each : checks) worst = std::max(worst, each.status);
  return worst;
}

std::string writeHealth(const std::vector<HealthCheck>& checks) {
  std::string text =
      fmt::format(R"({{"status":"{}","releaseId":"{}","checks":{{)", nameOf(worstOf(checks)), POCKET_TERMINAL_VERSION);
  std::string_view separator;
  for (const HealthCheck& each : checks) {
    text.append(separator).append(writeCheck(each));
    separator = ",";
  }
  return text + "}}\n";
}

}  // namespace orvane::terminal
