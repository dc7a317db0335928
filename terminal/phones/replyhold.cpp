#include "terminal/phones/replyhold.h"

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <utility>

namespace orvane::terminal {

struct ReplyHold::Held {
  explicit Held(Deliver to) : deliver(std::move(to)) {}

  void release(MobileMessage message, const std::string& failure) {
    if (!failure.empty()) {
      message.message = failure;
      message.data.clear();
    }
    const std::lock_guard lock(mutex);
    if (deliver) deliver(message);
    if (--count == 0) released.notify_all();
  }

  std::mutex mutex;
  std::condition_variable released;
  Deliver deliver;  // empty once closed
  int64_t count = 0;
};

ReplyHold::ReplyHold(WhenStored whenStored, Deliver deliver)
    : whenStored_(std::move(whenStored)), held_(std::make_shared<Held>(std::move(deliver))) {}

ReplyHold::~ReplyHold() { close(); }

void ReplyHold::send(const MobileMessage& message) {
  {
    const std::lock_guard lock(held_->mutex);
    if (message.requestId == kNoRequestId) {
      if (held_->deliver) held_->deliver(message);
      return;
    }
    ++held_->count;
  }
  whenStored_([held = held_, message](const std::string& failure) { held->release(message, failure); });
}

void ReplyHold::close() {
  std::unique_lock lock(held_->mutex);
  held_->released.wait_for(lock, std::chrono::seconds(2), [this] { return held_->count == 0; });
  held_->deliver = nullptr;
}

}  // namespace orvane::terminal
