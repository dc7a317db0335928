#pragma once

#include <filesystem>
#include <optional>
#include <set>
#include <vector>

#include <SQLiteCpp/Database.h>

#include "terminal/trading/book.h"

namespace orvane::terminal {

struct NewFill {
  OrderFill fill;
  double commission = 0;
};

// What of a book is to be written, by key; fills are only ever added.
struct Change {
  std::set<int32_t> accounts;
  std::set<Key> holdings;
  std::set<int64_t> orders;
  std::vector<NewFill> fills;
  std::set<int64_t> contracts;
  std::set<int64_t> quotes;
  std::set<Key> manual;
  std::set<int64_t> instruments;
  std::optional<int64_t> nextDay;

  bool empty() const {
    return accounts.empty() && holdings.empty() && orders.empty() && fills.empty() && contracts.empty() &&
           quotes.empty() && manual.empty() && instruments.empty() && !nextDay;
  }
};

// The file `terminal.db`. One process at a time; one thread at a time. Every write is one transaction, on the disk when
// the call returns.
class Database {
 public:
  // Opens the file in `dir`, or makes it with the sample data. Throws std::runtime_error with a clear message.
  explicit Database(const std::filesystem::path& dir);

  // Throws as the constructor does.
  Book load();

  // Writes what `change` names as it stands in `book`. Throws SQLite::Exception, and then nothing is written.
  void save(const Book& book, const Change& change);

 private:
  SQLite::Database db_;
};

}  // namespace orvane::terminal
