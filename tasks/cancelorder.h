#pragma once

#include <cstdint>
#include <optional>
#include <utility>
#include <vector>

#include "decoding/requestrecords.h"
#include "host/resultstatus.h"
#include "pocketagent/requesttask.h"

namespace orvane {

// "order.cancel": checks and cancels one order at a time. Cancels before a failure are not undone.
class CancelOrderTask final : public IRequestTask {
 public:
  CancelOrderTask(int64_t id, OrvMobileTopic value, std::vector<MobileCancelOrder> orders)
      : IRequestTask(id, value), orders_(std::move(orders)) {}
  void execute() override;

 private:
  ResultStatus run();
  // The status that ends the run, if any. After an entitlement refusal, which has been sent, that is code 0.
  std::optional<ResultStatus> cancel(MobileCancelOrder& order) const;

  std::vector<MobileCancelOrder> orders_;
};

}  // namespace orvane
