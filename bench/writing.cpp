#include <cmath>
#include <memory>
#include <random>

#include "bench/figure.h"
#include "bench/naivewriter.h"
#include "bench/timing.h"
#include "host/common.h"
#include "serialise/positionlist.h"

namespace orvane::bench {
namespace {

using Entries = std::vector<PositionEntry>;

// Two thirds of the doubles have at most three decimals, as prices and amounts do; the others are quotients.
class Values {
 public:
  double number() {
    const auto whole = static_cast<double>(random_() % 100'000'000);
    return random_() % 3 == 0 ? whole / 7001 : whole / 1000;
  }
  int64_t volume() { return static_cast<int64_t>(random_() % 5000); }
  std::string text(std::initializer_list<const char*> choice) { return choice.begin()[random_() % choice.size()]; }

 private:
  std::mt19937_64 random_{7};
};

void fillSide(Values& values, int64_t& yesterday, int64_t& held, int64_t& today, double& lever, double& market,
              double& average, double& profit, double& margin) {
  yesterday = values.volume();
  held = values.volume();
  today = values.volume();
  for (double* value : {&lever, &market, &average, &profit, &margin}) *value = values.number();
}

PositionEntry makeEntry(Values& values) {
  PositionEntry entry;
  Position& p = entry.position;
  p.account.index = 3;
  p.account.userCode = "80010001";
  p.account.marketType = 1;
  p.account.aimType = 1;
  p.code = {1'000'000 + values.volume(), 1, 1, values.text({"rb2705", "au2702", "SR701", "600519"})};
  fillSide(values, p.longYesterdayVolume, p.longPosition, p.longTodayVolume, p.longLever, p.longMarketValue,
           p.longAvgPrice, p.longFloatProfit, p.longMargin);
  fillSide(values, p.shortYesterdayVolume, p.shortPosition, p.shortTodayVolume, p.shortLever, p.shortMarketValue,
           p.shortAvgPrice, p.shortFloatProfit, p.shortMargin);
  for (double* value : {&p.currentPrice, &p.preSettlementPrice, &p.preClosePrice, &p.avgPrice, &p.floatProfit,
                        &p.todayProfit, &p.todayProfitRatio, &p.todayProfitCateRatio, &p.todayProfitAccRatio}) {
    *value = values.number();
  }
  entry.codeType = values.text({"黑色系", "贵金属", "农产品", "股票"});
  entry.codeName = values.text({"螺纹钢2705", "黄金2702", "白糖701", "贵州茅台"});
  entry.exchangeName = "上海期货交易所";
  entry.marginRate = values.number();
  entry.accountStatus = 1;
  return entry;
}

Entries makeEntries(size_t count) {
  Values values;
  Entries entries;
  entries.reserve(count);
  while (entries.size() < count) entries.push_back(makeEntry(values));
  return entries;
}

void writeFirstHalf(NaiveWriter& row, const PositionEntry& entry) {
  const Position& p = entry.position;
  row.member("userCode", p.account.userCode);
  row.member("index", p.account.index);
  row.member("accountType", 0);
  row.member("codeExch", p.code.code + ".");
  row.member("hashCode", p.code.hashCode);
  row.member("netLever", p.longLever - p.shortLever);
  row.member("totalLever", p.longLever + p.shortLever);
  row.member("longLever", p.longLever);
  row.member("shortLever", p.shortLever);
  row.member("netMarketValue", std::fabs(p.longMarketValue - p.shortMarketValue));
  row.member("totalMarketValue", p.shortMarketValue + p.longMarketValue);
  row.member("totalPosition", p.longPosition + p.shortPosition);
  row.member("longPosition", p.longPosition);
  row.member("longAvailableQuantity", p.longPosition - p.longFrozenVolume);
  row.member("shortPosition", p.shortPosition);
  row.member("shortAvailableQuantity", p.shortPosition - p.shortFrozenVolume);
  row.member("aimType", "投机");
  row.member("codeType", entry.codeType);
  row.member("codeName", entry.codeName);
  row.member("code", p.code.code);
  row.member("exchangeName", entry.exchangeName);
  row.member("todayProfitRatio", p.todayProfitRatio);
  row.member("todayProfitCateRatio", p.todayProfitCateRatio);
  row.member("todayProfitAccRatio", p.todayProfitAccRatio);
  row.member("amassProfitCateRatio", p.todayProfitCateRatio);
}

void writeSecondHalf(NaiveWriter& row, const PositionEntry& entry) {
  const Position& p = entry.position;
  row.member("amassProfitAccRatio", 0.0);
  row.member("historyCapitalFinalCost", 0.0);
  row.member("currentPrice", p.currentPrice);
  row.member("preSettlementPrice", p.preSettlementPrice);
  row.member("preClosePrice", p.preClosePrice);
  row.member("longYesterdayVolume", p.longYesterdayVolume);
  row.member("longCloseYesterdayVolume", p.longCloseYesterdayVolume);
  row.member("shortYesterdayVolume", p.shortYesterdayVolume);
  row.member("shortCloseYesterdayVolume", p.shortCloseYesterdayVolume);
  row.member("margin", p.shortMargin + p.longMargin);
  row.member("todayPorfit", p.todayProfit);
  row.member("floatPorfit", p.floatProfit);
  row.member("avgPrice", p.avgPrice);
  row.member("currentVolume", p.currentVolume);
  row.member("yesterdayVolume", p.yesterdayVolume);
  row.member("longAvgPrice", p.longAvgPrice);
  row.member("longMarketValue", p.longMarketValue);
  row.member("longFloatPorfit", p.longFloatProfit);
  row.member("longTodayVolume", static_cast<double>(p.longTodayVolume));
  row.member("shortAvgPrice", p.shortAvgPrice);
  row.member("shortMarketValue", p.shortMarketValue);
  row.member("shortFloatPorfit", p.shortFloatProfit);
  row.member("shortTodayVolume", static_cast<double>(p.shortTodayVolume));
  row.member("marginRate", entry.marginRate);
  row.member("accountStatus", entry.accountStatus);
}

std::string writeNaively(const Entries& entries) {
  return NaiveWriter().rows(entries, [](NaiveWriter& row, const PositionEntry& entry) {
    writeFirstHalf(row, entry);
    writeSecondHalf(row, entry);
  });
}

Sides sides(size_t count) {
  const auto entries = std::make_shared<const Entries>(makeEntries(count));
  requireEqual(serializePositionList(*entries), writeNaively(*entries));
  return {timed([entries] { keep(serializePositionList(*entries)); }),
          timed([entries] { keep(writeNaively(*entries)); })};
}

}  // namespace

std::vector<Figure> writingFigures() {
  const std::string naive = "rapidjson `Writer`, its plain use";
  return {
      {"write positions, 100 rows", naive, "ns", Bound::AtMost, 0.70, 0.30, 101, [] { return sides(100); }},
      {"write positions, 10,000 rows", naive, "ns", Bound::AtMost, 0.75, 0.40, 31, [] { return sides(10'000); }},
  };
}

}  // namespace orvane::bench
