#include <algorithm>
#include <functional>
#include <numeric>
#include <set>

#include <fmt/format.h>
#include <gmock/gmock.h>
#include <sqlite3.h>

#include "terminal/trading/database.h"
#include "terminal/trading/engine.h"
#include "terminal/trading/storeerror.h"
#include "tests/support/soak.h"
#include "tests/trading/testdesk.h"

namespace orvane::terminal::testing {
namespace {

using ::testing::HasSubstr;

constexpr int kOrders = 20;

enum class Answer { Acknowledged, Refused, Unknown };

class StorageTest : public DeskTest {
 protected:
  // Every list is served and every change is refused, with the remedy, until `mend` is called; then actions work again.
  void expectOnlyLists(size_t expected, const std::string& reason, const std::string& remedy,
                       const std::function<void()>& mend) {
    const std::string file = (dir_ / "terminal.db").string();
    EXPECT_EQ(order(rebar(3330)), fmt::format("数据库 {} 无法写入 ({}), 未作任何更改: {}", file, reason, remedy));
    EXPECT_THAT(host_->health().storageFault, HasSubstr(fmt::format("cannot use the database {}: {}", file, reason)));
    EXPECT_THAT(setQuote(kRebar, 3400).message, HasSubstr("未作任何更改"));
    EXPECT_EQ(orders().size(), expected);
    EXPECT_EQ(position(1, kRebar).currentPrice, 3325);
    IPositionMonitor::getInstance()->cleanManualPositions({});
    expectNotice(fmt::format("手工头寸未能保存: 数据库 {} 无法写入", file));
    mend();
    expectNotice("数据库已恢复写入: 此前结果未知的更改均未执行");
    EXPECT_EQ(host_->health().storageFault, "");
    EXPECT_EQ(orders().size(), expected);
    EXPECT_EQ(order(rebar(3330)), "");
    EXPECT_EQ(orders().size(), expected + 1);
  }

  void expectNotice(const std::string& start) {
    std::string notice;
    while (!notice.starts_with(start) && !HasFailure()) notice = utf8(inbox_.next("terminal.notice").message);
  }

  // Orders of one lot, filled and resting in turn, told apart by their text.
  Answer place(int number) {
    Terms terms = rebar(number % 2 == 0 ? 3330 : 3300);
    terms.source.sourceText = fmt::format("order {}", number);
    const std::string text = order(terms);
    if (text.empty()) return Answer::Acknowledged;
    return text.find("结果未知") == std::string::npos ? Answer::Refused : Answer::Unknown;
  }

  void checkImages(const std::vector<Answer>& answers) {
    for (const bool powerFails : {false, true}) checkImage(answers, powerFails);
  }

  // What a restart after a crash finds: the texts of the orders, and as many lots as were filled.
  void checkImage(const std::vector<Answer>& answers, bool powerFails) {
    const test::TempDir image;
    FaultyDisk::crash(dir_, image.path(), powerFails);
    const Book book = Database(image.path()).load();
    std::set<std::string> there;
    int64_t lots = 4;  // opened today by the sample data
    for (const auto& [id, it] : book.orders) {
      const std::string& text = it.order.orderSource.sourceText;
      if (!text.starts_with("order ")) continue;
      EXPECT_TRUE(there.insert(text).second) << text << " is there twice";
      lots += it.order.fillVolume;
    }
    for (size_t i = 0; i < answers.size(); ++i) {
      const bool isThere = there.count(fmt::format("order {}", i)) == 1;
      if (answers[i] == Answer::Unknown) continue;
      EXPECT_EQ(isThere, answers[i] == Answer::Acknowledged) << "order " << i << ", power failure: " << powerFails;
    }
    EXPECT_EQ(book.holdings.at({1, kRebar}).longs.todayVolume, lots);
  }

  // Twenty orders while the fault is armed, then the same when it is gone.
  void runScenario(const Fault& fault, int at) {
    SCOPED_TRACE(fmt::format("{}, operation {}", fault.name, at));
    begin();
    FaultyDisk::checkpointOften();
    disk_.arm(fault, at);
    std::vector<Answer> answers;
    for (int i = 0; i < kOrders; ++i) {
      answers.push_back(place(i));
      const bool isNew = i == 0 || answers.back() != answers[answers.size() - 2];
      if (isNew || i + 1 == kOrders) checkImages(answers);
    }
    disk_.heal();
    while (!host_->health().storageFault.empty()) inbox_.next("terminal.notice");
    std::replace(answers.begin(), answers.end(), Answer::Unknown, Answer::Refused);  // overwritten by now
    answers.push_back(place(kOrders));
    EXPECT_EQ(answers.back(), Answer::Acknowledged);
    checkImages(answers);
    const std::list<Order> all = orders();
    const auto listed = std::count_if(all.begin(), all.end(),
                                      [](const Order& it) { return it.orderSource.sourceText.starts_with("order "); });
    EXPECT_EQ(listed, std::count(answers.begin(), answers.end(), Answer::Acknowledged)) << "book and disk differ";
  }
};

TEST_F(StorageTest, AcknowledgedMeansThereAndRefusedMeansNotThereWhateverFails) {
  const Fault faults[] = {
      {"one fails, writing nothing", false, false, 0},
      {"one fails, writing half", false, false, 0.5},
      {"one fails, though all is written", false, false, 1},
      {"all fail from here on, writing nothing", true, false, 0},
      {"all fail from here on, though all is written", true, false, 1},
      {"full from here on", true, true, 0.5},
  };
  FaultyDisk::checkpointOften();
  disk_.arm(faults[0], 0);
  for (int i = 0; i < kOrders; ++i) EXPECT_EQ(place(i), Answer::Acknowledged);
  const int operations = disk_.operations;
  EXPECT_GT(operations, 220) << "checkpoints are among them";
  // Spread over all points from the first on, so that a short run leaves no gap.
  const int cases = operations * static_cast<int>(std::size(faults));
  int stride = cases * 5 / 8;
  while (std::gcd(stride, cases) != 1) ++stride;
  const auto end = std::chrono::steady_clock::now() + test::soakTime();
  int tried = 0;
  for (int64_t place = 0; tried < cases && std::chrono::steady_clock::now() < end && !HasFailure(); ++tried) {
    runScenario(faults[place / operations], static_cast<int>(place % operations) + 1);
    place = (place + stride) % cases;
  }
  RecordProperty("tried", fmt::format("{} of {}", tried, cases));
}

TEST(StoreErrorTest, NamesTheReasonAndTheRemedy) {
  const std::tuple<int, std::string, std::string> cases[] = {
      {SQLITE_FULL, "free some space on its disk", "请释放磁盘空间"},
      {SQLITE_READONLY, "make the file and its folder writable", "请使该文件及其目录可写"},
      {SQLITE_IOERR, "check the disk", "请检查磁盘"},
      {SQLITE_BUSY, "stop the program that uses it", "请停止正在使用它的程序"},
      {SQLITE_CORRUPT, "move the file away, or name another folder with --data",
       "请移走该文件, 或用 --data 指定其他目录"},
  };
  for (const auto& [code, english, chinese] : cases) {
    const StoreError error("/d/terminal.db", SQLite::Exception("why", code), true);
    EXPECT_EQ(error.what(), "cannot use the database /d/terminal.db: why; " + english);
    EXPECT_EQ(error.refusal(), "数据库 /d/terminal.db 无法写入 (why), 未作任何更改: " + chinese);
    EXPECT_EQ(error.unknownOutcome(), "数据库 /d/terminal.db 写入失败 (why), 结果未知: 请勿重新提交, 待恢复后查看列表");
  }
}

TEST_F(StorageTest, ANoticeRepeatsWhetherTheOutcomeIsKnown) {
  const std::pair<Fault, const char*> cases[] = {{{"failing", true, false, 0}, "结果未知: 请勿重新提交"},
                                                 {{"full", true, true, 0}, "未作任何更改: 请释放磁盘空间"}};
  for (const auto& [fault, outcome] : cases) {
    disk_.arm(fault, 1);
    const std::string answer = order(rebar(3300));
    EXPECT_THAT(answer, HasSubstr(outcome));
    expectNotice(answer);
    disk_.heal();
    expectNotice("数据库已恢复写入");
  }
}

TEST_F(StorageTest, AFullDiskIsServedAndTakesActionsAgain) {
  host_.reset();
  disk_.arm({"full", true, true, 0}, 1);
  open();
  expectOnlyLists(18, "database or disk is full", "请释放磁盘空间", [this] { disk_.heal(); });
}

TEST_F(StorageTest, AReadOnlyDiskIsServedWithItsWriteAheadLogAndTakesActionsAgain) {
  const auto mend = [this] { disk_.isReadOnly = false; };
  host_.reset();
  disk_.isReadOnly = true;
  open();
  expectOnlyLists(18, "the file is read-only", "请使该文件及其目录可写", mend);

  const test::TempDir crashed;  // its log holds the order
  FaultyDisk::crash(dir_, crashed.path(), false);
  host_.reset();
  std::filesystem::remove_all(dir_);
  std::filesystem::copy(crashed.path(), dir_);
  disk_.isReadOnly = true;
  open();
  expectOnlyLists(19, "the file is read-only", "请使该文件及其目录可写", mend);
}

TEST_F(StorageTest, APriceThatFillsAnOrderOnEntryIsStoredWithIt) {
  host_.reset();
  {
    Desk desk(dir_, clock_);
    Engine engine(desk);
    engine.movePrices({{kSugar, 5450}, {kRebar, 3400}, {kMaotai, 1500}}, false);
    EXPECT_EQ(engine.insertOrder(itemOf(rebar(3410))).code, 0);
  }
  open();
  EXPECT_EQ(position(1, kRebar).currentPrice, 3400);
  EXPECT_EQ(position(1, kSugar).longTodayVolume, 10) << "filled by the first of three prices";
  EXPECT_EQ(position(2, kMaotai).currentPrice, 1475.20) << "stored by the next regular save";
}

}  // namespace
}  // namespace orvane::terminal::testing
