#include <map>
#include <string>
#include <vector>

#include "tasks/neworder.h"
#include "tests/support/phone.h"

namespace orvane::test {
namespace {

// A host with the accounts 1 and 2 and the instruments 10, 20 and 30. It refuses account 2.
struct OrderHost : ScriptedHost {
  OrderHost() {
    accounts = {account(1, "u1"), account(2, "u2")};
    symbols = {{10, symbol(10, "a")}, {20, symbol(20, "b", 6, 3)}, {30, symbol(30, "c")}};
    accountRefusals[2] = {6, gbk("未授权")};
  }
};

// Sends `body` and compares the messages of the answers and the calls after the check of the user.
void expectAnswer(const ScriptedHost& host, const std::string& topic, const std::string& body, const Strings& messages,
                  Strings calls) {
  SCOPED_TRACE(body);
  Strings found;
  for (const MobileMessage& reply : Phone::askAll(topic, body)) {
    EXPECT_THAT(reply, FieldsAre(42, topic, _, "", 8));
    found.push_back(reply.message);
  }
  EXPECT_EQ(found, messages);
  calls.insert(calls.begin(), "checkUser(" + topic + ")");
  calls.push_back("send");
  EXPECT_EQ(host.calls(), calls);
}

std::string find(int32_t index) { return "getAllTradingAccount([" + std::to_string(index) + "],1)"; }

std::string order(int32_t index, int64_t hashCode, const std::string& timestamp = "1", const std::string& price = "1") {
  return R"({"index":)" + std::to_string(index) + R"(,"hashCode":)" + std::to_string(hashCode) +
         R"(,"side":1,"combOffset":1,"priceType":1,"price":)" + price + R"(,"offset":0,"volume":1,"insertTimestamp":)" +
         timestamp + R"(,"source":""})";
}

std::string orders(const std::string& list) { return R"({"orderList":[)" + list + "]}"; }

TEST(NewOrder, CompletesTheOrderAndSubmitsIt) {
  OrderHost host;
  const std::string rich = R"({"index":1,"hashCode":20,"side":3,"combOffset":4,"priceType":5,"price":3520,"offset":6,)"
                           R"("volume":-7,"insertTimestamp":1000,"source":"手机\u0000cut","instructionType":8,)"
                           R"("orderType":9})";
  expectAnswer(host, "order.new", orders(rich), {""},
               {find(1), "checkAccount(order.new,1)", "getCodeByHash(20)", "insertOrder(1,20)"});
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
    Phone::ask("order.new", orders(order(1, 10, row.timestamp, row.price)));
    EXPECT_EQ(host.inserted.back().srcTimestamp, row.milliseconds) << row.timestamp;
    EXPECT_EQ(host.inserted.back().price, row.number) << row.price;
    EXPECT_EQ(host.inserted.back().instructionType + host.inserted.back().orderType, 0);
  }
}

TEST(NewOrder, ChecksAllThenSubmitsAllAndReportsTheFirstRefusal) {
  const std::vector<std::pair<std::map<int64_t, ResultStatus>, std::string>> rows = {
      {{}, ""},
      {{{10, {0, gbk("已收")}}, {30, {0, gbk("已收")}}}, ""},
      {{{10, {0, gbk("已收")}}, {20, {-3, gbk("资金不足")}}, {30, {4, "later"}}}, "资金不足"},
      {{{10, {1, ""}}, {20, {2, "later"}}}, ""}};
  for (const auto& [statuses, message] : rows) {
    OrderHost host;
    host.accountRefusals.clear();
    host.insertStatuses = statuses;
    expectAnswer(host, "order.new", orders(order(1, 10) + "," + order(2, 20) + "," + order(1, 30)), {message},
                 {find(1), "checkAccount(order.new,1)", "getCodeByHash(10)", find(2), "checkAccount(order.new,2)",
                  "getCodeByHash(20)", find(1), "checkAccount(order.new,1)", "getCodeByHash(30)", "insertOrder(1,10)",
                  "insertOrder(2,20)", "insertOrder(1,30)"});
  }
}

TEST(NewOrder, ErrorInTheFirstPassSubmitsNothing) {
  const Strings one = {find(1), "checkAccount(order.new,1)", "getCodeByHash(10)"};
  const std::vector<std::tuple<std::string, Strings, Strings>> rows = {
      {order(-1, 99), {"can not find tid by index:-1"}, {find(-1)}},
      {order(1, -5) + "," + order(7, 10),
       {"can not find code property by hashcode:-5"},
       {find(1), "checkAccount(order.new,1)", "getCodeByHash(-5)"}},
      {order(2, 99), {"未授权", ""}, {find(2), "checkAccount(order.new,2)", "send"}}};
  for (const auto& [list, messages, calls] : rows) {
    OrderHost host;
    Strings all = one;
    all.insert(all.end(), calls.begin(), calls.end());
    expectAnswer(host, "order.new", orders(order(1, 10) + "," + list), messages, all);
  }
}

TEST(Orders, EmptyListAndRefusedUserCallNothingElse) {
  for (const auto& [topic, body] :
       std::vector<std::pair<std::string, std::string>>{{"order.new", orders("")}, {"order.cancel", "[]"}}) {
    OrderHost host;
    expectAnswer(host, topic, body, {""}, {});
    host.forgetCalls();
    host.userRefusal = {9, gbk("无权限")};
    expectAnswer(host, topic, topic == "order.new" ? orders(order(1, 10)) : R"([{"index":1}])", {"无权限"}, {});
  }
}

TEST(NewOrder, ConditionalOrderIsRefusedAfterTheAccount) {
  const std::vector<std::tuple<std::vector<int32_t>, std::string, Strings>> rows = {
      {{}, "暂不支持条件单", {"checkUser(order.new)", "send"}},
      {{1}, "暂不支持条件单", {"checkUser(order.new)", find(1), "send"}},
      {{9}, "can not find tid by index:9", {"checkUser(order.new)", find(9), "send"}}};
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
      expectAnswer(host, "order.cancel", R"([{"index":1,"localOrderId":")" + text + R"(","hashCode":10}])", {""},
                   {find(1), "checkAccount(order.cancel,1)", "getCodeByHash(10)",
                    "cancelOrder(" + std::to_string(number) + ",1,10)"});
      const auto unset = FieldsAre(1, "", "");
      EXPECT_THAT(host.cancelled, ElementsAre(FieldsAre(number, _, _, ElementsAre(unset, unset), _, "", _)));
    }
  }
}

TEST(CancelOrder, WorksInOnePassAndReportsMissingIdsAtTheEnd) {
  const std::string neither = R"({"index":1})";
  const std::string conditional = R"({"index":9,"strategyId":"s"})";
  const std::string unknown = R"({"index":-9,"localOrderId":"1","hashCode":10})";
  const std::string good = R"({"index":1,"localOrderId":"4","hashCode":10,"strategyId":"s"})";
  const std::string filled = R"({"index":1,"localOrderId":"5","hashCode":10})";
  const std::string noCode = R"({"index":1,"localOrderId":"1","hashCode":-8})";
  const std::string refused = R"({"index":2,"localOrderId":"1","hashCode":10})";
  const std::string missing = "missing localOrderId or strategyId";
  const Strings four = {find(1), "checkAccount(order.cancel,1)", "getCodeByHash(10)", "cancelOrder(4,1,10)"};
  const Strings five = {find(1), "checkAccount(order.cancel,1)", "getCodeByHash(10)", "cancelOrder(5,1,10)"};
  Strings stopped = four;  // is not undone
  stopped.insert(stopped.end(), {find(1), "checkAccount(order.cancel,1)", "getCodeByHash(-8)"});
  const std::vector<std::tuple<std::string, Strings, Strings>> rows = {
      {neither, {missing}, {}},
      {conditional, {"暂不支持条件单"}, {}},
      {conditional + "," + neither, {missing}, {}},
      {neither + "," + conditional, {"暂不支持条件单"}, {}},
      {R"({"index":1,"localOrderId":4,"hashCode":10,"strategyId":7})", {missing}, {}},
      {R"({"index":1,"localOrderId":"","hashCode":10})", {missing}, {}},
      {R"({"index":1,"localOrderId":"\u00004","hashCode":10})", {missing}, {}},
      {good, {""}, four},
      {neither + "," + good, {missing}, four},
      {neither + "," + filled + "," + good, {"已成交"}, five},
      {good + "," + noCode + "," + good, {"can not find code property by hashcode:-8"}, stopped},
      {neither + "," + unknown + "," + good, {"can not find tid by index:-9"}, {find(-9)}},
      {neither + "," + refused + "," + good, {"未授权", ""}, {find(2), "checkAccount(order.cancel,2)", "send"}}};
  for (const auto& [elements, messages, calls] : rows) {
    OrderHost host;
    host.cancelStatuses[5] = {3, gbk("已成交")};
    expectAnswer(host, "order.cancel", "[" + elements + "]", messages, calls);
  }
}

// Both topics complete and pass on what the host knows. Neither checks the user.
TEST(MonitorOrders, AreCompletedAndPassedOnWithoutTheUnknownOnes) {
  const std::string order = R"("volume":-4,"price":3520,"side":77,"combOffsetFlag":3})";
  const std::string manual = R"("longPos":-5,"shortPos":9000000000})";
  for (const std::string topic : {"monitor.sync.order.new", "monitor.manual.update"}) {
    const std::string values = topic == "monitor.manual.update" ? manual : order;
    const std::string call = topic == "monitor.manual.update" ? "updateManualPositions" : "placeSyncOrders";
    OrderHost host;
    host.userRefusal = {1, "not asked here"};
    const std::string body = R"([{"index":9,"hashCode":20,)" + values + R"(,{"index":1,"hashCode":20,)" + values +
                             R"(,{"index":1,"hashCode":99,)" + values + "]";
    EXPECT_EQ(Phone::data(topic, body), "");
    EXPECT_EQ(Phone::data(topic, "[]"), "");
    EXPECT_THAT(host.calls(), ElementsAre(find(9), find(1), "getCodeByHash(20)", find(1), "getCodeByHash(99)",
                                          call + "([1:20])", "send", call + "([])", "send"));
  }
  OrderHost host;
  Phone::ask("monitor.sync.order.new", R"([{"index":1,"hashCode":20,)" + order + "]");
  EXPECT_THAT(host.placed, ElementsAre(FieldsAre(_, _, -4, 3520.0, 77, 3, FieldsAre(0, 0, 0, 0.0))));
  Phone::ask("monitor.manual.update", R"([{"index":1,"hashCode":20,)" + manual + "]");
  EXPECT_THAT(host.updated, ElementsAre(FieldsAre(_, _, FieldsAre(0, -5, 9'000'000'000, 0.0), ElementsAre(0, 0))));
}

}  // namespace
}  // namespace orvane::test
