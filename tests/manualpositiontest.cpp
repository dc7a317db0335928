#include <string>
#include <vector>

#include "tests/support/phone.h"

namespace orvane::test {
namespace {

TEST(ManualList, WritesEveryMemberInOrder) {
  ScriptedHost host;
  const SymbolCode code = symbol(-5'000'000'000, "rb2405", 3);
  host.manualPositions = {{accountId(7, gbk("户7")), code, {11, 12, -13, 0.5}}};
  EXPECT_EQ(Phone().ask("monitor.manual.list", "[]").data,
            R"([{"userCode":")" + gbk("户7") +
                R"(","index":7,"codeExch":"rb2405.SHFE","hashCode":-5000000000,"longPos":12,)"
                R"("shortPos":-13,"accountStatus":1}])");
}

TEST(ManualPositions, ListAndCleanSkipARequestThatResolvesToNothing) {
  struct Row {
    std::string body;
    std::vector<std::string> calls;
    std::string codes;  // what the service is asked for, if it is
  };
  const std::vector<Row> rows = {
      {"[]", {}, "([])"},
      {R"([{"index":9,"hashCode":20}])", {"getAllTradingAccount([9],1)"}, ""},
      {R"([{"index":1,"hashCode":99}])", {"getAllTradingAccount([1],1)", "getCodeByHash(99)"}, ""},
      {R"([{"index":9,"hashCode":20},{"index":1,"hashCode":20}])",
       {"getAllTradingAccount([9],1)", "getAllTradingAccount([1],1)", "getCodeByHash(20)"},
       "([1:[20]])"}};
  for (const Row& row : rows) {
    ScriptedHost host;
    host.accounts = {account(1)};
    host.symbols[20] = symbol(20, "b");
    std::vector<std::string> listCalls = {"checkUser(monitor.list)"};
    listCalls.insert(listCalls.end(), row.calls.begin(), row.calls.end());
    std::vector<std::string> cleanCalls = row.calls;
    if (!row.codes.empty()) {
      listCalls.push_back("getManualPositions" + row.codes);
      cleanCalls.push_back("cleanManualPositions" + row.codes);
    }
    EXPECT_THAT(Phone().ask("monitor.manual.list", row.body), FieldsAre(42, "monitor.list", "", "[]", 8));
    EXPECT_EQ(host.calls(), listCalls) << row.body;
    host.forgetCalls();
    host.userRefusal = {1, "not asked here"};
    EXPECT_THAT(Phone().ask("monitor.manual.clean", row.body), FieldsAre(42, "monitor.manual.clean", "", "", 8));
    EXPECT_EQ(host.calls(), cleanCalls) << row.body;
  }
}

TEST(ManualUpdate, StoresWhatTheHostKnowsAndAsksNoEntitlement) {
  ScriptedHost host;
  host.accounts = {account(1, "u1")};
  host.symbols[20] = symbol(20, "b", 6);
  host.userRefusal = {1, "not asked here"};
  const std::string unknown = R"({"index":9,"hashCode":20,"longPos":1,"shortPos":2}])";
  const std::string others = R"([{"index":1,"hashCode":99,"longPos":1,"shortPos":2},)"
                             R"({"index":1,"hashCode":20,"longPos":-5,"shortPos":9000000000},)";
  EXPECT_EQ(Phone().data("monitor.manual.update", others + unknown), "");
  ASSERT_EQ(host.updated.size(), 1U);
  EXPECT_THAT(host.updated.front(),
              FieldsAre(_, FieldsAre(20, 1, 6, "b"), FieldsAre(0, -5, 9'000'000'000, 0.0), ElementsAre(0, 0)));
  EXPECT_EQ(host.updated.front().account.userCode, "u1");
  EXPECT_EQ(Phone().data("monitor.manual.update", "[" + unknown), "");
  EXPECT_THAT(host.calls(),
              ElementsAre("getAllTradingAccount([1],1)", "getCodeByHash(99)", "getAllTradingAccount([1],1)",
                          "getCodeByHash(20)", "getAllTradingAccount([9],1)", "updateManualPositions(1)",
                          "getAllTradingAccount([9],1)", "updateManualPositions(0)"));
}

}  // namespace
}  // namespace orvane::test
