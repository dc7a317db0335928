#pragma once

#include <chrono>
#include <functional>
#include <memory>

#include "terminal/clocks.h"

namespace orvane::terminal {

// A running timer. Destroying it cancels it, also from inside its own work.
class Timer {
 public:
  virtual ~Timer() = default;
};

// The one thread of all sessions and their state.
class IEventLoop : public IClock {
 public:
  using Work = std::function<void()>;

  // Runs `work` on the loop's thread, in the order of the calls. Any thread.
  virtual void post(Work work) = 0;

  // Runs `work` once, after `delay`, unless the timer is destroyed before. The loop's thread.
  [[nodiscard]] virtual std::unique_ptr<Timer> after(std::chrono::milliseconds delay, Work work) = 0;
};

}  // namespace orvane::terminal
