#pragma once

#include <cstdint>

#include "host/account.h"
#include "host/instrument.h"

namespace orvane {

// An account and an instrument, both as the host's lookups filled them.
struct MarginRateQuery {
  TradingAccountID account;
  SymbolCode code;
};

// Four ratios. The rate is the larger of c and a if a > 0, otherwise the larger of d and b. The other fields are
// ignored.
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
