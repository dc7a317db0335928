#pragma once

#include "vocabulary/gbk.h"
#include "vocabulary/nametable.h"

namespace orvane {

// The names of the numbers that the host's records and the wire carry. A number without a row is valid: it is passed on
// unchanged.

// "side" of orders, fills and synchronising orders.
inline constexpr NumbersByName<9> sideNames({
    {"Unknown", 0},
    {"Buy", 1},
    {"Sell", 2},
    {"MarginBuying", 3},
    {"ShortSelling", 4},
    {"SecurityReimbursement", 5},
    {"SellingReimbursement", 6},
    {"ReturnFund", 7},
    {"ReturnSec", 8},
});

// "combOffset" of orders and fills, "combOffsetFlag" of synchronising orders.
inline constexpr NumbersByName<8> offsetNames({
    {"Unknown", 0},
    {"Open", 1},
    {"OpenAuto", 2},
    {"AutoOpenClose", 3},
    {"Close", 4},
    {"CloseToday", 5},
    {"CloseYesterday", 6},
    {"CloseAuto", 7},
});

// "hedge" of orders and fills.
inline constexpr NumbersByName<5> hedgeNames({
    {"Unknown", 0},
    {"Speculatio", 1},
    {"Arbitrage", 2},
    {"Hedge", 3},
    {"MarketMaker", 4},
});

// Whether a closing order closes today's or yesterday's volume first.
inline constexpr NumbersByName<3> closePriorityNames({
    {"NULL_PRIORITY", 0},
    {"TODAY_PRIORITY", 1},
    {"YESTERDAY_PRIORITY", 2},
});

// The host's filters of order lists by origin: one bit each, 127 for all. Not the flags of a Source, which are in
// orderFlagNames. GBK.
inline constexpr NamesByNumber<8> orderOriginNames({
    {1, "非本机"_gbk},
    {2, "手工单"_gbk},
    {4, "程序化单"_gbk},
    {8, "ORVPY单"_gbk},
    {16, "算法单"_gbk},
    {32, "交易助手单"_gbk},
    {64, "头寸监控单"_gbk},
    {127, "全部"_gbk},
});

// The trading gateways that the host knows.
inline constexpr NumbersByName<35> tradeChannelNames({
    {"UNKNOWN", 0},       {"XLTraderPaper", 1}, {"CTP", 2},        {"Rohon", 3},      {"HsUfx", 4},
    {"ITN", 5},           {"JSD", 6},           {"GSA", 7},        {"KD", 8},         {"HSO32", 9},
    {"FAKE", 10},         {"KingNew", 11},      {"Femas", 12},     {"Cms", 13},       {"XTEXT", 14},
    {"QDIAM", 15},        {"ZhiFu", 16},        {"QDP", 17},       {"ZhiDa", 18},     {"HxXt", 19},
    {"OrvOldFuture", 20}, {"OrvAsset", 21},     {"CTPSe", 22},     {"OrvSTK", 23},    {"XTPSTK", 24},
    {"HSIS", 25},         {"CTPStkOptSe", 26},  {"FemasFull", 27}, {"UfxStkOpt", 28}, {"Esunny", 29},
    {"XTCTP", 30},        {"TradeGateWay", 31}, {"Jees", 32},      {"PBCms", 33},     {"Pobo", 34},
});

// The value types of the host's parameter records.
inline constexpr NumbersByName<13> valueTypeNames({
    {"UNKNOWN", 0},
    {"bool", 1},
    {"int", 2},
    {"double", 3},
    {"string", 4},
    {"bool_1d", 5},
    {"int_1d", 6},
    {"double_1d", 7},
    {"string_1d", 8},
    {"bool_2d", 9},
    {"int_2d", 10},
    {"double_2d", 11},
    {"string_2d", 12},
});

// The origin flags in Source::sourceFlags. GBK.
inline constexpr NamesByNumber<32> orderFlagNames({
    {0, "未知"_gbk},
    {0x1, "非本机"_gbk},
    {0x2, "预埋单"_gbk},
    {0x4, "图中有宝"_gbk},
    {0x8, "套利宝"_gbk},
    {0x10, "价差下单"_gbk},
    {0x20, "止损获利单"_gbk},
    {0x40, "画线下单"_gbk},
    {0x80, "一键全撤"_gbk},
    {0x100, "一键撤单"_gbk},
    {0x200, "融资融券"_gbk},
    {0x400, "合约调仓"_gbk},
    {0x800, "账户调仓"_gbk},
    {0x1000, "一键全平"_gbk},
    {0x2000, "一键平仓"_gbk},
    {0x4000, "盘口下单"_gbk},
    {0x8000, "一键下单"_gbk},
    {0x10000, "手工下单"_gbk},
    {0x20000, "触发下单"_gbk},
    {0x40000, "批量下单"_gbk},
    {0x80000, "快速下单"_gbk},
    {0x100000, "普通下单"_gbk},
    {0x200000, "orvpy下单"_gbk},
    {0x400000, "交易助手"_gbk},
    {0x800000, "交易助手撤单"_gbk},
    {0x1000000, "头寸监控一键同步"_gbk},
    {0x2000000, "头寸监控自动同步"_gbk},
    {0x4000000, "监控器根据合约号撤单"_gbk},
    {0x8000000, "算法下单"_gbk},
    {0x10000000, "算法撤单"_gbk},
    {0x20000000, "程序化下单"_gbk},
    {0x40000000, "模式下单"_gbk},
});

// TradingAccountID::aimType. GBK.
inline constexpr NamesByNumber<6> aimNames({
    {0, "未知"_gbk},
    {1, "投机"_gbk},
    {2, "套利"_gbk},
    {3, "套保"_gbk},
    {4, "市商"_gbk},
    {5, ""},
});

// PositionMonitorRecord::syncRule. GBK.
inline constexpr NamesByNumber<4> syncRuleNames({
    {0, "多空单独"_gbk}, {1, "开平互转"_gbk}, {2, "净头寸"_gbk}, {3, "开平互转"_gbk},  // the same text as 1
});

}  // namespace orvane
