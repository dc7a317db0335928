#pragma once

#include <string_view>

#include <log4cxx/logger.h>

namespace orvane {

// The library's one logger, "PocketAgent". It outlives every static object, because a worker may log until the process
// exits.
const log4cxx::LoggerPtr& agentLogger();

using LogLocation = log4cxx::spi::LocationInfo;  // file, line, class and operation; LOG4CXX_LOCATION is the current one

// Writes the line "[time ]tag logger message", whatever the level; the macros below test the level first. The bytes of
// `message` reach the appenders unchanged, GBK or UTF-8. Any thread.
void writeDebugLine(std::string_view message, const LogLocation& location);
void writeTraceLine(std::string_view message, const LogLocation& location);
void writeErrorLine(std::string_view message, const LogLocation& location);

}  // namespace orvane

// Each tests its level first and evaluates `message` only if the level is on.
#define POCKET_LOG_IF(enabled, write, message)    \
  do {                                            \
    if (::orvane::agentLogger()->enabled()) {     \
      ::orvane::write(message, LOG4CXX_LOCATION); \
    }                                             \
  } while (false)

#define POCKET_DEBUG(message) POCKET_LOG_IF(isDebugEnabled, writeDebugLine, message)
#define POCKET_TRACE(message) POCKET_LOG_IF(isTraceEnabled, writeTraceLine, message)
#define POCKET_ERROR(message) POCKET_LOG_IF(isErrorEnabled, writeErrorLine, message)
