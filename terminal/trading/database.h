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

// The parts of a book to be written, by key. Fills are only added.
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

// The file `terminal.db`. Locked against other processes; not thread-safe. Each write is one transaction and is flushed
// when the call returns.
class Database {
 public:
  // Opens the file in `dir`, or creates it with the sample data. Throws std::runtime_error that names file and remedy.
  explicit Database(const std::filesystem::path& dir);

  // Throws like the constructor.
  Book load();

  // Writes the parts of `book` that `change` names. Throws SQLite::Exception and writes nothing if it fails.
  void save(const Book& book, const Change& change);

 private:
  SQLite::Database db_;
};

}  // namespace orvane::terminal
