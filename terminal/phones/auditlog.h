#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace orvane::terminal {

struct AuditLimits {
  int64_t fileBytes = int64_t{64} * 1024 * 1024;  // at which a file is moved away
  int oldFiles = 15;                              // `audit.log.1`, the newest, and so on; 0 keeps none
};

// `audit.log` in the data folder. Any process and thread may append; a call's lines are written whole or not at all.
class AuditLog {
 public:
  AuditLog(const std::filesystem::path& dataDir, AuditLimits limits) : file_(dataDir / "audit.log"), limits_(limits) {}

  // Opens the file each time, so that it may be moved away. Does not wait for another process that has locked it.
  // Throws std::runtime_error with the file's name, the reason and the remedy.
  void append(const std::vector<std::string>& lines) const;

 private:
  bool tryAppend(const std::string& text) const;
  void rotate() const;

  std::filesystem::path file_;
  AuditLimits limits_;
};

}  // namespace orvane::terminal
