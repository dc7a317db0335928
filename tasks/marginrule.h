#pragma once

#include "host/account.h"
#include "host/instrument.h"

namespace orvane {

// The margin rate of an instrument in an account, a plain factor: the trade service's four ratios reduced to one, or
// the host's default rate where it has none. One host call each time, two on a failure.
double queryMarginRate(const TradingAccountID& account, const SymbolCode& code);

}  // namespace orvane
