#include "terminal/phones/replyhold.h"

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
  }

  std::mutex mutex;
  Deliver deliver;  // empty once closed
};

ReplyHold::ReplyHold(WhenStored whenStored, Deliver deliver)
    : whenStored_(std::move(whenStored)), held_(std::make_shared<Held>(std::move(deliver))) {}

ReplyHold::~ReplyHold() { close(); }

void ReplyHold::send(const MobileMessage& message) {
  if (message.requestId == kNoRequestId) {
    const std::lock_guard lock(held_->mutex);
    if (held_->deliver) held_->deliver(message);
    return;
  }
  whenStored_([held = held_, message](const std::string& failure) { held->release(message, failure); });
}

void ReplyHold::close() {
  const std::lock_guard lock(held_->mutex);
  held_->deliver = nullptr;
}

}  // namespace orvane::terminal
