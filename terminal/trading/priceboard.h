#pragma once

#include <mutex>
#include <unordered_map>

#include "terminal/liveprices.h"
#include "terminal/trading/book.h"

namespace orvane::terminal {

// A copy of the book's prices, for readers that must not wait for the book. Thread-safe.
class PriceBoard : public ILivePrices {
 public:
  void show(const Instrument& instrument);
  void showAll(const Book& book);

  std::vector<LivePrice> changedSince(uint64_t version, const std::vector<int64_t>& hashCodes) const override;

 private:
  mutable std::mutex mutex_;
  std::unordered_map<int64_t, LivePrice> prices_;
  uint64_t version_ = 0;
};

}  // namespace orvane::terminal
