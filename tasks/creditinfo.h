#pragma once

#include <cstdint>
#include <list>
#include <utility>

#include "decoding/requestrecords.h"
#include "host/resultstatus.h"
#include "pocketagent/requesttask.h"
#include "serialise/creditinfo.h"

namespace orvane {

// "creditinfo.list": credit figures of the selected accounts. An empty selector selects none. No entitlement check.
class CreditInfoTask final : public IRequestTask {
 public:
  CreditInfoTask(int64_t id, OrvMobileTopic value, AccountSelector selector)
      : IRequestTask(id, value), selector_(std::move(selector)) {}
  void execute() override;

 private:
  // Leaves out accounts that fail, so the status is always 0.
  ResultStatus collect(std::list<AccountCreditInfo>& accounts) const;

  AccountSelector selector_;
};

}  // namespace orvane
