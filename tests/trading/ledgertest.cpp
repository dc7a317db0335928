#include "tests/trading/desktest.h"

namespace orvane::terminal::testing {
namespace {

using LedgerTest = DeskTest;

TEST_F(LedgerTest, FuturesFiguresMatchAHandCalculation) {
  const Position it = positions().at({1, kRebar});
  EXPECT_EQ(it.longPosition, 12);
  EXPECT_EQ(it.longFrozenVolume, 2);
  EXPECT_NEAR(it.longAvgPrice, (8 * 3285.0 + 4 * 3318) / 12, 1e-9);
  EXPECT_NEAR(it.longFloatProfit, 8 * 40 * 10 + 4 * 7 * 10, kCent);
  EXPECT_NEAR(it.shortFloatProfit, 3 * 15 * 10, kCent);
  EXPECT_NEAR(it.longMargin, 12 * 33250 * 0.13, kCent);
  // Today: 8 left from yesterday against 3308, 4 opened today at 3318, 2 closed at 3322, and the 3 shorts.
  EXPECT_NEAR(it.todayProfit, 8 * 170 + 4 * 70 + 2 * 140 - 3 * 170, kCent);
  EXPECT_NEAR(positions().at({1, kTreasury}).shortMargin, 2 * 108.310 * 10000 * 0.03, kCent) << "the default rate";
  EXPECT_NEAR(capital(1).frozenMargin, 10 * 54600 * 0.09 + 15, kCent) << "the bid for sugar and its commission";
}

TEST_F(LedgerTest, SampleFillsExplainTodaysVolumesAndCommission) {
  std::map<Key, int64_t> opened;
  for (const Order& it : orders()) {
    const Key key{it.account.index, it.code.hashCode};
    if (it.combOffset == static_cast<int32_t>(Offset::Open)) opened[key] += it.fillVolume;
  }
  for (const auto& [key, it] : positions()) EXPECT_EQ(it.longTodayVolume + it.shortTodayVolume, opened[key]);
  SQLite::Database db((dir_ / "terminal.db").string());
  host_.reset();
  SQLite::Statement wrong(db,
                          "SELECT idx FROM account WHERE abs(commission - (SELECT total(commission) FROM orders o"
                          " JOIN fill f ON f.order_id = o.id WHERE o.account = idx)) > 0.0001");
  EXPECT_FALSE(wrong.executeStep());
}

TEST_F(LedgerTest, SelectorsChooseAndFlagsReturnWhoIsLoggedIn) {
  std::vector<TradingAccount> accounts;
  std::list<int32_t> available;
  TradeUtils::getAllTradingAccount(trade(), std::list<int32_t>{4, 3, 99, 4}, 3, accounts, available);
  ASSERT_EQ(accounts.size(), 2U);
  EXPECT_EQ(accounts[0].id.index, 3);
  EXPECT_EQ(available, std::list<int32_t>{4}) << "account 3 is not logged in";
  available.clear();
  TradeUtils::getAllTradingAccount(trade(), std::list<int32_t>{}, 1, accounts, available);
  EXPECT_TRUE(available.empty());
  EXPECT_EQ(TradeUtils::getTradingAccountID(trade(), {99}).size(), 0U);
  EXPECT_EQ(TradeUtils::getAllOrder(trade(), {capital(3).id}).size(), 1U);
  TradingAccountID unknown;
  unknown.index = 99;
  std::vector<CreditInfoRecord> credits;
  EXPECT_EQ(utf8(trade()->queryCreditInfo(unknown, credits).message), "没有账户 99");
  MarginRateResult rate;
  EXPECT_EQ(utf8(trade()->queryMarginRate({unknown, positions().at({1, kSugar}).code}, rate).message),
            "没有 SR701 的保证金率");
}

}  // namespace
}  // namespace orvane::terminal::testing
