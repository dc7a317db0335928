#pragma once

#include <cstdint>
#include <optional>
#include <utility>
#include <vector>

#include "decoding/requestrecords.h"
#include "host/resultstatus.h"
#include "pocketagent/requesttask.h"

namespace orvane {

// "order.cancel": cancels one order after the other; what is done before a failure stays done.
class CancelOrderTask final : public IRequestTask {
 public:
  CancelOrderTask(int64_t id, OrvMobileTopic value, std::vector<MobileCancelOrder> orders)
      : IRequestTask(id, value), orders_(std::move(orders)) {}
  void execute() override;

 private:
  ResultStatus run();
  // What ends the run, or nothing; a refusal, which has been sent, ends it with code 0.
  std::optional<ResultStatus> cancel(MobileCancelOrder& order) const;

  std::vector<MobileCancelOrder> orders_;
};

}  // namespace orvane
