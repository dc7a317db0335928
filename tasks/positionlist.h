#pragma once

#include <cstdint>
#include <utility>
#include <vector>

#include "decoding/requestrecords.h"
#include "pocketagent/requesttask.h"
#include "serialise/positionlist.h"

namespace orvane {

// "position.list": positions and working volumes of the selected accounts, one row for each account and instrument.
class PositionListTask final : public IRequestTask {
 public:
  PositionListTask(int64_t id, OrvMobileTopic value, AccountSelector selector)
      : IRequestTask(id, value), selector_(std::move(selector)) {}
  void execute() override;

 private:
  static std::vector<PositionEntry> collect(const AccountSelector& selector);

  AccountSelector selector_;
};

}  // namespace orvane
