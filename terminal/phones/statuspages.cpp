#include "terminal/phones/statuspages.h"

#include <chrono>
#include <string_view>
#include <utility>

#include <fmt/format.h>

namespace orvane::terminal {
namespace {

constexpr std::chrono::seconds kLongAnswer{10};
constexpr std::string_view kBearer = "Bearer ";
constexpr const char* kTokenWanted = "From another machine: send the header Authorization: Bearer TOKEN.\n";

HealthCheck fileCheck(const char* name, HealthStatus status, const std::string& fault) {
  if (fault.empty()) return {.name = name};
  return {.name = name, .status = status, .output = fault};
}

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

void StatusPages::make(const HttpRequest& request, const IPageOwner::Answer& answer) {
  if (request.method != "GET") return answer(std::nullopt);
  if (request.path == "/health/live") return answer(healthPage({{.name = "live"}}));
  if (request.path == "/health/ready") return answer(healthPage(readiness()));
  if (request.path == "/health") {
    std::vector<HealthCheck> checks = readiness();
    checks.insert(checks.begin(), {.name = "live"});
    return answer(healthPage(checks));
  }
  if (request.path != "/metrics") return answer(std::nullopt);
  if (request.isLoopback) return answer(metricsPage());
  if (!request.authorization.starts_with(kBearer)) return answer(Page{.status = 401, .body = kTokenWanted});
  keeper_.admit(std::string(request.authorization.substr(kBearer.size())),
                [this, answer, network = std::string(request.network)](const Gatekeeper::Admission& admission) {
                  answer(metricsPage(admission, network));
                });
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
  const StoreHealth store = keeper_.health();
  checks.push_back(fileCheck("gateway:writes", HealthStatus::Fail, store.database));
  checks.push_back(fileCheck("audit:writes", HealthStatus::Warn, store.audit));
  checks.push_back(fileCheck("clock:keys", HealthStatus::Warn, store.clock));
  checks.insert(checks.begin(), HealthCheck{.name = "ready", .status = worstOf(checks)});
  return checks;
}

Page StatusPages::metricsPage() const {
  const Gauges now{.transport = figures_(), .loggedIn = peers_.countLoggedIn(), .waiting = requests_.count()};
  return {200, "text/plain; version=0.0.4", metrics_.write(now)};
}

Page StatusPages::metricsPage(const Gatekeeper::Admission& admission, const std::string& network) {
  if (const auto* fault = std::get_if<std::string>(&admission)) {
    return {.status = 503, .body = "The tokens cannot be read: " + *fault + "\n"};
  }
  const auto* visitor = std::get_if<Visitor>(&admission);
  if (visitor != nullptr && visitor->rights.has(Right::See)) return metricsPage();
  if (visitor == nullptr && !keeper_.allowWrong(network)) {
    return {.status = 429, .body = "Too many wrong logins: wait a minute.\n"};
  }
  return {.status = 401, .body = kTokenWanted};
}

}  // namespace orvane::terminal
