#include <fmt/format.h>
#include <gmock/gmock.h>
#include <rapidjson/document.h>

#include "terminal/trading/desk.h"
#include "terminal/trading/equitylist.h"
#include "terminal/trading/thin.h"
#include "tests/trading/testdesk.h"

namespace orvane::terminal::testing {
namespace {

using std::chrono::hours;
using std::chrono::minutes;
using ::testing::ElementsAre;
using ::testing::HasSubstr;

constexpr int64_t kToday = 20717;  // 21 September 2026
constexpr int64_t kStart = kToday * 86'400'000 + (15 * 60 + 14) * 60'000;
constexpr int64_t kDayMillis = 86'400'000;

struct Point {
  int64_t time = 0;
  int value = 0;
};

// A valley and a peak in each interval, between its first and last point.
TEST(ThinTest, KeepsTheFirstLastLowestAndHighestOfEachInterval) {
  std::vector<Point> points;
  for (int i = 0; i < 1000; ++i) points.push_back({i, i % 100 == 30 ? -i : i % 100 == 60 ? i : 0});
  const auto value = [](const Point& it) { return it.value; };
  std::vector<int64_t> times;
  for (const Point& it : thin(points, 40, value)) times.push_back(it.time);
  ASSERT_EQ(times.size(), 40U);
  const int64_t places[] = {0, 30, 60, 99};
  for (size_t i = 0; i < 40; ++i) EXPECT_EQ(times[i], static_cast<int64_t>(i / 4 * 100) + places[i % 4]);
  EXPECT_EQ(thin(points, 1000, value).size(), 1000U);
  for (const size_t limit : {4U, 5U, 7U, 43U, 999U}) {
    const auto kept = thin(points, limit, value);
    EXPECT_LE(kept.size(), limit);
    EXPECT_EQ(kept.front().time, 0);
    EXPECT_EQ(kept.back().time, 999);
  }
}

// Works on a separate desk: the host records when the machine's clock says so.
class HistoryTest : public DeskTest {
 protected:
  HistoryTest() {
    host_.reset();
    clock_.advance(std::chrono::seconds(40));  // to the start of a minute
    openDesk("DELETE FROM equity");
  }

  void openDesk(const std::string& sql = "") {
    desk_.reset();
    change(dir_, sql);
    desk_.emplace(dir_, clock_);
    desk_->outbox().start([this](const MobileMessage& message) { inbox_.put(message); });
  }

  std::vector<EquityRow> rows() {
    std::promise<std::vector<EquityRow>> read;
    desk_->readEquity({1, 0, INT64_MAX},
                      [&](std::vector<EquityRow> found, const StoreError*) { read.set_value(found); });
    return read.get_future().get();
  }
  std::vector<int64_t> times() {
    std::vector<int64_t> found;
    for (const EquityRow& it : rows()) found.push_back(it.time - kStart);
    return found;
  }

  void setDeposit(double amount) {
    desk_->apply([&](Book& book, Change& change, int64_t) {
      book.accounts.at(1).deposit = amount;
      change.accounts.insert(1);
    });
  }

  std::optional<Desk> desk_;
};

TEST_F(HistoryTest, AMinuteHasOneRowAlsoAfterARestart) {
  desk_->record();
  clock_.advance(std::chrono::seconds(59));
  openDesk();
  setDeposit(70000);
  desk_->record();
  clock_.advance(std::chrono::seconds(1));
  desk_->record();
  EXPECT_THAT(times(), ElementsAre(0, 60'000));
  const EquityRow row = rows().front();
  EXPECT_NEAR(row.equity, 2078035.43, kCent);
  EXPECT_NEAR(row.available, 1211031.93, kCent);
  EXPECT_NEAR(row.margin, 817848.5, kCent);
  EXPECT_NEAR(row.profit, 8120, kCent);
  EXPECT_EQ(row.deposit, 70000);
}

TEST_F(HistoryTest, TheChangeOfDayClosesTheOldDayAndBeginsTheNewOne) {
  desk_->record();
  clock_.advance(hours(24));
  desk_->record();
  EXPECT_EQ(rows().size(), 1U) << "nothing has moved since midnight";
  setDeposit(30000);  // in the new day
  const std::vector<EquityRow> found = rows();
  ASSERT_EQ(found.size(), 3U);
  EXPECT_EQ(found[1].time, (kToday + 1) * kDayMillis - (8 * 60 + 1) * 60'000) << "23:59, local time";
  EXPECT_EQ(found[1].day, kToday);
  EXPECT_EQ(found[1].deposit, 50000);
  EXPECT_EQ(found[2].time, kStart + kDayMillis);
  EXPECT_EQ(found[2].day, kToday + 1);
  EXPECT_EQ(found[2].deposit, 0);
  EXPECT_NEAR(found[2].equity, found[1].equity, kCent);
  clock_.jump(hours(1));
  desk_->record();
  EXPECT_EQ(rows().size(), 3U) << "the clocks disagree";
}

TEST_F(HistoryTest, ThirtyDaysOfMinutesAndTheLastRowOfEachDayBeforeAreKept) {
  openDesk(
      fmt::format("WITH RECURSIVE n (n) AS (SELECT 1 UNION ALL SELECT n + 1 FROM n WHERE n < 50000) INSERT INTO equity"
                  " SELECT idx, {} - n * 60000, ({} - n * 60000) / {}, n, 0, 0, 0, 0, 0 FROM n, account",
                  kStart, kStart, kDayMillis));
  for (int i = 0; i < 10; ++i) desk_->record();  // a few thousand rows go at a time
  const std::vector<EquityRow> found = rows();
  const auto isOld = [](const EquityRow& it) { return it.time < kStart - 30 * kDayMillis; };
  EXPECT_EQ(std::count_if(found.begin(), found.end(), isOld), 5);
  EXPECT_EQ(found.size(), 5U + 30 * 1440 + 1);
  for (size_t i = 0; i < 4; ++i) EXPECT_EQ(found[i].time % kDayMillis, kDayMillis - 60'000) << "the last of its day";
}

TEST_F(HistoryTest, AFullDiskLosesRowsAndSaysSoOnce) {
  disk_.arm({"full", true, true, 0}, 1);
  for (int i = 0; i < 3; ++i) {
    desk_->record();
    clock_.advance(minutes(1));
  }
  EXPECT_TRUE(rows().empty());
  EXPECT_EQ(desk_->storageFault(), "") << "orders may still find room";
  disk_.heal();
  desk_->record();
  EXPECT_THAT(times(), ElementsAre(180'000));
  desk_->notice("then");
  EXPECT_THAT(utf8(inbox_.next("terminal.notice").message), HasSubstr("权益历史暂停记录: 请释放磁盘空间"));
  EXPECT_EQ(utf8(inbox_.next("terminal.notice").message), "then");
}

TEST_F(HistoryTest, AReadOnlyDiskServesTheHistory) {
  desk_->record();
  EXPECT_EQ(rows().size(), 1U);
  desk_.reset();
  disk_.isReadOnly = true;
  clock_.advance(hours(24));
  openDesk();
  EXPECT_EQ(desk_->read([](const Book& book) { return book.day; }), kToday) << "a new day could not be stored";
  desk_->record();
  EXPECT_THAT(times(), ElementsAre(0));
}

TEST_F(DeskTest, TheSamplesHistoryEndsAtThePresentFigures) {
  host_.reset();
  std::filesystem::remove_all(dir_);
  host_.emplace(TradingOptions{dir_, QuoteMode::Still, {}, 1});  // with the machine's clocks
  for (const int account : {1, 2, 3, 4}) {
    const MobileMessage reply =
        ask("equity.list", fmt::format(R"({{"index":{},"from":0,"to":9007199254740991,"points":300}})", account));
    rapidjson::Document rows;
    rows.Parse(reply.data.c_str());
    ASSERT_GT(rows.Size(), 200U);
    ASSERT_LE(rows.Size(), 300U);
    const auto& last = rows[rows.Size() - 1];
    EXPECT_NEAR(last["equity"].GetDouble(), capital(account).dynamicAmount, kCent);
    for (rapidjson::SizeType i = 1; i < rows.Size(); ++i) {
      EXPECT_GT(rows[i]["time"].GetInt64(), rows[i - 1]["time"].GetInt64());
      EXPECT_LT(std::abs(rows[i]["equity"].GetDouble() / rows[i - 1]["equity"].GetDouble() - 1), 0.2);
    }
  }
}

TEST(EquityTextTest, PaymentsAreSumsSinceTheFirstPoint) {
  const std::string text = equityText({{1, 1, 0, 10, 0, 0, 0, 5, 0},
                                       {1, 2, 0, 11, 0, 0, 0, 7, 1},
                                       {1, 3, 1, 12, 0, 0, 0, 0, 0},
                                       {1, 4, 1, 13, 0, 0, 0, 4, 0},
                                       {1, 5, 2, 14, 0, 0, 0, 4, 9}},
                                      4);
  EXPECT_EQ(text, R"([{"time":1,"day":0,"equity":10.0,"available":0.0,"margin":0.0,"profit":0.0,"deposit":0.0,)"
                  R"("withdraw":0.0},{"time":5,"day":2,"equity":14.0,"available":0.0,"margin":0.0,"profit":0.0,)"
                  R"("deposit":10.0,"withdraw":10.0}])");
}

}  // namespace
}  // namespace orvane::terminal::testing
