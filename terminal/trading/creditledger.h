#pragma once

#include "host/credit.h"
#include "terminal/trading/ledger.h"

namespace orvane::terminal {

// The figures of a credit account. REQUIRES: the account has credit terms.
CreditInfoRecord creditInfo(const Book& book, const Account& account);

}  // namespace orvane::terminal
