#include <algorithm>
#include <array>
#include <cmath>
#include <string>
#include <vector>

#include "tests/support/phone.h"

namespace orvane::test {
namespace {

constexpr int64_t kHash = -5'000'000'000;
const SymbolCode kRebar = symbol(kHash, "rb\"2405", 3);

// Sets the members that orders and fills share.
template <typename Record>
void fillIn(Record& record, const TradingAccountID& account) {
  record.localOrderId = -1024;
  record.account = account;
  record.code = kRebar;
  record.orderSource = {0x8400000, gbk("手机"), "never shown"};
  record.combOffset = 5;
  record.hedge = 2;
  record.side = 8;
  record.volume = 12;
  record.price = 3520.2;
}

// A host with the account 7, the instrument kHash and one record in each list. Every figure is different.
struct FullHost : ScriptedHost {
  FullHost() {
    TradingAccountID id = accountId(7, gbk("户7"), 16);
    id.aimType = 3;
    available = {9, 7};
    symbols[kHash] = kRebar;
    codeNames[kHash] = gbk("螺纹钢");
    codeTypes[kHash] = {gbk("黑色"), gbk("螺纹钢2405")};
    privileges[7] = {AccountPrivilege::OrdinaryOrder};
    marginRates[kHash] = {.account = {}, .code = {}, .a = 0.1, .c = 0.12};
    // clang-format off
    accounts = {{.id = id, .available = 3.5, .withdrawQuota = 4.25, .frozenMargin = 5, .currMargin = 6, .deposit = 50,
                 .withdraw = 20, .commission = 7.1, .closeProfit = -8, .preBalance = 9, .dynamicAmount = 10,
                 .maintainAmount = 11, .totalLever = 1.2, .netLever = -1.3, .risk = 0.14, .baseAmount = 100,
                 .preCloseProfit = 30, .todayFloatingProfit = 15}};
    positions = {{.account = id, .code = kRebar, .reserved4 = "",
        .longYesterdayVolume = 11, .longCloseYesterdayVolume = 2, .longPosition = 30, .longActiveVolume = 4,
        .longFrozenVolume = 5, .shortYesterdayVolume = 21, .shortCloseYesterdayVolume = 6, .shortPosition = 40,
        .shortActiveVolume = 7, .shortFrozenVolume = 50, .currentPrice = 3520.5, .preSettlementPrice = 3510,
        .preClosePrice = 3499.5, .longLever = 1.5, .shortLever = 3.75, .currentVolume = 71, .yesterdayVolume = 32,
        .avgPrice = 3505.25, .floatProfit = -1200.5, .todayProfit = 88.125, .todayProfitRatio = 0.01,
        .todayProfitCateRatio = -0.02, .todayProfitAccRatio = 0.03, .longTodayVolume = 19, .longMarketValue = 100.5,
        .longAvgPrice = 3501, .longFloatProfit = -12.75, .longMargin = 500.25, .shortTodayVolume = 29,
        .shortMarketValue = 300, .shortAvgPrice = 3530.5, .shortFloatProfit = 44.5, .shortMargin = 0.5}};
    monitorRecords = {{.account = id, .code = kRebar, .system = {11, 12, -13, 0.1},
        .strategyActive = {21, -22, 23, 0.2}, .reserved5 = {31, 32, 33, 0.3}, .strategyUnsend = {-41, 42, 43, 0.4},
        .reserved7 = {"never", "read"}, .accountPos = {51, 52, 53, -0.75}, .algo = {61, 62, 63, 0.6},
        .manual = {71, 72, 73, 0.7}, .theoryPosDif = -1, .longPosDif = 9'000'000'000, .shortPosDif = 3,
        .isMatchTheory = 1, .isMatchNetPos = 0x80, .syncRule = 2}};
    const std::array<std::string, 6> unread = {"never", "read"};
    credits[7] = {{unread, 1, 2, 3, 4, 0.05, 0.06, 0.07, 8, 0.09, -10, 11, -12, 13, 14,
                   15, 16, 17, 18, 19, 20, 21, 22, 23, 24, 25, 26, 27, 28.5, 29}};
    // clang-format on
    codeTypePositions = {{gbk("黑色"), 0.1, 1.2, -0.3, 4, 0.05, 6.5, 7.25, -8, 9, 10, 1e21}};
    manualPositions = {{id, kRebar, {11, 12, -13, 0.5}}};
    syncOrders = {{id, kRebar, 9'000'000'000, -0.25, 2, 99, {11, 12, -13, 0.5}}};
    Order& order = orders.emplace_back();
    fillIn(order, id);
    order.reserved5 = {0x400000, "never shown", ""};
    order.orderId = gbk("单") + "88";
    order.srcTimestamp = 1'700'000'000'123;
    order.fillAmount = -0.5;
    order.fillVolume = 4;
    order.priceType = 6;
    order.status = -3;
    order.note = gbk("已报\"");
    order.fillAvgPrice = 3519.75;
    OrderFill& fill = fills.emplace_back();
    fillIn(fill, id);
    fill.fillId = gbk("成") + "1";
    fill.exchTimestamp = -93'000'000'000;
  }
};

// One list: what is asked, what is checked, the only row and the calls between the check and the reply.
struct List {
  std::string topic, body, checked, row;
  Strings calls;
};

const std::string kUser = R"({"userCode":")" + gbk("户7") + R"(","index":7,)";
const std::string kHead = kUser + R"("accountType":1,)";
const std::string kCode = R"("codeExch":"rb\"2405.SHFE","hashCode":-5000000000,)";
const std::string kTrade =
    kHead + kCode + R"("codeName":"螺纹钢","side":8,"combOffset":5,"hedge":2,"price":3520.2,"volume":12,)";
const std::string kSource = R"("source":"手机|算法下单|交易助手",)";
const std::string kPair = R"([{"index":7,"hashCode":-5000000000}])";
const std::string kFind = "getAllTradingAccount([7],1)";
const std::string kFindCode = "getCodeByHash(-5000000000)";

// clang-format off
const std::vector<List> kLists = {
    {"account.list", "never read", "account.list",
     kUser + R"("marketType":16,"triggerOrderPrivilege":false,"ordinaryOrderPrivilege":true,"accountStatus":1})",
     {"getAllTradingAccount(ids [],3)", "hasPrivilege(7,trigger)", "hasPrivilege(7,ordinary)"}},
    {"capital.list", "[7]", "capital.list",
     kHead + R"("lastAmount":10.0,"profitRatio":0.2,"netLever":-1.3,)"
             R"("preCloseProfit":30.0,"totalLever":1.2,"risk":0.14,"available":3.5,"todayFloatingProfit":15.0,)"
             R"("amassFloatingProfit":0.0,"closeProfit":-8.0,"maintainAmount":11.0,"dynamicAmount":10.0,)"
             R"("preBalance":9.0,"withdrawQuota":4.25,"currMargin":6.0,"frozenMargin":5.0,"deposit":50.0,)"
             R"("withdraw":20.0,"commission":7.1,"accountStatus":1})",
     {"getAllTradingAccount([7],3)"}},
    {"position.list", "[7]", "position.list",
     kHead + kCode +
         R"("netLever":-2.25,"totalLever":5.25,"longLever":1.5,"shortLever":3.75,"netMarketValue":199.5,)"
         R"("totalMarketValue":400.5,"totalPosition":70,"longPosition":30,"longAvailableQuantity":25,)"
         R"("shortPosition":40,"shortAvailableQuantity":-10,"aimType":"套保","codeType":"黑色",)"
         R"("codeName":"螺纹钢2405","code":"rb\"2405","exchangeName":"上期所","todayProfitRatio":0.01,)"
         R"("todayProfitCateRatio":-0.02,"todayProfitAccRatio":0.03,"amassProfitCateRatio":-0.02,)"
         R"("amassProfitAccRatio":0.0,"historyCapitalFinalCost":0.0,"currentPrice":3520.5,)"
         R"("preSettlementPrice":3510.0,"preClosePrice":3499.5,"longYesterdayVolume":11,)"
         R"("longCloseYesterdayVolume":2,"shortYesterdayVolume":21,"shortCloseYesterdayVolume":6,)"
         R"("margin":500.75,"todayPorfit":88.125,"floatPorfit":-1200.5,"avgPrice":3505.25,"currentVolume":71,)"
         R"("yesterdayVolume":32,"longAvgPrice":3501.0,"longMarketValue":100.5,"longFloatPorfit":-12.75,)"
         R"("longTodayVolume":19.0,"shortAvgPrice":3530.5,"shortMarketValue":300.0,"shortFloatPorfit":44.5,)"
         R"("shortTodayVolume":29.0,"marginRate":0.12,"accountStatus":1})",
     {"getAllPosition([7],3)", "getCodeTypeName(-5000000000)", "queryMarginRate(7,-5000000000)"}},
    {"order.list", "[7]", "order.list",
     kTrade + R"("srcTimestamp":1700000000123,"priceType":6,"orderId":")" + gbk("单") +
         R"(88","localOrderId":"-1024","status":-3,"note":"已报\"",)" + kSource +
         R"("fillVolume":4,"fillAvgPrice":3519.75,"fillAmount":-0.5,"accountStatus":1})",
     {"getTradingAccountID([7])", "getAllOrder([7])", "getCodeProperty(-5000000000)"}},
    {"trader.list", "[7]", "trader.list",
     kTrade + R"("exchTimestamp":-93000000000,"fillId":")" + gbk("成") + R"(1","localOrderId":"-1024",)" + kSource +
         R"("accountStatus":1})",
     {"getAllFill([7],1)", "getCodeProperty(-5000000000)"}},
    {"monitor.list", "[7]", "monitor.list",
     kUser + kCode +
         R"("codeType":"黑色","theoryPosDif":-1,)"
         R"("longPosDif":9000000000,"shortPosDif":3,"isMatchTheory":true,"isMatchLongShort":false,)"
         R"("isMatchNetPos":true,"isMatchPosDif":false,"systemNetPos":11,"systemLongPos":12,)"
         R"("systemShortPos":-13,"strategyActiveNetPos":21,"strategyActiveLongPos":-22,)"
         R"("strategyActiveShortPos":23,"strategyUnsendNetPos":-41,"strategyUnsendLongPos":42,)"
         R"("strategyUnsendShortPos":43,"accountNetPos":51,"accountLongPos":52,"accountShortPos":53,)"
         R"("accountNetLever":-0.75,"manualNetPos":71,"manualLongPos":72,"manualShortPos":73,)"
         R"("algoLongPos":62,"algoShortPos":63,"syncRule":2,"syncRuleDetail":"净头寸","accountStatus":1})",
     {"getMonitorRecords", "getCodeTypeName(-5000000000)"}},
    {"position.codetype.list", "[7]", "position.codetype.list",
     R"({"codeType":"黑色","netAbsLever":0.1,"totalLever":1.2,"leverWeight":-0.3,"todayProfit":4.0,)"
     R"("profitRatio":0.05,"todayProfitType":6.5,"todayProfitAccount":7.25,"amassProfit":-8.0,)"
     R"("amassProfitType":9.0,"amassProfitAccount":10.0,"totalMarketValue":1e21})",
     {"getAllTradingAccount([7],3)", "getCodeTypePositions([7],1,1)"}},
    {"monitor.sync.order.list", kPair, "monitor.sync.order.list",
     kUser + kCode + R"("volume":9000000000,"price":-0.25,"side":2,"combOffsetFlag":99,"longPos":12,"shortPos":-13,)" +
         R"("netPos":11,"accountStatus":1})",
     {kFind, kFindCode, "getSyncOrders([7:[-5000000000]])"}},
    {"monitor.manual.list", kPair, "monitor.list",
     kUser + kCode + R"("longPos":12,"shortPos":-13,"accountStatus":1})",
     {kFind, kFindCode, "getManualPositions([7:[-5000000000]])"}},
    {"marginrate.list", R"([{"index":7,"hashCodes":[-5000000000]}])", "",
     R"({"index":7,"accountStatus":1,"rate":[{"hashCode":-5000000000,"marginRate":0.12}]})",
     {kFind, kFindCode, "queryMarginRate(7,-5000000000)"}},
    {"creditinfo.list", "[7]", "",
     R"({"index":7,"accountStatus":1,"creditInfo":[{"totalAssets":1.0,"netAssets":2.0,"cashAssets":3.0,)"
     R"("freeBalance":4.0,"longMarginRate":0.05,"shortMarginRate":0.06,"keepMarginRatio":0.07,)"
     R"("marginAvl":8.0,"marginRatio":0.09,"longProfit":-10.0,"shortProfit":11.0,"totalProfit":-12.0,)"
     R"("totalDebtBalance":13.0,"longDebtBalance":14.0,"shortDebtBalance":15.0,"debtInterest":16.0,)"
     R"("tradeDebtBalance":17.0,"longLimitAvl":18.0,"longLimitUsed":19.0,"longLimit":20.0,)"
     R"("longMarginMarket":21.0,"longMarginProfit":22.0,"longMarginUsed":23.0,"shortLimitAvl":24.0,)"
     R"("shortLimitUsed":25.0,"shortLimit":26.0,"shortMarginMarket":27.0,"shortMarginProfit":28.5,)"
     R"("shortMarginUsed":29.0}]})",
     {kFind, "queryCreditInfo(7)"}}};
// clang-format on

TEST(Lists, EachHasItsRowItsCallsAndItsCheck) {
  for (const List& list : kLists) {
    SCOPED_TRACE(list.topic);
    Strings calls = list.calls;
    if (!list.checked.empty()) calls.insert(calls.begin(), "checkUser(" + list.checked + ")");
    calls.push_back("send");
    const std::string topic = list.checked.empty() ? list.topic : list.checked;
    FullHost host;
    EXPECT_THAT(Phone::ask(list.topic, list.body), FieldsAre(42, topic, "", "[" + list.row + "]", 8));
    EXPECT_EQ(host.calls(), calls);
    host.forgetCalls();
    host.userRefusal = {9, gbk("无权限")};
    const MobileMessage reply = Phone::ask(list.topic, list.body, 24);
    if (list.checked.empty()) {
      EXPECT_THAT(reply, FieldsAre(42, topic, "", "[" + list.row + "]", 8));
    } else {
      EXPECT_THAT(reply, FieldsAre(42, topic, "无权限", "", 8));
      calls = {calls.front(), "send"};
    }
    EXPECT_EQ(host.calls(), calls);
  }
}

// What each list makes of a selector. The host has the accounts 3 and 1 with a record each, an instrument 1 whose class
// has a margin rate, and a monitor record of account 2 without a code type.
struct Selection {
  std::string topic;
  Strings bodies, calls, rows;  // the calls behind the check, and the indexes of the rows
};

// clang-format off
const Strings kMonitor = {"getMonitorRecords", "getCodeTypeName(1)", "getCodeTypeName(2)", "getCodeTypeName(1)"};
const std::vector<Selection> kSelections = {
    {"capital.list", {"[]"}, {"getAllTradingAccount([],3)"}, {"3", "1"}},
    {"capital.list", {"[4,4]"}, {"getAllTradingAccount([4,4],3)"}, {}},
    {"position.list", {"[1,3,3]"},
     {"getAllPosition([1,3,3],3)", "getCodeTypeName(1)", "queryMarginRate(3,1)", "getDefaultMarginRate(1)",
      "getCodeTypeName(1)", "queryMarginRate(1,1)", "getDefaultMarginRate(1)"}, {"3", "1"}},
    {"position.list", {"[9]"}, {"getAllPosition([9],3)"}, {}},
    {"order.list", {"[]"}, {"getAllOrder([])", "getCodeProperty(1)", "getCodeProperty(1)"}, {"3", "1"}},
    {"order.list", {"[8,3,3]"}, {"getTradingAccountID([8,3,3])", "getAllOrder([3])", "getCodeProperty(1)"}, {"3"}},
    {"order.list", {"[8,9]"}, {"getTradingAccountID([8,9])"}, {}},
    {"trader.list", {"[]"}, {"getAllFill([],1)", "getCodeProperty(1)", "getCodeProperty(1)"}, {"3", "1"}},
    {"trader.list", {"[4]"}, {"getAllFill([4],1)"}, {}},
    {"position.codetype.list", {"[9]"}, {"getAllTradingAccount([9],3)", "getCodeTypePositions([],1,1)"}, {}},
    {"position.codetype.list", {"[1,3]"}, {"getAllTradingAccount([1,3],3)", "getCodeTypePositions([3,1],1,1)"}, {}},
    {"monitor.list", {"[]", "[8,9]", "[2]", "[1,3]"}, kMonitor, {"3", "1"}},
    {"monitor.list", {"[1,3,1]"}, kMonitor, {"3", "1", "1"}},
    {"monitor.list", {"[1,8]"}, kMonitor, {"1"}},
    {"creditinfo.list", {"[]"}, {}, {}},
    {"creditinfo.list", {"[1,3,9,1]"},
     {"getAllTradingAccount([1],1)", "queryCreditInfo(1)", "getAllTradingAccount([3],1)", "queryCreditInfo(3)",
      "getAllTradingAccount([9],1)", "getAllTradingAccount([1],1)", "queryCreditInfo(1)"}, {"1", "1"}}};
// clang-format on

// The values of `key` in a list, each up to the next comma.
Strings each(const std::string& data, const std::string& key) {
  Strings values;
  const std::string opening = "\"" + key + "\":";
  for (size_t at = data.find(opening); at != std::string::npos; at = data.find(opening, at + 1)) {
    const size_t begin = at + opening.size();
    values.push_back(data.substr(begin, data.find(',', begin) - begin));
  }
  return values;
}

TEST(Lists, SelectorGoesToTheHostAndRowsKeepItsOrder) {
  for (const Selection& row : kSelections) {
    for (const std::string& body : row.bodies) {
      SCOPED_TRACE(row.topic + " " + body);
      ScriptedHost host;
      for (const int32_t index : {3, 1}) {
        host.accounts.push_back(account(index, "u"));
        host.orders.emplace_back().account = host.fills.emplace_back().account = accountId(index, "u");
        host.orders.back().code = host.fills.back().code = symbol(1, "c");
        host.positions.push_back({.account = accountId(index, "u"), .code = symbol(1, "c"), .reserved4 = ""});
        host.positions.back().longPosition = 1;
        host.monitorRecords.emplace_back().account.index = index;
        host.monitorRecords.back().code.hashCode = 1;
      }
      host.monitorRecords.emplace(std::next(host.monitorRecords.begin()))->account.index = 2;
      std::next(host.monitorRecords.begin())->code.hashCode = 2;
      host.codeTypes[1] = {};
      host.credits[1] = {};
      const std::string data = Phone::data(row.topic, body);
      EXPECT_EQ(each(data, "index"), row.rows) << data;
      EXPECT_TRUE(!row.rows.empty() || data == "[]") << data;
      Strings calls = row.calls;
      if (row.topic != "creditinfo.list") calls.insert(calls.begin(), "checkUser(" + row.topic + ")");
      calls.push_back("send");
      EXPECT_EQ(host.calls(), calls);
    }
  }
}

TEST(Lists, UnknownMarketTypePutsTheRowOutOfStep) {
  for (const std::string topic : {"capital.list", "position.list", "order.list", "trader.list"}) {
    for (const auto& [marketType, kind] : std::vector<std::pair<int32_t, std::string>>{
             {1, "0,"}, {8, "0,"}, {2, "1,"}, {16, "1,"}, {0, "\""}, {4, "\""}, {-1, "\""}}) {
      FullHost host;
      host.accounts[0].id.marketType = host.positions.front().account.marketType = marketType;
      host.orders.front().account.marketType = host.fills.front().account.marketType = marketType;
      const std::string data = Phone::data(topic, "[]");
      EXPECT_THAT(data, HasSubstr(R"("index":7,"accountType":)" + kind));
      EXPECT_THAT(data, testing::EndsWith(kind == "\"" ? R"("accountStatus",1}])" : R"("accountStatus":1}])"));
    }
  }
}

TEST(Lists, NumbersWithoutARowAndNamesThatTheHostLacks) {
  FullHost host;
  host.codeNames.clear();
  host.codeTypes.clear();
  host.available = {2};
  host.privileges.clear();
  Order& order = host.orders.front();
  order.side = -1;
  order.combOffset = 99;
  order.hedge = INT32_MAX;
  order.orderSource.sourceFlags = 0x100000;
  EXPECT_THAT(Phone::data("order.list", "[]"),
              AllOf(HasSubstr(R"("codeName":"","side":-1,"combOffset":99,"hedge":2147483647,)"),
                    HasSubstr(R"("source":"手机","fillVolume":4,)"), HasSubstr(R"("accountStatus":1})")));
  EXPECT_THAT(Phone::data("capital.list", "[]"), testing::EndsWith(R"("accountStatus":0}])"));
  EXPECT_THAT(Phone::data("account.list", "[]"),
              HasSubstr(R"("triggerOrderPrivilege":false,"ordinaryOrderPrivilege":false,"accountStatus":0})"));
  Position& position = host.positions.front();
  position.code.exchangeId = 4;
  position.account.aimType = 9;
  host.marginRates.clear();
  host.defaultMarginRate = 0.375;
  host.converted.clear();
  EXPECT_THAT(Phone::data("position.list", "[]"),
              AllOf(HasSubstr(R"("codeExch":"rb\"2405.",)"),
                    HasSubstr(R"("aimType":"","codeType":"","codeName":"","code":"rb\"2405","exchangeName":"",)"),
                    HasSubstr(R"("marginRate":0.375,"accountStatus":0}])")));
  EXPECT_THAT(host.converted, ElementsAre("", ""));  // exchange and aim go through the converter all the same
}

TEST(CapitalList, ComputesLastAmountAndProfitRatio) {
  struct Row {
    int32_t marketType;
    double base, deposit, profit, withdraw;
    std::string text;
  };
  const std::vector<Row> rows = {{1, 100, 50, 30, 20, R"("lastAmount":160.0,"profitRatio":0.2,)"},
                                 {8, 100, 50, 30, 20, R"("lastAmount":160.0,"profitRatio":0.2,)"},
                                 {2, 100, 50, 30, 20, R"("lastAmount":10.0,"profitRatio":0.2,)"},
                                 {16, 100, 50, 30, 20, R"("lastAmount":10.0,"profitRatio":0.2,)"},
                                 {4, 100, 50, 30, 20, R"("lastAmount",160.0:"profitRatio",0.2:)"},
                                 {1, 0, 0, 30, 20, R"("lastAmount":10.0,"profitRatio":0.0,)"},
                                 {1, 0.000001, 0, 30, 0, R"("profitRatio":0.0,)"},
                                 {1, -100, 50, 30, 0, R"("lastAmount":-20.0,"profitRatio":0.0,)"},
                                 {1, std::nan(""), 50, 30, 0, R"("lastAmount":,"profitRatio":0.0,)"}};
  for (const Row& row : rows) {
    FullHost host;
    TradingAccount& one = host.accounts.front();
    one.id.marketType = row.marketType;
    one.baseAmount = row.base;
    one.deposit = row.deposit;
    one.preCloseProfit = row.profit;
    one.withdraw = row.withdraw;
    EXPECT_THAT(Phone::data("capital.list", "[]"), HasSubstr(row.text));
  }
}

TEST(PositionList, KeepsRowsWithAPositionOrAnActiveVolume) {
  using P = Position;
  for (const auto member : {&P::longPosition, &P::longActiveVolume, &P::shortPosition, &P::shortActiveVolume}) {
    ScriptedHost host;
    Position& past = host.positions.emplace_back();
    past.longYesterdayVolume = past.shortYesterdayVolume = past.longTodayVolume = past.shortTodayVolume = 5;
    EXPECT_EQ(Phone::data("position.list", "[]"), "[]");
    past.*member = -1;
    EXPECT_NE(Phone::data("position.list", "[]"), "[]");
  }
}

TEST(PositionList, AvailableVolumeDependsOnTheClassAndSumsWrapAround) {
  struct Row {
    int32_t codeClass;
    int64_t yesterday, closed, position, frozen;
    std::string available;
  };
  const std::vector<Row> rows = {{0, 10, 3, 25, 2, "5"},
                                 {-1, 10, 3, 25, 2, "23"},
                                 {1, 10, 3, 25, 2, "23"},
                                 {2, 10, 3, 25, 2, "23"},
                                 {0, 4, 6, 9, 1, "-3"},
                                 {1, 4, 6, 9, 10, "-1"},
                                 {0, INT64_MIN, 1, 1, 0, "9223372036854775807"},
                                 {1, 0, 0, INT64_MAX, -1, "-9223372036854775808"}};
  for (const Row& row : rows) {
    FullHost host;
    Position& p = host.positions.front();
    p.code.codeClass = row.codeClass;
    p.longYesterdayVolume = p.shortYesterdayVolume = row.yesterday;
    p.longCloseYesterdayVolume = p.shortCloseYesterdayVolume = row.closed;
    p.longPosition = p.shortPosition = row.position;
    p.longFrozenVolume = p.shortFrozenVolume = row.frozen;
    const std::string data = Phone::data("position.list", "[]");
    EXPECT_THAT(each(data, "longAvailableQuantity"), ElementsAre(row.available));
    EXPECT_THAT(each(data, "shortAvailableQuantity"), ElementsAre(row.available));
    const auto total = static_cast<int64_t>(static_cast<uint64_t>(row.position) * 2);
    EXPECT_THAT(each(data, "totalPosition"), ElementsAre(std::to_string(total)));
  }
}

TEST(Lists, NameTheAimAndTheSyncRuleAndWriteFlagsAsBooleans) {
  const std::vector<std::tuple<int32_t, std::string, std::string>> rows = {
      {0, "未知", "多空单独"}, {1, "投机", "开平互转"}, {2, "套利", "净头寸"}, {4, "市商", "多空单独"},
      {5, "", "多空单独"},     {6, "", "多空单独"},     {-1, "", "多空单独"}};
  for (const auto& [number, aim, rule] : rows) {
    FullHost host;
    host.positions.front().account.aimType = number;
    EXPECT_THAT(Phone::data("position.list", "[]"), HasSubstr(R"("aimType":")" + aim + R"(","codeType")"));
    PositionMonitorRecord& record = host.monitorRecords.front();
    record.syncRule = number;
    record.isMatchTheory = record.isMatchNetPos = 0;
    record.isMatchLongShort = record.isMatchPosDif = 2;
    const std::string data = Phone::data("monitor.list", "[]");
    EXPECT_THAT(data, HasSubstr(R"("isMatchTheory":false,"isMatchLongShort":true,"isMatchNetPos":false,)"
                                R"("isMatchPosDif":true,)"));
    EXPECT_THAT(data, HasSubstr(R"("syncRule":)" + std::to_string(number) + R"(,"syncRuleDetail":")" + rule + "\""));
  }
}

TEST(MarginRate, AnswersPairByPair) {
  ScriptedHost host;
  host.accounts = {account(3, "u3"), account(1)};
  host.symbols = {{-5, symbol(-5, "a", 2, 1)}, {6, symbol(6, "b")}, {7, symbol(7, "stock", 1, 0)}};
  host.marginRates[-5].a = 0.1;
  host.marginRates[7].a = 1;
  host.defaultMarginRate = 0.5;
  const std::string body =
      R"([{"index":3,"hashCodes":[6,-5,7,8,-5]},{"index":9,"hashCodes":[6]},{"index":1,"hashCodes":[]},)"
      R"({"index":3,"hashCodes":[8]}])";
  EXPECT_EQ(Phone::data("marginrate.list", body),
            R"([{"index":3,"accountStatus":1,"rate":[{"hashCode":6,"marginRate":0.5},)"
            R"({"hashCode":-5,"marginRate":0.1},{"hashCode":-5,"marginRate":0.1}]},)"
            R"({"index":1,"accountStatus":1,"rate":[]},{"index":3,"accountStatus":1,"rate":[]}])");
  EXPECT_THAT(
      host.calls(),
      ElementsAre("getAllTradingAccount([3],1)", "getCodeByHash(6)", "queryMarginRate(3,6)", "getDefaultMarginRate(6)",
                  "getCodeByHash(-5)", "queryMarginRate(3,-5)", "getCodeByHash(7)", "getCodeByHash(8)",
                  "getCodeByHash(-5)", "queryMarginRate(3,-5)", "getAllTradingAccount([9],1)",
                  "getAllTradingAccount([1],1)", "getAllTradingAccount([3],1)", "getCodeByHash(8)", "send"));
}

TEST(MarginRate, PicksOneOfFourRatios) {
  const double nan = std::nan("");
  struct Row {
    double a, b, c, d;
    std::string rate;
  };
  const std::vector<Row> rows = {
      {0.1, 8, 0.12, 9, "0.12"}, {0.1, 8, 0.05, 9, "0.1"}, {0.1, 8, nan, 9, "0.1"}, {1e-300, 8, 0, 9, "1e-300"},
      {0, 100, 7, 200, "200.0"}, {0, 8, 7, 6, "8.0"},      {-1, 8, 7, 9, "9.0"},    {nan, 8, 7, 9, "9.0"},
      {0, 8, 7, nan, "8.0"},     {0, nan, 7, 6, ""},       {0, -2, 7, -3, "-2.0"},  {0, -0.0, 7, 0.0, "-0.0"},
      {0, 0.0, 7, -0.0, "0.0"},  {HUGE_VAL, 8, 7, 9, ""},  {0, 8, 7, HUGE_VAL, ""}, {0, 8, HUGE_VAL, 9, "9.0"}};
  for (const Row& row : rows) {
    FullHost host;
    host.marginRates[kHash] = {.account = {}, .code = {}, .a = row.a, .b = row.b, .c = row.c, .d = row.d};
    EXPECT_THAT(Phone::data("marginrate.list", R"([{"index":7,"hashCodes":[-5000000000]}])"),
                HasSubstr(R"("marginRate":)" + row.rate + "}"));
  }
}

TEST(MonitorPairs, GoToTheMonitorSortedAndOnce) {
  // The pairs, and what the monitor is asked for. The manual topics do not ask it for pairs of which none is known.
  const std::vector<std::pair<std::string, std::string>> rows = {
      {R"({"index":3,"hashCode":30},{"index":-1,"hashCode":20},{"index":3,"hashCode":-7},{"index":3,"hashCode":30})",
       "([-1:[20],3:[-7,30]])"},
      {R"({"index":3,"hashCode":99},{"index":9,"hashCode":20},{"index":-1,"hashCode":30})", "([-1:[30]])"},
      {R"({"index":9,"hashCode":20})", "none"},
      {R"({"index":3,"hashCode":99})", "none"},
      {"", "([])"}};
  const std::vector<std::tuple<std::string, std::string, std::string, std::string>> topics = {
      {"monitor.sync.order.list", "monitor.sync.order.list", "[]", "getSyncOrders"},
      {"monitor.manual.list", "monitor.list", "[]", "getManualPositions"},
      {"monitor.manual.clean", "monitor.manual.clean", "", "cleanManualPositions"}};
  for (const auto& [pairs, codes] : rows) {
    for (const auto& [topic, replyTopic, data, call] : topics) {
      SCOPED_TRACE(topic + pairs);
      ScriptedHost host;
      host.accounts = {account(3), account(-1)};
      host.symbols = {{30, symbol(30, "a")}, {20, symbol(20, "b")}, {-7, symbol(-7, "c")}};
      host.userRefusal.code = data.empty() ? 1 : 0;  // not asked by monitor.manual.clean
      EXPECT_THAT(Phone::ask(topic, "[" + pairs + "]"), FieldsAre(42, replyTopic, "", data, 8));
      const std::string expected = call == "getSyncOrders" && codes == "none" ? call + "([])" : call + codes;
      const Strings calls = host.calls();
      EXPECT_EQ(std::ranges::count_if(calls, [&call = call](const auto& each) { return each.starts_with(call); }),
                expected.ends_with("none") ? 0 : 1);
      EXPECT_TRUE(expected.ends_with("none") || calls.at(calls.size() - 2) == expected) << calls.at(calls.size() - 2);
    }
  }
}

TEST(MonitorPairs, AccountThatIsNamedAgainKeepsItsFirstRecord) {
  ScriptedHost host;
  host.accounts = {account(3, "first")};
  host.symbols = {{20, symbol(20, "b")}, {30, symbol(30, "a")}};
  host.onCall = [&](const std::string& call) {
    if (call == "getCodeByHash(30)") host.accounts = {account(3, "later")};
  };
  Phone::data("monitor.sync.order.list", R"([{"index":3,"hashCode":30},{"index":3,"hashCode":20}])");
  EXPECT_THAT(host.calls(), testing::Contains("getSyncOrders([3!first:[20,30]])"));
}

}  // namespace
}  // namespace orvane::test
