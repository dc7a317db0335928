#pragma once

#include <filesystem>
#include <memory>
#include <optional>

#include "terminal/databasecopy.h"
#include "terminal/trading/database.h"

namespace orvane::terminal {

// A copy of the database that is open as long as the file cannot be written.
struct ReadingCopy {
  explicit ReadingCopy(const std::filesystem::path& file) : copy(file), database(copy.dir()) {}

  DatabaseCopy copy;
  Database database;
};

struct OpenedBook {
  std::unique_ptr<Database> database;  // null if it cannot be opened for writing
  std::unique_ptr<ReadingCopy> copy;   // null if it can
  Book book;
  std::optional<StoreError> error;  // why it cannot be written
};

// Opens the database in `dir` and reads the book. If the disk is full, read-only or failing but the file can be read,
// it is read from a copy in memory, write-ahead log included. Throws StoreError otherwise.
OpenedBook openBook(const std::filesystem::path& dir);

}  // namespace orvane::terminal
