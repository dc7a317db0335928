#include <algorithm>
#include <array>
#include <chrono>
#include <csignal>
#include <functional>
#include <memory>
#include <thread>
#include <vector>

#include <fmt/format.h>
#include <gtest/gtest.h>

#include "tests/relay/cluster.h"
#include "tests/support/orderclients.h"
#include "tests/support/soak.h"

namespace orvane::test {
namespace {

using namespace std::chrono_literals;

// A long soak has more phones. Each gets the pushes of all, so they order less often.
struct Size {
  size_t phones;
  std::chrono::milliseconds pause;          // of a phone between two orders
  std::vector<std::chrono::seconds> stops;  // how long programs are stopped, in turn
};

Size sizeOf(std::chrono::seconds time) {
  if (time < 60s) return {8, 40ms, {1s}};
  return {100, 1000ms, {1s, 4s, 12s, 30s}};
}
constexpr int kShort = 20;  // seconds of the test

// Servers, relays and the terminal are killed and stopped in turn while phones place keyed orders: none that was
// acknowledged is lost, none is placed twice, and all phones come back after each fault.
TEST(RelaySoak, LosesAndDoublesNoOrder) {
  Cluster cluster(false);
  auto relay1 = std::make_unique<RelayProcess>(cluster, "r1");
  RelayProcess relay2(cluster, "r2");
  FarTerminal desk(cluster, "t1", {"--quotes", "still", "--max-connections", "400"});
  desk.program().end(SIGTERM);
  giveFunds(desk.dir());
  desk.restart();
  const Size size = sizeOf(soakTime(kShort));
  const std::array<uint16_t, 2> ports{relay1->port(), relay2.port()};
  loginThrough(ports[0], "t1", desk.token());
  auto pause = [&, turn = size_t{0}](Program& program) mutable {
    program.send(SIGSTOP);
    std::this_thread::sleep_for(size.stops[turn++ % size.stops.size()]);
    program.send(SIGCONT);
  };
  const std::vector<std::function<void()>> faults{
      [&] {
        relay1.reset();
        relay1 = std::make_unique<RelayProcess>(cluster, "r1", ports[0]);
      },
      [&] { desk.restart(); },
      [&] { cluster.restartServer(0); },
      [&] { pause(cluster.server(1)); },
      [&] { pause(desk.program()); },
      [&] { cluster.restartServer(2); },
      [&] { pause(relay2.program()); },
  };
  OrderTally tally;
  OrderClients phones({.port = [&](size_t number) { return ports[number % 2]; },
                       .login = fmt::format(R"("terminal":"t1","token":"{}")", desk.token()),
                       .clients = size.phones,
                       .batch = 1,
                       .pause = size.pause,
                       .patience = 2s,
                       .mayHang = true},
                      tally);
  ASSERT_TRUE(phones.allAnswered());
  std::chrono::duration<double> longest{};
  const auto end = std::chrono::steady_clock::now() + soakTime(kShort);
  for (size_t i = 0; std::chrono::steady_clock::now() < end; ++i) {
    faults[i % faults.size()]();
    const auto over = std::chrono::steady_clock::now();
    ASSERT_TRUE(phones.allAnswered()) << "after fault " << i;
    longest = std::max<std::chrono::duration<double>>(longest, std::chrono::steady_clock::now() - over);
  }
  phones.end();
  phones.checkOrders();
  fmt::print("{} phones: {}, all back within {:.1f} s\n", size.phones, tally.text(), longest.count());
  EXPECT_GT(tally.resumed, 0U);
}

}  // namespace
}  // namespace orvane::test
