#pragma once

#include <vector>

#include "host/uiproxymgr.h"
#include "terminal/trading/book.h"

namespace orvane::terminal {

// One record for each code type that the accounts hold, sorted by name. `derivatives` includes futures and options
// accounts, `securities` includes stock and credit accounts.
std::vector<CodeTypePosition> codeTypePositions(const Book& book, const std::vector<TradingAccountID>& accounts,
                                                bool derivatives, bool securities);

}  // namespace orvane::terminal
