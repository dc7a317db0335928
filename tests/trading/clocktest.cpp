#include <atomic>
#include <fstream>
#include <sstream>

#include <SQLiteCpp/Statement.h>
#include <gmock/gmock.h>

#include "tests/trading/desktest.h"

namespace orvane::terminal::testing {
namespace {

using std::chrono::hours;
using std::chrono::minutes;
using ::testing::HasSubstr;

constexpr std::chrono::hours kNoon{20778 * 24 + 12};  // of 21 November 2026, UTC

// Both of its clocks move only when the test says so.
class TestClock : public IClock {
 public:
  WallTime wallTime() const override { return WallTime(wall_.load()); }
  BootTime bootTime() const override { return boot_.load(); }

  void advance(std::chrono::nanoseconds wall, std::chrono::nanoseconds boot) {
    wall_ = wall_.load() + wall;
    boot_ = boot_.load() + boot;
  }

 private:
  std::atomic<std::chrono::nanoseconds> wall_{kNoon};
  std::atomic<std::chrono::nanoseconds> boot_{hours(5)};
};

class ClockTest : public DeskTest {
 protected:
  ClockTest() {
    clock_ = &time_;
    reopen("UPDATE trading_day SET day = 20778; UPDATE orders SET day = 20778");
  }
  ~ClockTest() override { host_.reset(); }

  void advance(std::chrono::nanoseconds wall, std::chrono::nanoseconds boot) { time_.advance(wall, boot); }

  std::string act() { return order(1, kRebar, Side::Buy, Offset::Open, 3300, 1); }

  TestClock time_;
};

TEST_F(ClockTest, TheDayStaysWhileTheClocksDisagree) {
  struct Case {
    std::chrono::nanoseconds jump;
    const char* fault;
  };
  const Case cases[] = {
      {minutes(10), ""},
      {hours(20 * 24), "the wall clock jumped 28800 minutes forward"},
      {minutes(12 * 60 + 1), "the wall clock jumped 721 minutes forward"},
      {-minutes(11), "the wall clock jumped 11 minutes back"},
      {-hours(20 * 24), "the wall clock jumped 28800 minutes back"},
  };
  const double debt = credit().debtInterest;
  for (const Case& it : cases) {
    advance(it.jump, {});
    EXPECT_EQ(act(), "") << "orders work all the same";
    EXPECT_EQ(cancel(1, kRebar, lastOrder().localOrderId), "");
    EXPECT_THAT(host_->health().clockFault, HasSubstr(it.fault));
    EXPECT_EQ(host_->health().clockFault.empty(), it.fault[0] == '\0');
    EXPECT_EQ(lastOrder().srcTimestamp / 1000, std::chrono::system_clock::to_time_t(time_.wallTime()));
    EXPECT_GE(orders().size(), 18U) << "the day's orders are still there";
    advance(-it.jump, {});
    EXPECT_EQ(host_->health().clockFault, "");
  }
  EXPECT_EQ(credit().debtInterest, debt);
  advance(hours(12), hours(12));
  EXPECT_EQ(act(), "");
  EXPECT_EQ(orders().size(), 1U) << "both clocks are past midnight";
}

TEST_F(ClockTest, ADatabaseOfVersion1IsUpgraded) {
  host_.reset();
  std::filesystem::remove_all(dir_);
  std::filesystem::create_directories(dir_);
  std::stringstream script;
  script << std::ifstream(OLD_DATABASE).rdbuf();
  const std::string file = (dir_ / "terminal.db").string();
  SQLite::Database(file, SQLite::OPEN_READWRITE | SQLite::OPEN_CREATE).exec(script.str());
  open();
  EXPECT_EQ(orders().size(), 2U);
  EXPECT_EQ(order(1, kRebar, Side::Buy, Offset::Open, 3330, 2), "");
  reopen();
  EXPECT_EQ(fills().size(), 2U);
  EXPECT_EQ(positions().at({1, kRebar}).longTodayVolume, 6);
  host_.reset();
  SQLite::Database db(file);
  EXPECT_EQ(db.execAndGet("PRAGMA user_version").getInt(), 2);
  EXPECT_EQ(db.execAndGet("PRAGMA integrity_check").getString(), "ok");
}

}  // namespace
}  // namespace orvane::terminal::testing
