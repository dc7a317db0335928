#include "terminal/trading/equitytable.h"

#include <SQLiteCpp/VariadicBind.h>

namespace orvane::terminal {
namespace {

constexpr int64_t kDayMillis = 86'400'000;
constexpr int64_t kMinutesKept = 30 * kDayMillis;

// A terminal that was off for a month has 43,200 rows of each account to delete: a few at a time, so that orders need
// not wait.
constexpr int kDeletedAtOnce = 4000;

}  // namespace

void EquityTable::write(const std::vector<EquityRow>& rows) {
  if (rows.empty()) return;
  if (!insert_) insert_.emplace(db_, "INSERT OR REPLACE INTO equity VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?)");
  for (const EquityRow& it : rows) {
    insert_->tryReset();  // whose code is that of the last run
    SQLite::bind(*insert_, it.account, it.time, it.day, it.equity, it.available, it.margin, it.profit, it.deposit,
                 it.withdraw);
    insert_->exec();
  }
  if (rows.back().day == prunedDay_) return;
  if (prune(rows.back().time) < kDeletedAtOnce) prunedDay_ = rows.back().day;
}

// A row goes if the account's next row is of the same day: the last one of each day stays. Returns how many went.
int EquityTable::prune(int64_t now) {
  SQLite::Statement old(
      db_,
      "DELETE FROM equity WHERE (account, time) IN (SELECT account, time FROM account a CROSS JOIN equity e"
      " ON e.account = a.idx WHERE e.time < ? AND e.day = (SELECT day FROM equity AS next"
      " WHERE next.account = e.account AND next.time > e.time ORDER BY next.time LIMIT 1) LIMIT ?)");
  SQLite::bind(old, now - kMinutesKept, kDeletedAtOnce);
  return old.exec();
}

void EquityTable::read(const EquityRange& range, size_t limit, std::vector<EquityRow>& rows) {
  if (!read_) {
    read_.emplace(db_,
                  "SELECT account, time, day, equity, available, margin, profit, deposit, withdraw FROM equity"
                  " WHERE account = ? AND time BETWEEN ? AND ? ORDER BY time LIMIT ?");
  }
  read_->tryReset();
  SQLite::bind(*read_, range.account, range.from, range.to, static_cast<int64_t>(limit));
  while (read_->executeStep()) {
    const auto real = [&](int column) { return read_->getColumn(column).getDouble(); };
    rows.push_back({read_->getColumn(0).getInt(), read_->getColumn(1).getInt64(), read_->getColumn(2).getInt64(),
                    real(3), real(4), real(5), real(6), real(7), real(8)});
  }
  read_->reset();
}

}  // namespace orvane::terminal
