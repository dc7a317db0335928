#include <cmath>
#include <string>
#include <tuple>
#include <vector>

#include "tests/fullhost.h"
#include "tests/support/phone.h"

namespace orvane::test {
namespace {

// The full host after a change, and a text that the list then holds.
template <typename Change>
void expectText(const std::string& topic, const std::string& text, const Change& change) {
  FullHost host;
  change(host);
  const std::string body = topic == "marginrate.list" ? R"([{"index":7,"hashCodes":[-5000000000]}])" : "[]";
  EXPECT_THAT(Phone::data(topic, body), HasSubstr(text));
}

TEST(Lists, UnknownMarketTypePutsTheRowOutOfStep) {
  for (const auto& [marketType, kind] : std::vector<std::pair<int32_t, std::string>>{
           {1, "0,"}, {8, "0,"}, {2, "1,"}, {16, "1,"}, {0, "\""}, {4, "\""}, {-1, "\""}}) {
    for (const std::string topic : {"capital.list", "position.list", "order.list", "trader.list"}) {
      const auto change = [&type = marketType](FullHost& host) {
        host.accounts[0].id.marketType = host.positions.front().account.marketType = type;
        host.orders.front().account.marketType = host.fills.front().account.marketType = type;
      };
      expectText(topic, R"("index":7,"accountType":)" + kind, change);
      expectText(topic, kind == "\"" ? R"("accountStatus",1}])" : R"("accountStatus":1}])", change);
    }
  }
}

TEST(Lists, NumbersWithoutARowAndNamesThatTheHostLacks) {
  const auto change = [](FullHost& host) {
    host.codeNames.clear();
    host.codeTypes.clear();
    host.privileges.clear();
    host.marginRates.clear();
    host.defaultMarginRate = 0.375;
    host.available = {2};
    Order& order = host.orders.front();
    std::tie(order.side, order.combOffset, order.hedge) = std::tuple(-1, 99, INT32_MAX);
    order.orderSource.sourceFlags = 0x100000;
    host.positions.front().code.exchangeId = 4;
    host.positions.front().account.aimType = 9;
  };
  expectText("order.list", R"("codeName":"","side":-1,"combOffset":99,"hedge":2147483647,)", change);
  expectText("order.list", R"("source":"手机","fillVolume":4,)", change);
  expectText("order.list", R"("accountStatus":1})", change);
  expectText("capital.list", R"("accountStatus":0}])", change);
  expectText("account.list", R"("triggerOrderPrivilege":false,"ordinaryOrderPrivilege":false,"accountStatus":0})",
             change);
  expectText("position.list", R"("codeExch":"rb\"2405.",)", change);
  expectText("position.list", R"("aimType":"","codeType":"","codeName":"","code":"rb\"2405","exchangeName":"",)",
             change);
  expectText("position.list", R"("marginRate":0.375,"accountStatus":0}])", change);
  FullHost host;
  change(host);
  Phone::data("position.list", "[]");
  EXPECT_THAT(host.converted, ElementsAre("", ""));  // exchange and aim go through the converter all the same
}

TEST(CapitalList, ComputesLastAmountAndProfitRatio) {
  const auto expect = [](int32_t marketType, double base, double deposit, double withdraw, const std::string& text) {
    expectText("capital.list", text, [&](FullHost& host) {
      TradingAccount& one = host.accounts.front();
      one.id.marketType = marketType;
      std::tie(one.baseAmount, one.deposit, one.preCloseProfit, one.withdraw) = std::tuple(base, deposit, 30, withdraw);
    });
  };
  expect(1, 100, 50, 20, R"("lastAmount":160.0,"profitRatio":0.2,)");
  expect(8, 100, 50, 20, R"("lastAmount":160.0,"profitRatio":0.2,)");
  expect(2, 100, 50, 20, R"("lastAmount":10.0,"profitRatio":0.2,)");
  expect(16, 100, 50, 20, R"("lastAmount":10.0,"profitRatio":0.2,)");
  expect(4, 100, 50, 20, R"("lastAmount",160.0:"profitRatio",0.2:)");
  expect(1, 0, 0, 20, R"("lastAmount":10.0,"profitRatio":0.0,)");
  expect(1, 0.000001, 0, 0, R"("profitRatio":0.0,)");
  expect(1, -100, 50, 0, R"("lastAmount":-20.0,"profitRatio":0.0,)");
  expect(1, std::nan(""), 50, 0, R"("lastAmount":,"profitRatio":0.0,)");
}

TEST(PositionList, KeepsRowsWithAPositionOrAnActiveVolume) {
  using P = Position;
  for (const auto member : {&P::longPosition, &P::longActiveVolume, &P::shortPosition, &P::shortActiveVolume}) {
    ScriptedHost host;
    Position& past = host.positions.emplace_back();
    past.longYesterdayVolume = past.shortYesterdayVolume = past.longTodayVolume = past.shortTodayVolume = 5;
    EXPECT_EQ(Phone::data("position.list", "[]"), "[]");
    past.*member = -1;
    EXPECT_NE(Phone::data("position.list", "[]"), "[]");
  }
}

TEST(PositionList, AvailableVolumeDependsOnTheClassAndSumsWrapAround) {
  const auto expect = [](int32_t codeClass, int64_t yesterday, int64_t closed, int64_t held, int64_t frozen,
                         const std::string& available) {
    const std::string shown = std::to_string(held);
    const auto total = static_cast<int64_t>(static_cast<uint64_t>(held) * 2);
    expectText("position.list",
               R"("totalPosition":)" + std::to_string(total) + R"(,"longPosition":)" + shown +
                   R"(,"longAvailableQuantity":)" + available + R"(,"shortPosition":)" + shown +
                   R"(,"shortAvailableQuantity":)" + available + ",",
               [&](FullHost& host) {
                 Position& p = host.positions.front();
                 p.code.codeClass = codeClass;
                 p.longYesterdayVolume = p.shortYesterdayVolume = yesterday;
                 p.longCloseYesterdayVolume = p.shortCloseYesterdayVolume = closed;
                 p.longPosition = p.shortPosition = held;
                 p.longFrozenVolume = p.shortFrozenVolume = frozen;
               });
  };
  expect(0, 10, 3, 25, 2, "5");
  for (const int32_t codeClass : {-1, 1, 2}) expect(codeClass, 10, 3, 25, 2, "23");
  expect(0, 4, 6, 9, 1, "-3");
  expect(1, 4, 6, 9, 10, "-1");
  expect(0, INT64_MIN, 1, 1, 0, "9223372036854775807");
  expect(1, 0, 0, INT64_MAX, -1, "-9223372036854775808");
}

TEST(Lists, NameTheAimAndTheSyncRuleAndWriteFlagsAsBooleans) {
  for (const auto& [number, aim, rule] :
       std::vector<std::tuple<int32_t, std::string, std::string>>{{0, "未知", "多空单独"},
                                                                  {1, "投机", "开平互转"},
                                                                  {2, "套利", "净头寸"},
                                                                  {4, "市商", "多空单独"},
                                                                  {5, "", "多空单独"},
                                                                  {6, "", "多空单独"},
                                                                  {-1, "", "多空单独"}}) {
    const auto change = [&number = number](FullHost& host) {
      host.positions.front().account.aimType = host.monitorRecords.front().syncRule = number;
      PositionMonitorRecord& record = host.monitorRecords.front();
      record.isMatchTheory = record.isMatchNetPos = 0;
      record.isMatchLongShort = record.isMatchPosDif = 2;
    };
    expectText("position.list", R"("aimType":")" + aim + R"(","codeType")", change);
    expectText("monitor.list", R"("syncRule":)" + std::to_string(number) + R"(,"syncRuleDetail":")" + rule + "\"",
               change);
    expectText("monitor.list",
               R"("isMatchTheory":false,"isMatchLongShort":true,"isMatchNetPos":false,"isMatchPosDif":true,)", change);
  }
}

TEST(MarginRate, PicksOneOfFourRatios) {
  const auto expect = [](double a, double b, double c, double d, const std::string& rate) {
    expectText("marginrate.list", R"("marginRate":)" + rate + "}", [&](FullHost& host) {
      host.marginRates[kHash] = {.account = {}, .code = {}, .a = a, .b = b, .c = c, .d = d};
    });
  };
  const double nan = std::nan("");
  // clang-format off
  expect(0.1, 8, 0.12, 9, "0.12"); expect(0.1, 8, 0.05, 9, "0.1"); expect(0.1, 8, nan, 9, "0.1");
  expect(1e-300, 8, 0, 9, "1e-300"); expect(0, 100, 7, 200, "200.0"); expect(0, 8, 7, 6, "8.0");
  expect(-1, 8, 7, 9, "9.0"); expect(nan, 8, 7, 9, "9.0"); expect(0, 8, 7, nan, "8.0"); expect(0, nan, 7, 6, "");
  expect(0, -2, 7, -3, "-2.0"); expect(0, -0.0, 7, 0.0, "-0.0"); expect(0, 0.0, 7, -0.0, "0.0");
  expect(HUGE_VAL, 8, 7, 9, ""); expect(0, 8, 7, HUGE_VAL, ""); expect(0, 8, HUGE_VAL, 9, "9.0");
  // clang-format on
}

TEST(MonitorPairs, AccountThatIsNamedAgainKeepsItsFirstRecord) {
  ScriptedHost host;
  host.accounts = {account(3, "first")};
  host.symbols = {{20, symbol(20, "b")}, {30, symbol(30, "a")}};
  host.onCall = [&](const std::string& call) {
    if (call == "getCodeByHash(30)") host.accounts = {account(3, "later")};
  };
  Phone::data("monitor.sync.order.list", R"([{"index":3,"hashCode":30},{"index":3,"hashCode":20}])");
  EXPECT_THAT(host.calls(), Contains("getSyncOrders([3!first:[20,30]])"));
}

}  // namespace
}  // namespace orvane::test
