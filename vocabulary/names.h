#pragma once

#include "vocabulary/gbk.h"
#include "vocabulary/nametable.h"

namespace orvane {

// The names behind the numbers on the wire. Replies carry the numbers, also such as no table holds.

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

// Which part of a position a closing order takes first.
inline constexpr NumbersByName<3> closePriorityNames({
    {"NULL_PRIORITY", 0},
    {"TODAY_PRIORITY", 1},
    {"YESTERDAY_PRIORITY", 2},
});

// The origins that a list of orders may be narrowed to, one bit each, the last being all of them; not the flags of a
// Source, which orderFlagName names. GBK.
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

}  // namespace orvane
