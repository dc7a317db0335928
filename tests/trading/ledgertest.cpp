#include <cmath>

#include "host/baseinformation.h"
#include "tests/trading/desktest.h"

namespace orvane::terminal::testing {
namespace {

using LedgerTest = DeskTest;

TEST_F(LedgerTest, CapitalFiguresAgreeInEveryAccount) {
  for (int32_t index : {1, 2, 3, 4}) {
    SCOPED_TRACE(index);
    const TradingAccount it = capital(index);
    EXPECT_NEAR(it.dynamicAmount,
                it.preBalance + it.deposit - it.withdraw + it.closeProfit + it.todayFloatingProfit - it.commission,
                kCent);
    EXPECT_NEAR(it.baseAmount + it.deposit + it.preCloseProfit - it.withdraw, it.dynamicAmount, kCent);
    EXPECT_NEAR(it.risk, it.currMargin / it.dynamicAmount, 1e-9);
    EXPECT_GT(it.available, 0);
    double value = 0;
    double net = 0;
    double margin = 0;
    double profit = 0;
    for (const auto& [key, position] : positions()) {
      if (key.account != index) continue;
      value += position.longMarketValue + position.shortMarketValue;
      net += position.longMarketValue - position.shortMarketValue;
      margin += position.longMargin + position.shortMargin;
      profit += position.todayProfit;
    }
    EXPECT_NEAR(it.totalLever, value / it.dynamicAmount, 1e-9);
    EXPECT_NEAR(it.netLever, net / it.dynamicAmount, 1e-9);
    EXPECT_NEAR(it.currMargin, margin, kCent);
    EXPECT_NEAR(it.closeProfit + it.todayFloatingProfit, profit, kCent);
  }
}

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

TEST_F(LedgerTest, LongOptionsPayThePremiumShortOnesAMarginPerLot) {
  EXPECT_NEAR(positions().at({3, 5100001}).longMargin, 25 * 0.0886 * 10000, kCent);
  EXPECT_NEAR(positions().at({3, 5100002}).shortMargin, 10 * 3800, kCent);
}

TEST_F(LedgerTest, CreditFiguresAgree) {
  const CreditInfoRecord it = credit();
  EXPECT_NEAR(it.totalAssets, it.netAssets + it.totalDebtBalance, kCent);
  EXPECT_NEAR(it.totalDebtBalance, 227600 + 77200 + 412.30 + 105.20 + 125800, kCent);
  EXPECT_NEAR(it.freeBalance, it.cashAssets - 128300 - capital(4).frozenMargin, kCent);
  EXPECT_NEAR(it.longMarginProfit, 4000 * (57.96 - 56.90) + 200 * (388.66 - 386), kCent);
  EXPECT_NEAR(it.marginRatio, it.totalAssets / it.totalDebtBalance, 1e-9);
  EXPECT_NEAR(it.longLimitAvl + 304800, it.longLimit, kCent);
  std::vector<CreditInfoRecord> none;
  EXPECT_EQ(trade()->queryCreditInfo(capital(1).id, none).code, 0);
  EXPECT_TRUE(none.empty());
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

TEST_F(LedgerTest, CodeTypesGroupTheSelectedAccounts) {
  std::vector<CodeTypePosition> all;
  const std::vector<TradingAccountID> both{capital(1).id, capital(2).id};
  IUIProxyMgr::getInstance()->getCodeTypePositions(both, true, true, all);
  double weight = 0;
  double profit = 0;
  for (const CodeTypePosition& it : all) {
    weight += it.leverWeight;
    profit += it.todayProfit;
  }
  EXPECT_NEAR(weight, 1, 1e-9);
  EXPECT_NEAR(
      profit,
      capital(1).closeProfit + capital(1).todayFloatingProfit + capital(2).closeProfit + capital(2).todayFloatingProfit,
      kCent);
  std::vector<CodeTypePosition> securities;
  IUIProxyMgr::getInstance()->getCodeTypePositions(both, false, true, securities);
  ASSERT_EQ(securities.size(), 2U);
  EXPECT_EQ(utf8(securities[0].codeType) + utf8(securities[1].codeType), "股票基金");
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
}

TEST_F(LedgerTest, MarginRatesFallBackToTheDefault) {
  MarginRateResult rate;
  MarginRateQuery query{capital(1).id, {}};
  query.code.hashCode = kRebar;
  EXPECT_EQ(trade()->queryMarginRate(query, rate).code, 0);
  EXPECT_EQ(rate.a, 0.13);
  query.code.hashCode = kSugar;
  EXPECT_NE(trade()->queryMarginRate(query, rate).code, 0);
  EXPECT_EQ(IUIProxyMgr::getInstance()->getDefaultMarginRate(query.code), 0.09);
}

}  // namespace
}  // namespace orvane::terminal::testing
