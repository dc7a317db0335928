#pragma once

#include <chrono>
#include <cstdint>
#include <string>

#include <SQLiteCpp/Database.h>
#include <SQLiteCpp/Statement.h>
#include <SQLiteCpp/VariadicBind.h>

#include "terminal/eventloop.h"

namespace orvane::terminal {

// Runs a statement that returns no rows. Throws SQLite::Exception.
template <typename... Values>
int writeSql(const SQLite::Database& db, const char* sql, const Values&... values) {
  SQLite::Statement statement(db, sql);
  SQLite::bind(statement, values...);
  return statement.exec();
}

// Seconds since 1970, as in `gateway.db`.
inline int64_t wallSeconds(const IClock& clock) { return std::chrono::system_clock::to_time_t(clock.wallTime()); }

// The boot clock's seconds.
inline int64_t bootSeconds(const IClock& clock) {
  return std::chrono::duration_cast<std::chrono::seconds>(clock.bootTime()).count();
}

// Keeps a line of the audit in `gateway.db` until it can be written.
inline void keepAuditLine(const SQLite::Database& db, const std::string& line, int64_t now) {
  writeSql(db, "INSERT INTO action (token, made, fingerprint, due) VALUES (0, ?, '', ?)", now, line);
}

}  // namespace orvane::terminal
