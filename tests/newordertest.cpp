#include <map>
#include <string>
#include <vector>

#include "tasks/neworder.h"
#include "tests/support/phone.h"

namespace orvane::test {
namespace {

// One order of a body, with some of its values told.
std::string order(int32_t index, int64_t hashCode, const std::string& timestamp = "1", const std::string& price = "1") {
  return R"({"index":)" + std::to_string(index) + R"(,"hashCode":)" + std::to_string(hashCode) +
         R"(,"side":1,"combOffset":1,"priceType":1,"price":)" + price + R"(,"offset":0,"volume":1,"insertTimestamp":)" +
         timestamp + R"(,"source":""})";
}

std::string body(const std::string& orders) { return R"({"orderList":[)" + orders + "]}"; }

// A host with the accounts 1 and 2 and the instruments 10, 20 and 30.
struct OrderHost : ScriptedHost {
  OrderHost() {
    accounts = {account(1, "u1"), account(2, "u2")};
    symbols = {{10, symbol(10, "a")}, {20, symbol(20, "b", 6, 3)}, {30, symbol(30, "c")}};
  }
};

TEST(NewOrder, CompletesTheOrderAndSubmitsIt) {
  OrderHost host;
  const std::string rich = R"({"index":2,"hashCode":20,"side":3,"combOffset":4,"priceType":5,"price":3520,"offset":6,)"
                           R"("volume":-7,"insertTimestamp":1000,"source":"手机\u0000cut","instructionType":8,)"
                           R"("orderType":9})";
  EXPECT_EQ(Phone().data("order.new", body(rich)), "");
  ASSERT_EQ(host.inserted.size(), 1U);
  EXPECT_THAT(host.inserted.front(), FieldsAre(_, FieldsAre(20, 3, 6, "b"), FieldsAre(65536, gbk("手机"), ""), _,
                                               1'000'000, -7, 3520.0, _, 9, 0, 5, 8, 4, 1, 3));
  EXPECT_EQ(host.inserted.front().account.userCode, "u2");
}

TEST(NewOrder, TimestampWrapsAndPriceIsADouble) {
  struct Row {
    std::string timestamp, price;
    int64_t milliseconds;
    double number;
  };
  const std::vector<Row> rows = {{"2147483", "0", 2'147'483'000, 0},
                                 {"2147484", "-1.5", -2'147'483'296, -1.5},
                                 {"1700000000", "3520.0", -807'049'216, 3520},
                                 {"-1", "9007199254740993", -1000, 9007199254740992},
                                 {"2147483647", "1e-7", -1000, 1e-7},
                                 {"-2147483648", "-9223372036854775808", 0, -9223372036854775808.0},
                                 {"0", "0.0e100", 0, 0}};
  OrderHost host;
  for (const Row& row : rows) {
    Phone().ask("order.new", body(order(1, 10, row.timestamp, row.price)));
    EXPECT_EQ(host.inserted.back().srcTimestamp, row.milliseconds) << row.timestamp;
    EXPECT_EQ(host.inserted.back().price, row.number) << row.price;
    EXPECT_EQ(host.inserted.back().instructionType + host.inserted.back().orderType, 0);
  }
}

TEST(NewOrder, ChecksAllThenSubmitsAllAndTellsTheFirstRefusal) {
  const std::vector<std::pair<std::map<int64_t, ResultStatus>, std::string>> rows = {
      {{}, ""},
      {{{10, {0, gbk("已收")}}, {30, {0, gbk("已收")}}}, ""},
      {{{10, {0, gbk("已收")}}, {20, {-3, gbk("资金不足")}}, {30, {4, "later"}}}, "资金不足"},
      {{{10, {1, ""}}, {20, {2, "later"}}}, ""}};
  for (const auto& [statuses, message] : rows) {
    OrderHost host;
    host.insertStatuses = statuses;
    EXPECT_THAT(Phone().ask("order.new", body(order(1, 10) + "," + order(2, 20) + "," + order(1, 30))),
                FieldsAre(42, "order.new", message, "", 8));
    EXPECT_THAT(host.calls(),
                ElementsAre("checkUser(order.new)", "getAllTradingAccount([1],1)", "checkAccount(order.new,1)",
                            "getCodeByHash(10)", "getAllTradingAccount([2],1)", "checkAccount(order.new,2)",
                            "getCodeByHash(20)", "getAllTradingAccount([1],1)", "checkAccount(order.new,1)",
                            "getCodeByHash(30)", "insertOrder(10)", "insertOrder(20)", "insertOrder(30)"));
  }
}

TEST(NewOrder, FaultInTheFirstPassSubmitsNothing) {
  struct Row {
    std::string orders;
    std::vector<std::string> calls, messages;
  };
  const std::string first = order(1, 10) + ",";
  const std::vector<Row> rows = {
      {first + order(-1, 99), {"getAllTradingAccount([-1],1)"}, {"can not find tid by index:-1"}},
      {first + order(1, -5) + "," + order(7, 10),
       {"getAllTradingAccount([1],1)", "checkAccount(order.new,1)", "getCodeByHash(-5)"},
       {"can not find code property by hashcode:-5"}},
      {first + order(2, 99), {"getAllTradingAccount([2],1)", "checkAccount(order.new,2)"}, {"未授权", ""}}};
  for (Row row : rows) {
    OrderHost host;
    host.accountRefusals[2] = {6, gbk("未授权")};
    std::vector<std::string> messages;
    for (const MobileMessage& reply : Phone().askAll("order.new", body(row.orders))) {
      EXPECT_THAT(reply, FieldsAre(42, "order.new", _, "", 8));
      messages.push_back(reply.message);
    }
    EXPECT_EQ(messages, row.messages);
    row.calls.insert(row.calls.begin(), {"checkUser(order.new)", "getAllTradingAccount([1],1)",
                                         "checkAccount(order.new,1)", "getCodeByHash(10)"});
    EXPECT_EQ(host.calls(), row.calls);
  }
}

TEST(NewOrder, EmptyListAndRefusedUserTouchNothing) {
  OrderHost host;
  EXPECT_EQ(Phone().ask("order.new", body("")).message, "");
  host.userRefusal = {9, gbk("无权限")};
  EXPECT_EQ(Phone().ask("order.new", body(order(1, 10))).message, "无权限");
  EXPECT_THAT(host.calls(), ElementsAre("checkUser(order.new)", "checkUser(order.new)"));
}

TEST(NewOrder, ConditionalOrderIsRefusedBehindTheAccount) {
  OrderHost host;
  const auto run = [&](const std::vector<int32_t>& indexes) {
    host.forgetCalls();
    MobileNewOrder conditional;
    conditional.isConditional = true;
    for (const int32_t index : indexes) {
      conditional.items.emplace_back().account.index = index;
    }
    NewOrderTask(1, kTopicNewOrder, conditional).execute();
    return host.sent().back().message;
  };
  EXPECT_EQ(run({}), "暂不支持条件单");
  EXPECT_THAT(host.calls(), ElementsAre("checkUser(order.new)"));
  EXPECT_EQ(run({1}), "暂不支持条件单");
  EXPECT_THAT(host.calls(), ElementsAre("checkUser(order.new)", "getAllTradingAccount([1],1)"));
  EXPECT_EQ(run({9}), "can not find tid by index:9");
  EXPECT_THAT(host.inserted, IsEmpty());
}

}  // namespace
}  // namespace orvane::test
