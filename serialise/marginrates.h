#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace orvane {

struct SymbolRate {
  int64_t hashCode = 0;  // as in the request
  double marginRate = 0;
};

// One row.
struct AccountMarginRates {
  int32_t index = 0;
  std::vector<SymbolRate> rates;
};

std::string serializeMarginRates(const std::vector<AccountMarginRates>& accounts);

}  // namespace orvane
