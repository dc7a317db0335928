#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "host/account.h"

namespace orvane {

// One row.
struct CapitalEntry {
  TradingAccount account;
  int32_t accountStatus = 0;  // 1 if the account is available, else 0
};

std::string serializeCapitalList(const std::vector<CapitalEntry>& entries);

}  // namespace orvane
