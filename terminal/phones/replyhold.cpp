#include "terminal/phones/replyhold.h"

#include <mutex>
#include <utility>

namespace orvane::terminal {

struct ReplyHold::Held {
  explicit Held(Deliver to) : deliver(std::move(to)) {}

  void release(std::shared_ptr<const MobileMessage> message) {
    const std::lock_guard lock(mutex);
    if (deliver) deliver(std::move(message));
  }

  std::mutex mutex;
  Deliver deliver;  // empty once closed
};

namespace {

std::shared_ptr<const MobileMessage> failed(const MobileMessage& reply, const std::string& failure) {
  auto message = std::make_shared<MobileMessage>();
  message->requestId = reply.requestId;
  message->topic = reply.topic;
  message->message = failure;
  return message;
}

}  // namespace

ReplyHold::ReplyHold(WhenStored whenStored, Deliver deliver)
    : whenStored_(std::move(whenStored)), held_(std::make_shared<Held>(std::move(deliver))) {}

ReplyHold::~ReplyHold() { close(); }

void ReplyHold::send(const MobileMessage& message) {
  auto shared = std::make_shared<const MobileMessage>(message);
  if (shared->requestId == kNoRequestId) return held_->release(std::move(shared));
  whenStored_([held = held_, shared = std::move(shared)](const std::string& failure) {
    held->release(failure.empty() ? shared : failed(*shared, failure));
  });
}

void ReplyHold::close() {
  const std::lock_guard lock(held_->mutex);
  held_->deliver = nullptr;
}

}  // namespace orvane::terminal
