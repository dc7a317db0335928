#include "terminal/logging.h"

#include <cerrno>
#include <exception>
#include <utility>

#include <log4cxx/appenderskeleton.h>
#include <log4cxx/level.h>
#include <log4cxx/spi/loggingevent.h>

#include "host/common.h"
#include "terminal/utf8.h"

namespace orvane::terminal {
namespace {

constexpr size_t kMaxFileBytes = size_t{16} * 1024 * 1024;
constexpr int kOldFiles = 4;

// log4cxx's own appenders throw out of the log call when the disk is full, and wait for it. Lines that come after the
// file's end are dropped.
class LogFileAppender : public log4cxx::AppenderSkeleton {
 public:
  explicit LogFileAppender(const std::shared_ptr<LogFile>& file) : file_(file) {}
  void close() override {}
  bool requiresLayout() const override { return false; }

 protected:
  void append(const log4cxx::spi::LoggingEventPtr& event, log4cxx::helpers::Pool& /*pool*/) override {
    const std::shared_ptr<LogFile> file = file_.lock();
    if (file != nullptr) writeTo(*file, *event);
  }

 private:
  static void writeTo(LogFile& file, const log4cxx::spi::LoggingEvent& event) try {
    file.write(logLine(event.getMessage()));
  } catch (const std::exception&) {
    file.lose(ENOMEM);  // the line could not be made
  }

  const std::weak_ptr<LogFile> file_;
};

}  // namespace

std::shared_ptr<const LogFile> setUpLogging(const std::filesystem::path& file, const std::string& level) {
  auto log = std::make_shared<LogFile>(file, kMaxFileBytes, kOldFiles);
  const log4cxx::LoggerPtr root = log4cxx::Logger::getRootLogger();
  root->addAppender(std::make_shared<LogFileAppender>(log));
  root->setLevel(log4cxx::Level::toLevel(level, log4cxx::Level::getInfo()));
  return log;
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
