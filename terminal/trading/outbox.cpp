#include "terminal/trading/outbox.h"

#include <utility>

namespace orvane::terminal {

void Outbox::start(Notify notify) {
  {
    const std::lock_guard lock(mutex_);  // the committer may post already
    open_ = true;
  }
  thread_ = std::thread([this, notify = std::move(notify)] { run(notify); });
}

void Outbox::stop() {
  {
    const std::lock_guard lock(mutex_);
    open_ = false;
    queue_.clear();
  }
  changed_.notify_all();
  if (thread_.joinable()) thread_.join();
}

void Outbox::post(MobileMessage message) {
  {
    const std::lock_guard lock(mutex_);
    if (!open_) return;
    queue_.push_back(std::move(message));
  }
  changed_.notify_one();
}

void Outbox::run(const Notify& notify) {
  std::unique_lock lock(mutex_);
  while (open_) {
    changed_.wait(lock, [this] { return !open_ || !queue_.empty(); });
    const std::vector<MobileMessage> batch = std::exchange(queue_, {});
    for (const MobileMessage& message : batch) {
      if (!open_) return;
      lock.unlock();
      notify(message);
      lock.lock();
    }
  }
}

}  // namespace orvane::terminal
