#pragma once

#include <array>
#include <cstdint>
#include <limits>
#include <string>

namespace orvane {

// The host's identification of a trading account. Copies take all of it.
struct TradingAccountID {
  int32_t index = std::numeric_limits<int32_t>::max();  // the handle by which requests and replies name the account
  std::array<int32_t, 3> reserved2{std::numeric_limits<int32_t>::max(), -1, 0};
  std::array<std::string, 2> reserved5;
  std::string userCode;  // goes to the phone as it stands, unconverted
  int32_t reserved8 = 11;
  int32_t marketType = 0;  // market class: 1, 2, 8 or 16
  int32_t aimType = 0;     // trading aim, 0 to 5
  int32_t reserved11 = 0;
  std::string reserved12;
};

// The host's capital record of one account. Amounts are in the account's currency, leverage figures and ratios are
// plain factors; the host computes all of them.
struct TradingAccount {
  TradingAccountID id;
  int32_t reserved2 = 0;
  double available = 0;      // free for new orders
  double withdrawQuota = 0;  // may be withdrawn
  double frozenMargin = 0;   // held back for working orders
  double reserved6 = 0;
  double currMargin = 0;  // bound by positions
  double deposit = 0;     // paid in today
  double withdraw = 0;    // paid out today
  double commission = 0;  // of today
  double reserved11 = 0;
  double closeProfit = 0;  // realised today
  std::array<double, 2> reserved13{};
  double preBalance = 0;  // balance at the end of the last trading day
  std::array<double, 4> reserved16{};
  int32_t reserved20 = 0;
  double dynamicAmount = 0;  // equity with floating profit
  std::array<double, 2> reserved22{};
  double maintainAmount = 0;
  double totalLever = 0;  // (long + short market value) / equity
  double netLever = 0;    // (long - short market value) / equity
  double risk = 0;        // margin / equity
  double baseAmount = 0;
  std::array<double, 3> reserved29{};
  double preCloseProfit = 0;       // today's profit against the last close
  double todayFloatingProfit = 0;  // floating profit of today
  std::array<double, 3> reserved34{};
};

}  // namespace orvane
