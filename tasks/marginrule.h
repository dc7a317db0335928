#pragma once

#include "host/account.h"
#include "host/instrument.h"

namespace orvane {

// The margin rate of an instrument in an account: one of the trade service's four ratios, or the host's default rate if
// the query fails.
double queryMarginRate(const TradingAccountID& account, const SymbolCode& code);

}  // namespace orvane
