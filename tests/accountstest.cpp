#include <cmath>
#include <string>

#include <gmock/gmock.h>

#include "tests/support/phone.h"

namespace orvane::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

TEST(AccountList, TellsWhatEachAccountMayDo) {
  ScriptedHost host;
  host.accounts = {account(3, "u\"3", 16), account(0, gbk("户"), 1), account(-7, "u7", 99)};
  host.available = {0};
  host.privileges = {{3, {AccountPrivilege::TriggerOrder}}, {0, {AccountPrivilege::OrdinaryOrder}}};
  const MobileMessage reply = Phone().ask("account.list", "never read");
  EXPECT_EQ(reply.requestId, 42);
  EXPECT_EQ(reply.topic, "account.list");
  EXPECT_EQ(reply.message, "");
  EXPECT_EQ(reply.terminalType, 8);
  EXPECT_EQ(reply.data, R"([{"userCode":"u\"3","index":3,"marketType":16,"triggerOrderPrivilege":true,)"
                        R"("ordinaryOrderPrivilege":false,"accountStatus":0},)"
                        R"({"userCode":")" +
                            gbk("户") +
                            R"(","index":0,"marketType":1,"triggerOrderPrivilege":false,)"
                            R"("ordinaryOrderPrivilege":true,"accountStatus":1},)"
                            R"({"userCode":"u7","index":-7,"marketType":99,"triggerOrderPrivilege":false,)"
                            R"("ordinaryOrderPrivilege":false,"accountStatus":0}])");
  EXPECT_THAT(host.calls(),
              ElementsAre("checkUser(account.list)", "getAllTradingAccount(ids [],3)", "hasPrivilege(3,trigger)",
                          "hasPrivilege(3,ordinary)", "hasPrivilege(0,trigger)", "hasPrivilege(0,ordinary)",
                          "hasPrivilege(-7,trigger)", "hasPrivilege(-7,ordinary)"));
}

TEST(CapitalList, WritesEveryMemberInOrder) {
  ScriptedHost host;
  TradingAccount rich = account(2, "u2", 1);
  rich.available = 3.5;
  rich.withdrawQuota = 4.25;
  rich.frozenMargin = 5;
  rich.currMargin = 6;
  rich.deposit = 50;
  rich.withdraw = 20;
  rich.commission = 7.1;
  rich.closeProfit = -8;
  rich.preBalance = 9;
  rich.dynamicAmount = 10;
  rich.maintainAmount = 11;
  rich.totalLever = 1.2;
  rich.netLever = -1.3;
  rich.risk = 0.14;
  rich.baseAmount = 100;
  rich.preCloseProfit = 30;
  rich.todayFloatingProfit = 15;
  host.accounts = {rich, account(5)};
  host.available = {5, 2};
  const MobileMessage reply = Phone().ask("capital.list", "[2]");
  EXPECT_EQ(reply.topic, "capital.list");
  EXPECT_EQ(reply.message, "");
  EXPECT_EQ(reply.data,
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
  const std::vector<Row> rows = {
      {1, 100, 50, 30, 20, R"("accountType":0,"lastAmount":160.0,"profitRatio":0.2,)"},
      {8, 100, 50, 30, 20, R"("accountType":0,"lastAmount":160.0,"profitRatio":0.2,)"},
      {2, 100, 50, 30, 20, R"("accountType":1,"lastAmount":777.0,"profitRatio":0.2,)"},
      {16, 100, 50, 30, 20, R"("accountType":1,"lastAmount":777.0,"profitRatio":0.2,)"},
      {1, 0, 0, 30, 20, R"("lastAmount":10.0,"profitRatio":0.0,)"},
      {1, 0.000001, 0, 30, 0, R"("profitRatio":0.0,)"},
      {1, -100, 50, 30, 0, R"("lastAmount":-20.0,"profitRatio":0.0,)"},
      {1, std::nan(""), 50, 30, 0, R"("lastAmount":,"profitRatio":0.0,)"},
      {4, 100, 50, 30, 20,
       R"({"userCode":"","index":1,"accountType":"lastAmount",160.0:"profitRatio",0.2:"netLever",)"},
  };
  for (const Row& row : rows) {
    ScriptedHost host;
    TradingAccount one = account(1, "", row.marketType);
    one.baseAmount = row.base;
    one.deposit = row.deposit;
    one.preCloseProfit = row.profit;
    one.withdraw = row.withdraw;
    one.dynamicAmount = 777;
    host.accounts = {one};
    EXPECT_THAT(Phone().ask("capital.list", "[]").data, HasSubstr(row.text));
  }
}

TEST(CapitalList, OutOfStepRowLeavesTheNextOneInStep) {
  ScriptedHost host;
  host.accounts = {account(1, "", 4), account(2, "", 1)};
  const std::string data = Phone().ask("capital.list", "[]").data;
  EXPECT_THAT(data, HasSubstr(R"(,0.0:"commission",0.0:"accountStatus",0},{"userCode":"","index":2,"accountType":0,)"));
}

TEST(CapitalList, PassesTheSelectorOnAndKeepsTheHostsOrder) {
  ScriptedHost host;
  host.accounts = {account(9), account(1)};
  Phone().ask("capital.list", "[1,1]");
  Phone().ask("capital.list", "[]");
  EXPECT_THAT(host.calls(), ElementsAre("checkUser(capital.list)", "getAllTradingAccount([1,1],3)",
                                        "checkUser(capital.list)", "getAllTradingAccount([],3)"));
  EXPECT_EQ(Phone().ask("capital.list", "[4]").data, "[]");
  const std::string all = host.sent()[1].data;
  EXPECT_LT(all.find(R"("index":9)"), all.find(R"("index":1)"));
}

}  // namespace
}  // namespace orvane::test
