#pragma once

#include <vector>

#include "pocketagent/requesttask.h"
#include "serialise/accountlist.h"

namespace orvane {

// "account.list": every account with what it may do.
class AccountListTask final : public IRequestTask {
 public:
  using IRequestTask::IRequestTask;
  void execute() override;

 private:
  static std::vector<MobileAccountItem> collectAccounts();
};

}  // namespace orvane
