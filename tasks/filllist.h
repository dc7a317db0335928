#pragma once

#include <cstdint>
#include <utility>

#include "decoding/requestrecords.h"
#include "pocketagent/requesttask.h"

namespace orvane {

// "trader.list": fills of the selected accounts, in the host's order.
class FillListTask final : public IRequestTask {
 public:
  FillListTask(int64_t id, OrvMobileTopic value, AccountSelector selector)
      : IRequestTask(id, value), selector_(std::move(selector)) {}
  void execute() override;

 private:
  AccountSelector selector_;
};

}  // namespace orvane
