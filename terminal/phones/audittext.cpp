#include "terminal/phones/audittext.h"

#include <algorithm>
#include <chrono>
#include <ctime>

#include <fmt/chrono.h>

#include "terminal/json.h"

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

std::string auditSummary(std::string_view token, uint64_t count, WallTime now) {
  return auditHead({.token = token, .address = {}, .topic = {}, .body = {}, .key = {}}, now) +
         auditRefusal(fmt::format("{} more requests of this token were refused within a second", count));
}

}  // namespace orvane::terminal
