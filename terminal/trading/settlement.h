#pragma once

#include "terminal/trading/change.h"

namespace orvane::terminal {

// Ends the book's trading day: working orders are cancelled, the last price becomes the reference and the centre of the
// price limits, equity becomes the new balance, today's holdings become yesterday's, and debts bear interest.
// Book::startDay then starts `nextDay`.
void settle(Book& book, Change& change, int64_t nextDay);

}  // namespace orvane::terminal
