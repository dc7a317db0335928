#pragma once

#include <filesystem>
#include <functional>
#include <stdexcept>
#include <string>

#include <SQLiteCpp/Database.h>
#include <SQLiteCpp/Exception.h>

namespace orvane::terminal {

// The disk is full, read-only or failing. what() names file, reason and remedy, UTF-8.
class DiskFault : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

enum class IfMissing { Make, Fail };

// Opens `gateway.db` in the data folder: the tokens, and the requests that change something. Only its owner can read
// it. The running terminal and the commands share it, each through its own connection, which is not thread-safe.
// Throws DiskFault, or std::runtime_error with a clear message.
SQLite::Database openGatewayDatabase(const std::filesystem::path& dataDir, IfMissing ifMissing = IfMissing::Make);

// For a folder that `fault` keeps from being written: calls `read` with a copy of `gateway.db` in memory. Throws
// std::runtime_error with both reasons if there can be none.
void readGatewayCopy(const std::filesystem::path& dataDir, const DiskFault& fault,
                     const std::function<void(SQLite::Database& db)>& read);

// What failed, with the file's name and the remedy, UTF-8.
std::string describeFault(const std::filesystem::path& file, const SQLite::Exception& error);

}  // namespace orvane::terminal
