#include <gmock/gmock.h>

#include "pocketagent/log.h"

int main(int argc, char** argv) {
  testing::InitGoogleMock(&argc, argv);
  testing::GTEST_FLAG(death_test_style) = "threadsafe";
  orvane::agentLogger()->setLevel(log4cxx::Level::getOff());
  return RUN_ALL_TESTS();
}
