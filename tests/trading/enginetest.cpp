#include <cmath>
#include <csignal>

#include <gmock/gmock.h>

#include "terminal/trading/engine.h"
#include "tests/trading/desktest.h"

namespace orvane::terminal::testing {
namespace {

using EngineTest = DeskTest;

TEST_F(EngineTest, RefusalsNameTheFigureThatFailed) {
  struct Case {
    int32_t account;
    int64_t code;
    Side side;
    Offset offset;
    double price;
    int64_t volume;
    std::string text;
  };
  const Case cases[] = {
      {9, kRebar, Side::Buy, Offset::Open, 3325, 1, "没有账户 9"},
      {1, 42, Side::Buy, Offset::Open, 3325, 1, "没有合约 42"},
      {3, 5100001, Side::Buy, Offset::Open, 0.0886, 1, "账户 80080003 未登录, 不能委托"},
      {1, kMaotai, Side::Buy, Offset::Open, 1475, 100, "账户 80010001 不能交易 600519.SSE (贵州茅台)"},
      {2, kRebar, Side::Buy, Offset::Open, 3325, 1, "账户 A60012345 不能交易 rb2701.SHFE (螺纹钢2701)"},
      {1, kRebar, Side::MarginBuying, Offset::Open, 3325, 1, "账户 80010001 不支持买卖方向 3"},
      {4, kMaotai, Side::ReturnFund, Offset::Open, 1475, 100, "账户 E0450016 不支持买卖方向 7"},
      {1, kRebar, Side::Buy, Offset::Unknown, 3325, 1, "开平标志 0 无效"},
      {2, kMaotai, Side::Buy, Offset::Close, 1475, 100, "买卖方向 1 与开平标志 4 不符"},
      {2, kMaotai, Side::Sell, Offset::Open, 1475, 100, "买卖方向 2 与开平标志 1 不符"},
      {1, kRebar, Side::Buy, Offset::Open, 3325.5, 1, "委托价格 3325.5 不是最小变动价位 1 的整数倍"},
      {1, kRebar, Side::Buy, Offset::Open, 3540, 1, "委托价格 3540 超出涨跌停范围 3077 至 3539"},
      {1, kRebar, Side::Buy, Offset::Open, std::nan(""), 1, "委托价格 0 超出涨跌停范围 3077 至 3539"},
      {1, kRebar, Side::Buy, Offset::Open, 3325, 0, "委托数量 0 必须大于 0"},
      {1, kRebar, Side::Buy, Offset::Open, 3325, INT64_MAX, "委托数量 9223372036854775807 超过单笔上限 500"},
      {2, kMaotai, Side::Buy, Offset::Open, 1475, 150, "委托数量 150 不是 100 的整数倍"},
      {1, kRebar, Side::Sell, Offset::Close, 3325, 11, "可平数量不足: 委托 11, 可平 10"},
      {1, kRebar, Side::Sell, Offset::CloseToday, 3325, 5, "可平数量不足: 委托 5, 可平 4"},
      {1, kRebar, Side::Sell, Offset::CloseYesterday, 3325, 7, "可平数量不足: 委托 7, 可平 6"},
      {2, kCatl, Side::Sell, Offset::Close, 388, 300, "可平数量不足: 委托 300, 可平 0"},
      {4, kPingAn, Side::Sell, Offset::Close, 57, 100, "可平数量不足: 委托 100, 可平 0"},
      {1, kRebar, Side::Sell, Offset::Open, 3077, 500, "可用资金不足: 需要 2162262.00, 可用 "},  // at the bid, 3324
      {2, kMaotai, Side::Buy, Offset::Open, 1475, 1000, "可用资金不足: 需要 1475368.75, 可用 "},
      {4, kMaotai, Side::MarginBuying, Offset::Open, 1475, 500, "保证金可用余额不足: 需要 590000.00, 可用 "},
  };
  const size_t before = orders().size();
  const double available = capital(1).available;
  for (const Case& it : cases) {
    EXPECT_EQ(order(it.account, it.code, it.side, it.offset, it.price, it.volume).substr(0, it.text.size()), it.text);
  }
  const size_t unknown = 2;  // without an account or instrument there is nothing to store
  EXPECT_EQ(orders().size(), before + std::size(cases) - unknown);
  EXPECT_EQ(lastOrder().status, static_cast<int32_t>(OrderStatus::Refused));
  EXPECT_EQ(utf8(lastOrder().note).substr(0, cases[23].text.size()), cases[23].text);
  EXPECT_EQ(lastOrder().orderId, "");
  EXPECT_EQ(capital(1).available, available);
}

TEST_F(EngineTest, AnOrderThatCrossesIsFilledAtTheOppositeQuote) {
  const TradingAccount before = capital(1);
  EXPECT_EQ(order(1, kRebar, Side::Buy, Offset::Open, 3330, 2), "");
  const Order it = lastOrder();
  EXPECT_EQ(it.status, static_cast<int32_t>(OrderStatus::Filled));
  EXPECT_EQ(it.fillAvgPrice, 3326);
  EXPECT_EQ(it.fillAmount, 66520);
  EXPECT_EQ(fills().back().localOrderId, it.localOrderId);
  const TradingAccount after = capital(1);
  EXPECT_NEAR(after.commission - before.commission, 6.652, 1e-9);
  EXPECT_NEAR(after.dynamicAmount, before.dynamicAmount - 6.652 - 2 * 10, kCent) << "bought one tick above the last";
  EXPECT_NEAR(after.currMargin - before.currMargin, 2 * 33250 * 0.13, kCent);
  EXPECT_EQ(positions().at({1, kRebar}).longTodayVolume, 6);
  EXPECT_EQ(order(1, kRebar, Side::Sell, Offset::CloseToday, 0, 1, PriceType::Market), "");
  EXPECT_EQ(lastOrder().fillAvgPrice, 3324);
}

TEST_F(EngineTest, ARestingOrderHoldsFundsUntilItIsFilledOrCancelled) {
  const double available = capital(1).available;
  EXPECT_EQ(order(1, kRebar, Side::Buy, Offset::Open, 3300, 5), "");
  const Order resting = lastOrder();
  EXPECT_EQ(resting.status, static_cast<int32_t>(OrderStatus::Working));
  EXPECT_NEAR(capital(1).available, available - 5 * 33000 * 0.13 - 16.5, kCent);
  EXPECT_EQ(positions().at({1, kRebar}).longActiveVolume, 7);
  EXPECT_EQ(setQuote(kRebar, "3300"), "");
  EXPECT_EQ(lastOrder().status, static_cast<int32_t>(OrderStatus::Working)) << "asked at 3301";
  EXPECT_EQ(setQuote(kRebar, "3290"), "");
  EXPECT_EQ(lastOrder().status, static_cast<int32_t>(OrderStatus::Filled));
  EXPECT_EQ(lastOrder().fillAvgPrice, 3300) << "at its own price";
  EXPECT_EQ(cancel(1, kRebar, resting.localOrderId),
            "委托 " + std::to_string(resting.localOrderId) + " 已全部成交, 不能撤单");

  EXPECT_EQ(cancel(2, kSugar, 1006).find("上没有委托 1006") == std::string::npos, false)
      << "an order of another account";
  const double frozen = capital(1).frozenMargin;
  EXPECT_GT(frozen, 0);
  EXPECT_EQ(cancel(1, kSugar, 1006), "");
  EXPECT_EQ(capital(1).frozenMargin, 0);
  EXPECT_EQ(cancel(1, kSugar, 1006), "委托 1006 已撤单, 不能撤单");
}

TEST_F(EngineTest, ClosingTakesYesterdaysPartFirstAndRealisesItsProfit) {
  const Position before = positions().at({1, kRebar});
  EXPECT_EQ(order(1, kRebar, Side::Sell, Offset::Close, 3320, 7), "");
  const Position after = positions().at({1, kRebar});
  EXPECT_EQ(after.longCloseYesterdayVolume - before.longCloseYesterdayVolume, 6) << "a working order closes two more";
  EXPECT_EQ(after.longTodayVolume, 3);
  EXPECT_NEAR(capital(1).closeProfit, 280 + 6 * (3324 - 3308) * 10 + (3324 - 3318) * 10, kCent);
}

TEST_F(EngineTest, AutoOpenCloseClosesWhatItCanAndOpensOtherwise) {
  EXPECT_EQ(order(1, kRebar, Side::Buy, Offset::AutoOpenClose, 3330, 3), "");
  EXPECT_EQ(positions().at({1, kRebar}).shortPosition, 0);
  EXPECT_EQ(order(1, kRebar, Side::Buy, Offset::AutoOpenClose, 3330, 3), "");
  EXPECT_EQ(positions().at({1, kRebar}).longTodayVolume, 7);
}

TEST_F(EngineTest, StocksArePaidInFullAndSoldTheNextDay) {
  EXPECT_EQ(order(2, kMaotai, Side::Buy, Offset::Open, 1480, 100), "");
  EXPECT_EQ(positions().at({2, kMaotai}).longPosition, 300);
  EXPECT_EQ(order(2, kMaotai, Side::Sell, Offset::Unknown, 1470, 300).substr(0, 6), "可平");
  EXPECT_EQ(order(2, kMaotai, Side::Sell, Offset::Close, 1470, 200), "");
  const double value = 200 * 1475.19;
  EXPECT_NEAR(capital(2).commission, 65.685 + 147521 * 0.00025 + value * 0.00075, kCent) << "with the tax on the sale";
}

TEST_F(EngineTest, CreditSidesBorrowAndPayBack) {
  const CreditInfoRecord before = credit();
  EXPECT_EQ(order(4, kMerchants, Side::MarginBuying, Offset::Open, 43, 1000), "");
  EXPECT_NEAR(credit().longDebtBalance, before.longDebtBalance + 42890, kCent);
  EXPECT_EQ(order(4, kMerchants, Side::Sell, Offset::Close, 43.5, 8000), "") << "own shares may be sold";
  EXPECT_NEAR(credit().cashAssets, before.cashAssets - 42890 * 0.0003, kCent) << "only the commission is paid";

  EXPECT_EQ(order(4, kPingAn, Side::SellingReimbursement, Offset::Close, 57, 1000), "");
  EXPECT_NEAR(credit().longDebtBalance, before.longDebtBalance + 42890 - (57950 - 412.30), kCent) << "interest first";

  EXPECT_EQ(order(4, kMerchants, Side::ShortSelling, Offset::Open, 42, 500), "");
  EXPECT_EQ(positions().at({4, kMerchants}).shortPosition, 500);
  EXPECT_EQ(order(4, kMerchants, Side::SecurityReimbursement, Offset::Close, 43, 500).substr(0, 6), "可平")
      << "borrowed today";
  EXPECT_EQ(order(4, kWuliangye, Side::SecurityReimbursement, Offset::Close, 126, 400), "");
  EXPECT_EQ(positions().at({4, kWuliangye}).shortPosition, 600);
  EXPECT_NEAR(credit().debtInterest, 0.6 * 105.20, kCent);
  EXPECT_NEAR(credit().shortLimitUsed, before.shortLimitUsed + 500 * 42.87 - 0.4 * 128300, kCent);
  EXPECT_NEAR(credit().totalAssets, credit().netAssets + credit().totalDebtBalance, kCent);
  const CreditInfoRecord last = credit();
  reopen();
  EXPECT_NEAR(credit().marginAvl, last.marginAvl, kCent);
}

TEST_F(EngineTest, WorkingCreditOrdersHoldTheirFundsOnce) {
  const double available = capital(4).available;
  EXPECT_EQ(order(4, kWuliangye, Side::SecurityReimbursement, Offset::Close, 120, 1000), "");
  EXPECT_NEAR(capital(4).available, available, kCent) << "covered by the proceeds of the short sale";
  EXPECT_NEAR(credit().freeBalance, available, kCent);
  EXPECT_EQ(order(4, kMerchants, Side::MarginBuying, Offset::Open, 43, 1000), "");
  reopen("UPDATE holding SET yesterday_volume = 9000, today_volume = 0 WHERE account = 4 AND hash_code = 5000002");
  EXPECT_EQ(order(4, kMerchants, Side::SellingReimbursement, Offset::Close, 45, 400), "");
  EXPECT_EQ(order(4, kMerchants, Side::Sell, Offset::Close, 45, 8100), "可平数量不足: 委托 8100, 可平 8000");
  EXPECT_EQ(order(4, kMerchants, Side::Sell, Offset::Close, 45, 8000), "");
}

TEST_F(EngineTest, EachChangeIsPushed) {
  EXPECT_EQ(order(1, kRebar, Side::Buy, Offset::Open, 3330, 2), "");
  const MobileMessage pushed = inbox_.next("order.push");
  EXPECT_EQ(pushed.requestId, kNoRequestId);
  const std::string id = std::to_string(lastOrder().localOrderId);
  const std::string row = utf8(pushed.data);
  EXPECT_EQ(row.substr(0, row.find(",\"srcTimestamp\"")),
            R"([{"userCode":"80010001","index":1,"accountType":0,"codeExch":"rb2701.SHFE","hashCode":1000001,)"
            R"("codeName":"螺纹钢2701","side":1,"combOffset":1,"hedge":0,"price":3330.0,"volume":2)");
  EXPECT_EQ(row.substr(row.find("\"priceType\"")),
            R"("priceType":1,"orderId":"SHFE0000)" + id + R"(","localOrderId":")" + id +
                R"(","status":2,"note":"","source":"","fillVolume":2,"fillAvgPrice":3326.0,"fillAmount":66520.0,)"
                R"("accountStatus":1}])");
  const std::string fill = utf8(inbox_.next("trade.push").data);
  EXPECT_EQ(fill.substr(fill.find("\"fillId\"")),
            R"("fillId":"SHFE00000009","localOrderId":")" + id + R"(","source":"","accountStatus":1}])");
  EXPECT_EQ(cancel(1, kSugar, 1006), "");
  EXPECT_THAT(utf8(inbox_.next("order.push").data), ::testing::HasSubstr(R"("status":3,"note":"用户撤单")"));
}

TEST_F(EngineTest, EverythingIsThereAfterARestart) {
  EXPECT_EQ(order(1, kRebar, Side::Buy, Offset::Open, 3330, 2), "");
  EXPECT_EQ(order(1, kRebar, Side::Buy, Offset::Open, 3300, 1), "");
  EXPECT_EQ(setQuote(kMaotai, "1480.5"), "");
  const size_t count = orders().size();
  const TradingAccount before = capital(1);
  reopen();
  EXPECT_EQ(orders().size(), count);
  EXPECT_EQ(lastOrder().status, static_cast<int32_t>(OrderStatus::Working));
  EXPECT_EQ(fills().size(), 9U);
  EXPECT_NEAR(capital(1).dynamicAmount, before.dynamicAmount, 1e-6);
  EXPECT_NEAR(capital(1).available, before.available, 1e-6);
  EXPECT_EQ(positions().at({2, kMaotai}).currentPrice, 1480.5);
}

TEST_F(EngineTest, AcknowledgedOrdersSurviveAKill) {
  const size_t before = orders().size();
  host_.reset();
  const auto placeAndDie = [this] {
    open();
    for (int i = 0; i < 20; ++i) {
      if (!order(1, kRebar, Side::Buy, Offset::Open, i % 2 == 0 ? 3330 : 3300, 1).empty()) return;
    }
    raise(SIGKILL);
  };
  EXPECT_EXIT(placeAndDie(), ::testing::KilledBySignal(SIGKILL), "");
  open();
  EXPECT_EQ(orders().size(), before + 20);
  EXPECT_EQ(fills().size(), 18U);
  EXPECT_EQ(positions().at({1, kRebar}).longTodayVolume, 14);
}

TEST_F(EngineTest, APriceThatFillsAnOrderOnEntryIsStoredWithIt) {
  host_.reset();
  {
    Desk desk(dir_, systemClock());
    Engine engine(desk);
    engine.movePrices({{kRebar, 3400}, {kMaotai, 1500}}, false);
    EXPECT_EQ(engine.insertOrder(item(1, kRebar, Side::Buy, Offset::Open, 3410, 1)).code, 0);
  }
  open();
  EXPECT_EQ(positions().at({1, kRebar}).currentPrice, 3400);
  EXPECT_EQ(positions().at({2, kMaotai}).currentPrice, 1475.20) << "stored by the next regular save";
}

TEST_F(EngineTest, ANewDayTurnsTodayIntoYesterday) {
  EXPECT_EQ(order(1, kRebar, Side::Buy, Offset::Open, 3330, 2), "");
  std::map<int32_t, TradingAccount> before;
  for (int32_t index : {1, 2, 3, 4}) before[index] = capital(index);
  const double interest = (227600 + 77200 + 128300) * 0.068 * 3 / 360;
  reopen("UPDATE trading_day SET day = day - 3; UPDATE orders SET day = day - 3");
  EXPECT_TRUE(orders().empty());
  EXPECT_TRUE(fills().empty());
  for (int32_t index : {1, 2, 3, 4}) {
    SCOPED_TRACE(index);
    const TradingAccount it = capital(index);
    EXPECT_NEAR(it.dynamicAmount, before[index].dynamicAmount - (index == 4 ? interest : 0), kCent);
    EXPECT_NEAR(it.preBalance, it.dynamicAmount, kCent);
    EXPECT_EQ(it.commission + it.frozenMargin + it.deposit, 0);
    EXPECT_NEAR(it.preCloseProfit, 0, kCent);
  }
  EXPECT_NEAR(credit().debtInterest, 517.5 + interest, kCent);
  const Position rebar = positions().at({1, kRebar});
  EXPECT_EQ(rebar.longYesterdayVolume, 14);
  EXPECT_EQ(rebar.preSettlementPrice, 3325);
  EXPECT_NEAR(rebar.longAvgPrice, (8 * 3285.0 + 4 * 3318 + 2 * 3326) / 14, 1e-9);
  EXPECT_EQ(order(2, kCatl, Side::Sell, Offset::Close, 388, 300), "") << "bought the day before";
  EXPECT_EQ(lastOrder().localOrderId, 1020);
  EXPECT_EQ(fills().back().fillId, "SZSE00000010");
}

TEST_F(EngineTest, AChangeThatCannotBeStoredIsUndone) {
  reopen("CREATE TRIGGER full BEFORE INSERT ON fill BEGIN SELECT RAISE(ABORT, 'disk full'); END");
  const double equity = capital(1).dynamicAmount;
  const size_t count = orders().size();
  EXPECT_EQ(order(1, kRebar, Side::Buy, Offset::Open, 3330, 2),
            "数据库 " + (dir_ / "terminal.db").string() +
                " 无法写入 (disk full), 未作任何更改: 请移走该文件, 或用 --data 指定其他目录");
  EXPECT_EQ(orders().size(), count);
  EXPECT_EQ(fills().size(), 8U);
  EXPECT_EQ(capital(1).dynamicAmount, equity);
  EXPECT_EQ(order(1, kRebar, Side::Buy, Offset::Open, 3300, 2), "") << "a resting order writes no fill";
  EXPECT_THAT(setQuote(kSugar, "5450"), ::testing::HasSubstr("disk full"));
  EXPECT_EQ(positions().at({1, kSugar}).currentPrice, 5490) << "the bid at 5460 could not be filled";
}

}  // namespace
}  // namespace orvane::terminal::testing
