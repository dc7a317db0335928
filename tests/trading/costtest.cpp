#include <algorithm>
#include <chrono>

#include <fmt/format.h>
#include <gmock/gmock.h>

#include "tests/trading/desktest.h"

namespace orvane::terminal::testing {
namespace {

using CostTest = DeskTest;

// Microseconds of the fastest of twenty runs, which noise of the machine hardly touches.
template <typename Work>
double fastest(const Work& work) {
  double best = 1e9;
  for (int run = 0; run < 20; ++run) {
    const auto begin = std::chrono::steady_clock::now();
    work();
    best = std::min(best, std::chrono::duration<double, std::micro>(std::chrono::steady_clock::now() - begin).count());
  }
  return best;
}

// SQL that adds orders to account 1, or filled ones with their fills to account 3.
std::string manyOrders(int count, bool working) {
  const std::string numbers =
      fmt::format("WITH RECURSIVE n(i) AS (SELECT 2000 UNION ALL SELECT i + 1 FROM n WHERE i < {}) ", 1999 + count);
  std::string sql = numbers + fmt::format(
                                  "INSERT INTO orders SELECT i, {}, 1000001, 65536, '', '', 0, 1, 1, 1, 1, 3100,"
                                  " 1, 0, 0, {}, '', 0, 0, 0, day FROM n, trading_day;",
                                  working ? 1 : 3, working ? 1 : 2);
  if (!working) sql += numbers + "INSERT INTO fill SELECT NULL, i, '', 0, 1, 3100, 0 FROM n;";
  return sql + "UPDATE account SET pre_balance = 1e12 WHERE idx = 1;";
}

TEST_F(CostTest, ListsOfOneAccountCostNothingMoreBesideTheOrdersOfOthers) {
  const std::vector<TradingAccountID> stocks{capital(2).id};
  const auto lists = [&] {
    std::list<OrderFill> fills;
    std::list<int32_t> available;
    EXPECT_EQ(TradeUtils::getAllOrder(trade(), stocks).size(), 7U);
    TradeUtils::getAllFill(trade(), std::list<int32_t>{2}, 1, fills, available);
    EXPECT_EQ(fills.size(), 3U);
  };
  const double alone = fastest(lists);
  reopen(manyOrders(100'000, false));
  const double beside = fastest(lists);
  RecordProperty("microseconds", fmt::format("{:.1f} alone, {:.1f} beside 100,000 orders", alone, beside));
  EXPECT_LT(beside, 4 * alone);
}

TEST_F(CostTest, ANewOrderCostsNothingMoreBesideManyWorkingOrders) {
  const auto place = [&] { trade()->insertOrder(item(1, kRebar, Side::Buy, Offset::Open, 3300, 1)); };
  const auto move = [&] {
    MobileMessage reply;
    IUIProxyMgr::getInstance()->requestSync("quote.set", R"({"hashCode":1000001,"price":3326})", reply);
  };
  const double alone = fastest(place);
  const double moveAlone = fastest(move);
  reopen(manyOrders(10'000, true));
  const double beside = fastest(place);
  const double moveBeside = fastest(move);
  RecordProperty("microseconds", fmt::format("order {:.1f} alone, {:.1f} beside 10,000 working; quote {:.1f}, {:.1f}",
                                             alone, beside, moveAlone, moveBeside));
  EXPECT_LT(beside, 4 * alone);
  EXPECT_LT(moveBeside, 4 * moveAlone);
}

}  // namespace
}  // namespace orvane::terminal::testing
