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
  const std::chrono::seconds length = soakTime(20);
  // A long soak has more phones. Each gets the pushes of all, so they order less often.
  const bool isLong = length >= 60s;
  const size_t count = isLong ? 100 : 8;
  const auto stops = isLong ? std::vector{1s, 4s, 12s, 30s} : std::vector{1s};
  const std::array<uint16_t, 2> ports{relay1->port(), relay2.port()};
  loginThrough(ports[0], "t1", desk.token());
  auto pause = [&, turn = size_t{0}](Program& program) mutable {
    program.send(SIGSTOP);
    std::this_thread::sleep_for(stops[turn++ % stops.size()]);
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
                       .clients = count,
                       .batch = 1,
                       .pause = isLong ? 1000ms : 40ms,
                       .patience = 2s,
                       .mayHang = true},
                      tally);
  ASSERT_TRUE(phones.allAnswered());
  std::chrono::duration<double> longest{};
  const auto end = std::chrono::steady_clock::now() + length;
  for (size_t i = 0; std::chrono::steady_clock::now() < end; ++i) {
    faults[i % faults.size()]();
    const auto over = std::chrono::steady_clock::now();
    ASSERT_TRUE(phones.allAnswered()) << "after fault " << i;
    longest = std::max<std::chrono::duration<double>>(longest, std::chrono::steady_clock::now() - over);
  }
  phones.end();
  phones.checkOrders();
  fmt::print("{} phones: {}, all back within {:.1f} s\n", count, tally.text(), longest.count());
  EXPECT_GT(tally.acknowledged, 0U);
  EXPECT_GT(tally.resumed, 0U);
}

}  // namespace
}  // namespace orvane::test
