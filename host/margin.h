#pragma once

#include <cstdint>

#include "host/account.h"
#include "host/instrument.h"

namespace orvane {

struct MarginRateQuery {
  TradingAccountID account;
  SymbolCode code;
};

// Four ratios of the host, plain factors; the library reduces them to one.
struct MarginRateResult {
  TradingAccountID account;
  SymbolCode code;
  double a = 0;
  double b = 0;
  double c = 0;
  double d = 0;
  int32_t reserved7 = 0;
};

}  // namespace orvane
