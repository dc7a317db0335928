#pragma once

#include <map>
#include <optional>

#include <SQLiteCpp/Database.h>
#include <SQLiteCpp/Statement.h>

#include "terminal/trading/change.h"

namespace orvane::terminal {

// Writes rows by prepared statements, which it keeps. Not thread-safe.
class RowWriter {
 public:
  // The database must outlive the writer.
  explicit RowWriter(SQLite::Database& db) : db_(db) {}

  // Inside the caller's transaction. Throws SQLite::Exception.
  void write(const Rows& rows);

 private:
  template <typename... Values>
  void run(const char* sql, const Values&... values);

  void writeAccount(const Account& it);
  void writeHolding(const Key& key, Direction direction, const Holding& it);
  void writeInstrument(const Instrument& it);
  void writeOrder(const OrderRow& row);
  void writeManual(const Key& key, const std::optional<Volumes>& volumes);
  void writeContract(const CreditContract& it);

  SQLite::Database& db_;
  std::map<const char*, SQLite::Statement> statements_;  // by the address of the literal
};

}  // namespace orvane::terminal
