#pragma once

#include <string>

#include "terminal/trading/change.h"

namespace orvane::terminal {

// The changed orders, or the new fills, as a JSON array whose rows have the members of "order.list" or "trader.list".
// GBK, as a message's `data` is.
std::string orderRows(const Book& book, const Change& change);
std::string fillRows(const Book& book, const Change& change);

}  // namespace orvane::terminal
