#include "serialise/positionlist.h"

#include <cmath>

#include "host/common.h"
#include "serialise/codetext.h"
#include "serialise/replywriter.h"
#include "serialise/rowhead.h"
#include "vocabulary/names.h"

namespace orvane {

namespace {

std::string aimName(int32_t aimType) { return CodeConvert::gbk_to_utf8(std::string(aimNames.valueOr(aimType, ""))); }

// The host's volumes are unchecked, so sums of them wrap around, which signed overflow would not.
int64_t sum(int64_t a, int64_t b) { return static_cast<int64_t>(static_cast<uint64_t>(a) + static_cast<uint64_t>(b)); }
int64_t difference(int64_t a, int64_t b) {
  return static_cast<int64_t>(static_cast<uint64_t>(a) - static_cast<uint64_t>(b));
}

// The volume that can be closed; of class 0 only what was held before today.
int64_t available(const SymbolCode& code, int64_t position, int64_t yesterday, int64_t closedOfIt, int64_t frozen) {
  return difference(code.codeClass == 0 ? difference(yesterday, closedOfIt) : position, frozen);
}

void writeHoldings(ReplyWriter& row, const Position& p) {
  row.member("codeExch", formatCodeKey(p.code));
  row.member("hashCode", p.code.hashCode);
  row.member("netLever", p.longLever - p.shortLever);
  row.member("totalLever", p.longLever + p.shortLever);
  row.member("longLever", p.longLever);
  row.member("shortLever", p.shortLever);
  row.member("netMarketValue", std::fabs(p.longMarketValue - p.shortMarketValue));  // unsigned, unlike netLever
  row.member("totalMarketValue", p.shortMarketValue + p.longMarketValue);
  row.member("totalPosition", sum(p.longPosition, p.shortPosition));
  row.member("longPosition", p.longPosition);
  row.member("longAvailableQuantity",
             available(p.code, p.longPosition, p.longYesterdayVolume, p.longCloseYesterdayVolume, p.longFrozenVolume));
  row.member("shortPosition", p.shortPosition);
  row.member("shortAvailableQuantity", available(p.code, p.shortPosition, p.shortYesterdayVolume,
                                                 p.shortCloseYesterdayVolume, p.shortFrozenVolume));
}

void writeTextsAndRatios(ReplyWriter& row, const PositionEntry& entry) {
  const Position& p = entry.position;
  row.member("aimType", aimName(p.account.aimType));
  row.member("codeType", entry.codeType);
  row.member("codeName", entry.codeName);
  row.member("code", p.code.code);
  row.member("exchangeName", entry.exchangeName);
  row.member("todayProfitRatio", p.todayProfitRatio);
  row.member("todayProfitCateRatio", p.todayProfitCateRatio);
  row.member("todayProfitAccRatio", p.todayProfitAccRatio);
  row.member("amassProfitCateRatio", p.todayProfitCateRatio);  // the figure of today, sent twice
  row.member("amassProfitAccRatio", 0.0);
  row.member("historyCapitalFinalCost", 0.0);
}

void writePricesAndParts(ReplyWriter& row, const Position& p) {
  row.member("currentPrice", p.currentPrice);
  row.member("preSettlementPrice", p.preSettlementPrice);
  row.member("preClosePrice", p.preClosePrice);
  row.member("longYesterdayVolume", p.longYesterdayVolume);
  row.member("longCloseYesterdayVolume", p.longCloseYesterdayVolume);
  row.member("shortYesterdayVolume", p.shortYesterdayVolume);
  row.member("shortCloseYesterdayVolume", p.shortCloseYesterdayVolume);
  row.member("margin", p.shortMargin + p.longMargin);
  row.member("todayPorfit", p.todayProfit);  // the wire's spelling, here and below
  row.member("floatPorfit", p.floatProfit);
  row.member("avgPrice", p.avgPrice);
  row.member("currentVolume", p.currentVolume);
  row.member("yesterdayVolume", p.yesterdayVolume);
  row.member("longAvgPrice", p.longAvgPrice);
  row.member("longMarketValue", p.longMarketValue);
  row.member("longFloatPorfit", p.longFloatProfit);
  row.member("longTodayVolume", static_cast<double>(p.longTodayVolume));  // the only volumes sent as doubles
  row.member("shortAvgPrice", p.shortAvgPrice);
  row.member("shortMarketValue", p.shortMarketValue);
  row.member("shortFloatPorfit", p.shortFloatProfit);
  row.member("shortTodayVolume", static_cast<double>(p.shortTodayVolume));
}

}  // namespace

std::string serializePositionList(const std::vector<PositionEntry>& entries) {
  return writeRows(entries, [](ReplyWriter& row, const PositionEntry& entry) {
    writeHead(row, entry.position.account);
    writeHoldings(row, entry.position);
    writeTextsAndRatios(row, entry);
    writePricesAndParts(row, entry.position);
    row.member("marginRate", entry.marginRate);
    row.member("accountStatus", entry.accountStatus);
  });
}

}  // namespace orvane
