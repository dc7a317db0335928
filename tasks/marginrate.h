#pragma once

#include <cstdint>
#include <utility>
#include <vector>

#include "decoding/requestrecords.h"
#include "pocketagent/requesttask.h"
#include "serialise/marginrates.h"

namespace orvane {

// "marginrate.list": a margin rate for each account and instrument. No entitlement check.
class SymbolMarginRate final : public IRequestTask {
 public:
  SymbolMarginRate(int64_t id, OrvMobileTopic value, SymbolMarginRateReq request)
      : IRequestTask(id, value), request_(std::move(request)) {}
  void execute() override;

 private:
  static std::vector<AccountMarginRates> collect(const SymbolMarginRateReq& request);
  static std::vector<SymbolRate> collectRates(const TradingAccountID& account, const std::vector<int64_t>& hashCodes);

  SymbolMarginRateReq request_;
};

}  // namespace orvane
