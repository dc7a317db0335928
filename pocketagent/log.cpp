#include "pocketagent/log.h"

#include <string>
#include <type_traits>

#include "host/common.h"

namespace orvane {

namespace {

// forcedLog would decode the message by the process's locale and replace each byte that is not text there with '?'. In
// the "C" locale that is all of GBK and UTF-8. forcedLogLS takes the log library's own string type, here plain bytes,
// and passes it on untouched.
static_assert(std::is_same_v<log4cxx::LogString, std::string>, "log4cxx must keep its texts as char strings");

void writeLine(const log4cxx::LevelPtr& level, std::string_view tag, std::string_view message,
               const LogLocation& location) {
  const log4cxx::LoggerPtr& logger = agentLogger();
  std::string line;
  if (isTimeEnabled()) line.append(Timestamp::now(OrvTimeZone::Default).toISO8601String()).append(" ");
  line.append(tag).append(logger->getName()).append(" ").append(message);
  logger->forcedLogLS(level, line, location);
}

}  // namespace

const log4cxx::LoggerPtr& agentLogger() {
  // Never destroyed: see the header.
  static const log4cxx::LoggerPtr& logger = *new log4cxx::LoggerPtr(log4cxx::Logger::getLogger("PocketAgent"));
  return logger;
}

void writeDebugLine(std::string_view message, const LogLocation& location) {
  writeLine(log4cxx::Level::getDebug(), "[DEBUG] ", message, location);
}

void writeTraceLine(std::string_view message, const LogLocation& location) {
  writeLine(log4cxx::Level::getTrace(), "[TRACE] ", message, location);
}

void writeErrorLine(std::string_view message, const LogLocation& location) {
  writeLine(log4cxx::Level::getError(), "[ERROR] ", message, location);
}

}  // namespace orvane
