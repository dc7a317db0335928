#include "terminal/trading/database.h"

#include <array>
#include <stdexcept>

#include <SQLiteCpp/Transaction.h>
#include <fmt/format.h>
#include <sqlite3.h>

#include "terminal/trading/bookreader.h"
#include "terminal/trading/sampledata.h"

namespace orvane::terminal {
namespace {

// The step at place N, counted from 1, upgrades a database of version N to the next version.
constexpr std::array kUpgrades{
    R"sql(
CREATE INDEX orders_by_day ON orders (day);
CREATE INDEX fill_by_order ON fill (order_id);
CREATE TABLE overwritten (count INTEGER NOT NULL) STRICT;
INSERT INTO overwritten VALUES (0);
)sql",
    // History: one row a minute for 30 days, before that the last row of each day. time is the start of the minute, day
    // the trading day, profit today's, deposit and withdraw the day's so far.
    R"sql(
CREATE TABLE equity (
  account   INTEGER NOT NULL REFERENCES account,
  time      INTEGER NOT NULL,
  day       INTEGER NOT NULL,
  equity    REAL NOT NULL,
  available REAL NOT NULL,
  margin    REAL NOT NULL,
  profit    REAL NOT NULL,
  deposit   REAL NOT NULL,
  withdraw  REAL NOT NULL,
  PRIMARY KEY (account, time)
) STRICT, WITHOUT ROWID;
)sql"};
constexpr int kVersion = 1 + static_cast<int>(kUpgrades.size());

SQLite::Database openFile(const std::filesystem::path& file) try {
  std::filesystem::create_directories(file.parent_path());
  return {file.string(), SQLite::OPEN_READWRITE | SQLite::OPEN_CREATE};
} catch (const std::exception& e) {
  throw StoreError(file, e);
}

void bringToVersion(SQLite::Database& db, int version) {
  if (version < 1 || version > kVersion) {
    throw std::runtime_error(fmt::format("its version is {}, this program reads versions 1 to {}", version, kVersion));
  }
  for (; version < kVersion; ++version) db.exec(kUpgrades.at(static_cast<size_t>(version) - 1));
  db.exec(fmt::format("PRAGMA user_version = {}", kVersion));
}

// Exclusive locking keeps a second terminal out, and the lock ends with the process. Nothing is put into temporary
// files, whose disk may be full.
void setUp(SQLite::Database& db) {
  db.exec("PRAGMA locking_mode = EXCLUSIVE");
  db.exec("PRAGMA temp_store = MEMORY");
  db.exec("PRAGMA journal_mode = WAL");
  db.exec("PRAGMA synchronous = FULL");
  db.exec("PRAGMA foreign_keys = ON");
  SQLite::Transaction transaction(db, SQLite::TransactionBehavior::IMMEDIATE);
  int version = db.execAndGet("PRAGMA user_version").getInt();
  const bool isNew = version == 0 && db.execAndGet("SELECT count(*) FROM sqlite_schema").getInt() == 0;
  if (isNew) {
    for (const char* script : kSampleScripts) db.exec(script);
    version = 1;
  }
  if (version != kVersion) bringToVersion(db, version);
  if (isNew) db.exec(kSampleHistory);
  transaction.commit();
}

}  // namespace

Database::Database(const std::filesystem::path& dir)
    : file_(dir / "terminal.db"), db_(openFile(file_)), writer_(db_), equity_(db_) {
  try {
    if (sqlite3_db_readonly(db_.getHandle(), "main") == 1) {
      throw SQLite::Exception("the file is read-only", SQLITE_READONLY);
    }
    setUp(db_);
  } catch (const std::exception& e) {
    throw StoreError(file_, e);
  }
}

Book Database::load() try { return readBook(db_); } catch (const std::exception& e) {
  throw StoreError(file_, e);
}

void Database::save(const Rows& rows) {
  transact([&] { writer_.write(rows); });
}

void Database::save(const std::vector<EquityRow>& rows) {
  transact([&] { equity_.write(rows); });
}

void Database::readEquity(const EquityRange& range, size_t limit, std::vector<EquityRow>& rows) try {
  equity_.read(range, limit, rows);
} catch (const std::exception& e) {
  throw StoreError(file_, e);
}

void Database::overwriteFailed() {
  // An update that left its row as it is would write no frame.
  transact([this] { db_.exec("UPDATE overwritten SET count = count + 1"); });
}

template <typename Work>
void Database::transact(const Work& work) {
  bool committing = false;
  try {
    SQLite::Transaction transaction(db_);
    work();
    committing = true;
    transaction.commit();
  } catch (const std::exception& e) {
    throw StoreError(file_, e, committing);
  }
}

}  // namespace orvane::terminal
