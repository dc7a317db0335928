#include "terminal/trading/opening.h"

#include <string>
#include <system_error>

namespace orvane::terminal {
namespace {

constexpr const char* kFile = "terminal.db";

bool isThere(const std::filesystem::path& file) {
  std::error_code error;
  return std::filesystem::file_size(file, error) > 0 && !error;
}

// Opening writes nothing. So this is how a full disk is known before the first order.
std::optional<StoreError> tryWriting(Database& database) try {
  database.overwriteFailed();
  return std::nullopt;
} catch (const StoreError& error) {
  return error;
}

}  // namespace

OpenedBook openBook(const std::filesystem::path& dir) {
  try {
    auto database = std::make_unique<Database>(dir);
    Book book = database->load();
    std::optional<StoreError> error = tryWriting(*database);
    return {std::move(database), nullptr, std::move(book), std::move(error)};
  } catch (const StoreError& error) {
    if (!error.isOfDisk() || !isThere(dir / kFile)) throw;
    try {
      auto copy = std::make_unique<ReadingCopy>(dir / kFile);
      Book book = copy->database.load();
      return {nullptr, std::move(copy), std::move(book), error};
    } catch (const std::exception& copying) {
      throw StoreError(dir / kFile,
                       std::runtime_error(std::string(error.what()) + "; nor can it be read: " + copying.what()));
    }
  }
}

}  // namespace orvane::terminal
