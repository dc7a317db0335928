#pragma once

#include <filesystem>

namespace orvane::terminal {

// Shows other processes that a terminal runs on a data folder: a lock on the file `terminal.lock`, which ends with the
// process, however it ends.
class RunMark {
 public:
  // Logs nothing and throws nothing: without the mark a command takes the terminal for one that does not run.
  explicit RunMark(const std::filesystem::path& dataDir);
  ~RunMark();
  RunMark(const RunMark&) = delete;
  RunMark& operator=(const RunMark&) = delete;

  static bool isSet(const std::filesystem::path& dataDir);

 private:
  int file_;  // -1: no mark
};

}  // namespace orvane::terminal
