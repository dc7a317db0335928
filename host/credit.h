#pragma once

#include <array>
#include <string>

namespace orvane {

// The figures of a credit account, sent as they are. How each is computed, and its unit, is the host's; the library
// relies only on the order.
struct CreditInfoRecord {
  std::array<std::string, 6> reserved1;
  double totalAssets = 0;
  double netAssets = 0;
  double cashAssets = 0;
  double freeBalance = 0;
  double longMarginRate = 0;
  double shortMarginRate = 0;
  double keepMarginRatio = 0;
  double marginAvl = 0;
  double marginRatio = 0;
  double longProfit = 0;
  double shortProfit = 0;
  double totalProfit = 0;
  double totalDebtBalance = 0;
  double longDebtBalance = 0;
  double shortDebtBalance = 0;
  double debtInterest = 0;
  double tradeDebtBalance = 0;
  double longLimitAvl = 0;
  double longLimitUsed = 0;
  double longLimit = 0;
  double longMarginMarket = 0;
  double longMarginProfit = 0;
  double longMarginUsed = 0;
  double shortLimitAvl = 0;
  double shortLimitUsed = 0;
  double shortLimit = 0;
  double shortMarginMarket = 0;
  double shortMarginProfit = 0;
  double shortMarginUsed = 0;
};

}  // namespace orvane
