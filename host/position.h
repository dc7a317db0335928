#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "host/account.h"
#include "host/instrument.h"

namespace orvane {

// The host's record of one instrument held in one account. Volumes are in the instrument's units (lots or shares),
// prices in its currency, values and profits in the account's currency, ratios and leverage plain factors.
struct Position {
  int32_t reserved1 = 0;
  TradingAccountID account;
  SymbolCode code;
  std::string reserved4;

  int64_t longYesterdayVolume = 0;       // held since before today
  int64_t longCloseYesterdayVolume = 0;  // of it, closed today
  int64_t longPosition = 0;              // held now
  int64_t longActiveVolume = 0;          // in working orders
  int64_t reserved9 = 0;
  int64_t longFrozenVolume = 0;  // held back for working closing orders
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
  double todayProfitCateRatio = 0;  // of the code type
  double todayProfitAccRatio = 0;   // of the account
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
