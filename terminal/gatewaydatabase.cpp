#include "terminal/gatewaydatabase.h"

#include <cerrno>
#include <cstring>
#include <stdexcept>
#include <string>

#include <SQLiteCpp/Transaction.h>
#include <fcntl.h>
#include <fmt/format.h>
#include <sqlite3.h>
#include <unistd.h>

#include "terminal/ownersfile.h"

namespace orvane::terminal {
namespace {

constexpr int kVersion = 1;
constexpr int kBusyMilliseconds = 1000;  // how long to wait for another process's lock

// Times are seconds since 1970. A token's id is never reused. An action is a request that changes something: `line` is
// the head of its audit line while it runs, `due` a whole line that is not in the audit yet.
constexpr const char* kSchema = R"sql(
CREATE TABLE token (
  id INTEGER PRIMARY KEY AUTOINCREMENT, name TEXT NOT NULL UNIQUE, hash BLOB NOT NULL, rights INTEGER NOT NULL,
  made INTEGER NOT NULL, used INTEGER, expires INTEGER);
CREATE TABLE action (
  id INTEGER PRIMARY KEY, token INTEGER NOT NULL, key TEXT, made INTEGER NOT NULL, fingerprint BLOB NOT NULL,
  line TEXT, due TEXT, reply_topic BLOB, reply_message BLOB, reply_data BLOB, UNIQUE (token, key));
CREATE TABLE address (link TEXT NOT NULL);
PRAGMA user_version = 1;
)sql";

// SQLite takes an empty file for a new database.
void makeEmpty(const std::filesystem::path& file) {
  const int made = openOwnersFile(file, O_RDWR | O_CLOEXEC);
  if (made < 0) throw std::runtime_error(fmt::format("cannot make {}: {}", file.string(), std::strerror(errno)));
  close(made);
}

void requirePrivate(const std::filesystem::path& file) {
  using std::filesystem::perms;
  if ((std::filesystem::status(file).permissions() & (perms::group_all | perms::others_all)) == perms::none) return;
  throw std::runtime_error(fmt::format("other users can read it: run 'chmod 600 {}'", file.string()));
}

void setUp(SQLite::Database& db) {
  db.setBusyTimeout(kBusyMilliseconds);
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
  if (db.execAndGet("PRAGMA user_version").getInt() == 0) db.exec(kSchema);
  transaction.commit();
}

}  // namespace

void requireWritable(const std::filesystem::path& dir) {
  if (access(dir.c_str(), W_OK | X_OK) == 0) return;
  throw std::runtime_error(
      fmt::format("cannot write to the folder {}: {}; choose another with --data", dir.string(), std::strerror(errno)));
}

SQLite::Database openGatewayDatabase(const std::filesystem::path& dataDir, IfMissing ifMissing) {
  const std::filesystem::path file = dataDir / "gateway.db";
  std::error_code unknown;
  const bool isMissing = std::filesystem::status(file, unknown).type() == std::filesystem::file_type::not_found;
  if (isMissing && ifMissing == IfMissing::Fail) {
    throw std::runtime_error(
        fmt::format("there is no {}: start the terminal once, or name its folder with --data", file.string()));
  }
  requireWritable(dataDir);
  if (isMissing) makeEmpty(file);
  try {
    SQLite::Database db(file.string(), SQLite::OPEN_READWRITE | SQLite::OPEN_CREATE);
    requirePrivate(file);
    setUp(db);
    return db;
  } catch (const SQLite::Exception& error) {
    const bool isBusy = error.getErrorCode() == SQLITE_BUSY;
    throw std::runtime_error(
        fmt::format("cannot use {}: {}; {}", file.string(), error.what(),
                    isBusy ? "end the program that holds it"
                           : "move it away to begin with new tokens, or choose a folder with --data"));
  } catch (const std::runtime_error& error) {
    throw std::runtime_error(fmt::format("cannot use {}: {}", file.string(), error.what()));
  }
}

}  // namespace orvane::terminal
