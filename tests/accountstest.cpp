#include <cmath>
#include <string>
#include <vector>

#include "tests/support/phone.h"

namespace orvane::test {
namespace {

TEST(AccountList, TellsWhatEachAccountMayDo) {
  ScriptedHost host;
  host.accounts = {account(3, "u\"3", 16), account(0, gbk("户"), 1), account(-7, "u7", 99)};
  host.available = {0};
  host.privileges = {{3, {AccountPrivilege::TriggerOrder}}, {0, {AccountPrivilege::OrdinaryOrder}}};
  EXPECT_EQ(Phone().data("account.list", "never read"),
            R"([{"userCode":"u\"3","index":3,"marketType":16,"triggerOrderPrivilege":true,)"
            R"("ordinaryOrderPrivilege":false,"accountStatus":0},{"userCode":")" +
                gbk("户") +
                R"(","index":0,"marketType":1,"triggerOrderPrivilege":false,"ordinaryOrderPrivilege":true,)"
                R"("accountStatus":1},{"userCode":"u7","index":-7,"marketType":99,"triggerOrderPrivilege":false,)"
                R"("ordinaryOrderPrivilege":false,"accountStatus":0}])");
  EXPECT_THAT(host.calls(),
              ElementsAre("checkUser(account.list)", "getAllTradingAccount(ids [],3)", "hasPrivilege(3,trigger)",
                          "hasPrivilege(3,ordinary)", "hasPrivilege(0,trigger)", "hasPrivilege(0,ordinary)",
                          "hasPrivilege(-7,trigger)", "hasPrivilege(-7,ordinary)"));
}

TEST(CapitalList, WritesEveryMemberInOrder) {
  ScriptedHost host;
  // clang-format off
  host.accounts = {{.id = accountId(2, "u2"), .available = 3.5, .withdrawQuota = 4.25, .frozenMargin = 5,
                    .currMargin = 6, .deposit = 50, .withdraw = 20, .commission = 7.1, .closeProfit = -8,
                    .preBalance = 9, .dynamicAmount = 10, .maintainAmount = 11, .totalLever = 1.2, .netLever = -1.3,
                    .risk = 0.14, .baseAmount = 100, .preCloseProfit = 30, .todayFloatingProfit = 15},
                   account(5)};
  // clang-format on
  host.available = {5, 2};
  EXPECT_EQ(Phone().data("capital.list", "[2]"),
            R"([{"userCode":"u2","index":2,"accountType":0,"lastAmount":160.0,"profitRatio":0.2,"netLever":-1.3,)"
            R"("preCloseProfit":30.0,"totalLever":1.2,"risk":0.14,"available":3.5,"todayFloatingProfit":15.0,)"
            R"("amassFloatingProfit":0.0,"closeProfit":-8.0,"maintainAmount":11.0,"dynamicAmount":10.0,)"
            R"("preBalance":9.0,"withdrawQuota":4.25,"currMargin":6.0,"frozenMargin":5.0,"deposit":50.0,)"
            R"("withdraw":20.0,"commission":7.1,"accountStatus":1}])");
  EXPECT_THAT(host.calls(), ElementsAre("checkUser(capital.list)", "getAllTradingAccount([2],3)"));
}

TEST(CapitalList, WorksOutLastAmountAndProfitRatio) {
  struct Row {
    int32_t marketType;
    double base, deposit, profit, withdraw;
    std::string text;
  };
  const std::string own = R"("accountType":0,"lastAmount":160.0,"profitRatio":0.2,)";
  const std::string dynamic = R"("accountType":1,"lastAmount":777.0,"profitRatio":0.2,)";
  const std::vector<Row> rows = {
      {1, 100, 50, 30, 20, own},
      {8, 100, 50, 30, 20, own},
      {2, 100, 50, 30, 20, dynamic},
      {16, 100, 50, 30, 20, dynamic},
      {1, 0, 0, 30, 20, R"("lastAmount":10.0,"profitRatio":0.0,)"},
      {1, 0.000001, 0, 30, 0, R"("profitRatio":0.0,)"},
      {1, -100, 50, 30, 0, R"("lastAmount":-20.0,"profitRatio":0.0,)"},
      {1, std::nan(""), 50, 30, 0, R"("lastAmount":,"profitRatio":0.0,)"},
      {4, 100, 50, 30, 20,
       R"({"userCode":"","index":1,"accountType":"lastAmount",160.0:"profitRatio",0.2:"netLever",)"}};
  for (const Row& row : rows) {
    ScriptedHost host;
    TradingAccount& one = host.accounts.emplace_back(account(1, "", row.marketType));
    one.baseAmount = row.base;
    one.deposit = row.deposit;
    one.preCloseProfit = row.profit;
    one.withdraw = row.withdraw;
    one.dynamicAmount = 777;
    EXPECT_THAT(Phone().data("capital.list", "[]"), HasSubstr(row.text));
  }
}

TEST(CapitalList, PassesTheSelectorOnAndKeepsTheHostsOrder) {
  ScriptedHost host;
  host.accounts = {account(9), account(1)};
  EXPECT_THAT(Phone().data("capital.list", "[]"), testing::ContainsRegex(R"("index":9,.*"index":1,)"));
  EXPECT_EQ(Phone().data("capital.list", "[4,4]"), "[]");
  EXPECT_THAT(host.calls(), ElementsAre("checkUser(capital.list)", "getAllTradingAccount([],3)",
                                        "checkUser(capital.list)", "getAllTradingAccount([4,4],3)"));
}

}  // namespace
}  // namespace orvane::test
