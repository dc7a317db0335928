#pragma once

#include <cstdint>

#include "terminal/trading/change.h"

namespace orvane::terminal {

// Fills a working order completely at `price`: updates holding, credit contracts, commission and order, and adds the
// fill. `now` is in milliseconds since 1970.
void fillOrder(Book& book, Change& change, int64_t orderId, double price, int64_t now);

}  // namespace orvane::terminal
