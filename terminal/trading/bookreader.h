#pragma once

#include <SQLiteCpp/Database.h>

#include "terminal/trading/book.h"

namespace orvane::terminal {

// Reads the book of the current trading day. Throws SQLite::Exception.
Book readBook(const SQLite::Database& db);

}  // namespace orvane::terminal
