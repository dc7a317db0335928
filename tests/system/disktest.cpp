#include <chrono>
#include <csignal>
#include <future>
#include <regex>

#include <fmt/format.h>
#include <gmock/gmock.h>

#include "tests/support/holdssoon.h"
#include "tests/support/orderclients.h"
#include "tests/support/rawsocket.h"
#include "tests/system/terminalprocess.h"
#include "tests/system/trouble.h"

namespace orvane::test {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;
using testing::HasSubstr;

// A disk that answers no write: lists are served, and the terminal ends in time without it.
TEST(Disk, ThatHangsHoldsUpNoListAndNotTheEnd) {
  const FaultyDisk disk;
  FreshTerminal terminal({"--log-level", "trace"});
  const auto trader = terminal.login();
  const auto other = terminal.login();
  ASSERT_EQ(trader->request("order.new", orderData("before")).message, "");
  Trouble hang = disk.fail("hang");
  trader->send(orderFrame("meanwhile"));
  for (int i = 0; i < 50; ++i) EXPECT_EQ(other->request("account.list").message, "");
  EXPECT_TRUE(holdsSoon([&] {
    const std::string health = httpGet(terminal.port(), "/health");
    return health.find(R"("gateway:writes":[{"status":"fail","output":"a write to )") != std::string::npos &&
           health.find(R"("log:writes":[{"status":"warn","output":"a write to )") != std::string::npos;
  }));
  EXPECT_EQ(terminal.stop(), 1);
  hang.reset();
  const TerminalProcess again(terminal.dir(), {}, terminal.token());
  EXPECT_THAT(again.login()->request("order.list", "[1]").data, HasSubstr(R"("before")"));
}

// A token that was revoked orders as fast as it can, until it is closed.
TEST(Disk, NothingOfARevokedTokenBegins) {
  FreshTerminal terminal;
  const std::string token = terminal.makeToken("lost", "trade");
  const auto watcher = terminal.login();
  std::promise<void> begun;
  auto end = std::async(std::launch::async, [&]() -> std::string {
    constexpr int kUnderWay = 200;
    const auto thief = terminal.login(token);
    try {
      for (int i = 0;; ++i) {
        thief->send(orderFrame(fmt::format("k{}", i)));
        if (i >= kUnderWay) thief->receive();
        if (i == kUnderWay) begun.set_value();
      }
    } catch (const terminal::ClientError& error) {
      return error.what();
    }
  });
  begun.get_future().wait();
  const Outcome revoked = terminal.run({"token", "revoke", "lost"});
  EXPECT_EQ(revoked.exitCode, 0) << revoked.error;
  EXPECT_EQ(revoked.output, "lost is revoked. The running terminal begins no further request of it.\n");
  const auto countOrders = [&] {
    static const std::regex source(R"("source":"k)");
    const std::string list = watcher->request("order.list", "[1]").data;
    return std::distance(std::sregex_iterator(list.begin(), list.end(), source), std::sregex_iterator());
  };
  const auto orders = countOrders();
  EXPECT_GT(orders, 0);
  EXPECT_THAT(end.get(), HasSubstr("4403"));
  EXPECT_EQ(countOrders(), orders);
  EXPECT_EQ(terminal.stop(), 0);
  EXPECT_EQ(terminal.run({"token", "revoke", "start-0"}).exitCode, 1);
  terminal.makeToken("lost", "trade");
  EXPECT_THAT(terminal.run({"token", "revoke", "lost"}).output, HasSubstr("lost is revoked. No terminal runs on"));
}

// A stopped process holds its lock on the folder, and answers nothing.
TEST(Disk, ARevocationIsNotCalledConfirmedByATerminalThatDoesNotAnswer) {
  FreshTerminal terminal;
  const auto thief = terminal.login(terminal.makeToken("lost", "trade"));
  terminal.program().send(SIGSTOP);
  const auto begin = Clock::now();
  const Outcome revoked = terminal.run({"token", "revoke", "lost"});
  EXPECT_GE(Clock::now() - begin, 5s);
  EXPECT_EQ(revoked.exitCode, 1);
  EXPECT_EQ(revoked.error,
            "pocket-terminal: lost is revoked, but the running terminal has not confirmed within 5 s that it begins no "
            "further request of it: look at its log, or stop it\n");
  terminal.program().send(SIGCONT);
  EXPECT_EQ(thief->waitClose(), 4403);
  EXPECT_EQ(terminal.stop(), 0);
}

}  // namespace
}  // namespace orvane::test
