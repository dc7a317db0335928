#pragma once

#include <cstdint>
#include <vector>

#include "terminal/trading/book.h"

namespace orvane::terminal {

constexpr int64_t kMinuteMillis = 60'000;

// The figures of one account in one minute, in the account's currency; docs/terminal.md has the formulas.
struct EquityRow {
  int32_t account = 0;
  int64_t time = 0;  // start of the minute, milliseconds since 1970
  int64_t day = 0;   // trading day: days since 1970, local time
  double equity = 0;
  double available = 0;
  double margin = 0;
  double profit = 0;    // today's
  double deposit = 0;   // paid in so far on this day
  double withdraw = 0;  // paid out so far on this day
};

// One row for each account. The rows are of the minute that holds `now`, in milliseconds since 1970.
std::vector<EquityRow> equityRows(const Book& book, int64_t now);

}  // namespace orvane::terminal
