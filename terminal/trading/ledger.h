#pragma once

#include <list>
#include <vector>

#include "host/account.h"
#include "host/position.h"
#include "terminal/trading/book.h"

namespace orvane::terminal {

// The one place where figures are worked out of the book. How each is formed stands in docs/terminal.md. All functions
// are pure; the caller keeps the book from changing.

// part / whole, and 0 where the whole is not positive.
double ratio(double part, double whole);

// One side of one instrument in one account.
struct SideFigures {
  int64_t volume = 0;
  double avgPrice = 0;
  double marketValue = 0;
  double margin = 0;
  double floatProfit = 0;    // against the opening prices
  double todayFloating = 0;  // against the last settlement, or today's opening price
  double closeProfit = 0;    // realised today
  double preCloseShift = 0;  // what yesterday's part gained from the last settlement to the last close
  double todayBasis = 0;     // value that today's profit is measured against

  double todayProfit() const { return todayFloating + closeProfit; }
  SideFigures& operator+=(const SideFigures& other);  // all but the average price
};

SideFigures sideFigures(const Book& book, const Key& key, const Holdings& holdings, Direction direction);

// What an order binds: cash, and on a credit account collateral margin.
struct OrderFunds {
  double cash = 0;
  double margin = 0;
};

OrderFunds orderFunds(const Book& book, const BookOrder& order);

// Commission and sale tax of a fill.
double commission(const Book& book, const Key& key, Side side, int64_t volume, double price);

MarginRate marginRate(const Book& book, const Key& key);

// Volume of the working orders of one account and instrument.
struct WorkingVolumes {
  int64_t opening = 0;
  int64_t closeYesterday = 0;
  int64_t closeToday = 0;

  int64_t closing() const { return closeYesterday + closeToday; }
};

WorkingVolumes workingVolumes(const Book& book, const Key& key, Direction direction);

// What of a holding no working order closes already; stocks bought today stay until tomorrow.
struct Closable {
  int64_t yesterday = 0;
  int64_t today = 0;
  int64_t own = 0;  // of a long holding, what was not bought with borrowed money; never negative

  int64_t volume() const { return yesterday + today; }
};

Closable closable(const Book& book, const Key& key, Direction direction);

// Totals of one account.
struct AccountFigures {
  SideFigures longs;
  SideFigures shorts;
  double debt = 0;           // money borrowed, interest and borrowed securities at their present value
  double shortProceeds = 0;  // what the securities sold short brought; bound until they are back
  double frozen = 0;         // cash held back for working orders
  double buyBack = 0;        // of it, for those that buy borrowed securities back
  double frozenMargin = 0;   // collateral margin held back for working orders
  double equity = 0;
  double cash = 0;  // of accounts that hold securities
  double margin = 0;
  double available = 0;

  double todayProfit() const { return longs.todayProfit() + shorts.todayProfit(); }
};

AccountFigures accountFigures(const Book& book, const Account& account);

TradingAccount capital(const Book& book, const Account& account);

// Appends the positions of the account, one for each instrument held, traded today or in a working order.
void appendPositions(const Book& book, const Account& account, std::list<Position>& positions);

// Walks the working orders of one account and instrument.
template <typename Visit>
void forEachWorking(const Book& book, const Key& key, const Visit& visit) {
  for (auto it = book.working.lower_bound({key, INT64_MIN}); it != book.working.end() && it->first == key; ++it) {
    visit(book.orders.at(it->second));
  }
}

// Walks the holdings of one account.
template <typename Visit>
void forEachHolding(const Book& book, int32_t account, const Visit& visit) {
  for (auto it = book.holdings.lower_bound({account, INT64_MIN});
       it != book.holdings.end() && it->first.account == account; ++it) {
    visit(it->first, it->second);
  }
}

}  // namespace orvane::terminal
