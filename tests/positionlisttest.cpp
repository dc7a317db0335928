#include <string>
#include <vector>

#include "tests/support/phone.h"

namespace orvane::test {
namespace {

Position& add(ScriptedHost& host, int32_t index, int64_t hashCode) {
  return host.positions.emplace_back(
      Position{.account = accountId(index), .code = symbol(hashCode, "c"), .reserved4 = ""});
}

TEST(PositionList, WritesEveryMemberInOrder) {
  ScriptedHost host;
  // clang-format off
  host.positions = {{
      .account = accountId(7, "u7", 16), .code = symbol(-5'000'000'000, "rb2405", 3, 1), .reserved4 = "",
      .longYesterdayVolume = 11, .longCloseYesterdayVolume = 2, .longPosition = 30, .longActiveVolume = 4,
      .longFrozenVolume = 5, .shortYesterdayVolume = 21, .shortCloseYesterdayVolume = 6, .shortPosition = 40,
      .shortActiveVolume = 7, .shortFrozenVolume = 50, .currentPrice = 3520.5, .preSettlementPrice = 3510,
      .preClosePrice = 3499.5, .longLever = 1.5, .shortLever = 3.75, .currentVolume = 71, .yesterdayVolume = 32,
      .avgPrice = 3505.25, .floatProfit = -1200.5, .todayProfit = 88.125, .todayProfitRatio = 0.01,
      .todayProfitCateRatio = -0.02, .todayProfitAccRatio = 0.03, .longTodayVolume = 19, .longMarketValue = 100.5,
      .longAvgPrice = 3501, .longFloatProfit = -12.75, .longMargin = 500.25, .shortTodayVolume = 29,
      .shortMarketValue = 300, .shortAvgPrice = 3530.5, .shortFloatProfit = 44.5, .shortMargin = 0.5}};
  // clang-format on
  host.positions.front().account.aimType = 3;
  host.available = {9, 7};
  host.codeTypes[-5'000'000'000] = {gbk("黑色"), gbk("螺纹钢2405")};
  host.marginRates[-5'000'000'000].c = 0.12;
  host.marginRates[-5'000'000'000].a = 0.1;
  EXPECT_EQ(Phone().data("position.list", "[7]"),
            R"([{"userCode":"u7","index":7,"accountType":1,"codeExch":"rb2405.SHFE","hashCode":-5000000000,)"
            R"("netLever":-2.25,"totalLever":5.25,"longLever":1.5,"shortLever":3.75,"netMarketValue":199.5,)"
            R"("totalMarketValue":400.5,"totalPosition":70,"longPosition":30,"longAvailableQuantity":25,)"
            R"("shortPosition":40,"shortAvailableQuantity":-10,"aimType":"套保","codeType":"黑色",)"
            R"("codeName":"螺纹钢2405","code":"rb2405","exchangeName":"上期所","todayProfitRatio":0.01,)"
            R"("todayProfitCateRatio":-0.02,"todayProfitAccRatio":0.03,"amassProfitCateRatio":-0.02,)"
            R"("amassProfitAccRatio":0.0,"historyCapitalFinalCost":0.0,"currentPrice":3520.5,)"
            R"("preSettlementPrice":3510.0,"preClosePrice":3499.5,"longYesterdayVolume":11,)"
            R"("longCloseYesterdayVolume":2,"shortYesterdayVolume":21,"shortCloseYesterdayVolume":6,)"
            R"("margin":500.75,"todayPorfit":88.125,"floatPorfit":-1200.5,"avgPrice":3505.25,"currentVolume":71,)"
            R"("yesterdayVolume":32,"longAvgPrice":3501.0,"longMarketValue":100.5,"longFloatPorfit":-12.75,)"
            R"("longTodayVolume":19.0,"shortAvgPrice":3530.5,"shortMarketValue":300.0,"shortFloatPorfit":44.5,)"
            R"("shortTodayVolume":29.0,"marginRate":0.12,"accountStatus":1}])");
  EXPECT_THAT(host.calls(), ElementsAre("checkUser(position.list)", "getAllPosition([7],3)",
                                        "getCodeTypeName(-5000000000)", "queryMarginRate(7,-5000000000)"));
  EXPECT_EQ(host.marginQueries.front().account.userCode, "u7");
  EXPECT_THAT(host.marginQueries.front().code, FieldsAre(-5'000'000'000, 1, 3, "rb2405"));
}

TEST(PositionList, KeepsWhatIsHeldOrWorkedAndAsksAfreshForEachRow) {
  ScriptedHost host;
  Position& past = add(host, 2, 5);
  past.longYesterdayVolume = past.shortYesterdayVolume = past.longTodayVolume = past.shortTodayVolume = 5;
  add(host, 2, 6).longPosition = 1;
  add(host, 1, 6).longActiveVolume = 1;
  add(host, 2, 7).shortPosition = -1;
  add(host, 2, 8).shortActiveVolume = 2;
  add(host, 9, 9).longPosition = 1;
  EXPECT_THAT(Phone().data("position.list", "[1,2,2]"),
              testing::ContainsRegex(R"("index":2,.*"hashCode":6,.*"totalPosition":1,.*"index":1,.*"hashCode":6,.*)"
                                     R"("totalPosition":0,.*"hashCode":7,.*"totalPosition":-1,.*"hashCode":8,.*)"
                                     R"("totalPosition":0,)"));
  EXPECT_THAT(host.calls(), ElementsAre("checkUser(position.list)", "getAllPosition([1,2,2],3)", "getCodeTypeName(6)",
                                        "queryMarginRate(2,6)", "getDefaultMarginRate(6)", "getCodeTypeName(6)",
                                        "queryMarginRate(1,6)", "getDefaultMarginRate(6)", "getCodeTypeName(7)",
                                        "queryMarginRate(2,7)", "getDefaultMarginRate(7)", "getCodeTypeName(8)",
                                        "queryMarginRate(2,8)", "getDefaultMarginRate(8)"));
}

TEST(PositionList, ClosableVolumeDependsOnTheClassOfTheInstrument) {
  ScriptedHost host;
  // clang-format off
  host.positions = {{.account = accountId(1), .code = symbol(5, "c"), .reserved4 = "",
                     .longYesterdayVolume = 10, .longCloseYesterdayVolume = 3, .longPosition = 25,
                     .longFrozenVolume = 2, .shortYesterdayVolume = 4, .shortCloseYesterdayVolume = 6,
                     .shortPosition = 9, .shortFrozenVolume = 1}};
  // clang-format on
  const std::string sinceYesterday = R"("longAvailableQuantity":5,"shortPosition":9,"shortAvailableQuantity":-3,)";
  const std::string all = R"("longAvailableQuantity":23,"shortPosition":9,"shortAvailableQuantity":8,)";
  for (const int32_t codeClass : {-1, 0, 1, 2}) {
    host.positions.front().code.codeClass = codeClass;
    EXPECT_THAT(Phone().data("position.list", "[]"), HasSubstr(codeClass == 0 ? sinceYesterday : all));
  }
}

TEST(PositionList, ConvertsNamesThatTheHostOrTheTableLacks) {
  ScriptedHost host;
  Position& position = add(host, 1, 5);
  position.longPosition = 1;
  position.account.aimType = 9;
  Phone().data("position.list", "[]");
  EXPECT_THAT(host.converted, ElementsAre("", ""));  // exchange and aim; the host has no code type to convert
}

TEST(PositionList, SumsOfVolumesWrapAround) {
  ScriptedHost host;
  Position& position = add(host, 1, 5);
  position.longPosition = INT64_MAX;
  position.shortPosition = 1;
  position.longFrozenVolume = -1;
  position.shortYesterdayVolume = INT64_MIN;
  position.shortCloseYesterdayVolume = 1;
  EXPECT_THAT(Phone().data("position.list", "[]"),
              AllOf(HasSubstr(R"("totalPosition":-9223372036854775808,)"),
                    HasSubstr(R"("longAvailableQuantity":-9223372036854775808,)")));
  position.code.codeClass = 0;
  EXPECT_THAT(Phone().data("position.list", "[]"), HasSubstr(R"("shortAvailableQuantity":9223372036854775807,)"));
}

TEST(PositionList, NamesTheAim) {
  ScriptedHost host;
  Position& position = add(host, 1, 5);
  position.longPosition = 1;
  const std::vector<std::pair<int32_t, std::string>> rows = {{0, "未知"}, {1, "投机"}, {2, "套利"}, {4, "市商"},
                                                             {5, ""},     {6, ""},     {-1, ""},    {INT32_MIN, ""}};
  for (const auto& [aim, name] : rows) {
    position.account.aimType = aim;
    EXPECT_THAT(Phone().data("position.list", "[]"), HasSubstr(R"("aimType":")" + name + R"(","codeType")"));
  }
}

TEST(PositionList, RowStandsWhereTheHostKnowsNothingMore) {
  ScriptedHost host;
  Position& position = add(host, 1, 5);
  position.longPosition = 1;
  position.code.codeClass = position.account.marketType = 4;
  host.available = {2};
  host.defaultMarginRate = 0.375;
  EXPECT_THAT(Phone().data("position.list", "[]"),
              AllOf(HasSubstr(R"([{"userCode":"","index":1,"accountType":"codeExch","c.":"hashCode",5:)"),
                    HasSubstr(R"("codeType","":"codeName","":"code","c":"exchangeName","":)"),
                    HasSubstr(R"("marginRate",0.375:"accountStatus",0}])")));
}

}  // namespace
}  // namespace orvane::test
