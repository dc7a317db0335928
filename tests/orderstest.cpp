#include <string>
#include <vector>

#include "tasks/neworder.h"
#include "tests/support/phone.h"

namespace orvane::test {
namespace {

// A host with the account 1 and the instruments 10 and 20.
struct OrderHost : ScriptedHost {
  OrderHost() {
    accounts = {account(1, "u1")};
    symbols = {{10, symbol(10, "a")}, {20, symbol(20, "b", 6, 3)}};
  }
};

TEST(NewOrder, CompletesTheOrderAndSubmitsIt) {
  OrderHost host;
  Phone::data("order.new", R"({"orderList":[{"index":1,"hashCode":20,"side":3,"combOffset":4,"priceType":5,)"
                           R"("price":3520,"offset":6,"volume":-7,"insertTimestamp":1000,)"
                           R"("source":"手机\u0000cut","instructionType":8,"orderType":9}]})");
  EXPECT_THAT(host.calls(), Contains("insertOrder(1,20)"));
  EXPECT_THAT(host.inserted, ElementsAre(FieldsAre(_, _, FieldsAre(65536, gbk("手机"), ""), _, 1'000'000, -7, 3520.0, _,
                                                   9, 0, 5, 8, 4, 1, 3)));
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
                                 {"-2147483648", "-9223372036854775808", 0, -9223372036854775808.0},
                                 {"0", "0.0e100", 0, 0}};
  OrderHost host;
  for (const Row& row : rows) {
    Phone::ask("order.new", R"({"orderList":[{"index":1,"hashCode":10,"side":1,"combOffset":1,"priceType":1,"price":)" +
                                row.price + R"(,"offset":0,"volume":1,"insertTimestamp":)" + row.timestamp +
                                R"(,"source":""}]})");
    EXPECT_EQ(host.inserted.back().srcTimestamp, row.milliseconds) << row.timestamp;
    EXPECT_EQ(host.inserted.back().price, row.number) << row.price;
    EXPECT_EQ(host.inserted.back().instructionType + host.inserted.back().orderType, 0);
  }
}

TEST(NewOrder, ConditionalOrderIsRefusedAfterTheAccount) {
  const std::vector<std::tuple<std::vector<int32_t>, std::string, Strings>> rows = {
      {{}, "暂不支持条件单", {"checkUser(order.new)", "send"}},
      {{1}, "暂不支持条件单", {"checkUser(order.new)", "getAllTradingAccount([1],1)", "send"}},
      {{9}, "can not find tid by index:9", {"checkUser(order.new)", "getAllTradingAccount([9],1)", "send"}}};
  for (const auto& [indexes, message, calls] : rows) {
    OrderHost host;
    MobileNewOrder conditional;
    conditional.isConditional = true;
    for (const int32_t index : indexes) conditional.items.emplace_back().account.index = index;
    NewOrderTask(1, kTopicNewOrder, conditional).execute();
    EXPECT_EQ(host.sent().back().message, message);
    EXPECT_EQ(host.calls(), calls);
  }
}

TEST(CancelOrder, ReadsTheOrderNumberFromItsText) {
  const std::vector<std::pair<int64_t, Strings>> rows = {
      {12, {"12", "12abc", "+12", "0012", "12.9", "12 3", R"( \t\n\r\f12)", "12\\u00003"}},
      {-7, {"-7", " -7"}},
      {0, {"abc", " ", "--7", "- 7", "0x10", "１"}},
      {INT64_MAX, {"9223372036854775807", "9223372036854775808"}},
      {INT64_MIN, {"-9223372036854775809"}}};
  for (const auto& [number, texts] : rows) {
    for (const std::string& text : texts) {
      OrderHost host;
      Phone::data("order.cancel", R"([{"index":1,"localOrderId":")" + text + R"(","hashCode":10}])");
      EXPECT_THAT(host.calls(), Contains("cancelOrder(" + std::to_string(number) + ",1,10)"));
      const auto unset = FieldsAre(1, "", "");
      EXPECT_THAT(host.cancelled, ElementsAre(FieldsAre(number, _, _, ElementsAre(unset, unset), _, "", _)));
    }
  }
}

TEST(MonitorOrders, ArePassedOnWithTheirNumbers) {
  OrderHost host;
  Phone::ask("monitor.sync.order.new",
             R"([{"index":1,"hashCode":20,"volume":-4,"price":3520,"side":77,"combOffsetFlag":3}])");
  EXPECT_THAT(host.placed, ElementsAre(FieldsAre(_, _, -4, 3520.0, 77, 3, FieldsAre(0, 0, 0, 0.0))));
  Phone::ask("monitor.manual.update", R"([{"index":1,"hashCode":20,"longPos":-5,"shortPos":9000000000}])");
  EXPECT_THAT(host.updated, ElementsAre(FieldsAre(_, _, FieldsAre(0, -5, 9'000'000'000, 0.0), ElementsAre(0, 0))));
}

}  // namespace
}  // namespace orvane::test
