#pragma once

#include <list>
#include <vector>

#include "host/account.h"
#include "host/position.h"
#include "terminal/trading/book.h"

namespace orvane::terminal {

// All derived figures are computed here; docs/terminal.md gives the formulas. The functions are pure. The caller keeps
// the book from changing meanwhile.

// part / whole; 0 if `whole` is not positive.
double ratio(double part, double whole);

// The figures of one side of one instrument in one account.
struct SideFigures {
  int64_t volume = 0;
  double avgPrice = 0;
  double marketValue = 0;
  double margin = 0;
  double floatProfit = 0;    // against the opening prices
  double todayFloating = 0;  // against the last settlement, or today's opening price
  double closeProfit = 0;    // realised today
  double preCloseShift = 0;  // gain of yesterday's part between the last settlement and the last close
  double todayBasis = 0;     // denominator of today's profit ratio

  double todayProfit() const { return todayFloating + closeProfit; }
  SideFigures& operator+=(const SideFigures& other);  // adds all but the average price
};

SideFigures sideFigures(const Book& book, const Key& key, const Holdings& holdings, Direction direction);

// The funds that the order holds back while it is working.
OrderFunds orderFunds(const Book& book, const BookOrder& order);

// Commission and sale tax of a fill.
double commission(const Book& book, const Key& key, Side side, int64_t volume, double price);

MarginRate marginRate(const Book& book, const Key& key);

// The part of a holding that may still be closed: not in a working closing order, and not a stock bought today.
struct Closable {
  int64_t yesterday = 0;
  int64_t today = 0;
  int64_t own = 0;  // part of a long holding not bought with borrowed money; never negative

  int64_t volume() const { return yesterday + today; }
};

Closable closable(const Book& book, const Key& key, Direction direction);

// Totals of one account.
struct AccountFigures {
  SideFigures longs;
  SideFigures shorts;
  double debt = 0;           // money borrowed, interest, and borrowed securities at the last price
  double shortProceeds = 0;  // proceeds of short sales, held back until the securities are returned
  double frozen = 0;         // cash held back for working orders
  double buyBack = 0;        // part of `frozen` for orders that buy borrowed securities back
  double frozenMargin = 0;   // collateral margin held back for working orders
  double equity = 0;
  double cash = 0;  // only of accounts that hold securities
  double margin = 0;
  double available = 0;

  double todayProfit() const { return longs.todayProfit() + shorts.todayProfit(); }
};

AccountFigures accountFigures(const Book& book, const Account& account);

TradingAccount capital(const Book& book, const Account& account);

// Appends one position for each instrument that is held, was traded today or has a working order.
void appendPositions(const Book& book, const Account& account, std::list<Position>& positions);

// Visits the holdings of one account.
template <typename Visit>
void forEachHolding(const Book& book, int32_t account, const Visit& visit) {
  for (auto it = book.holdings.lower_bound({account, INT64_MIN});
       it != book.holdings.end() && it->first.account == account; ++it) {
    visit(it->first, it->second);
  }
}

}  // namespace orvane::terminal
