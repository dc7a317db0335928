#include "serialise/positionlist.h"

#include <array>
#include <cmath>
#include <string_view>

#include "host/common.h"
#include "serialise/codetext.h"
#include "serialise/replywriter.h"
#include "serialise/rowhead.h"
#include "vocabulary/gbk.h"

namespace orvane {

namespace {

std::string aimName(int32_t aimType) {
  static constexpr std::array<std::string_view, 6> kNames = {"未知"_gbk, "投机"_gbk, "套利"_gbk,
                                                             "套保"_gbk, "市商"_gbk, ""};
  const auto row = static_cast<size_t>(aimType);  // a negative one is beyond the table too
  return row < kNames.size() ? CodeConvert::gbk_to_utf8(std::string(kNames[row])) : std::string();
}

int64_t longAvailable(const Position& p) {
  return p.code.codeClass == 0 ? p.longYesterdayVolume - p.longCloseYesterdayVolume - p.longFrozenVolume
                               : p.longPosition - p.longFrozenVolume;
}

int64_t shortAvailable(const Position& p) {
  return p.code.codeClass == 0 ? p.shortYesterdayVolume - p.shortCloseYesterdayVolume - p.shortFrozenVolume
                               : p.shortPosition - p.shortFrozenVolume;
}

void writeHoldings(ReplyWriter& row, const Position& p) {
  row.member("codeExch", formatCodeKey(p.code));
  row.member("hashCode", p.code.hashCode);
  row.member("netLever", p.longLever - p.shortLever);
  row.member("totalLever", p.longLever + p.shortLever);
  row.member("longLever", p.longLever);
  row.member("shortLever", p.shortLever);
  row.member("netMarketValue", std::fabs(p.longMarketValue - p.shortMarketValue));  // unlike netLever, unsigned
  row.member("totalMarketValue", p.shortMarketValue + p.longMarketValue);
  row.member("totalPosition", p.longPosition + p.shortPosition);
  row.member("longPosition", p.longPosition);
  row.member("longAvailableQuantity", longAvailable(p));
  row.member("shortPosition", p.shortPosition);
  row.member("shortAvailableQuantity", shortAvailable(p));
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
  row.member("amassProfitCateRatio", p.todayProfitCateRatio);  // today's figure again
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
  row.member("todayPorfit", p.todayProfit);  // spelt so on the wire, here and below
  row.member("floatPorfit", p.floatProfit);
  row.member("avgPrice", p.avgPrice);
  row.member("currentVolume", p.currentVolume);
  row.member("yesterdayVolume", p.yesterdayVolume);
  row.member("longAvgPrice", p.longAvgPrice);
  row.member("longMarketValue", p.longMarketValue);
  row.member("longFloatPorfit", p.longFloatProfit);
  row.member("longTodayVolume", static_cast<double>(p.longTodayVolume));  // the only volumes that go as doubles
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
