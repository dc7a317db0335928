// The whole terminal under clients that place orders with keys while its disk, its files and its clock fail, and it is
// killed and stopped. What was acknowledged must be there, what was refused must not, and no key may run twice.

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <functional>
#include <memory>
#include <random>
#include <thread>

#include <fmt/format.h>
#include <gtest/gtest.h>

#include "tests/support/holdssoon.h"
#include "tests/support/orderclients.h"
#include "tests/support/rawsocket.h"
#include "tests/support/soak.h"
#include "tests/system/terminalprocess.h"
#include "tests/system/trouble.h"

namespace orvane::test {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

constexpr int kFaultsOfRound = 10;  // before a new folder is begun, so that the lists stay short
constexpr auto kEndTime = 15s;

class FaultSoak {
 public:
  FaultSoak() {
    TerminalProcess first(fresh_.path());
    token_ = first.token();
    EXPECT_EQ(first.stop(), 0);
    giveFunds(fresh_.path());
  }

  void run() {
    const auto end = Clock::now() + soakTime(15);
    while (Clock::now() < end && !testing::Test::HasFailure()) runRound(end);
    report();
  }

 private:
  struct Kind {
    std::string name;
    std::function<Trouble()> begin;
    bool mayStop = true;  // the terminal, meanwhile
    int times = 0;
    int kills = 0;
    int stops = 0;
    Clock::duration recovery{};  // the slowest
  };

  void runRound(Clock::time_point end) {
    const TempDir dir;
    std::filesystem::copy(fresh_.path(), dir.path(), std::filesystem::copy_options::recursive);
    dir_ = dir.path();
    start();
    OrderClients clients(
        {.port = [this](size_t /*number*/) { return port_.load(); }, .login = fmt::format(R"("token":"{}")", token_)},
        tally_);
    for (int i = 0; i < kFaultsOfRound && Clock::now() < end && !testing::Test::HasFailure(); ++i) {
      if (suffer(kinds_[next_++ % kinds_.size()])) clients.checkOrders();
    }
    stop();
    EXPECT_EQ(actions(fmt::format("count(*) FROM action WHERE id > {} AND key IS NOT NULL AND reply_topic IS NULL",
                                  lastRow_)),
              0)
        << "a stop without a fault leaves no outcome unknown";
    clients.end();
    start();
    clients.checkOrders();
    stop();
  }

  // One fault begins and ends. The terminal may be killed or stopped meanwhile, and started again before or after its
  // end. Returns whether it was.
  bool suffer(Kind& kind) {
    Trouble trouble = kind.begin();
    std::this_thread::sleep_for(random_() % 4 == 0 ? 3500ms : std::chrono::milliseconds(100 + random_() % 900));
    const auto fate = kind.mayStop ? random_() % 4 : 2;
    if (fate == 0) {
      terminal_->program().end(SIGKILL);
      ++kind.kills;
    } else if (fate == 1) {
      stop();
      ++kind.stops;
    }
    const bool isDown = fate < 2;
    if (isDown && random_() % 2 == 0) trouble.reset();
    if (isDown) start();
    trouble.reset();
    const auto begin = Clock::now();
    EXPECT_TRUE(holdsSoon([this] { return terminal_->isReady(); }))
        << kind.name << " is over, and the terminal is not ready: " << httpGet(port_, "/health/ready");
    kind.recovery = std::max(kind.recovery, Clock::now() - begin);
    ++kind.times;
    return isDown;
  }

  int64_t actions(const std::string& figure) const {
    return SQLite::Database(dir_ / "gateway.db", SQLite::OPEN_READWRITE).execAndGet("SELECT " + figure).getInt64();
  }

  void start() {
    lastRow_ = actions("coalesce(max(id), 0) FROM action");
    terminal_ = std::make_unique<TerminalProcess>(dir_, std::vector<std::string>{}, token_);
    port_ = terminal_->port();
  }

  void stop() {
    const auto begin = Clock::now();
    EXPECT_EQ(terminal_->stop(), 0);
    longestEnd_ = std::max(longestEnd_, Clock::now() - begin);
    EXPECT_LT(Clock::now() - begin, kEndTime);
  }

  void report() const {
    EXPECT_GT(tally_.acknowledged, 0U);
    for (const Kind& kind : kinds_) {
      std::printf("%-22s %4d times, %3d kills and %3d stops meanwhile, ready again after at most %.1f s\n",
                  kind.name.c_str(), kind.times, kind.kills, kind.stops,
                  std::chrono::duration<double>(kind.recovery).count());
    }
    std::printf("%s; the longest stop took %.1f s\n", tally_.text().c_str(),
                std::chrono::duration<double>(longestEnd_).count());
  }

  // A terminal that is started on another day goes on with that day, so the clock only jumps while one runs.
  std::vector<Kind> kinds_{
      {.name = "no flush succeeds", .begin = [this] { return disk_.fail("flush"); }},
      {.name = "the disk is full", .begin = [this] { return disk_.fail("full"); }},
      {.name = "gateway.db is locked", .begin = [this] { return lockDatabase(dir_); }},
      {.name = "audit.log is locked", .begin = [this] { return lockAudit(dir_); }},
      {.name = "the clock jumps", .begin = [this] { return disk_.fail("clock"); }, .mayStop = false},
  };
  const FaultyDisk disk_;
  const TempDir fresh_;
  std::string token_;
  std::filesystem::path dir_;
  std::unique_ptr<TerminalProcess> terminal_;
  int64_t lastRow_ = 0;  // of gateway.db when the terminal was started
  std::atomic<uint16_t> port_ = 0;
  std::mt19937_64 random_{1};
  size_t next_ = 0;
  OrderTally tally_;
  Clock::duration longestEnd_{};
};

TEST(FaultSoak, LosesAndDoublesNothing) {
  alarm(static_cast<unsigned>(soakTime(15).count()) + 180);
  FaultSoak().run();
}

}  // namespace
}  // namespace orvane::test
