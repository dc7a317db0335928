#pragma once

#include <cstdint>
#include <optional>
#include <utility>

#include "decoding/requestrecords.h"
#include "host/resultstatus.h"
#include "pocketagent/requesttask.h"

namespace orvane {

// "order.new": checks all orders, then submits all of them. One reply for the whole request.
class NewOrderTask final : public IRequestTask {
 public:
  NewOrderTask(int64_t id, OrvMobileTopic value, MobileNewOrder order)
      : IRequestTask(id, value), order_(std::move(order)) {}
  void execute() override;

 private:
  ResultStatus run();
  // Completes an item. Returns the status that ends the run, if any. After an entitlement refusal, which has been sent,
  // that is code 0.
  std::optional<ResultStatus> check(MobileNewOrderItem& item) const;
  // A failed order does not stop the others. The result is the first failure.
  ResultStatus submitAll() const;

  MobileNewOrder order_;
};

}  // namespace orvane
