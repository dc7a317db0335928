#pragma once

#include <vector>

#include "pocketagent/requesttask.h"
#include "serialise/accountlist.h"

namespace orvane {

// "account.list": all accounts and their privileges, in the host's order.
class AccountListTask final : public IRequestTask {
 public:
  using IRequestTask::IRequestTask;
  void execute() override;

 private:
  static std::vector<MobileAccountItem> collectAccounts();
};

}  // namespace orvane
