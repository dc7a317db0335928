#pragma once

#include <chrono>
#include <functional>
#include <memory>

namespace orvane::terminal {

// Since the machine started, time in suspend included.
using BootTime = std::chrono::nanoseconds;

using WallTime = std::chrono::system_clock::time_point;

class IClock {
 public:
  virtual ~IClock() = default;
  virtual WallTime wallTime() const = 0;  // for what is stored or shown; it may jump
  virtual BootTime bootTime() const = 0;  // for limits and durations
};

// A running timer. Destroying it cancels it, also from inside its own work.
class Timer {
 public:
  virtual ~Timer() = default;
};

// The one thread that runs all sessions and what belongs to them.
class IEventLoop : public IClock {
 public:
  using Work = std::function<void()>;

  // Runs `work` on the loop's thread, in the order of the calls. Any thread.
  virtual void post(Work work) = 0;

  // Runs `work` once, after `delay`, unless the timer is destroyed before. The loop's thread.
  [[nodiscard]] virtual std::unique_ptr<Timer> after(std::chrono::milliseconds delay, Work work) = 0;
};

}  // namespace orvane::terminal
