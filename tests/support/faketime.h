#pragma once

#include <algorithm>
#include <atomic>
#include <chrono>
#include <memory>
#include <utility>
#include <vector>

#include "terminal/clocks.h"
#include "terminal/eventloop.h"

namespace orvane::test {

// Both clocks of a loop and its timers. They move only when the test says so. The clocks may be read on any thread,
// everything else belongs to the loop's.
class FakeTime : public terminal::IClock {
 public:
  using Work = terminal::IEventLoop::Work;

  terminal::BootTime bootTime() const override { return now_.load(); }
  terminal::WallTime wallTime() const override {
    return terminal::WallTime(std::chrono::seconds(1'790'000'000)) +
           std::chrono::duration_cast<terminal::WallTime::duration>(bootTime()) + jumped_.load();
  }

  std::unique_ptr<terminal::Timer> after(std::chrono::milliseconds delay, Work work) {
    auto entry = std::make_shared<Entry>(Entry{bootTime() + delay, std::move(work)});
    timers_.push_back(entry);
    return std::make_unique<Handle>(std::move(entry));
  }

  // Sets the wall clock forward; no timer notices.
  void jump(std::chrono::seconds time) { jumped_ = jumped_.load() + time; }

  // Runs all timers that are due by then, each at its own time.
  void advance(std::chrono::nanoseconds time) {
    const auto end = bootTime() + time;
    while (const auto next = takeDue(end)) {
      now_ = next->due;
      run(*next);
    }
    now_ = end;
  }

  // The machine slept: a timer that is due by now runs now, and only once.
  void sleep(std::chrono::nanoseconds time) {
    const auto end = bootTime() + time;
    now_ = end;
    std::vector<std::shared_ptr<Entry>> late;
    while (auto next = takeDue(end)) late.push_back(std::move(next));
    for (const auto& each : late) {
      if (each.use_count() > 1) run(*each);
    }
  }

 private:
  struct Entry {
    std::chrono::nanoseconds due{};
    Work work;
  };
  struct Handle : terminal::Timer {
    explicit Handle(std::shared_ptr<Entry> running) : entry(std::move(running)) {}
    std::shared_ptr<Entry> entry;
  };

  // The work may destroy its own timer.
  static void run(Entry& entry) {
    const Work work = std::move(entry.work);
    work();
  }

  // A timer whose handle is gone is cancelled: only a weak reference is kept here.
  std::shared_ptr<Entry> takeDue(std::chrono::nanoseconds end) {
    std::erase_if(timers_, [](const auto& timer) { return timer.expired(); });
    const auto earlier = [](const auto& a, const auto& b) { return a.lock()->due < b.lock()->due; };
    const auto first = std::min_element(timers_.begin(), timers_.end(), earlier);
    if (first == timers_.end() || first->lock()->due > end) return nullptr;
    auto due = first->lock();
    timers_.erase(first);
    return due;
  }

  std::atomic<std::chrono::nanoseconds> now_{std::chrono::hours(1)};
  std::atomic<std::chrono::seconds> jumped_{};
  std::vector<std::weak_ptr<Entry>> timers_;
};

}  // namespace orvane::test
