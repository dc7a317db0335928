#pragma once

#include <array>
#include <cstdint>
#include <limits>
#include <string>

namespace orvane {

// The host's identification of a trading account. The library copies it whole and reads the named fields.
struct TradingAccountID {
  int32_t index = std::numeric_limits<int32_t>::max();  // how requests and replies name the account
  std::array<int32_t, 3> reserved2{std::numeric_limits<int32_t>::max(), -1, 0};
  std::array<std::string, 2> reserved5;
  std::string userCode;  // sent to clients byte for byte
  int32_t reserved8 = 11;
  int32_t marketType = 0;  // market class: 1, 2, 8 or 16; any other value makes the account's rows invalid JSON
  int32_t aimType = 0;     // a key of aimNames in vocabulary/names.h
  int32_t reserved11 = 0;
  std::string reserved12;
};

// The host's capital record of one account. All figures are the host's and are sent unscaled; amounts are in the
// account's currency.
struct TradingAccount {
  TradingAccountID id;
  int32_t reserved2 = 0;
  double available = 0;
  double withdrawQuota = 0;
  double frozenMargin = 0;
  double reserved6 = 0;
  double currMargin = 0;
  double deposit = 0;   // "lastAmount" adds it; "profitRatio" divides by baseAmount + deposit
  double withdraw = 0;  // "lastAmount" subtracts it
  double commission = 0;
  double reserved11 = 0;
  double closeProfit = 0;
  std::array<double, 2> reserved13{};
  double preBalance = 0;
  std::array<double, 4> reserved16{};
  int32_t reserved20 = 0;
  double dynamicAmount = 0;  // also "lastAmount" if marketType is 2 or 16
  std::array<double, 2> reserved22{};
  double maintainAmount = 0;
  double totalLever = 0;
  double netLever = 0;
  double risk = 0;
  double baseAmount = 0;
  std::array<double, 3> reserved29{};
  double preCloseProfit = 0;
  double todayFloatingProfit = 0;
  std::array<double, 3> reserved34{};
};

}  // namespace orvane
