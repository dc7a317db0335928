#include "terminal/trading/recorder.h"

#include <chrono>

namespace orvane::terminal {

void Recorder::start() {
  record();
  running_ = true;
  thread_ = std::thread([this] { run(); });
}

void Recorder::stop() {
  {
    const std::lock_guard lock(mutex_);
    running_ = false;
  }
  changed_.notify_all();
  if (thread_.joinable()) thread_.join();
}

void Recorder::run() {
  std::unique_lock lock(mutex_);
  while (running_) {
    const std::chrono::milliseconds rest(kMinuteMillis - desk_.now() % kMinuteMillis);
    if (changed_.wait_for(lock, rest, [this] { return !running_; })) return;
    lock.unlock();
    record();
    lock.lock();
  }
}

void Recorder::record() {
  desk_.record();
  desk_.read([this](const Book& book) { curves_.sample(book, desk_.now()); });
}

}  // namespace orvane::terminal
