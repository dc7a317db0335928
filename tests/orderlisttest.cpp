#include <string>
#include <vector>

#include "tests/support/phone.h"

namespace orvane::test {
namespace {

// An order or a fill with the members that both have.
template <typename Record>
Record recordOf(int32_t index, int64_t localOrderId) {
  Record record;
  record.localOrderId = localOrderId;
  record.account = accountId(index);
  record.code = symbol(5, "c");
  return record;
}

template <typename Record>
Record richRecord() {
  ScriptedHost::current().codeNames[9'000'000'000] = gbk("沪深300");
  auto rich = recordOf<Record>(7, -1024);
  rich.account = accountId(7, gbk("户7"), 2);
  rich.code = symbol(9'000'000'000, "IF\"2405", 3);
  rich.orderSource = {0x8400000, gbk("手机"), "never shown"};
  rich.combOffset = 5;
  rich.hedge = 2;
  rich.side = 8;
  rich.volume = 12;
  rich.price = 3520.2;
  return rich;
}

const std::string kRichHead = R"([{"userCode":")" + gbk("户7") +
                              R"(","index":7,"accountType":1,"codeExch":"IF\"2405.SHFE",)"
                              R"("hashCode":9000000000,"codeName":"沪深300","side":8,"combOffset":5,"hedge":2,)"
                              R"("price":3520.2,"volume":12,)";

TEST(OrderList, WritesEveryMemberInOrder) {
  ScriptedHost host;
  Order& rich = host.orders.emplace_back(richRecord<Order>());
  rich.reserved5 = {0x400000, "never shown", ""};
  rich.orderId = gbk("单") + "88";
  rich.srcTimestamp = 1'700'000'000'123;
  rich.fillAmount = -0.5;
  rich.fillVolume = 4;
  rich.priceType = 6;
  rich.status = -3;
  rich.note = gbk("已报\"");
  rich.fillAvgPrice = 3519.75;
  host.accounts = {account(7)};
  EXPECT_EQ(Phone().data("order.list", "[7]"),
            kRichHead + R"("srcTimestamp":1700000000123,"priceType":6,"orderId":")" + gbk("单") +
                R"(88","localOrderId":"-1024","status":-3,"note":"已报\"",)"
                R"("source":"手机|算法下单|交易助手","fillVolume":4,"fillAvgPrice":3519.75,)"
                R"("fillAmount":-0.5,"accountStatus":1}])");
  EXPECT_THAT(host.calls(), ElementsAre("checkUser(order.list)", "getTradingAccountID([7])", "getAllOrder([7])",
                                        "getCodeProperty(9000000000)"));
}

TEST(OrderList, SelectorOfUnknownAccountsDoesNotWiden) {
  struct Row {
    std::string body;
    std::vector<std::string> calls;
    std::string data;  // a regular expression
  };
  const std::string name = "getCodeProperty(5)";
  const std::vector<Row> rows = {
      {"[]", {"getAllOrder([])", name, name}, R"(.*"localOrderId":"30".*"localOrderId":"10".*)"},
      {"[1]", {"getTradingAccountID([1])", "getAllOrder([1])", name}, R"(.*"localOrderId":"10".*)"},
      {"[8,3,3]", {"getTradingAccountID([8,3,3])", "getAllOrder([3])", name}, R"(.*"localOrderId":"30".*)"},
      {"[8,9]", {"getTradingAccountID([8,9])"}, R"(\[\])"}};
  for (Row row : rows) {
    ScriptedHost host;
    host.accounts = {account(1), account(3)};
    host.orders = {recordOf<Order>(3, 30), recordOf<Order>(1, 10)};
    EXPECT_THAT(Phone().data("order.list", row.body), testing::MatchesRegex(row.data));
    row.calls.insert(row.calls.begin(), "checkUser(order.list)");
    EXPECT_EQ(host.calls(), row.calls) << row.body;
  }
}

TEST(OrderList, NumbersOfNoTableGoThroughAndNamesMayBeMissing) {
  ScriptedHost host;
  Order& order = host.orders.emplace_back(recordOf<Order>(1, 42));
  order.side = -1;
  order.combOffset = 99;
  order.hedge = INT32_MAX;
  order.orderSource.sourceFlags = 0x100000;
  EXPECT_THAT(Phone().data("order.list", "[]"),
              AllOf(HasSubstr(R"("codeName":"","side":-1,"combOffset":99,"hedge":2147483647,)"),
                    HasSubstr(R"("note":"","source":"","fillVolume":0,)")));
  order.account.marketType = 3;
  EXPECT_THAT(Phone().data("order.list", "[]"), HasSubstr(R"("accountType":"codeExch","c.":"hashCode",5:)"));
}

TEST(FillList, WritesEveryMemberInOrder) {
  ScriptedHost host;
  OrderFill& rich = host.fills.emplace_back(richRecord<OrderFill>());
  rich.fillId = gbk("成") + "1";
  rich.exchTimestamp = -93'000'000'000;
  EXPECT_EQ(Phone().data("trader.list", "[7,7]"),
            kRichHead + R"("exchTimestamp":-93000000000,"fillId":")" + gbk("成") +
                R"(1","localOrderId":"-1024","source":"手机|算法下单|交易助手","accountStatus":1}])");
  EXPECT_THAT(host.calls(),
              ElementsAre("checkUser(trader.list)", "getAllFill([7,7],1)", "getCodeProperty(9000000000)"));
}

TEST(FillList, EachFillIsARowOfAnAvailableAccount) {
  ScriptedHost host;
  host.fills = {recordOf<OrderFill>(3, 30), recordOf<OrderFill>(1, 10), recordOf<OrderFill>(3, 30)};
  host.fills.front().account.marketType = 4;
  host.available = {1};
  EXPECT_THAT(Phone().data("trader.list", "[]"),
              testing::MatchesRegex(R"(\[\{"userCode":"","index":3,"accountType":"codeExch","c.":.*"accountStatus",1},)"
                                    R"(\{.*"index":1,.*"localOrderId":"10","source":"","accountStatus":1},)"
                                    R"(\{.*"index":3,.*"localOrderId":"30","source":"","accountStatus":1}\])"));
  EXPECT_EQ(Phone().data("trader.list", "[4]"), "[]");
  EXPECT_THAT(host.calls(),
              ElementsAre("checkUser(trader.list)", "getAllFill([],1)", "getCodeProperty(5)", "getCodeProperty(5)",
                          "getCodeProperty(5)", "checkUser(trader.list)", "getAllFill([4],1)"));
}

}  // namespace
}  // namespace orvane::test
