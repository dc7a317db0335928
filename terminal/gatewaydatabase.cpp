#include "terminal/gatewaydatabase.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <stdexcept>
#include <string>
#include <thread>

#include <SQLiteCpp/Transaction.h>
#include <fcntl.h>
#include <fmt/format.h>
#include <sqlite3.h>
#include <unistd.h>

#include "terminal/databasecopy.h"
#include "terminal/datadir.h"
#include "terminal/ownersfile.h"

namespace orvane::terminal {
namespace {

constexpr const char* kFile = "gateway.db";
constexpr int kBusyTries = 5000;  // one a millisecond, for another process's lock

// The steps of the schema: each adds a version to the one before. Times are seconds since 1970, of an alert
// milliseconds. A token's id is never reused. An action is a request that changes something: `line` is the head of its
// audit line while it runs, `due` a whole line that is not in the audit yet, `boot` the boot clock's seconds when it
// was made, NULL if that was before the machine's last start. A revocation waits for the running terminal to confirm it
// by deleting the row.
constexpr std::array<const char*, 3> kVersions{
    R"sql(
CREATE TABLE token (
  id INTEGER PRIMARY KEY AUTOINCREMENT, name TEXT NOT NULL UNIQUE, hash BLOB NOT NULL, rights INTEGER NOT NULL,
  made INTEGER NOT NULL, used INTEGER, expires INTEGER);
CREATE TABLE action (
  id INTEGER PRIMARY KEY, token INTEGER NOT NULL, key TEXT, made INTEGER NOT NULL, fingerprint BLOB NOT NULL,
  line TEXT, due TEXT, reply_topic BLOB, reply_message BLOB, reply_data BLOB, UNIQUE (token, key));
CREATE TABLE address (link TEXT NOT NULL);
)sql",
    R"sql(
ALTER TABLE action ADD COLUMN boot INTEGER;
CREATE INDEX action_made ON action (made) WHERE key IS NOT NULL;
CREATE INDEX action_due ON action (id) WHERE due IS NOT NULL;
CREATE TABLE boot (id TEXT NOT NULL);
CREATE TABLE revocation (id INTEGER PRIMARY KEY AUTOINCREMENT, token INTEGER NOT NULL);
)sql",
    R"sql(
CREATE TABLE alert (
  id INTEGER PRIMARY KEY AUTOINCREMENT, token INTEGER NOT NULL, hash_code INTEGER NOT NULL, is_above INTEGER NOT NULL,
  price REAL NOT NULL, made INTEGER NOT NULL, fired INTEGER NOT NULL, fired_price REAL NOT NULL);
CREATE TRIGGER token_deleted AFTER DELETE ON token BEGIN DELETE FROM alert WHERE token = OLD.id; END;
)sql"};
constexpr int kVersion = kVersions.size();

// SQLite takes an empty file for a new database.
void makeEmpty(const std::filesystem::path& file) {
  requireWritable(file.parent_path());
  const int made = openOwnersFile(file, O_RDWR | O_CLOEXEC);
  if (made < 0) throw std::runtime_error(fmt::format("cannot make {}: {}", file.string(), std::strerror(errno)));
  close(made);
}

void requirePrivate(const std::filesystem::path& file) {
  using std::filesystem::perms;
  if ((std::filesystem::status(file).permissions() & (perms::group_all | perms::others_all)) == perms::none) return;
  throw std::runtime_error(fmt::format("other users can read it: run 'chmod 600 {}'", file.string()));
}

// SQLite's own busy timeout sleeps up to 100 ms between two tries. A terminal under load holds the lock nearly all the
// time, so a command that tries so rarely would hardly ever get it.
int waitForLock(void* /*unused*/, int tries) {
  std::this_thread::sleep_for(std::chrono::milliseconds(1));
  return tries < kBusyTries ? 1 : 0;
}

void setUp(SQLite::Database& db) {
  sqlite3_busy_handler(db.getHandle(), &waitForLock, nullptr);
  const int version = db.execAndGet("PRAGMA user_version").getInt();
  if (version > kVersion) {
    throw std::runtime_error(
        fmt::format("its version is {}, this program reads version {}; use the program that made "
                    "it, or move the file away",
                    version, kVersion));
  }
  db.exec("PRAGMA journal_mode = WAL");
  if (version == kVersion) return;
  SQLite::Transaction transaction(db, SQLite::TransactionBehavior::IMMEDIATE);
  const int found = std::max(0, db.execAndGet("PRAGMA user_version").getInt());
  for (auto step = kVersions.begin() + found; step != kVersions.end(); ++step) db.exec(*step);
  db.exec(fmt::format("PRAGMA user_version = {}", kVersion));
  transaction.commit();
}

const char* remedyOf(int code) {
  switch (code) {
    case SQLITE_BUSY:
    case SQLITE_LOCKED:
      return "end the program that holds it";
    case SQLITE_FULL:
      return "make room on its disk";
    case SQLITE_READONLY:
    case SQLITE_PERM:
    case SQLITE_CANTOPEN:
      return "let its owner write to the file and its folder";
    case SQLITE_IOERR:
      return "make room on its disk, and check that disk";
    default:
      return "move it away to begin with new tokens, or choose a folder with --data";
  }
}

}  // namespace

SQLite::Database openGatewayDatabase(const std::filesystem::path& dataDir, IfMissing ifMissing) {
  const std::filesystem::path file = dataDir / kFile;
  std::error_code unknown;
  const bool isMissing = std::filesystem::status(file, unknown).type() == std::filesystem::file_type::not_found;
  if (isMissing && ifMissing == IfMissing::Fail) {
    throw std::runtime_error(
        fmt::format("there is no {}: start the terminal once, or name its folder with --data", file.string()));
  }
  if (isMissing) makeEmpty(file);
  try {
    requireOwners(file);
    // SQLite refuses a link in any part of the name.
    const std::filesystem::path exact = std::filesystem::canonical(dataDir) / file.filename();
    SQLite::Database db(exact.string(), SQLite::OPEN_READWRITE | SQLite::OPEN_CREATE | SQLite::OPEN_NOFOLLOW);
    requirePrivate(file);
    if (sqlite3_db_readonly(db.getHandle(), "main") == 1) {
      throw SQLite::Exception("the file is read-only", SQLITE_READONLY);
    }
    setUp(db);
    return db;
  } catch (const SQLite::Exception& error) {
    if (isDiskFault(error.getErrorCode())) throw DiskFault(describeFault(file, error));
    throw std::runtime_error(describeFault(file, error));
  } catch (const std::runtime_error& error) {
    throw std::runtime_error(fmt::format("cannot use {}: {}", file.string(), error.what()));
  }
}

void readGatewayCopy(const std::filesystem::path& dataDir, const DiskFault& fault,
                     const std::function<void(SQLite::Database& db)>& read) try {
  const DatabaseCopy copy(dataDir / kFile);
  SQLite::Database db = openGatewayDatabase(copy.dir(), IfMissing::Fail);
  read(db);
} catch (const std::runtime_error& copying) {
  throw std::runtime_error(fmt::format("{}; nor can it be read: {}", fault.what(), copying.what()));
}

std::string describeFault(const std::filesystem::path& file, const SQLite::Exception& error) {
  return fmt::format("cannot use {}: {}; {}", file.string(), error.what(), remedyOf(error.getErrorCode()));
}

}  // namespace orvane::terminal
