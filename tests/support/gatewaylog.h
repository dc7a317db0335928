#pragma once

#include <fstream>
#include <iterator>
#include <memory>
#include <string>

#include <log4cxx/fileappender.h>
#include <log4cxx/patternlayout.h>

#include "terminal/logging.h"
#include "tests/support/tempdir.h"

namespace orvane::test {

// What the gateway logs while the object exists.
class GatewayLog {
 public:
  GatewayLog() { terminal::gatewayLogger()->addAppender(appender_); }
  ~GatewayLog() { terminal::gatewayLogger()->removeAppender(appender_); }
  GatewayLog(const GatewayLog&) = delete;
  GatewayLog& operator=(const GatewayLog&) = delete;

  std::string text() const {
    std::ifstream file(dir_.path() / "log");
    return {std::istreambuf_iterator<char>(file), {}};
  }

 private:
  TempDir dir_;
  const std::shared_ptr<log4cxx::Appender> appender_ = std::make_shared<log4cxx::FileAppender>(
      std::make_shared<log4cxx::PatternLayout>("%m%n"), (dir_.path() / "log").string(), false);
};

}  // namespace orvane::test
