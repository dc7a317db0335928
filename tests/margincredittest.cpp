#include <array>
#include <cmath>
#include <string>
#include <vector>

#include "tests/support/phone.h"

namespace orvane::test {
namespace {

MarginRateResult ratios(double a, double b, double c, double d) {
  return {.account = {}, .code = {}, .a = a, .b = b, .c = c, .d = d};
}

TEST(MarginRate, AnswersPairByPair) {
  ScriptedHost host;
  host.accounts = {account(3, "u3"), account(1)};
  host.symbols = {{-5, symbol(-5, "a", 2, 1)}, {6, symbol(6, "b")}, {7, symbol(7, "stock", 1, 0)}};
  host.marginRates[-5] = ratios(0.1, 0, 0.125, 0);
  host.marginRates[7] = ratios(1, 1, 1, 1);
  host.defaultMarginRate = 0.5;
  host.userRefusal = {1, "this topic does not ask"};
  const std::string body =
      R"([{"index":3,"hashCodes":[6,-5,7,8,-5]},{"index":9,"hashCodes":[6]},{"index":1,"hashCodes":[]},)"
      R"({"index":3,"hashCodes":[8]}])";
  EXPECT_EQ(Phone().data("marginrate.list", body),
            R"([{"index":3,"accountStatus":1,"rate":[{"hashCode":6,"marginRate":0.5},)"
            R"({"hashCode":-5,"marginRate":0.125},{"hashCode":-5,"marginRate":0.125}]},)"
            R"({"index":1,"accountStatus":1,"rate":[]},{"index":3,"accountStatus":1,"rate":[]}])");
  EXPECT_THAT(
      host.calls(),
      ElementsAre("getAllTradingAccount([3],1)", "getCodeByHash(6)", "queryMarginRate(3,6)", "getDefaultMarginRate(6)",
                  "getCodeByHash(-5)", "queryMarginRate(3,-5)", "getCodeByHash(7)", "getCodeByHash(8)",
                  "getCodeByHash(-5)", "queryMarginRate(3,-5)", "getAllTradingAccount([9],1)",
                  "getAllTradingAccount([1],1)", "getAllTradingAccount([3],1)", "getCodeByHash(8)"));
  EXPECT_EQ(host.marginQueries[1].account.userCode, "u3");
  EXPECT_THAT(host.marginQueries[1].code, FieldsAre(-5, 1, 2, "a"));
}

TEST(MarginRate, PicksOneOfFourRatios) {
  const double nan = std::nan("");
  struct Row {
    double a, b, c, d;
    std::string rate;
  };
  const std::vector<Row> rows = {
      {0.1, 8, 0.12, 9, "0.12"},   {0.1, 8, 0.05, 9, "0.1"},    {0.1, 8, 0.1, 9, "0.1"},   {0.1, 8, nan, 9, "0.1"},
      {0.1, 8, -1, 9, "0.1"},      {1e-300, 8, 0, 9, "1e-300"}, {0, 100, 7, 200, "200.0"}, {0, 8, 7, 6, "8.0"},
      {-0.0, 8, 7, 6, "8.0"},      {-1, 8, 7, 9, "9.0"},        {nan, 8, 7, 9, "9.0"},     {nan, 8, 7, 6, "8.0"},
      {0, 8, 7, nan, "8.0"},       {0, nan, 7, 6, ""},          {0, -2, 7, -3, "-2.0"},    {0, -0.0, 7, 0.0, "-0.0"},
      {0, 0.0, 7, -0.0, "0.0"},    {HUGE_VAL, 8, 7, 9, ""},     {0, 8, 7, HUGE_VAL, ""},   {0, 8, HUGE_VAL, 9, "9.0"},
      {0, 8, 7, -HUGE_VAL, "8.0"},
  };
  for (const Row& row : rows) {
    ScriptedHost host;
    host.accounts = {account(1)};
    host.symbols[6] = symbol(6, "b");
    host.marginRates[6] = ratios(row.a, row.b, row.c, row.d);
    const std::string data = R"([{"index":1,"accountStatus":1,"rate":[{"hashCode":6,"marginRate":)" + row.rate + "}]}]";
    EXPECT_EQ(Phone().data("marginrate.list", R"([{"index":1,"hashCodes":[6]}])"), data)
        << row.a << " " << row.b << " " << row.c << " " << row.d;
  }
}

TEST(CreditInfo, WritesEveryMemberInOrder) {
  ScriptedHost host;
  const std::array<std::string, 6> unread = {"never", "read"};
  host.credits[7] = {{unread, 1,  2,  3,  4,  0.05, 0.06, 0.07, 8,  0.09, -10, 11, -12, 13,   14,
                      15,     16, 17, 18, 19, 20,   21,   22,   23, 24,   25,  26, 27,  28.5, 29}};
  host.accounts = {account(7)};
  EXPECT_EQ(Phone().data("creditinfo.list", "[7]"),
            R"([{"index":7,"accountStatus":1,"creditInfo":[{"totalAssets":1.0,"netAssets":2.0,"cashAssets":3.0,)"
            R"("freeBalance":4.0,"longMarginRate":0.05,"shortMarginRate":0.06,"keepMarginRatio":0.07,)"
            R"("marginAvl":8.0,"marginRatio":0.09,"longProfit":-10.0,"shortProfit":11.0,"totalProfit":-12.0,)"
            R"("totalDebtBalance":13.0,"longDebtBalance":14.0,"shortDebtBalance":15.0,"debtInterest":16.0,)"
            R"("tradeDebtBalance":17.0,"longLimitAvl":18.0,"longLimitUsed":19.0,"longLimit":20.0,)"
            R"("longMarginMarket":21.0,"longMarginProfit":22.0,"longMarginUsed":23.0,"shortLimitAvl":24.0,)"
            R"("shortLimitUsed":25.0,"shortLimit":26.0,"shortMarginMarket":27.0,"shortMarginProfit":28.5,)"
            R"("shortMarginUsed":29.0}]}])");
}

TEST(CreditInfo, LooksEachAccountUpByItself) {
  ScriptedHost host;
  host.accounts = {account(1), account(2), account(3)};
  host.credits = {{1, {}}, {3, {}}};
  host.userRefusal = {1, "this topic does not ask"};
  EXPECT_EQ(Phone().data("creditinfo.list", "[3,2,9,1,3]"),
            R"([{"index":3,"accountStatus":1,"creditInfo":[]},{"index":1,"accountStatus":1,)"
            R"("creditInfo":[]},{"index":3,"accountStatus":1,"creditInfo":[]}])");
  EXPECT_THAT(host.calls(),
              ElementsAre("getAllTradingAccount([3],1)", "queryCreditInfo(3)", "getAllTradingAccount([2],1)",
                          "queryCreditInfo(2)", "getAllTradingAccount([9],1)", "getAllTradingAccount([1],1)",
                          "queryCreditInfo(1)", "getAllTradingAccount([3],1)", "queryCreditInfo(3)"));
}

TEST(MarginAndCredit, RequestThatNamesNothingIsAnsweredEmpty) {
  ScriptedHost host;
  host.accounts = {account(1)};
  host.credits[1] = {{}};
  EXPECT_EQ(Phone().data("creditinfo.list", "[]"), "[]");
  EXPECT_EQ(Phone().data("marginrate.list", "[]"), "[]");
  EXPECT_THAT(host.calls(), IsEmpty());
}

}  // namespace
}  // namespace orvane::test
