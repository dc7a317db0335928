// What a relay adds: the figures of phones that come in through a relay and a cluster of three NATS servers.
#include <CLI/CLI.hpp>
#include <cstdlib>
#include <exception>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <fmt/format.h>

#include "bench/asker.h"
#include "bench/barenats.h"
#include "bench/figure.h"
#include "bench/fleet.h"
#include "bench/idlephones.h"
#include "bench/paperdesk.h"
#include "bench/relaydesk.h"
#include "bench/report.h"

namespace orvane::bench {
namespace {

constexpr size_t kOthers = 20;
constexpr size_t kRequests = 1000;  // of one slice

// The ratio to it is the figure itself, in this unit.
Sides inUnits(double unit, std::function<double()> ours) {
  return {std::move(ours), [unit] { return unit; }};
}

using SharedDesk = std::shared_ptr<const RelayDesk>;

// They keep the desk.
std::shared_ptr<Asker> askerOf(SharedDesk desk, Clients (RelayDesk::*side)(size_t, const Exchange&) const,
                               const Exchange& exchange) {
  auto* made = new Asker{(*desk.*side)(1, exchange), (*desk.*side)(kOthers, exchange)};
  return {made, [desk = std::move(desk)](Asker* asker) { delete asker; }};
}

Sides roundTrip() {
  const SharedDesk desk = std::make_shared<const RelayDesk>();
  const Exchange exchange = desk->exchange("capital.list", "[1,2,3,4]");
  const auto bare = std::make_shared<BareNats>(desk->cluster(), exchange.request, exchange.reply);
  const auto phone = askerOf(desk, &RelayDesk::relayed, exchange);
  return {[=] { return phone->measure(0.5, false); }, [=] { return bare->measure(); }};
}

Figure added(const char* name, double part, double must, double aim) {
  return {name, "1 ms", "ns", Bound::AtMost, must, aim, 15, [part] {
            const SharedDesk desk = std::make_shared<const RelayDesk>();
            const Exchange exchange = desk->exchange("position.list", selectorOfRows(20));
            const auto near = askerOf(desk, &RelayDesk::direct, exchange);
            const auto far = askerOf(desk, &RelayDesk::relayed, exchange);
            return inUnits(1e6, [=] { return far->measure(part, true) - near->measure(part, true); });
          }};
}

Sides throughput() {
  const SharedDesk desk = std::make_shared<const RelayDesk>();
  const Exchange exchange = desk->exchange("position.list", selectorOfRows(20));
  const std::shared_ptr<Clients> direct(new Clients(desk->direct(kClients, exchange)));
  const std::shared_ptr<Clients> relayed(new Clients(desk->relayed(kClients, exchange)));
  const auto perSecond = [desk](Clients& clients) { return kRequests * 1e9 / clients.load(kRequests); };
  return {[=] { return perSecond(*relayed); }, [=] { return perSecond(*direct); }};
}

Sides memory(bool hasTls) {
  const auto cluster = std::make_shared<test::Cluster>(false);
  return inUnits(1024, [=] { return idlePhoneMemory(*cluster, hasTls); });
}

std::vector<Figure> relayFigures() {
  return {
      {"relay, round trip of capital.list, median", "libnats alone: a client, two servers, a responder", "ns",
       Bound::AtMost, 1.5, 1.2, 15, roundTrip},
      added("relay, added at 200 requests/s of others, median", 0.5, 1.5, 0.5),
      added("relay, added at 200 requests/s of others, 99.9th percentile", 0.999, 20, 5),
      {"relay, 80 WebSockets, position.list of 20 rows", "the terminal itself", "requests/s", Bound::AtLeast, 0.4, 0.6,
       15, throughput},
      {"relay, resident memory of an idle phone", "1 KiB", "B", Bound::AtMost, 24, 12, 3, [] { return memory(false); }},
      {"relay, the same with TLS", "1 KiB", "B", Bound::AtMost, 64, 40, 3, [] { return memory(true); }},
  };
}

// What a request costs at each hop.
std::string hops() {
  const RelayDesk desk;
  return "| Processor time of a request | Relay | NATS servers together | Terminal |\n|---|---|---|---|\n" +
         desk.requestCost("capital.list, 4 accounts", desk.exchange("capital.list", "[1,2,3,4]")) +
         desk.requestCost("position.list, 20 rows", desk.exchange("position.list", selectorOfRows(20))) + "\n";
}

struct Options {
  std::string filter;
  size_t rounds = 0;  // 0: as many as each figure has by itself
  bool check = false;
  FleetSize fleet;

  bool wants(std::string_view name) const { return name.find(filter) != std::string_view::npos; }
};

int run(const Options& options) {
  std::vector<Measured> figures;
  bool allHold = true;
  for (const Figure& figure : relayFigures()) {
    if (!options.wants(figure.name)) continue;
    figures.push_back({figure, measure(figure, options.rounds > 0 ? options.rounds : figure.rounds)});
    fmt::print(stderr, "{}", progressLine(figures.back()));
    allHold = holds(figure, figures.back().result) && allHold;
  }
  const std::string fleet = options.wants("fleet") ? measureFleet(options.fleet) : std::string();
  const std::string hopTable = options.wants("hops") ? hops() : std::string();
  fmt::print("{}{}{}{}", machineText(), figureTable(figures), hopTable, fleet);
  return options.check && !allHold ? EXIT_FAILURE : EXIT_SUCCESS;
}

}  // namespace
}  // namespace orvane::bench

int main(int argc, char** argv) try {
  orvane::bench::Options options;
  CLI::App app(
      "Measures phones behind pocket-relay and three NATS servers, all on this machine. Prints Markdown tables; "
      "progress goes to standard error.");
  app.add_option("--filter", options.filter,
                 "Only figures whose name contains this text, or one of the tables \"hops\" and \"fleet\"");
  app.add_option("--rounds", options.rounds, "Rounds of each figure; by default as many as it needs");
  app.add_flag("--check", options.check, "Exit with 1 if a figure misses what it must reach");
  app.add_option("--phones", options.fleet.phones, "Phones of the fleet")->capture_default_str();
  app.add_option("--terminals", options.fleet.terminals, "Terminals of the fleet")->capture_default_str();
  CLI11_PARSE(app, argc, argv);
  return orvane::bench::run(options);
} catch (const std::exception& error) {
  fmt::print(stderr, "relay-bench: {}\n", error.what());
  return EXIT_FAILURE;
}
