#pragma once

#include "terminal/trading/database.h"

namespace orvane::terminal {

// Ends the book's trading day, so that `nextDay` begins once the change is stored and the book read anew: working
// orders are cancelled, the last price becomes the reference and the centre of the price limits, equity the new
// balance, today's holdings yesterday's, and debts bear interest.
void settle(Book& book, Change& change, int64_t nextDay);

}  // namespace orvane::terminal
