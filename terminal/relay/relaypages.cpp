#include "terminal/relay/relaypages.h"

#include <array>
#include <cstdint>
#include <string_view>

#include <fmt/format.h>

#include "terminal/health.h"

namespace orvane::terminal::relay {
namespace {

struct Sample {
  std::string_view name;
  std::string_view kind;
  std::string_view help;
  uint64_t value = 0;
};

}  // namespace

void RelayPages::makePage(const HttpRequest& request, Answer answer) {
  if (request.method != "GET") return answer(std::nullopt);
  if (request.path == "/health/live") {
    return answer(Page{.contentType = "application/health+json", .body = writeHealth({{.name = "live"}})});
  }
  if (request.path == "/health" || request.path == "/health/ready") return answer(health());
  if (request.path != "/metrics") return answer(std::nullopt);
  if (request.isLoopback) return answer(metrics());
  answer(Page{.status = 403, .body = "The metrics are for this machine alone.\n"});
}

Page RelayPages::health() const {
  HealthCheck cluster{.name = "cluster:connection", .output = board_.busFault()};
  if (!cluster.output.empty()) cluster.status = HealthStatus::Fail;
  const bool isReady = cluster.status == HealthStatus::Pass;
  return {isReady ? 200U : 503U, "application/health+json", writeHealth({{.name = "live"}, cluster})};
}

Page RelayPages::metrics() const {
  const SwitchFigures board = board_.figures();
  const TransportFigures transport = figures_();
  const std::array samples{
      Sample{"connections", "gauge", "Open connections.", transport.connections},
      Sample{"phones", "gauge", "Connections with a session at a terminal.", board.phones},
      Sample{"terminals", "gauge", "Terminals that are present.", board.terminals},
      Sample{"connected", "gauge", "1 with a connection to the cluster, otherwise 0.",
             board_.busFault().empty() ? 1U : 0U},
      Sample{"logins_total", "counter", "First messages that reached a terminal.", board.logins},
      Sample{"logins_refused_total", "counter", "First messages that reached none.", board.refused},
      Sample{"channel_breaks_total", "counter", "Ends of the channel to a terminal.", board.breaks},
      Sample{"refused_connections_total", "counter", "Connections refused because all places were taken.",
             transport.refusedConnections},
      Sample{"refused_origins_total", "counter", "Requests refused because of Host or Origin.",
             transport.refusedOrigins},
  };
  std::string text = fmt::format(
      "# HELP pocket_relay_build_info The running version.\n# TYPE pocket_relay_build_info gauge\n"
      "pocket_relay_build_info{{version=\"{}\"}} 1\n",
      POCKET_TERMINAL_VERSION);
  for (const Sample& each : samples) {
    text += fmt::format("# HELP pocket_relay_{0} {1}\n# TYPE pocket_relay_{0} {2}\npocket_relay_{0} {3}\n", each.name,
                        each.help, each.kind, each.value);
  }
  return {200, "text/plain; version=0.0.4", text};
}

}  // namespace orvane::terminal::relay
