#pragma once

#include <chrono>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "host/mobilemessage.h"

namespace orvane::terminal::testing {

// The messages that the host delivered.
class Inbox {
 public:
  void put(const MobileMessage& message) {
    const std::lock_guard lock(mutex_);
    messages_.push_back(message);
    arrived_.notify_all();
  }

  size_t size() const {
    const std::lock_guard lock(mutex_);
    return messages_.size();
  }

  // Takes the messages up to the first for which `isLast` holds. Fails the test if none comes.
  template <typename IsLast>
  std::vector<MobileMessage> takeUntil(const IsLast& isLast) {
    std::unique_lock lock(mutex_);
    std::vector<MobileMessage> taken;
    const auto takeNext = [&] {
      taken.push_back(std::move(messages_.front()));
      messages_.pop_front();
      return isLast(taken.back());
    };
    while (arrived_.wait_for(lock, std::chrono::seconds(60), [&] { return !messages_.empty(); })) {
      if (takeNext()) return taken;
    }
    ADD_FAILURE() << "the message does not come";
    return {MobileMessage{}};
  }

  MobileMessage next(const std::string& topic) {
    SCOPED_TRACE(topic);
    return takeUntil([&](const MobileMessage& it) { return it.topic == topic; }).back();
  }

 private:
  mutable std::mutex mutex_;
  std::condition_variable arrived_;
  std::deque<MobileMessage> messages_;
};

}  // namespace orvane::terminal::testing
