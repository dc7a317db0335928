#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include <SQLiteCpp/Database.h>
#include <SQLiteCpp/Statement.h>

#include "terminal/trading/equityrow.h"

namespace orvane::terminal {

// Rows of one account with from <= time <= to, in milliseconds since 1970.
struct EquityRange {
  int32_t account = 0;
  int64_t from = 0;
  int64_t to = 0;
};

// The table `equity`: one row a minute for 30 days, before that the last row of each day. Not thread-safe.
class EquityTable {
 public:
  // The database must outlive it.
  explicit EquityTable(SQLite::Database& db) : db_(db) {}

  // Adds the rows, replacing those of the same minute. Then deletes some of the rows that are too old. Inside the
  // caller's transaction. Throws SQLite::Exception.
  void write(const std::vector<EquityRow>& rows);

  // Appends the range's first rows, `limit` at most, in order of time. Throws SQLite::Exception.
  void read(const EquityRange& range, size_t limit, std::vector<EquityRow>& rows);

 private:
  int prune(int64_t now);

  SQLite::Database& db_;
  std::optional<SQLite::Statement> insert_;
  std::optional<SQLite::Statement> read_;
  int64_t prunedDay_ = 0;  // the last day of writing on which nothing was left to delete
};

}  // namespace orvane::terminal
