#include <string>
#include <vector>

#include "tests/support/phone.h"

namespace orvane::test {
namespace {

// A host with the accounts 1 and 2 and the instrument 10. It refuses to cancel order 5 and refuses account 2.
struct CancelHost : ScriptedHost {
  CancelHost() {
    accounts = {account(1, "u1"), account(2)};
    symbols[10] = symbol(10, "a", 6);
    cancelStatuses[5] = {3, gbk("已成交")};
    accountRefusals[2] = {6, gbk("未授权")};
  }
};

TEST(CancelOrder, ReadsTheOrderNumberFromItsText) {
  const std::vector<std::pair<int64_t, std::vector<std::string>>> rows = {
      {12, {"12", "12abc", "+12", "0012", "12.9", "12 3", R"( \t\n\r\f12)", "12\\u00003"}},
      {-7, {"-7", " -7"}},
      {0, {"abc", " ", "--7", "- 7", "0x10", "１"}},
      {INT64_MAX, {"9223372036854775807", "9223372036854775808", "99999999999999999999999999"}},
      {INT64_MIN, {"-9223372036854775809"}}};
  CancelHost host;
  for (const auto& [number, texts] : rows) {
    for (const std::string& text : texts) {
      const std::string element = R"([{"index":1,"localOrderId":")" + text + R"(","hashCode":10}])";
      EXPECT_THAT(Phone().ask("order.cancel", element), FieldsAre(42, "order.cancel", "", "", 8));
      EXPECT_EQ(host.cancelled.back().localOrderId, number) << text;
    }
  }
  const auto unset = FieldsAre(1, "", "");
  EXPECT_THAT(host.cancelled.front(), FieldsAre(12, _, FieldsAre(10, 1, 6, "a"), ElementsAre(unset, unset), _, "", _));
  EXPECT_EQ(host.cancelled.front().account.userCode, "u1");
}

TEST(CancelOrder, WorksInOnePassAndRemembersWhatWasMissing) {
  const std::string neither = R"({"index":1})";
  const std::string conditional = R"({"index":9,"strategyId":"s"})";
  const std::string unknown = R"({"index":-9,"localOrderId":"1","hashCode":10})";
  const std::string good = R"({"index":1,"localOrderId":"4","hashCode":10,"strategyId":"s"})";
  const std::string filled = R"({"index":1,"localOrderId":"5","hashCode":10})";
  const std::string noCode = R"({"index":1,"localOrderId":"1","hashCode":-8})";
  const std::string refused = R"({"index":2,"localOrderId":"1","hashCode":10})";
  const std::string missing = "missing localOrderId or strategyId";
  const std::string noTid = "can not find tid by index:-9";
  const auto calls = [](const std::string& order) {
    return std::vector<std::string>{"getAllTradingAccount([1],1)", "checkAccount(order.cancel,1)", "getCodeByHash(10)",
                                    "cancelOrder(" + order + ")"};
  };
  std::vector<std::string> stopped = calls("4");  // what was done before stands
  stopped.insert(stopped.end(), {"getAllTradingAccount([1],1)", "checkAccount(order.cancel,1)", "getCodeByHash(-8)"});
  struct Row {
    std::string elements;
    std::vector<std::string> messages, calls;
  };
  const std::vector<Row> rows = {
      {"", {""}, {}},
      {neither, {missing}, {}},
      {conditional, {"暂不支持条件单"}, {}},
      {conditional + "," + neither, {missing}, {}},
      {neither + "," + conditional, {"暂不支持条件单"}, {}},
      {R"({"index":1,"localOrderId":4,"hashCode":10,"strategyId":7})", {missing}, {}},
      {R"({"index":1,"localOrderId":"","hashCode":10})", {missing}, {}},
      {R"({"index":1,"localOrderId":"\u00004","hashCode":10})", {missing}, {}},
      {good, {""}, calls("4")},
      {neither + "," + good, {missing}, calls("4")},
      {neither + "," + filled + "," + good, {"已成交"}, calls("5")},
      {good + "," + noCode + "," + good, {"can not find code property by hashcode:-8"}, stopped},
      {neither + "," + unknown + "," + good, {noTid}, {"getAllTradingAccount([-9],1)"}},
      {neither + "," + refused + "," + good,
       {"未授权", ""},
       {"getAllTradingAccount([2],1)", "checkAccount(order.cancel,2)"}}};
  for (Row row : rows) {
    SCOPED_TRACE(row.elements);
    CancelHost host;
    std::vector<std::string> messages;
    for (const MobileMessage& reply : Phone().askAll("order.cancel", "[" + row.elements + "]")) {
      EXPECT_THAT(reply, FieldsAre(42, "order.cancel", _, "", 8));
      messages.push_back(reply.message);
    }
    EXPECT_EQ(messages, row.messages);
    row.calls.insert(row.calls.begin(), "checkUser(order.cancel)");
    EXPECT_EQ(host.calls(), row.calls);
  }
}

}  // namespace
}  // namespace orvane::test
