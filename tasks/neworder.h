#pragma once

#include <cstdint>
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
  // Completes the items from the host, up to the first fault.
  ResultStatus checkAll(bool& refused);
  // Goes on after a refusal; the first one is the result.
  ResultStatus submitAll() const;

  MobileNewOrder order_;
};

}  // namespace orvane
