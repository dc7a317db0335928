#include <string>
#include <vector>

#include "tests/support/phone.h"

namespace orvane::test {
namespace {

TEST(SyncOrderList, WritesEveryMemberInOrder) {
  ScriptedHost host;
  const SymbolCode code = symbol(-5'000'000'000, "rb2405", 3);
  host.syncOrders = {{accountId(7, gbk("户7")), code, 9'000'000'000, -0.25, 2, 99, {11, 12, -13, 0.5}}};
  host.accounts = {account(7)};
  host.symbols[30] = symbol(30, "rb2405");
  const std::string data = Phone().data("monitor.sync.order.list", R"([{"index":7,"hashCode":30}])");
  EXPECT_EQ(data, R"([{"userCode":")" + gbk("户7") +
                      R"(","index":7,"codeExch":"rb2405.SHFE","hashCode":-5000000000,"volume":9000000000,)"
                      R"("price":-0.25,"side":2,"combOffsetFlag":99,"longPos":12,"shortPos":-13,"netPos":11,)"
                      R"("accountStatus":1}])");
  EXPECT_THAT(host.calls(), ElementsAre("checkUser(monitor.sync.order.list)", "getAllTradingAccount([7],1)",
                                        "getCodeByHash(30)", "getSyncOrders([7:[30]])"));
}

TEST(SyncOrderList, NamesAccountsAndCodesSortedAndOnce) {
  const std::vector<std::pair<std::vector<std::pair<int32_t, int64_t>>, std::string>> rows = {
      {{{3, 30}, {-1, 20}, {3, -7}, {3, 30}}, "getSyncOrders([-1:[20],3:[-7,30]])"},
      {{{3, 99}, {9, 20}, {-1, 30}}, "getSyncOrders([-1:[30]])"},
      {{{3, 99}, {3, 20}}, "getSyncOrders([3:[20]])"},
      {{{9, 20}}, "getSyncOrders([])"},
      {{}, "getSyncOrders([])"}};
  ScriptedHost host;
  host.accounts = {account(3), account(-1)};
  host.symbols = {{30, symbol(30, "a")}, {20, symbol(20, "b")}, {-7, symbol(-7, "c")}};
  for (const auto& [pairs, call] : rows) {
    std::string body;
    for (const auto& [index, hashCode] : pairs) {
      body += body.empty() ? "[" : ",";
      body += R"({"index":)" + std::to_string(index) + R"(,"hashCode":)" + std::to_string(hashCode) + "}";
    }
    EXPECT_EQ(Phone().data("monitor.sync.order.list", body.empty() ? "[]" : body + "]"), "[]");
    EXPECT_EQ(host.calls().back(), call);
  }
}

TEST(SyncOrderList, AccountThatIsNamedAgainKeepsItsFirstRecord) {
  ScriptedHost host;
  host.accounts = {account(3, "first")};
  host.laterAccounts = {account(3, "later")};
  host.symbols = {{20, symbol(20, "b")}, {30, symbol(30, "a")}};
  Phone().data("monitor.sync.order.list", R"([{"index":3,"hashCode":30},{"index":3,"hashCode":20}])");
  EXPECT_EQ(host.calls().back(), "getSyncOrders([3first:[20,30]])");
}

TEST(SyncOrderNew, PlacesWhatTheHostKnowsAndAsksNoEntitlement) {
  ScriptedHost host;
  host.accounts = {account(1, "u1")};
  host.symbols[20] = symbol(20, "b", 6);
  host.userRefusal = {1, "not asked here"};
  const std::string values = R"("volume":-4,"price":3520,"side":77,"combOffsetFlag":3})";
  const std::string body = R"([{"index":9,"hashCode":20,)" + values + R"(,{"index":1,"hashCode":20,)" + values +
                           R"(,{"index":1,"hashCode":99,)" + values + "]";
  EXPECT_EQ(Phone().data("monitor.sync.order.new", body), "");
  ASSERT_EQ(host.placed.size(), 1U);
  EXPECT_THAT(host.placed.front(), FieldsAre(_, FieldsAre(20, 1, 6, "b"), -4, 3520.0, 77, 3, FieldsAre(0, 0, 0, 0.0)));
  EXPECT_EQ(host.placed.front().account.userCode, "u1");
  EXPECT_EQ(Phone().data("monitor.sync.order.new", "[]"), "");
  EXPECT_THAT(host.calls(), ElementsAre("getAllTradingAccount([9],1)", "getAllTradingAccount([1],1)",
                                        "getCodeByHash(20)", "getAllTradingAccount([1],1)", "getCodeByHash(99)",
                                        "placeSyncOrders(1)", "placeSyncOrders(0)"));
}

}  // namespace
}  // namespace orvane::test
