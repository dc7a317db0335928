#pragma once

#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include <log4cxx/appenderskeleton.h>

#include "pocketagent/log.h"

namespace orvane::test {

// Records the library's log lines at `level` and above during its lifetime.
class LogCapture {
 public:
  explicit LogCapture(const log4cxx::LevelPtr& level) {
    agentLogger()->setLevel(level);
    agentLogger()->addAppender(appender_);
  }
  ~LogCapture() {
    agentLogger()->removeAppender(appender_);
    agentLogger()->setLevel(log4cxx::Level::getOff());
  }
  LogCapture(const LogCapture&) = delete;
  LogCapture& operator=(const LogCapture&) = delete;

  std::vector<std::string> lines() const {
    const std::lock_guard lock(appender_->linesMutex);
    return appender_->lines;
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

  std::shared_ptr<Appender> appender_ = std::make_shared<Appender>();
};

}  // namespace orvane::test
