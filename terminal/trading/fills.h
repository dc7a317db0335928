#pragma once

#include <cstdint>

#include "terminal/trading/database.h"

namespace orvane::terminal {

// Fills a working order whole at `price`: holding, credit contracts, commission, the order and its new fill. `now` is
// in milliseconds since 1970.
void fillOrder(Book& book, Change& change, int64_t orderId, double price, int64_t now);

}  // namespace orvane::terminal
