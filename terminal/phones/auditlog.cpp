#include "terminal/phones/auditlog.h"

#include <cerrno>
#include <cstring>
#include <stdexcept>

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include "terminal/ownersfile.h"

namespace orvane::terminal {
namespace {

const char* remedyOf(int reason) {
  switch (reason) {
    case EWOULDBLOCK:
      return "end the program that has locked it";
    case ENOSPC:
    case EDQUOT:
      return "make room on its disk";
    case ELOOP:
    case EPERM:
    case EISDIR:
      return "remove it: it does not belong to the folder's owner, or is not a regular file";
    default:
      return "let the folder's owner write to it";
  }
}

[[noreturn]] void fail(const std::filesystem::path& file) {
  const int reason = errno;
  throw std::runtime_error(
      fmt::format("cannot write {}: {}; {}", file.string(), std::strerror(reason), remedyOf(reason)));
}

struct Descriptor {
  explicit Descriptor(int opened) : number(opened) {}
  ~Descriptor() { close(number); }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  int number;
};

bool isSame(const struct stat& opened, const std::filesystem::path& file) {
  struct stat named {};
  return lstat(file.c_str(), &named) == 0 && named.st_ino == opened.st_ino && named.st_dev == opened.st_dev;
}

}  // namespace

void AuditLog::append(const std::vector<std::string>& lines) const {
  std::string text;
  for (const std::string& line : lines) text.append(line).append(1, '\n');
  while (!tryAppend(text)) continue;
}

// False if the file must be opened again, since it was moved away.
bool AuditLog::tryAppend(const std::string& text) const {
  const Descriptor file(openOwnersFile(file_, O_WRONLY | O_APPEND | O_CLOEXEC));
  struct stat before {};
  if (file.number < 0 || flock(file.number, LOCK_EX | LOCK_NB) != 0 || fstat(file.number, &before) != 0) fail(file_);
  if (!isSame(before, file_)) return false;
  if (before.st_size > 0 && before.st_size + static_cast<int64_t>(text.size()) > limits_.fileBytes) {
    rotate();
    return false;
  }
  const ssize_t written = write(file.number, text.data(), text.size());
  if (written == static_cast<ssize_t>(text.size())) return true;
  if (written >= 0) errno = ENOSPC;
  const int reason = errno;
  if (written > 0 && ftruncate(file.number, before.st_size) != 0) {
    throw std::runtime_error(fmt::format("{} ends in half a line: {}", file_.string(), std::strerror(errno)));
  }
  errno = reason;
  fail(file_);
}

// REQUIRES: the file is locked, so that one process rotates.
void AuditLog::rotate() const {
  const auto numbered = [this](int number) {
    return number == 0 ? file_ : std::filesystem::path(fmt::format("{}.{}", file_.string(), number));
  };
  for (int number = limits_.oldFiles; number > 0; --number) {
    if (rename(numbered(number - 1).c_str(), numbered(number).c_str()) != 0 && errno != ENOENT) fail(file_);
  }
  if (limits_.oldFiles == 0 && unlink(file_.c_str()) != 0) fail(file_);
}

}  // namespace orvane::terminal
