#pragma once

#include <filesystem>
#include <vector>

#include <SQLiteCpp/Database.h>

#include "terminal/trading/change.h"
#include "terminal/trading/equitytable.h"
#include "terminal/trading/rowwriter.h"
#include "terminal/trading/storeerror.h"

namespace orvane::terminal {

// The file `terminal.db`. Locked against other processes; not thread-safe.
class Database {
 public:
  // Opens the file in `dir`. Creates it with the sample data if it is missing, and upgrades one of an older version, in
  // one transaction. Throws StoreError.
  explicit Database(const std::filesystem::path& dir);

  // Throws StoreError.
  Book load();

  // Writes all rows in one transaction, on the disk when the call returns. Throws StoreError, and then load() returns
  // the book without them. If the error's mayBeStored() is true, a crash may yet bring them back, until
  // overwriteFailed() has succeeded.
  void save(const Rows& rows);

  // Adds rows of history, and prunes it, in a separate transaction. Throws StoreError.
  void save(const std::vector<EquityRow>& rows);

  // See EquityTable::read. Throws StoreError.
  void readEquity(const EquityRange& range, size_t limit, std::vector<EquityRow>& rows);

  // Commits a separate transaction, whose frames take the place of those of a failed commit in the write-ahead log.
  // Throws StoreError.
  void overwriteFailed();

 private:
  template <typename Work>
  void transact(const Work& work);

  std::filesystem::path file_;
  SQLite::Database db_;
  RowWriter writer_;
  EquityTable equity_;
};

}  // namespace orvane::terminal
