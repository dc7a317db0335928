#pragma once

#include <cstdint>
#include <optional>
#include <utility>

#include "decoding/requestrecords.h"
#include "host/resultstatus.h"
#include "pocketagent/requesttask.h"

namespace orvane {

// "order.new": checks all orders, then submits them all. One reply for the whole request.
class NewOrderTask final : public IRequestTask {
 public:
  NewOrderTask(int64_t id, OrvMobileTopic value, MobileNewOrder order)
      : IRequestTask(id, value), order_(std::move(order)) {}
  void execute() override;

 private:
  ResultStatus run();
  // Completes an item from the host. What ends the run, or nothing; a refusal, which has been sent, ends it with code
  // 0.
  std::optional<ResultStatus> check(MobileNewOrderItem& item) const;
  // Goes on after a refusal of the host's; the first one is the result.
  ResultStatus submitAll() const;

  MobileNewOrder order_;
};

}  // namespace orvane
