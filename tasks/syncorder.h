#pragma once

#include <cstdint>
#include <utility>

#include "decoding/requestrecords.h"
#include "pocketagent/requesttask.h"

namespace orvane {

// "monitor.sync.order.list": the orders that would synchronise the given accounts and instruments.
class PosMonitorSyncOrder final : public IRequestTask {
 public:
  PosMonitorSyncOrder(int64_t id, OrvMobileTopic value, MobileSyncOrderReq request)
      : IRequestTask(id, value), request_(std::move(request)) {}
  void execute() override;

 private:
  MobileSyncOrderReq request_;
};

// "monitor.sync.order.new": passes orders to the monitor to be placed. No entitlement check.
class PosMonitorNewOrder final : public IRequestTask {
 public:
  PosMonitorNewOrder(int64_t id, OrvMobileTopic value, MobileSyncNewOrderReq request)
      : IRequestTask(id, value), request_(std::move(request)) {}
  void execute() override;

 private:
  MobileSyncNewOrderReq request_;
};

}  // namespace orvane
