#pragma once

#include <cstdint>
#include <list>
#include <utility>

#include "decoding/requestrecords.h"
#include "host/order.h"
#include "pocketagent/requesttask.h"

namespace orvane {

// "order.list": orders of the selected accounts, finished ones included, in the host's order.
class OrderListTask final : public IRequestTask {
 public:
  OrderListTask(int64_t id, OrvMobileTopic value, AccountSelector selector)
      : IRequestTask(id, value), selector_(std::move(selector)) {}
  void execute() override;

 private:
  static std::list<Order> collect(const AccountSelector& selector);

  AccountSelector selector_;
};

}  // namespace orvane
