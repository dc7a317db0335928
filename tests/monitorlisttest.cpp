#include <cmath>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "tests/support/phone.h"

namespace orvane::test {
namespace {

using testing::_;
using testing::ElementsAre;
using testing::FieldsAre;
using testing::HasSubstr;

PositionMonitorRecord record(int32_t index, int64_t hashCode, int32_t syncRule = 0) {
  PositionMonitorRecord one;
  one.account = accountId(index);
  one.code = symbol(hashCode, "c");
  one.syncRule = syncRule;
  return one;
}

// What stands behind `key` in each row, up to the next comma.
std::vector<std::string> each(const std::string& data, const std::string& key) {
  std::vector<std::string> values;
  const std::string opening = "\"" + key + "\":";
  for (size_t at = data.find(opening); at != std::string::npos; at = data.find(opening, at + 1)) {
    const size_t begin = at + opening.size();
    values.push_back(data.substr(begin, data.find(',', begin) - begin));
  }
  return values;
}

TEST(MonitorList, WritesEveryMemberInOrder) {
  ScriptedHost host;
  gBaseInformationMap->exchangeNames = {{3, "SHFE"}};
  PositionMonitorRecord rich = record(7, -5'000'000'000, 2);
  rich.account.userCode = gbk("户7");
  rich.code = symbol(-5'000'000'000, "rb2405", 3);
  rich.system = {11, 12, -13, 0.1};
  rich.strategyActive = {21, -22, 23, 0.2};
  rich.reserved5 = {31, 32, 33, 0.3};
  rich.strategyUnsend = {-41, 42, 43, 0.4};
  rich.reserved7 = {"never", "read"};
  rich.accountPos = {51, 52, 53, -0.75};
  rich.algo = {61, 62, 63, 0.6};
  rich.manual = {71, 72, 73, 0.7};
  rich.theoryPosDif = -1;
  rich.longPosDif = 9'000'000'000;
  rich.shortPosDif = 3;
  rich.isMatchTheory = 1;
  rich.isMatchNetPos = 0x80;
  host.monitorRecords = {rich};
  host.codeTypes[-5'000'000'000] = {gbk("黑色"), gbk("螺纹钢")};
  const MobileMessage reply = Phone().ask("monitor.list", "[7]");
  EXPECT_THAT(reply, FieldsAre(42, "monitor.list", "", _, 8));
  EXPECT_EQ(reply.data,
            R"([{"userCode":")" + gbk("户7") +
                R"(","index":7,"codeExch":"rb2405.SHFE","hashCode":-5000000000,"codeType":"黑色","theoryPosDif":-1,)"
                R"("longPosDif":9000000000,"shortPosDif":3,"isMatchTheory":true,"isMatchLongShort":false,)"
                R"("isMatchNetPos":true,"isMatchPosDif":false,"systemNetPos":11,"systemLongPos":12,)"
                R"("systemShortPos":-13,"strategyActiveNetPos":21,"strategyActiveLongPos":-22,)"
                R"("strategyActiveShortPos":23,"strategyUnsendNetPos":-41,"strategyUnsendLongPos":42,)"
                R"("strategyUnsendShortPos":43,"accountNetPos":51,"accountLongPos":52,"accountShortPos":53,)"
                R"("accountNetLever":-0.75,"manualNetPos":71,"manualLongPos":72,"manualShortPos":73,)"
                R"("algoLongPos":62,"algoShortPos":63,"syncRule":2,"syncRuleDetail":"净头寸","accountStatus":1}])");
  EXPECT_THAT(host.calls(),
              ElementsAre("checkUser(monitor.list)", "getMonitorRecords", "getCodeTypeName(-5000000000)"));
  host.monitorRecords.front().isMatchTheory = host.monitorRecords.front().isMatchNetPos = 0;
  host.monitorRecords.front().isMatchLongShort = host.monitorRecords.front().isMatchPosDif = 2;
  EXPECT_THAT(Phone().ask("monitor.list", "[7]").data, HasSubstr(R"("isMatchTheory":false,"isMatchLongShort":true,)"
                                                                 R"("isMatchNetPos":false,"isMatchPosDif":true,)"));
}

TEST(MonitorList, SelectorIsAPreference) {
  struct Row {
    std::string body;
    std::vector<std::string> indexes, codes;
  };
  const std::vector<Row> rows = {
      {"[]", {"2", "1", "2"}, {"20", "10", "21"}},
      {"[8,9]", {"2", "1", "2"}, {"20", "10", "21"}},
      {"[3]", {"2", "1", "2"}, {"20", "10", "21"}},  // its one record has no code type
      {"[1,2]", {"2", "1", "2"}, {"20", "10", "21"}},
      {"[1,8]", {"1"}, {"10"}},
      {"[2,1,2]", {"2", "2", "1", "2", "2"}, {"20", "20", "10", "21", "21"}},
  };
  for (const Row& row : rows) {
    ScriptedHost host;
    host.monitorRecords = {record(2, 20), record(3, 30), record(1, 10), record(2, 21)};
    host.codeTypes = {{20, {}}, {10, {}}, {21, {}}};
    const std::string data = Phone().ask("monitor.list", row.body).data;
    EXPECT_EQ(each(data, "index"), row.indexes) << row.body;
    EXPECT_EQ(each(data, "hashCode"), row.codes) << row.body;
    EXPECT_THAT(host.calls(), ElementsAre("checkUser(monitor.list)", "getMonitorRecords", "getCodeTypeName(20)",
                                          "getCodeTypeName(30)", "getCodeTypeName(10)", "getCodeTypeName(21)"));
    host.codeTypes.clear();
    EXPECT_EQ(Phone().ask("monitor.list", row.body).data, "[]");
  }
}

TEST(MonitorList, NamesTheSyncRuleAndKeepsItsNumber) {
  ScriptedHost host;
  for (const int32_t rule : {0, 1, 2, 3, 4, 7, -1}) {
    host.monitorRecords.push_back(record(1, 10, rule));
  }
  host.codeTypes[10] = {};
  const std::string data = Phone().ask("monitor.list", "[]").data;
  EXPECT_THAT(each(data, "syncRule"), ElementsAre("0", "1", "2", "3", "4", "7", "-1"));
  EXPECT_THAT(each(data, "syncRuleDetail"),
              ElementsAre(R"("多空单独")", R"("开平互转")", R"("净头寸")", R"("开平互转")", R"("多空单独")",
                          R"("多空单独")", R"("多空单独")"));
}

TEST(CodeTypeList, WritesEveryMemberInOrder) {
  ScriptedHost host;
  host.accounts = {account(3), account(1)};
  host.codeTypePositions = {{gbk("黑色"), 0.1, 1.2, -0.3, 4, 0.05, 6.5, 7.25, -8, 9, 10, 1e21}, {}};
  host.codeTypePositions.back().leverWeight = std::nan("");
  const MobileMessage reply = Phone().ask("position.codetype.list", "[1]");
  EXPECT_THAT(reply, FieldsAre(42, "position.codetype.list", "", _, 8));
  EXPECT_EQ(reply.data,
            R"([{"codeType":"黑色","netAbsLever":0.1,"totalLever":1.2,"leverWeight":-0.3,"todayProfit":4.0,)"
            R"("profitRatio":0.05,"todayProfitType":6.5,"todayProfitAccount":7.25,"amassProfit":-8.0,)"
            R"("amassProfitType":9.0,"amassProfitAccount":10.0,"totalMarketValue":1e21},)"
            R"({"codeType":"","netAbsLever":0.0,"totalLever":0.0,"leverWeight":,"todayProfit":0.0,)"
            R"("profitRatio":0.0,"todayProfitType":0.0,"todayProfitAccount":0.0,"amassProfit":0.0,)"
            R"("amassProfitType":0.0,"amassProfitAccount":0.0,"totalMarketValue":0.0}])");
}

TEST(CodeTypeList, ProxyIsAskedWhateverTheSelectorGives) {
  const std::vector<std::pair<std::string, std::string>> rows = {
      {"[]", "[3,1]"}, {"[1]", "[1]"}, {"[9]", "[]"}, {"[1,3]", "[3,1]"}};
  for (const auto& [body, ids] : rows) {
    ScriptedHost host;
    host.accounts = {account(3), account(1)};
    EXPECT_EQ(Phone().ask("position.codetype.list", body).data, "[]");
    EXPECT_THAT(host.calls(), ElementsAre("checkUser(position.codetype.list)", "getAllTradingAccount(" + body + ",3)",
                                          "getCodeTypePositions(" + ids + ",1,1)"));
  }
}

TEST(Lists, RefusedUserCostsNoOtherCall) {
  for (const std::string topic : {"position.list", "order.list", "trader.list", "monitor.list",
                                  "position.codetype.list", "monitor.sync.order.list", "monitor.manual.list"}) {
    const std::string named = topic == "monitor.manual.list" ? "monitor.list" : topic;
    ScriptedHost host;
    host.userRefusal = {9, gbk("无权限")};
    EXPECT_THAT(Phone().ask(topic, "[]"), FieldsAre(42, named, "无权限", "", 8));
    EXPECT_THAT(host.calls(), ElementsAre("checkUser(" + named + ")"));
  }
}

}  // namespace
}  // namespace orvane::test
