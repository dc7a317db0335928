#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "host/account.h"
#include "host/instrument.h"

namespace orvane {

// The host's record of one instrument in one account. All figures are the host's, in its units, and are sent unscaled.
// A row is sent if any of the two positions and two active volumes is not 0.
struct Position {
  int32_t reserved1 = 0;
  TradingAccountID account;
  SymbolCode code;
  std::string reserved4;

  int64_t longYesterdayVolume = 0;
  int64_t longCloseYesterdayVolume = 0;
  int64_t longPosition = 0;
  int64_t longActiveVolume = 0;
  int64_t reserved9 = 0;
  int64_t longFrozenVolume = 0;  // not available for closing
  std::array<int64_t, 10> reserved11{};

  int64_t shortYesterdayVolume = 0;
  int64_t shortCloseYesterdayVolume = 0;
  int64_t shortPosition = 0;
  int64_t shortActiveVolume = 0;
  int64_t reserved25 = 0;
  int64_t shortFrozenVolume = 0;
  std::array<int64_t, 10> reserved27{};

  double currentPrice = 0;
  double preSettlementPrice = 0;
  double preClosePrice = 0;
  std::array<int64_t, 2> reserved40{};
  double longLever = 0;
  double shortLever = 0;
  std::array<int64_t, 3> reserved44{};
  std::array<int32_t, 3> reserved47{};
  int64_t currentVolume = 0;
  int64_t yesterdayVolume = 0;
  int64_t reserved52 = 0;
  double avgPrice = 0;
  double floatProfit = 0;
  std::array<int64_t, 10> reserved55{};
  double todayProfit = 0;
  double todayProfitRatio = 0;
  double todayProfitCateRatio = 0;
  double todayProfitAccRatio = 0;
  int64_t reserved69 = 0;

  int64_t longTodayVolume = 0;
  double longMarketValue = 0;
  double longAvgPrice = 0;
  double longFloatProfit = 0;
  std::array<int64_t, 2> reserved74{};
  double longMargin = 0;

  int64_t shortTodayVolume = 0;
  double shortMarketValue = 0;
  double shortAvgPrice = 0;
  double shortFloatProfit = 0;
  std::array<int64_t, 2> reserved81{};
  double shortMargin = 0;
};

}  // namespace orvane
