#pragma once

#include <cstdint>
#include <utility>
#include <vector>

#include "decoding/requestrecords.h"
#include "pocketagent/requesttask.h"
#include "serialise/monitorlist.h"

namespace orvane {

// "monitor.list": the position monitor's rows of the selected accounts, or of all accounts if those have none.
class PosMonitorListTask final : public IRequestTask {
 public:
  PosMonitorListTask(int64_t id, OrvMobileTopic value, AccountSelector selector)
      : IRequestTask(id, value), selector_(std::move(selector)) {}
  void execute() override;

 private:
  static std::vector<PositionMonitorRow> collect(const AccountSelector& selector);

  AccountSelector selector_;
};

}  // namespace orvane
