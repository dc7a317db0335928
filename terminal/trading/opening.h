#pragma once

#include <filesystem>
#include <memory>
#include <optional>

#include "terminal/trading/database.h"

namespace orvane::terminal {

struct OpenedBook {
  std::unique_ptr<Database> database;  // null if it cannot be opened for writing
  Book book;
  std::optional<StoreError> error;  // why it cannot be written
};

// Opens the database in `dir` and reads the book. If the disk is full, read-only or failing but the file can be read,
// the book is read from a copy in memory, write-ahead log included. Throws StoreError otherwise.
OpenedBook openBook(const std::filesystem::path& dir);

}  // namespace orvane::terminal
