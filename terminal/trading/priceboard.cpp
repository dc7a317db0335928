#include "terminal/trading/priceboard.h"

namespace orvane::terminal {

void PriceBoard::show(const Instrument& instrument) {
  const std::lock_guard lock(mutex_);
  LivePrice& price = prices_[instrument.symbol.hashCode];
  if (price.version > 0 && price.last == instrument.last) return;
  price = {instrument.symbol.hashCode, instrument.last, instrument.bid(), instrument.ask(), ++version_};
}

void PriceBoard::showAll(const Book& book) {
  for (const auto& [hashCode, instrument] : book.instruments) show(instrument);
}

std::vector<LivePrice> PriceBoard::changedSince(uint64_t version, const std::vector<int64_t>& hashCodes) const {
  const std::lock_guard lock(mutex_);
  std::vector<LivePrice> changed;
  for (const int64_t hashCode : hashCodes) {
    const auto found = prices_.find(hashCode);
    if (found != prices_.end() && found->second.version > version) changed.push_back(found->second);
  }
  return changed;
}

}  // namespace orvane::terminal
