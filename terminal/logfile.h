#pragma once

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "terminal/writetimer.h"

namespace orvane::terminal {

// A file of lines that is rotated by size: FILE becomes FILE.1, and so on. A separate thread writes them, so no
// caller waits for the disk. On a full or read-only disk, or if the disk does not keep up, lines are lost and
// counted, and the next line that can be written is preceded by their number. Any thread.
class LogFile {
 public:
  // Opens `file` for appending; creates it if it is missing. Keeps `oldFiles` rotated files.
  LogFile(std::filesystem::path file, size_t maxBytes, int oldFiles);

  // Writes what is queued.
  ~LogFile();
  LogFile(const LogFile&) = delete;
  LogFile& operator=(const LogFile&) = delete;

  // Queues `line`, which ends in a line feed. The first line that is lost is reported on standard error.
  void write(std::string line) noexcept;

  // Counts a line as lost for this errno.
  void lose(int error) noexcept;

  // Why the last line was lost, how many were, and what to do, or that a write hangs, UTF-8; empty if the last one was
  // written.
  std::string fault() const;

 private:
  struct Loss {
    uint64_t lines = 0;  // since the last line that was written
    int error = 0;       // the errno of the last loss
  };

  void run();
  void count(int error) noexcept;
  void note(int error) noexcept;
  int open();
  int append(std::string_view line, const Loss& before) noexcept;
  void rotate();
  std::filesystem::path oldFile(int number) const;

  const std::filesystem::path path_;
  const size_t maxBytes_;
  const int oldFiles_;
  WriteTimer timer_;

  // The thread's own.
  int descriptor_ = -1;
  size_t size_ = 0;      // of the file
  size_t rotateAt_ = 0;  // its size at which it is rotated

  mutable std::mutex mutex_;  // guards what follows
  std::condition_variable added_;
  std::vector<std::string> queue_;
  size_t queuedBytes_ = 0;
  Loss loss_;
  bool isReported_ = false;
  bool isEnding_ = false;
  std::thread thread_;
};

}  // namespace orvane::terminal
