#pragma once

#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include <log4cxx/appenderskeleton.h>

#include "pocketagent/log.h"

namespace orvane::test {

// Records a logger's lines at `level` and above during its lifetime.
class LogCapture {
 public:
  LogCapture(log4cxx::LoggerPtr logger, const log4cxx::LevelPtr& level)
      : logger_(std::move(logger)), before_(logger_->getLevel()) {
    logger_->setLevel(level);
    logger_->addAppender(appender_);
  }
  // The library's lines.
  explicit LogCapture(const log4cxx::LevelPtr& level) : LogCapture(agentLogger(), level) {}
  ~LogCapture() {
    logger_->removeAppender(appender_);
    logger_->setLevel(before_);
  }
  LogCapture(const LogCapture&) = delete;
  LogCapture& operator=(const LogCapture&) = delete;

  std::vector<std::string> lines() const {
    const std::lock_guard lock(appender_->linesMutex);
    return appender_->lines;
  }
  // The lines, each with its line feed.
  std::string text() const {
    std::string text;
    for (const std::string& line : lines()) text += line + '\n';
    return text;
  }
  // The level of the last line and its location: "DEBUG orvane::MobileWorker::parseTid accountselector.cpp".
  std::string lastPlace() const { return appender_->lastPlace; }

 private:
  struct Appender : log4cxx::AppenderSkeleton {
    void append(const log4cxx::spi::LoggingEventPtr& event, log4cxx::helpers::Pool& /*pool*/) override {
      const std::lock_guard lock(linesMutex);
      lines.push_back(event->getMessage());
      const log4cxx::spi::LocationInfo& location = event->getLocationInformation();
      lastPlace = event->getLevel()->toString() + " " + location.getClassName() + "::" + location.getMethodName() +
                  " " + location.getShortFileName();
    }
    void close() override {}
    bool requiresLayout() const override { return false; }

    std::mutex linesMutex;
    std::vector<std::string> lines;
    std::string lastPlace;
  };

  const log4cxx::LoggerPtr logger_;
  const log4cxx::LevelPtr before_;
  const std::shared_ptr<Appender> appender_ = std::make_shared<Appender>();
};

}  // namespace orvane::test
