#pragma once

#include <array>
#include <string>

#include "tests/support/scriptedhost.h"

namespace orvane::test {

inline constexpr int64_t kHash = -5'000'000'000;
inline const SymbolCode kRebar = symbol(kHash, "rb\"2405", 3);

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

}  // namespace orvane::test
