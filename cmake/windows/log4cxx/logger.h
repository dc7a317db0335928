#pragma once

// What the library uses of log4cxx, with every level off.

#include <memory>
#include <string>

namespace log4cxx {

using LogString = std::string;

struct Level {
  static std::shared_ptr<Level> getTrace() { return nullptr; }
  static std::shared_ptr<Level> getDebug() { return nullptr; }
  static std::shared_ptr<Level> getError() { return nullptr; }
};
using LevelPtr = std::shared_ptr<Level>;

namespace spi {
struct LocationInfo {
  static const char* calcShortFileName(const char* file) { return file; }

  const char* file;
  const char* shortFile;
  const char* function;
  int line;
};
}  // namespace spi

struct Logger {
  static std::shared_ptr<Logger> getLogger(const char* name) { return std::make_shared<Logger>(Logger{name}); }

  const std::string& getName() const { return name; }
  bool isTraceEnabled() const { return false; }
  bool isDebugEnabled() const { return false; }
  bool isErrorEnabled() const { return false; }
  void forcedLogLS(const LevelPtr& /*level*/, const LogString& /*text*/, const spi::LocationInfo& /*place*/) const {}

  std::string name;
};
using LoggerPtr = std::shared_ptr<Logger>;

}  // namespace log4cxx
