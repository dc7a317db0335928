#include "terminal/phones/statuspages.h"

#include <chrono>
#include <string_view>
#include <utility>

#include <fmt/format.h>

namespace orvane::terminal {
namespace {

constexpr std::chrono::seconds kLongAnswer{10};
constexpr std::string_view kBearer = "Bearer ";

Page healthPage(const std::vector<HealthCheck>& checks) {
  return {worstOf(checks) == HealthStatus::Fail ? 503U : 200U, "application/health+json", writeHealth(checks)};
}

}  // namespace

StatusPages::StatusPages(HealthProbe probe, FiguresProbe figures, const Peers& peers, const Requests& requests,
                         const AgentCallback& agent, Gatekeeper& keeper, const Metrics& metrics)
    : probe_(std::move(probe)),
      figures_(std::move(figures)),
      peers_(peers),
      requests_(requests),
      agent_(agent),
      keeper_(keeper),
      metrics_(metrics) {}

std::optional<Page> StatusPages::make(const HttpRequest& request) {
  if (request.method != "GET") return std::nullopt;
  if (request.path == "/metrics") return metricsPage(request);
  const HealthCheck live{.name = "live"};
  if (request.path == "/health/live") return healthPage({live});
  if (request.path == "/health/ready") return healthPage(readiness());
  if (request.path != "/health") return std::nullopt;
  std::vector<HealthCheck> checks = readiness();
  checks.insert(checks.begin(), live);
  return healthPage(checks);
}

// Ready: the agent takes requests and answers them, and none of the host's own checks fails.
std::vector<HealthCheck> StatusPages::readiness() const {
  HealthCheck agent{.name = "agent:requests"};
  if (!agent_.isAttached()) agent = {agent.name, HealthStatus::Fail, "the agent takes no requests"};
  const BootTime age = requests_.oldestAge();
  const double seconds = std::chrono::duration<double>(age).count();
  HealthCheck answers{.name = "agent:answers", .seconds = seconds};
  if (age > kLongAnswer) {
    answers.status = HealthStatus::Fail;
    answers.output = fmt::format("a request has waited for {:.1f} s", seconds);
  }
  std::vector<HealthCheck> checks = probe_ ? probe_() : std::vector<HealthCheck>{};
  checks.push_back(std::move(agent));
  checks.push_back(std::move(answers));
  checks.insert(checks.begin(), HealthCheck{.name = "ready", .status = worstOf(checks)});
  return checks;
}

Page StatusPages::metricsPage(const HttpRequest& request) {
  const auto hasToken = [&] {
    return request.authorization.starts_with(kBearer) && keeper_.maySee(request.authorization.substr(kBearer.size()));
  };
  if (!request.isLoopback && !hasToken()) {
    return {.status = 401, .body = "From another machine: send the header Authorization: Bearer TOKEN.\n"};
  }
  const Gauges now{.transport = figures_(), .loggedIn = peers_.countLoggedIn(), .waiting = requests_.count()};
  return {200, "text/plain; version=0.0.4", metrics_.write(now)};
}

}  // namespace orvane::terminal
