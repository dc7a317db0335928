#include <string>
#include <vector>

#include "tests/support/phone.h"

namespace orvane::test {
namespace {

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
  // clang-format off
  host.monitorRecords = {{
      .account = accountId(7, gbk("户7")), .code = symbol(-5'000'000'000, "rb2405", 3), .system = {11, 12, -13, 0.1},
      .strategyActive = {21, -22, 23, 0.2}, .reserved5 = {31, 32, 33, 0.3}, .strategyUnsend = {-41, 42, 43, 0.4},
      .reserved7 = {"never", "read"}, .accountPos = {51, 52, 53, -0.75}, .algo = {61, 62, 63, 0.6},
      .manual = {71, 72, 73, 0.7}, .theoryPosDif = -1, .longPosDif = 9'000'000'000, .shortPosDif = 3,
      .isMatchTheory = 1, .isMatchNetPos = 0x80, .syncRule = 2}};
  // clang-format on
  host.codeTypes[-5'000'000'000] = {gbk("黑色"), gbk("螺纹钢")};
  EXPECT_EQ(Phone().data("monitor.list", "[7]"),
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
  PositionMonitorRecord& rich = host.monitorRecords.front();
  rich.isMatchTheory = rich.isMatchNetPos = 0;
  rich.isMatchLongShort = rich.isMatchPosDif = 2;
  EXPECT_THAT(Phone().data("monitor.list", "[7]"), HasSubstr(R"("isMatchTheory":false,"isMatchLongShort":true,)"
                                                             R"("isMatchNetPos":false,"isMatchPosDif":true,)"));
}

TEST(MonitorList, SelectorIsAPreference) {
  const std::vector<std::pair<std::string, std::vector<std::string>>> rows = {
      {"[]", {"20", "10", "21"}},
      {"[8,9]", {"20", "10", "21"}},
      {"[3]", {"20", "10", "21"}},  // its one record has no code type
      {"[1,2]", {"20", "10", "21"}},
      {"[1,8]", {"10"}},
      {"[2,1,2]", {"20", "20", "10", "21", "21"}}};
  for (const auto& [body, codes] : rows) {
    ScriptedHost host;
    host.monitorRecords = {record(2, 20), record(3, 30), record(1, 10), record(2, 21)};
    host.codeTypes = {{20, {}}, {10, {}}, {21, {}}};
    EXPECT_EQ(each(Phone().data("monitor.list", body), "hashCode"), codes) << body;
    EXPECT_THAT(host.calls(), ElementsAre("checkUser(monitor.list)", "getMonitorRecords", "getCodeTypeName(20)",
                                          "getCodeTypeName(30)", "getCodeTypeName(10)", "getCodeTypeName(21)"));
    host.codeTypes.clear();
    EXPECT_EQ(Phone().data("monitor.list", body), "[]");
  }
}

TEST(MonitorList, NamesTheSyncRuleAndKeepsItsNumber) {
  ScriptedHost host;
  for (const int32_t rule : {0, 1, 2, 3, 4, 7, -1}) {
    host.monitorRecords.push_back(record(1, 10, rule));
  }
  host.codeTypes[10] = {};
  const std::string data = Phone().data("monitor.list", "[]");
  EXPECT_THAT(each(data, "syncRule"), ElementsAre("0", "1", "2", "3", "4", "7", "-1"));
  EXPECT_THAT(each(data, "syncRuleDetail"),
              ElementsAre(R"("多空单独")", R"("开平互转")", R"("净头寸")", R"("开平互转")", R"("多空单独")",
                          R"("多空单独")", R"("多空单独")"));
}

TEST(CodeTypeList, WritesEveryMemberInOrder) {
  ScriptedHost host;
  host.codeTypePositions = {{gbk("黑色"), 0.1, 1.2, -0.3, 4, 0.05, 6.5, 7.25, -8, 9, 10, 1e21}};
  EXPECT_EQ(Phone().data("position.codetype.list", "[1]"),
            R"([{"codeType":"黑色","netAbsLever":0.1,"totalLever":1.2,"leverWeight":-0.3,"todayProfit":4.0,)"
            R"("profitRatio":0.05,"todayProfitType":6.5,"todayProfitAccount":7.25,"amassProfit":-8.0,)"
            R"("amassProfitType":9.0,"amassProfitAccount":10.0,"totalMarketValue":1e21}])");
}

TEST(CodeTypeList, ProxyIsAskedWhateverTheSelectorGives) {
  const std::vector<std::pair<std::string, std::string>> rows = {
      {"[]", "[3,1]"}, {"[1]", "[1]"}, {"[9]", "[]"}, {"[1,3]", "[3,1]"}};
  for (const auto& [body, ids] : rows) {
    ScriptedHost host;
    host.accounts = {account(3), account(1)};
    EXPECT_EQ(Phone().data("position.codetype.list", body), "[]");
    EXPECT_THAT(host.calls(), ElementsAre("checkUser(position.codetype.list)", "getAllTradingAccount(" + body + ",3)",
                                          "getCodeTypePositions(" + ids + ",1,1)"));
  }
}

}  // namespace
}  // namespace orvane::test
