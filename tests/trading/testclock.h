#pragma once

#include "tests/support/faketime.h"

namespace orvane::terminal::testing {

// Both of its clocks move only when the test says so.
class TestClock : public IClock {
 public:
  WallTime wallTime() const override { return time.wallTime(); }
  BootTime bootTime() const override { return time.bootTime(); }

  test::FakeTime time;
};

}  // namespace orvane::terminal::testing
