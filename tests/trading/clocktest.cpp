#include <fstream>
#include <sstream>

#include <SQLiteCpp/Statement.h>
#include <gmock/gmock.h>

#include "tests/trading/testdesk.h"

namespace orvane::terminal::testing {
namespace {

using std::chrono::hours;
using std::chrono::minutes;
using ::testing::HasSubstr;

using ClockTest = DeskTest;

TEST_F(ClockTest, TheDayStaysWhileTheClocksDisagree) {
  struct Case {
    std::chrono::seconds jump;
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
    clock_.jump(it.jump);
    EXPECT_EQ(order(rebar(3300)), "") << "orders work all the same";
    EXPECT_EQ(cancelOrder(1, kRebar, lastOrder().localOrderId).code, 0);
    EXPECT_THAT(host_->health().clockFault, HasSubstr(it.fault));
    EXPECT_EQ(host_->health().clockFault.empty(), it.fault[0] == '\0');
    EXPECT_EQ(lastOrder().srcTimestamp / 1000, std::chrono::system_clock::to_time_t(clock_.wallTime()));
    EXPECT_GE(orders().size(), 18U) << "the day's orders are still there";
    clock_.jump(-it.jump);
    EXPECT_EQ(host_->health().clockFault, "");
  }
  EXPECT_EQ(credit().debtInterest, debt);
  clock_.advance(hours(2));
  EXPECT_EQ(order(rebar(3300)), "");
  EXPECT_EQ(orders().size(), 1U) << "both clocks are past the local midnight";
}

TEST_F(ClockTest, ADatabaseOfEachEarlierVersionIsUpgraded) {
  host_.reset();
  std::stringstream script;
  for (const char* version : {"version1.sql", "version2.sql"}) {  // each adds to the one before
    SCOPED_TRACE(version);
    std::filesystem::remove_all(dir_);
    std::filesystem::create_directories(dir_);
    script << std::ifstream(std::filesystem::path(OLD_DATABASES) / version).rdbuf();
    const std::string file = (dir_ / "terminal.db").string();
    SQLite::Database(file, SQLite::OPEN_READWRITE | SQLite::OPEN_CREATE).exec(script.str());
    open();
    EXPECT_EQ(orders().size(), 2U);
    EXPECT_EQ(order({1, kRebar, 1, 1, 3330, 2}), "");
    reopen();
    EXPECT_EQ(fills().size(), 2U);
    EXPECT_EQ(position(1, kRebar).longTodayVolume, 6);
    host_.reset();
    SQLite::Database db(file);
    EXPECT_EQ(db.execAndGet("PRAGMA user_version").getInt(), 3);
    EXPECT_EQ(db.execAndGet("PRAGMA integrity_check").getString(), "ok");
    EXPECT_EQ(db.execAndGet("SELECT count(*) FROM equity").getInt(), 0) << "the sample's history is not theirs";
  }
}

}  // namespace
}  // namespace orvane::terminal::testing
