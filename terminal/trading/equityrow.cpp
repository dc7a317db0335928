#include "terminal/trading/equityrow.h"

#include "terminal/trading/ledger.h"

namespace orvane::terminal {

std::vector<EquityRow> equityRows(const Book& book, int64_t now) {
  std::vector<EquityRow> rows;
  rows.reserve(book.accounts.size());
  for (const auto& [index, account] : book.accounts) {
    const AccountFigures figures = accountFigures(book, account);
    rows.push_back({index, now - now % kMinuteMillis, book.day, figures.equity, figures.available, figures.margin,
                    figures.todayProfit(), account.deposit, account.withdraw});
  }
  return rows;
}

}  // namespace orvane::terminal
