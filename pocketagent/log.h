#pragma once

#include <string>
#include <string_view>

#include <log4cxx/logger.h>

namespace orvane {

// The place in the sources that a line is told from; a default argument of this type is the caller's place.
struct SourcePlace {
  static SourcePlace current(const char* file = __builtin_FILE(), const char* function = __builtin_FUNCTION(),
                             int line = __builtin_LINE()) {
    return {file, function, line};
  }

  const char* file;
  const char* function;
  int line;
};

// The library's one logger, "PocketAgent". It outlives every static object, since a worker may log until the very end.
const log4cxx::LoggerPtr& agentLogger();

// Writes the line "[time ]tag logger message", whatever the level; the macros below test the level first. The bytes of
// `message` reach the appenders as they are, GBK or UTF-8.
void writeDebugLine(std::string_view message, const SourcePlace& place);
void writeTraceLine(std::string_view message, const SourcePlace& place);
void writeErrorLine(std::string_view message, const SourcePlace& place);

}  // namespace orvane

// Each tests its level and builds nothing, the message included, unless it is on.
#define POCKET_LOG_IF(enabled, write, message)                    \
  do {                                                            \
    if (::orvane::agentLogger()->enabled()) {                     \
      ::orvane::write(message, ::orvane::SourcePlace::current()); \
    }                                                             \
  } while (false)

#define POCKET_DEBUG(message) POCKET_LOG_IF(isDebugEnabled, writeDebugLine, message)
#define POCKET_TRACE(message) POCKET_LOG_IF(isTraceEnabled, writeTraceLine, message)
#define POCKET_ERROR(message) POCKET_LOG_IF(isErrorEnabled, writeErrorLine, message)
