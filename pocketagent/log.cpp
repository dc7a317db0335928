#include "pocketagent/log.h"

#include <type_traits>

#include "host/common.h"

namespace orvane {

namespace {

// forcedLog would decode the message by the process's locale and turn each byte that is no text there into '?': in the
// "C" locale all of GBK and UTF-8. forcedLogLS takes a text as the log library keeps it, here plain bytes, and passes
// it on untouched.
static_assert(std::is_same_v<log4cxx::LogString, std::string>, "log4cxx must keep its texts as char strings");

void writeLine(const log4cxx::LevelPtr& level, std::string_view tag, std::string_view message,
               const SourcePlace& place) {
  const log4cxx::LoggerPtr& logger = agentLogger();
  std::string line;
  if (isTimeEnabled()) {
    line.append(Timestamp::now(OrvTimeZone::Default).toISO8601String()).append(" ");
  }
  line.append(tag).append(logger->getName()).append(" ").append(message);
  const char* shortFile = log4cxx::spi::LocationInfo::calcShortFileName(place.file);
  logger->forcedLogLS(level, line, log4cxx::spi::LocationInfo(place.file, shortFile, place.function, place.line));
}

}  // namespace

const log4cxx::LoggerPtr& agentLogger() {
  static const log4cxx::LoggerPtr& logger = *new log4cxx::LoggerPtr(log4cxx::Logger::getLogger("PocketAgent"));
  return logger;
}

void writeDebugLine(std::string_view message, const SourcePlace& place) {
  writeLine(log4cxx::Level::getDebug(), "[DEBUG] ", message, place);
}

void writeTraceLine(std::string_view message, const SourcePlace& place) {
  writeLine(log4cxx::Level::getTrace(), "[TRACE] ", message, place);
}

void writeErrorLine(std::string_view message, const SourcePlace& place) {
  writeLine(log4cxx::Level::getError(), "[ERROR] ", message, place);
}

}  // namespace orvane
