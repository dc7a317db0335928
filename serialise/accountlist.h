#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "host/account.h"

namespace orvane {

// One row.
struct MobileAccountItem {
  bool triggerOrderPrivilege = false;
  bool ordinaryOrderPrivilege = false;
  int32_t accountStatus = 0;  // 1 if the account is available, else 0
  TradingAccountID id;
};

std::string serializeAccountList(const std::vector<MobileAccountItem>& items);

}  // namespace orvane
