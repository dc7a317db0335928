#pragma once

#include <cstdint>
#include <string>

#include "host/account.h"
#include "host/resultstatus.h"

namespace orvane {

enum class AccountPrivilege : int32_t { TriggerOrder, OrdinaryOrder };

// The host's entitlement service. Called on the worker thread.
class IAuthAgent {
 public:
  // Never null.
  static IAuthAgent* getInstance();

  virtual ~IAuthAgent() = default;

  // May the user use `function`, named by its topic text? Code 0 is yes; otherwise message says why not, in GBK.
  virtual ResultStatus checkUser(const std::string& function) = 0;

  // May the user use `function` on this account?
  virtual ResultStatus checkAccount(const std::string& function, const TradingAccountID& account) = 0;

  virtual bool hasPrivilege(const TradingAccountID& account, AccountPrivilege privilege) = 0;
};

}  // namespace orvane
