#pragma once

#include <chrono>
#include <ctime>
#include <functional>
#include <utility>

namespace orvane::terminal {

// The wall clock, which anybody may set, and the time since the system's start, which nobody can: it counts suspend and
// only ever grows. Parameters, so that a test can move them. Both may be called on any thread.
struct Clocks {
  std::function<std::chrono::system_clock::time_point()> wall = [] { return std::chrono::system_clock::now(); };
  std::function<std::chrono::nanoseconds()> boot = [] {
    timespec now{};
    clock_gettime(CLOCK_BOOTTIME, &now);
    return std::chrono::nanoseconds(std::chrono::seconds(now.tv_sec)) + std::chrono::nanoseconds(now.tv_nsec);
  };
};

// Notices jumps of the wall clock: compares what it has advanced since the start with what the boot-time clock has.
// Thread-safe.
class ClockWatch {
 public:
  explicit ClockWatch(Clocks clocks) : clocks_(std::move(clocks)), start_(difference()) {}

  std::chrono::system_clock::time_point wall() const { return clocks_.wall(); }

  // How far the wall clock has jumped: positive is forward.
  std::chrono::nanoseconds jump() const { return difference() - start_; }

  // False after a jump of more than ten minutes, until it is undone. Nothing may expire by the wall clock then.
  bool agrees() const { return std::chrono::abs(jump()) <= std::chrono::minutes(10); }

 private:
  std::chrono::nanoseconds difference() const { return clocks_.wall().time_since_epoch() - clocks_.boot(); }

  Clocks clocks_;
  std::chrono::nanoseconds start_;
};

}  // namespace orvane::terminal
