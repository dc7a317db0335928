#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <mutex>
#include <string>
#include <string_view>

namespace orvane::terminal {

// A file of lines that is rotated by size: FILE becomes FILE.1, and so on. On a full or read-only disk lines are lost
// and counted, and the next line that can be written is preceded by their number. Any thread.
class LogFile {
 public:
  // Opens `file` for appending; creates it if it is missing. Keeps `oldFiles` rotated files.
  LogFile(std::filesystem::path file, size_t maxBytes, int oldFiles);
  ~LogFile();
  LogFile(const LogFile&) = delete;
  LogFile& operator=(const LogFile&) = delete;

  // Appends `line`, which ends in a line feed. The first line that is lost is reported on standard error.
  void write(std::string_view line) noexcept;

  // Counts a line as lost for this errno.
  void lose(int error) noexcept;

  // Why the last line was lost, how many were, and what to do, UTF-8; empty if the last one was written.
  std::string fault() const;

 private:
  int open();
  int append(std::string_view line);
  void rotate();
  void report(int error) noexcept;
  std::filesystem::path oldFile(int number) const;

  const std::filesystem::path path_;
  const size_t maxBytes_;
  const int oldFiles_;
  mutable std::mutex mutex_;
  int descriptor_ = -1;
  size_t size_ = 0;      // of the file
  size_t rotateAt_ = 0;  // its size at which it is rotated
  uint64_t lost_ = 0;    // since the last line that was written
  int error_ = 0;        // the errno of the last loss; 0 if the last line was written
  bool reported_ = false;
};

}  // namespace orvane::terminal
