#include "terminal/logging.h"

#include <fstream>
#include <memory>
#include <stdexcept>

#include <log4cxx/helpers/pool.h>
#include <log4cxx/level.h>
#include <log4cxx/rolling/rollingfileappender.h>
#include <log4cxx/simplelayout.h>
#include <log4cxx/spi/loggingevent.h>

#include "host/common.h"
#include "terminal/utf8.h"

namespace orvane::terminal {
namespace {

constexpr size_t kMaxFileBytes = size_t{16} * 1024 * 1024;
constexpr int kOldFiles = 4;

// Lines are passed as bytes: neither log4cxx's layout nor its file appender may convert them.
class LineLayout : public log4cxx::SimpleLayout {
 public:
  void format(log4cxx::LogString& output, const log4cxx::spi::LoggingEventPtr& event,
              log4cxx::helpers::Pool& /*pool*/) const override {
    output += logLine(event->getMessage());
  }
};

void requireWritable(const std::filesystem::path& file) {
  if (!std::ofstream(file, std::ios::app)) {
    throw std::runtime_error(fmt::format("cannot write the log file {}: choose another with --log", file.string()));
  }
}

}  // namespace

void setUpLogging(const std::filesystem::path& file, const std::string& level) {
  requireWritable(file);
  log4cxx::helpers::Pool pool;
  auto appender = std::make_shared<log4cxx::rolling::RollingFileAppender>();
  appender->setLayout(std::make_shared<LineLayout>());
  appender->setOption("encoding", "UTF-8");
  appender->setFile(file.string());
  appender->setAppend(true);
  appender->setMaximumFileSize(kMaxFileBytes);
  appender->setMaxBackupIndex(kOldFiles);
  appender->activateOptions(pool);
  const log4cxx::LoggerPtr root = log4cxx::Logger::getRootLogger();
  root->addAppender(appender);
  root->setLevel(log4cxx::Level::toLevel(level, log4cxx::Level::getInfo()));
}

const log4cxx::LoggerPtr& gatewayLogger() {
  static const log4cxx::LoggerPtr instance = log4cxx::Logger::getLogger("Gateway");
  return instance;
}

std::string logLine(const std::string& text) {
  const std::string readable = isUtf8(text) ? text : repairUtf8(CodeConvert::gbk_to_utf8(text));
  std::string line;
  line.reserve(readable.size() + 1);
  for (const char c : readable) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte < 0x20 || byte == 0x7F) {
      line += fmt::format("\\x{:02X}", byte);
    } else {
      line += c;
    }
  }
  return line + '\n';
}

void writeLog(const log4cxx::LoggerPtr& logger, const log4cxx::LevelPtr& level, const std::string& text,
              const log4cxx::spi::LocationInfo& location) {
  const std::string time = isTimeEnabled() ? Timestamp::now(OrvTimeZone::Default).toISO8601String() + ' ' : "";
  logger->forcedLogLS(level, fmt::format("{}[{}] {} {}", time, level->toString(), logger->getName(), text), location);
}

}  // namespace orvane::terminal
