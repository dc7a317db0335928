#pragma once

#include <cstdint>
#include <utility>

#include "decoding/requestrecords.h"
#include "pocketagent/requesttask.h"

namespace orvane {

// "monitor.manual.list": manual positions. Created with the topic of "monitor.list", which its reply carries.
class PosMonitorManualList final : public IRequestTask {
 public:
  PosMonitorManualList(int64_t id, OrvMobileTopic value, PosMonitorManualListReq request)
      : IRequestTask(id, value), request_(std::move(request)) {}
  void execute() override;

 private:
  PosMonitorManualListReq request_;
};

// "monitor.manual.update": stores manual positions. No entitlement check.
class PosMonitorManualUpdate final : public IRequestTask {
 public:
  PosMonitorManualUpdate(int64_t id, OrvMobileTopic value, PosMonitorManualUpdateReq request)
      : IRequestTask(id, value), request_(std::move(request)) {}
  void execute() override;

 private:
  PosMonitorManualUpdateReq request_;
};

// "monitor.manual.clean": clears manual positions. No entitlement check.
class PosMonitorManualClean final : public IRequestTask {
 public:
  PosMonitorManualClean(int64_t id, OrvMobileTopic value, PosMonitorManualCleanReq request)
      : IRequestTask(id, value), request_(std::move(request)) {}
  void execute() override;

 private:
  PosMonitorManualCleanReq request_;
};

}  // namespace orvane
