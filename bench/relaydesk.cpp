#include "bench/relaydesk.h"

#include <array>
#include <chrono>
#include <exception>
#include <stdexcept>
#include <thread>

#include <fmt/format.h>

#include "bench/figure.h"

namespace orvane::bench {
namespace {

Server startBehind(const test::Cluster& cluster, const std::string& name, const Desk& desk) {
  return {POCKET_TERMINAL,
          {"--quotes", "still", "--data", desk.folder().string(), "--relay", cluster.urlList()[0], "--name", name,
           "--relay-credentials", cluster.credentials(name).string()}};
}

// A terminal claims its name for a while before a relay can reach it.
void awaitTerminal(uint16_t relay, const std::string& login) {
  for (int tries = 0;; ++tries) {
    try {
      askOnce(relay, login, R"({"id":1,"topic":"account.list"})");
      return;
    } catch (const std::exception&) {
      if (tries == 100) throw;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
  }
}

}  // namespace

Server startRelay(const test::Cluster& cluster, const std::string& name, const std::filesystem::path& folder,
                  const std::string& servers, const std::vector<std::string>& options) {
  std::vector<std::string> arguments{"--port",    "0",     "--data",        folder.string(),
                                     "--servers", servers, "--credentials", cluster.credentials(name).string()};
  arguments.insert(arguments.end(), options.begin(), options.end());
  return {POCKET_RELAY, arguments};
}

double serversTime(const test::Cluster& cluster) {
  double sum = 0;
  for (size_t i = 0; i < test::Cluster::kServers; ++i) sum += processorTime(cluster.server(i).pid());
  return sum;
}

RelayDesk::RelayDesk()
    : near_(nearDesk_.start("still")),
      relay_(startRelay(cluster_, "r1", folder_.path(), cluster_.urlList()[1])),
      far_(startBehind(cluster_, "t1", farDesk_)),
      farLogin_(R"({"terminal":"t1",)" + farDesk_.login().substr(1)) {
  awaitTerminal(relay_.port(), farLogin_);
}

Exchange RelayDesk::exchange(std::string_view topic, std::string_view body) const {
  Exchange direct = exchangeWith(near_, nearDesk_.login(), topic, body);
  requireEqual(exchangeWith(relay_, farLogin_, topic, body).reply, direct.reply);
  return direct;
}

std::string RelayDesk::requestCost(std::string_view name, const Exchange& exchange) const {
  constexpr size_t kRequests = 20'000;
  Clients clients = relayed(kClients, exchange);
  clients.load(kClients);
  const auto times = [this] { return std::array{relay_.processorTime(), serversTime(cluster_), far_.processorTime()}; };
  const auto begin = times();
  clients.load(kRequests);
  const auto end = times();
  const auto part = [&](size_t i) { return (end.at(i) - begin.at(i)) / kRequests / 1e3; };
  return fmt::format("| {} | {:.0f} µs | {:.0f} µs | {:.0f} µs |\n", name, part(0), part(1), part(2));
}

Clients RelayDesk::direct(size_t count, const Exchange& exchange) const { return {near_.port(), count, exchange}; }

Clients RelayDesk::relayed(size_t count, const Exchange& exchange) const {
  return {relay_.port(), count, {farLogin_, exchange.request, exchange.reply}};
}

}  // namespace orvane::bench
