#pragma once

#include <cstdint>
#include <utility>

#include "decoding/requestrecords.h"
#include "pocketagent/requesttask.h"

namespace orvane {

// "position.codetype.list": figures of the selected accounts by code type.
class CodeTypePositionList final : public IRequestTask {
 public:
  CodeTypePositionList(int64_t id, OrvMobileTopic value, AccountSelector selector)
      : IRequestTask(id, value), selector_(std::move(selector)) {}
  void execute() override;

 private:
  AccountSelector selector_;
};

}  // namespace orvane
