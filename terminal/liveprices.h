#pragma once

#include <cstdint>
#include <vector>

namespace orvane::terminal {

// The prices of an instrument, in its currency.
struct LivePrice {
  int64_t hashCode = 0;
  double last = 0;
  double bid = 0;
  double ask = 0;
  uint64_t version = 0;  // grows with every change of any price
};

// The prices that clients can watch. Any thread; answers at once, whatever the host is doing.
class ILivePrices {
 public:
  virtual ~ILivePrices() = default;

  // Those of these instruments that have changed since `version`, at one moment; with 0 all that exist.
  virtual std::vector<LivePrice> changedSince(uint64_t version, const std::vector<int64_t>& hashCodes) const = 0;
};

}  // namespace orvane::terminal
