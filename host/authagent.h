#pragma once

#include <cstdint>
#include <string>

#include "host/account.h"
#include "host/resultstatus.h"

namespace orvane {

enum class AccountPrivilege : int32_t { TriggerOrder, OrdinaryOrder };

// The host's entitlement service. Worker thread only.
class IAuthAgent {
 public:
  // Never null.
  static IAuthAgent* getInstance();

  virtual ~IAuthAgent() = default;

  // Whether the terminal's user may use `function`, a topic. Any code but 0 refuses the request; the client gets the
  // message, which is GBK.
  virtual ResultStatus checkUser(const std::string& function) = 0;

  // The same for `function` on this account.
  virtual ResultStatus checkAccount(const std::string& function, const TradingAccountID& account) = 0;

  virtual bool hasPrivilege(const TradingAccountID& account, AccountPrivilege privilege) = 0;
};

}  // namespace orvane
