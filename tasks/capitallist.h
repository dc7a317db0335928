#pragma once

#include <cstdint>
#include <utility>
#include <vector>

#include "decoding/requestrecords.h"
#include "pocketagent/requesttask.h"
#include "serialise/capitallist.h"

namespace orvane {

// "capital.list": capital of the selected accounts, in the host's order.
class CapitalListTask final : public IRequestTask {
 public:
  CapitalListTask(int64_t id, OrvMobileTopic value, AccountSelector selector)
      : IRequestTask(id, value), selector_(std::move(selector)) {}
  void execute() override;

 private:
  static std::vector<CapitalEntry> collect(const AccountSelector& selector);

  AccountSelector selector_;
};

}  // namespace orvane
