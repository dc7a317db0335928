#include "terminal/logfile.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <exception>
#include <utility>

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

namespace orvane::terminal {
namespace {

constexpr size_t kMaxQueuedBytes = size_t{4} * 1024 * 1024;

}  // namespace

LogFile::LogFile(std::filesystem::path file, size_t maxBytes, int oldFiles)
    : path_(std::move(file)), maxBytes_(maxBytes), oldFiles_(oldFiles) {
  if (const int error = open(); error != 0) note(error);
  thread_ = std::thread([this] { run(); });
}

LogFile::~LogFile() {
  {
    const std::lock_guard lock(mutex_);
    isEnding_ = true;
  }
  added_.notify_one();
  thread_.join();
  if (descriptor_ >= 0) close(descriptor_);
}

void LogFile::write(std::string line) noexcept try {
  {
    const std::lock_guard lock(mutex_);
    if (queuedBytes_ + line.size() > kMaxQueuedBytes) return count(EBUSY);
    queuedBytes_ += line.size();
    queue_.push_back(std::move(line));
  }
  added_.notify_one();
} catch (const std::exception&) {
  lose(ENOMEM);  // the only exception possible here
}

void LogFile::lose(int error) noexcept {
  const std::lock_guard lock(mutex_);
  count(error);
}

std::string LogFile::fault() const {
  const std::lock_guard lock(mutex_);
  if (loss_.error == 0) return timer_.fault(path_);
  return fmt::format("{} lines of {} are lost: {}; make room, or choose another file with --log", loss_.lines,
                     path_.string(), std::strerror(loss_.error));
}

void LogFile::run() {
  std::unique_lock lock(mutex_);
  while (true) {
    added_.wait(lock, [this] { return isEnding_ || !queue_.empty(); });
    if (queue_.empty()) return;
    queuedBytes_ = 0;
    for (const std::string& line : std::exchange(queue_, {})) {
      const Loss before = loss_;
      lock.unlock();
      const int error = append(line, before);
      lock.lock();
      if (error != 0) {
        count(error);
        continue;
      }
      loss_.lines -= before.lines;
      if (loss_.lines == 0) loss_.error = 0;
    }
  }
}

// REQUIRES: the mutex is locked.
void LogFile::count(int error) noexcept {
  ++loss_.lines;
  note(error);
}

// Reported only once, because standard error may be a file and would grow.
void LogFile::note(int error) noexcept {
  loss_.error = error;
  if (std::exchange(isReported_, true)) return;
  std::fprintf(stderr, "pocket-terminal: the log file %s cannot be written: %s; its lines are lost until it can\n",
               path_.c_str(), std::strerror(error));
}

// 0, or an errno.
int LogFile::open() {
  descriptor_ = ::open(path_.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, S_IRUSR | S_IWUSR);
  if (descriptor_ < 0) return errno;
  struct stat state {};
  if (fstat(descriptor_, &state) != 0) return errno;
  size_ = static_cast<size_t>(state.st_size);
  rotateAt_ = maxBytes_;
  return 0;
}

// 0, or an errno: then nothing of the line is in the file.
int LogFile::append(std::string_view line, const Loss& before) noexcept try {
  const WriteTimer::Write write(timer_);
  if (descriptor_ >= 0 && size_ > 0 && size_ + line.size() > rotateAt_) rotate();
  if (const int error = descriptor_ < 0 ? open() : 0; error != 0) return error;
  std::string text =
      before.lines == 0 ? "" : fmt::format("{} lines are lost here: {}\n", before.lines, std::strerror(before.error));
  text += line;
  const ssize_t written = ::write(descriptor_, text.data(), text.size());
  if (written == static_cast<ssize_t>(text.size())) {
    size_ += text.size();
    return 0;
  }
  const int error = written < 0 ? errno : ENOSPC;
  if (written > 0 && ftruncate(descriptor_, static_cast<off_t>(size_)) != 0) size_ += static_cast<size_t>(written);
  return error;
} catch (const std::exception&) {
  return ENOMEM;
}

// If the file cannot be renamed it keeps growing, and the next attempt follows after as many bytes again: a log that is
// too long is better than none.
void LogFile::rotate() {
  std::error_code ignored;  // the file may be missing
  for (int number = oldFiles_ - 1; number > 0; --number) {
    std::filesystem::rename(oldFile(number), oldFile(number + 1), ignored);
  }
  std::error_code error;
  std::filesystem::rename(path_, oldFile(1), error);
  rotateAt_ = size_ + maxBytes_;
  if (error) return;
  close(descriptor_);
  descriptor_ = -1;
}

std::filesystem::path LogFile::oldFile(int number) const { return fmt::format("{}.{}", path_.string(), number); }

}  // namespace orvane::terminal
