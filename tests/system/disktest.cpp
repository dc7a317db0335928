#include <chrono>
#include <csignal>
#include <filesystem>
#include <future>

#include <SQLiteCpp/Database.h>
#include <fmt/format.h>
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

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
using testing::StartsWith;

// A disk that answers no write: lists are served, and the terminal ends in time without it.
TEST(Disk, ThatHangsHoldsUpNoListAndNotTheEnd) {
  const TempDir dir;
  const FaultyDisk disk;
  TerminalProcess terminal(dir.path(), {"--log-level", "trace"});
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
  const TerminalProcess again(dir.path(), {}, terminal.token());
  EXPECT_THAT(again.login()->request("order.list", "[1]").data, HasSubstr(R"("before")"));
}

// A token that was revoked orders as fast as it can, until it is closed.
TEST(Disk, NothingOfARevokedTokenBegins) {
  const TempDir dir;
  TerminalProcess terminal(dir.path());
  const std::string token = makeToken(dir.path(), "lost", "trade");
  const auto watcher = terminal.login();
  std::promise<void> begun;
  auto end = std::async(std::launch::async, [&]() -> std::string {
    constexpr int kUnderWay = 200;
    const auto thief = terminal.login(token);
    try {
      for (int i = 0;; ++i) {
        thief->send(orderFrame(fmt::format("k{}", i)));
        if (i == kUnderWay) begun.set_value();
        if (i >= kUnderWay) thief->receive();
      }
    } catch (const terminal::ClientError& error) {
      return error.what();
    }
  });
  begun.get_future().wait();
  const Outcome revoked = runTerminal({"token", "revoke", "lost", "--data", dir.path().string()});
  EXPECT_EQ(revoked.exitCode, 0) << revoked.error;
  EXPECT_EQ(revoked.output, "lost is revoked. The running terminal begins no further request of it.\n");
  const auto countOrders = [&] {
    const std::string list = watcher->request("order.list", "[1]").data;
    size_t count = 0;
    for (size_t at = list.find("\"source\":\"k"); at != std::string::npos; at = list.find("\"source\":\"k", at + 1)) {
      ++count;
    }
    return count;
  };
  const size_t orders = countOrders();
  EXPECT_GT(orders, 0U);
  EXPECT_THAT(end.get(), HasSubstr("4403"));
  EXPECT_EQ(countOrders(), orders);
  EXPECT_EQ(terminal.stop(), 0);
  EXPECT_EQ(runTerminal({"token", "revoke", "start-0", "--data", dir.path().string()}).exitCode, 1);
  makeToken(dir.path(), "lost", "trade");
  EXPECT_THAT(runTerminal({"token", "revoke", "lost", "--data", dir.path().string()}).output,
              HasSubstr("lost is revoked. No terminal runs on"));
}

// A stopped process holds its lock on the folder, and answers nothing.
TEST(Disk, ARevocationIsNotCalledConfirmedByATerminalThatDoesNotAnswer) {
  const TempDir dir;
  TerminalProcess terminal(dir.path());
  const auto thief = terminal.login(makeToken(dir.path(), "lost", "trade"));
  terminal.program().send(SIGSTOP);
  const auto begin = Clock::now();
  const Outcome revoked = runTerminal({"token", "revoke", "lost", "--data", dir.path().string()});
  EXPECT_GE(Clock::now() - begin, 5s);
  EXPECT_EQ(revoked.exitCode, 1);
  EXPECT_EQ(revoked.error,
            "pocket-terminal: lost is revoked, but the running terminal has not confirmed within 5 s that it begins no "
            "further request of it: look at its log, or stop it\n");
  terminal.program().send(SIGCONT);
  EXPECT_EQ(thief->waitClose(), 4403);
  EXPECT_EQ(terminal.stop(), 0);
}

// Whoever owns the folder of another's service may not have root write elsewhere.
TEST(Disk, CommandsOfRootFollowNoPlantedLink) {
  if (geteuid() != 0) GTEST_SKIP() << "only root acts as others";
  const NoLeakCheck noLeakCheck;
  constexpr uid_t kService = 65534;
  for (const char* name : {"gateway.db", "audit.log", "terminal.lock"}) {
    SCOPED_TRACE(name);
    const TempDir dir;
    const TempDir secret;
    ASSERT_EQ(chown(dir.path().c_str(), kService, kService), 0);
    makeToken(dir.path(), "phone", "see");
    std::filesystem::remove(dir.path() / name);
    std::filesystem::create_symlink(secret.path() / "target", dir.path() / name);
    runTerminal({"token", "add", "more", "--rights", "see", "--data", dir.path().string()});
    runTerminal({"token", "revoke", "phone", "--data", dir.path().string()});
    EXPECT_TRUE(std::filesystem::is_empty(secret.path()));
    // Not even into a folder that its owner may write.
    ASSERT_EQ(chown(secret.path().c_str(), kService, kService), 0);
    runTerminal({"token", "add", "again", "--rights", "see", "--data", dir.path().string()});
    EXPECT_TRUE(std::filesystem::is_empty(secret.path()));
  }
}

// Nor may a terminal that root starts on it.
TEST(Disk, ATerminalOfRootFollowsNoPlantedLink) {
  if (geteuid() != 0) GTEST_SKIP() << "only root acts as others";
  const NoLeakCheck noLeakCheck;
  constexpr uid_t kService = 65534;
  const TempDir dir;
  const TempDir secret;
  ASSERT_EQ(chown(dir.path().c_str(), kService, kService), 0);
  for (const char* name : {"terminal.log", "terminal.db", "tls.key.new"}) {
    std::filesystem::create_symlink(secret.path() / name, dir.path() / name);
  }
  const Outcome started = runTerminal({"--port", "0", "--tls-self", "--data", dir.path().string()});
  EXPECT_THAT(started.error, HasSubstr("terminal.db"));
  EXPECT_TRUE(std::filesystem::is_empty(secret.path()));
  std::filesystem::remove(dir.path() / "terminal.db");
  TerminalProcess terminal(dir.path());
  struct stat made {};
  ASSERT_EQ(stat((dir.path() / "terminal.db").c_str(), &made), 0);
  EXPECT_EQ(made.st_uid, kService);
  EXPECT_EQ(terminal.stop(), 0);
}

}  // namespace
}  // namespace orvane::test
