#include <cmath>

#include <fmt/format.h>

#include "tests/trading/testdesk.h"

namespace orvane::terminal::testing {
namespace {

// Every order is placed on the sample data, changed by some SQL.
class RefusalsTest : public DeskTest {
 protected:
  static constexpr int64_t kCall = 5100001;
  static constexpr int64_t kPut = 5100002;
  static constexpr int64_t kFund = 5200001;

  static std::string place(const Terms& terms) { return utf8(insertOrder(terms).message); }
};

TEST_F(RefusalsTest, EachCheckTakesTheLastAndRefusesTheNext) {
  struct Case {
    Terms inside, outside;
    std::string text;
    std::string insideSql = "", outsideSql = "";
  };
  const Terms option{3, kCall, 1, 1, 0.08, 1};
  const Terms rebar{1, kRebar, 1, 1, 3300, 1};
  const Terms bought{4, kMerchants, 3, 1, 42, 1000};
  const Terms sold{4, kMerchants, 4, 1, 42, 1000};  // at the bid, 42.87
  const std::string online = "UPDATE account SET online = 1";
  const std::string odd = "UPDATE holding SET yesterday_volume = 250 WHERE account = 2 AND hash_code = 5000001";
  const std::string todayWaits = "UPDATE orders SET close_yesterday = 0, close_today = 2 WHERE id = 1007";
  const std::string allSold = "UPDATE holding SET yesterday_closed = 10 WHERE hash_code = 1000001 AND direction = 1";
  const std::string poor = "UPDATE account SET pre_balance = 808969.0735 WHERE idx = 1";
  const std::string repaying =
      "UPDATE orders SET hash_code = 5000003, side = 6, comb_offset = 4, price = 60, volume = 1000,"
      " close_yesterday = 1000 WHERE id = 1018; UPDATE credit_contract SET volume = 1000 WHERE id = 1";
  const auto limit = [](const char* column, double value) {
    return fmt::format("UPDATE credit_terms SET {} = {}", column, value);
  };
  const Case cases[] = {
      {rebar, {5, kRebar, 1, 1, 3300, 1}, "没有账户 5"},
      {rebar, {1, 1000004, 1, 1, 3300, 1}, "没有合约 1000004"},
      {{1, kRebar, 1, 1, 3300, 1, 1, {1, std::string(64, 'x'), ""}},
       {1, kRebar, 1, 1, 3300, 1, 1, {1, std::string(65, 'x'), ""}},
       "委托来源 65 字节, 超过上限 64"},
      {option, option, "账户 80080003 未登录, 不能委托", online},
      {rebar, rebar, "账户 80010001 没有普通委托权限", "", "UPDATE account SET ordinary_orders = 0 WHERE idx = 1"},
      {rebar, {1, kFund, 1, 1, 4.5, 100}, "账户 80010001 不能交易 510300.SSE (沪深300ETF)"},
      {option, {3, kRebar, 1, 1, 3300, 1}, "账户 80080003 不能交易 rb2701.SHFE (螺纹钢2701)", online, online},
      {{2, kFund, 1, 1, 4.5, 100}, {2, kCall, 1, 1, 0.08, 1}, "账户 A60012345 不能交易 10008001.SSE (50ETF购12月2900)"},
      {{4, kFund, 1, 1, 4.5, 100}, {4, kRebar, 1, 1, 3300, 1}, "账户 E0450016 不能交易 rb2701.SHFE (螺纹钢2701)"},
      {rebar, {1, kRebar, 0, 1, 3300, 1}, "账户 80010001 不支持买卖方向 0"},
      {{1, kRebar, 2, 1, 3400, 1}, {1, kRebar, 3, 1, 3300, 1}, "账户 80010001 不支持买卖方向 3"},
      {{4, kPingAn, 6, 4, 59, 100}, {4, kPingAn, 7, 4, 59, 100}, "账户 E0450016 不支持买卖方向 7"},
      {rebar, {1, kRebar, 1, 0, 3300, 1}, "开平标志 0 无效"},
      {{1, kRebar, 1, 7, 3300, 1}, {1, kRebar, 1, 8, 3300, 1}, "开平标志 8 无效"},
      {{2, kFund, 1, 0, 4.5, 100}, {2, kFund, 1, -1, 4.5, 100}, "开平标志 -1 无效"},
      {rebar, {1, kRebar, 1, 1, 3300, 1, 0}, "价格类型 0 无效, 1 为限价, 2 为市价"},
      {{1, kRebar, 1, 1, 0, 1, 2}, {1, kRebar, 1, 1, 3300, 1, 3}, "价格类型 3 无效, 1 为限价, 2 为市价"},
      {{1, kRebar, 1, 1, 3077, 1}, {1, kRebar, 1, 1, 3076, 1}, "委托价格 3076 超出涨跌停范围 3077 至 3539"},
      {{1, kRebar, 2, 1, 3539, 1}, {1, kRebar, 2, 1, 3540, 1}, "委托价格 3540 超出涨跌停范围 3077 至 3539"},
      {rebar, {1, kRebar, 1, 1, std::nan(""), 1}, "委托价格 0 超出涨跌停范围 3077 至 3539"},
      {rebar, {1, kRebar, 1, 1, 3300.01, 1}, "委托价格 3300.01 不是最小变动价位 1 的整数倍"},
      {rebar, {1, kRebar, 1, 1, 3300, 0}, "委托数量 0 必须大于 0"},
      {{1, kTreasury, 1, 1, 108, 50},
       {1, kTreasury, 1, 1, 108, 51},
       "委托数量 51 超过单笔上限 50",
       "UPDATE account SET pre_balance = 1e8"},
      {{2, kFund, 1, 3, 4.5, 100}, {2, kFund, 1, 4, 4.5, 100}, "买卖方向 1 与开平标志 4 不符"},
      {{2, kFund, 2, 0, 4.7, 100}, {2, kFund, 2, 2, 4.7, 100}, "买卖方向 2 与开平标志 2 不符"},
      {{4, kWuliangye, 5, 7, 120, 100}, {4, kWuliangye, 5, 1, 120, 100}, "买卖方向 5 与开平标志 1 不符"},
      {{4, kWuliangye, 3, 1, 120, 100}, {4, kWuliangye, 4, 6, 130, 100}, "买卖方向 4 与开平标志 6 不符"},
      {{2, kMaotai, 2, 4, 1480, 250}, {2, kMaotai, 2, 4, 1480, 150}, "委托数量 150 不是 100 的整数倍", odd, odd},
      {{2, kPingAn, 1, 1, 57, 100}, {2, kPingAn, 1, 1, 57, 50}, "委托数量 50 不是 100 的整数倍"},
      {{1, kRebar, 2, 4, 3400, 10}, {1, kRebar, 2, 4, 3400, 11}, "可平数量不足: 委托 11, 可平 10"},  // 2 wait
      {{1, kRebar, 2, 7, 3400, 10}, {1, kRebar, 2, 7, 3400, 11}, "可平数量不足: 委托 11, 可平 10"},
      {{1, kRebar, 2, 5, 3400, 4}, {1, kRebar, 2, 5, 3400, 5}, "可平数量不足: 委托 5, 可平 4"},
      {{1, kRebar, 2, 6, 3400, 6}, {1, kRebar, 2, 6, 3400, 7}, "可平数量不足: 委托 7, 可平 6"},
      {{1, kRebar, 2, 5, 3400, 2}, {1, kRebar, 2, 5, 3400, 3}, "可平数量不足: 委托 3, 可平 2", todayWaits, todayWaits},
      {rebar, {1, kRebar, 2, 6, 3400, 1}, "可平数量不足: 委托 1, 可平 0", "", allSold},  // and 2 wait
      {{1, kRebar, 2, 3, 3400, 10}, {1, kRebar, 2, 3, 3400, 11}, "可用资金不足: 需要 48657.40, 可用 1.00", poor, poor},
      {{1, kRebar, 1, 4, 3300, 3}, {1, kRebar, 1, 4, 3300, 4}, "可平数量不足: 委托 4, 可平 3"},
      {{2, kFund, 2, 4, 4.7, 30000}, {2, kFund, 2, 4, 4.7, 30100}, "可平数量不足: 委托 30100, 可平 30000"},
      {{2, kMaotai, 2, 4, 1480, 200}, {2, kCatl, 2, 4, 390, 100}, "可平数量不足: 委托 100, 可平 0"},  // bought today
      {{4, kMerchants, 2, 4, 43, 8000}, {4, kPingAn, 2, 4, 59, 100}, "可平数量不足: 委托 100, 可平 0"},
      {{4, kPingAn, 2, 4, 59, 3000},
       {4, kPingAn, 2, 4, 59, 3100},
       "可平数量不足: 委托 3100, 可平 3000",  // the other 1000 are being sold already
       repaying,
       repaying},
      {{4, kPingAn, 6, 4, 59, 4000}, {4, kPingAn, 6, 4, 59, 4100}, "可平数量不足: 委托 4100, 可平 4000"},
      {{4, kWuliangye, 5, 4, 120, 1000}, {4, kWuliangye, 5, 4, 120, 1100}, "可平数量不足: 委托 1100, 可平 1000"},
      // A working order of the sample borrows 144000 of the limit.
      {bought, bought, "融资额度不足: 需要 42000.00, 可用 41999.99", limit("long_limit", 304800 + 144000 + 42000),
       limit("long_limit", 304800 + 144000 + 41999.99)},
      {sold, sold, "融券额度不足: 需要 42870.00, 可用 42869.99", limit("short_limit", 128300 + 42870),
       limit("short_limit", 128300 + 42869.99)},
  };
  for (const Case& it : cases) {
    SCOPED_TRACE(it.text);
    begin(it.insideSql);
    EXPECT_EQ(place(it.inside), "");
    begin(it.outsideSql);
    EXPECT_EQ(place(it.outside), it.text);
  }
}

TEST_F(RefusalsTest, AWorkingOrderClosesTheSamePartAfterARestart) {
  EXPECT_EQ(place({1, kRebar, 2, 5, 3400, 3}), "");
  reopen();
  EXPECT_EQ(place({1, kRebar, 2, 5, 3400, 2}), "可平数量不足: 委托 2, 可平 1");
  EXPECT_EQ(place({1, kRebar, 2, 6, 3400, 6}), "");
}

// What working orders that buy securities back hold is taken from the proceeds of short sales, until they are gone.
TEST_F(RefusalsTest, BuyingBackHoldsTheProceedsFirst) {
  begin(
      "UPDATE instrument SET upper_limit = 200 WHERE hash_code = 6000003; UPDATE quote SET last = 140 WHERE hash_code "
      "= 6000003");
  const double before = capital(4).available;
  EXPECT_EQ(place({4, kWuliangye, 5, 4, 139, 1000}), "");
  EXPECT_NEAR(capital(4).available, before - (139'000 * 1.0003 - 128'300), 0.005);
}

TEST_F(RefusalsTest, MoneyIsEnoughToTheCent) {
  enum class From { Available, CashForReturns, Margin };
  struct Case {
    Terms terms;
    double needed;
    From from = From::Available;
  };
  const Case cases[] = {
      {{1, kRebar, 1, 1, 3300, 10}, 330'000 * (0.13 + 0.0001)},
      {{1, kRebar, 2, 1, 3077, 2}, 66'480 * (0.13 + 0.0001)},  // at the bid, 3324
      {{1, kRebar, 2, 1, 3400, 2}, 68'000 * (0.13 + 0.0001)},
      {{1, kRebar, 1, 1, 0, 1, 2}, 33'260 * (0.13 + 0.0001)},  // at the ask
      {{1, kSugar, 1, 2, 5400, 1}, 54'000 * 0.09 + 1.5},       // the default rate
      {{3, kCall, 1, 1, 0.08, 2}, 1'600 + 3.2},
      {{3, kPut, 2, 1, 0.07, 3}, 3 * (3'800 + 1.6)},
      {{2, kMaotai, 1, 1, 1475, 100}, 147'500 * 1.00025},
      {{2, kPingAn, 1, 1, 57, 100}, 5'700 + 5},
      {{4, kMerchants, 1, 1, 42, 1000}, 42'000 * 1.0003},
      {{4, kWuliangye, 5, 4, 120, 1000}, 120'000 * 1.0003, From::CashForReturns},
      {{4, kMerchants, 3, 1, 42, 1000}, 42'000 * 0.8, From::Margin},
      {{4, kMerchants, 4, 1, 42, 1000}, 42'870, From::Margin},  // at the bid
  };
  const std::string online = "UPDATE account SET online = 1;";
  for (const Case& it : cases) {
    begin(online);
    const double there = it.from == From::Available ? capital(it.terms.account).available
                         : it.from == From::Margin  ? credit().marginAvl
                                                    : credit().cashAssets - capital(4).frozenMargin;
    for (const double missing : {0.0, 0.01}) {
      begin(online + fmt::format("UPDATE account SET pre_balance = pre_balance + {} WHERE idx = {}",
                                 it.needed - missing - there, it.terms.account));
      const std::string text =
          fmt::format("{}不足: 需要 {:.2f}, 可用 {:.2f}", it.from == From::Margin ? "保证金可用余额" : "可用资金",
                      it.needed, it.needed - missing);
      EXPECT_EQ(place(it.terms), missing > 0 ? text : "") << text;
    }
  }
}

}  // namespace
}  // namespace orvane::terminal::testing
