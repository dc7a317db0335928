#pragma once

#include <list>
#include <string>
#include <vector>

#include "host/account.h"
#include "host/credit.h"

namespace orvane {

// One row.
struct AccountCreditInfo {
  TradingAccountID account;
  std::vector<CreditInfoRecord> records;
};

std::string serializeCreditInfo(const std::list<AccountCreditInfo>& accounts);

}  // namespace orvane
