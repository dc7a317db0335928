#pragma once

#include <filesystem>

namespace orvane::terminal {

// Marks a data folder as in use by a running terminal: a lock on the file `terminal.lock`, which the system releases
// when the process ends, even after a crash.
class RunMark {
 public:
  // Logs nothing and throws nothing: without the mark, commands assume that no terminal is running.
  explicit RunMark(const std::filesystem::path& dataDir);
  ~RunMark();
  RunMark(const RunMark&) = delete;
  RunMark& operator=(const RunMark&) = delete;

  static bool isSet(const std::filesystem::path& dataDir);

 private:
  int file_;  // -1: no mark
};

}  // namespace orvane::terminal
