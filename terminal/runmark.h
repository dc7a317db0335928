#pragma once

#include <filesystem>
#include <utility>

namespace orvane::terminal {

// Marks a data folder as in use by a running terminal: a lock on the file `terminal.lock`, which the system releases
// when the process ends, even after a crash. One thread.
class RunMark {
 public:
  // Does not set the mark yet.
  explicit RunMark(std::filesystem::path dataDir) : dataDir_(std::move(dataDir)) {}
  ~RunMark();
  RunMark(const RunMark&) = delete;
  RunMark& operator=(const RunMark&) = delete;

  // Tries to set the mark, unless it is set. Without it, which is no error, commands assume that no terminal is
  // running: so try again once a folder that was read-only can be written.
  void set();

  static bool isSet(const std::filesystem::path& dataDir);

 private:
  const std::filesystem::path dataDir_;
  int file_ = -1;  // -1: no mark
};

}  // namespace orvane::terminal
