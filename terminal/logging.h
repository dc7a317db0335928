#pragma once

#include <filesystem>
#include <memory>
#include <string>

#include <fmt/format.h>
#include <log4cxx/logger.h>

#include "terminal/logfile.h"

namespace orvane::terminal {

// Appends the lines of all loggers, the library's "PocketAgent" included, to `file`. At 16 MiB it is renamed to FILE.1
// and a new one begins; FILE.4 is the oldest that is kept. `level` is one of log4cxx's names, such as "info".
// Lines that cannot be written are lost, see LogFile; no log call throws for that. Call once, before any thread logs.
// Destroying the result writes what is queued and closes the file.
std::shared_ptr<const LogFile> setUpLogging(const std::filesystem::path& file, const std::string& level);

// The logger of `net/` and `phones/`.
const log4cxx::LoggerPtr& gatewayLogger();

// The form of all lines: one line of readable UTF-8 for each event, ended by a line feed. Text that is not UTF-8
// is read as GBK. Control characters, with which a client could forge lines, are written as \xNN.
std::string logLine(const std::string& text);

// Writes one line in the library's own form: time, tag, logger name, text. Any thread.
void writeLog(const log4cxx::LoggerPtr& logger, const log4cxx::LevelPtr& level, const std::string& text,
              const log4cxx::spi::LocationInfo& location);

}  // namespace orvane::terminal

// TERMINAL_LOG(logger, Info, "text {}", value): builds no text if the level is off. Texts are UTF-8.
#define TERMINAL_LOG(logger, level, ...)                                                             \
  do {                                                                                               \
    if (logger->isEnabledFor(log4cxx::Level::get##level())) {                                        \
      ::orvane::terminal::writeLog(logger, log4cxx::Level::get##level(), ::fmt::format(__VA_ARGS__), \
                                   LOG4CXX_LOCATION);                                                \
    }                                                                                                \
  } while (false)
