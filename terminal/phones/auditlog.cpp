#include "terminal/phones/auditlog.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <ctime>
#include <stdexcept>

#include <fcntl.h>
#include <fmt/chrono.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include "terminal/json.h"
#include "terminal/ownersfile.h"

namespace orvane::terminal {
namespace {

std::string timeText(WallTime now) {
  using namespace std::chrono;
  const auto since = now.time_since_epoch();
  const std::time_t seconds = duration_cast<std::chrono::seconds>(since).count();
  std::tm local{};
  localtime_r(&seconds, &local);
  const std::string offset = fmt::format("{:%z}", local);  // +hhmm
  return fmt::format("{:%FT%T}.{:03}{}:{}", local, duration_cast<milliseconds>(since).count() % 1000,
                     offset.substr(0, 3), offset.substr(3));
}

// JSON allows line feeds only between values, where a blank will do.
std::string inOneLine(std::string_view json) {
  std::string line(json.empty() ? "null" : json);
  std::replace_if(
      line.begin(), line.end(), [](char c) { return c == '\n' || c == '\r'; }, ' ');
  return line;
}

// A reply's data need not be JSON.
std::string replyData(const std::string& data) {
  return data.empty() || checkJson(data).ok ? inOneLine(data) : jsonString(data);
}

[[noreturn]] void fail(const std::filesystem::path& file) {
  throw std::runtime_error(fmt::format("cannot write {}: {}", file.string(), std::strerror(errno)));
}

struct Descriptor {
  explicit Descriptor(int opened) : number(opened) {}
  ~Descriptor() { close(number); }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  int number;
};

// null if there is none.
std::string nameText(std::string_view name) { return name.empty() ? "null" : jsonString(name); }

}  // namespace

std::string auditHead(const AuditEntry& entry, WallTime now) {
  return fmt::format(R"({{"time":"{}","token":{},"address":{},"topic":{},"body":{},"key":{})", timeText(now),
                     nameText(entry.token), jsonString(entry.address), jsonString(entry.topic), inOneLine(entry.body),
                     nameText(entry.key));
}

std::string auditReply(const MobileMessage& reply) {
  return fmt::format(R"(,"outcome":"answered","message":{},"data":{}}})", jsonString(reply.message),
                     replyData(reply.data));
}

std::string auditRefusal(std::string_view message) {
  return fmt::format(R"(,"outcome":"refused","message":{},"data":null}})", jsonString(message));
}

std::string auditLoss() {
  return R"(,"outcome":"unknown","message":"the terminal ended before the reply was known","data":null})";
}

void AuditLog::append(std::string line) const {
  line += '\n';
  const Descriptor file(openOwnersFile(file_, O_WRONLY | O_APPEND | O_CLOEXEC));
  struct stat before {};
  if (file.number < 0 || flock(file.number, LOCK_EX) != 0 || fstat(file.number, &before) != 0) fail(file_);
  const ssize_t written = write(file.number, line.data(), line.size());
  if (written == static_cast<ssize_t>(line.size())) return;
  if (written >= 0) errno = ENOSPC;
  const int reason = errno;
  if (written > 0 && ftruncate(file.number, before.st_size) != 0) {
    throw std::runtime_error(fmt::format("{} ends in half a line: {}", file_.string(), std::strerror(errno)));
  }
  errno = reason;
  fail(file_);
}

}  // namespace orvane::terminal
