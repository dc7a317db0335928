#pragma once

#include <chrono>
#include <ctime>

namespace orvane::terminal {

using WallTime = std::chrono::system_clock::time_point;

// Since the machine started, time in suspend included.
using BootTime = std::chrono::nanoseconds;

// A parameter, so that a test can move the time. Any thread.
class IClock {
 public:
  virtual ~IClock() = default;

  // For what is stored or shown. It jumps when somebody sets it.
  virtual WallTime wallTime() const = 0;

  // For limits and durations. It never jumps.
  virtual BootTime bootTime() const = 0;
};

// The machine's clocks.
class SystemClock final : public IClock {
 public:
  WallTime wallTime() const override { return std::chrono::system_clock::now(); }
  BootTime bootTime() const override {
    timespec time{};
    clock_gettime(CLOCK_BOOTTIME, &time);  // cannot fail with a valid clock
    return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
  }
};

inline const IClock& systemClock() {
  static const SystemClock clock;
  return clock;
}

// Notices jumps of the wall clock: compares what it has advanced since the start with what the boot-time clock has.
// Thread-safe. `clock` must outlive it.
class ClockWatch {
 public:
  explicit ClockWatch(const IClock& clock) : clock_(clock), start_(difference()) {}

  WallTime wall() const { return clock_.wallTime(); }

  // How far the wall clock has jumped: positive is forward.
  std::chrono::nanoseconds jump() const { return difference() - start_; }

  // False after a jump of more than ten minutes, until it is undone. Nothing may expire by the wall clock then.
  bool agrees() const { return std::chrono::abs(jump()) <= std::chrono::minutes(10); }

 private:
  std::chrono::nanoseconds difference() const { return clock_.wallTime().time_since_epoch() - clock_.bootTime(); }

  const IClock& clock_;
  std::chrono::nanoseconds start_;
};

}  // namespace orvane::terminal
