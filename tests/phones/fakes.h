#pragma once

#include <algorithm>
#include <chrono>
#include <deque>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "host/mobilesrv.h"
#include "terminal/eventloop.h"
#include "terminal/session.h"

namespace orvane::test {

// A loop whose time moves only when the test says so. All in the test's own thread.
class FakeLoop : public terminal::IEventLoop {
 public:
  void post(Work work) override { posted_.push_back(std::move(work)); }

  std::unique_ptr<terminal::Timer> after(std::chrono::milliseconds delay, Work work) override {
    auto entry = std::make_shared<Entry>(Entry{now_ + delay, std::move(work)});
    timers_.push_back(entry);
    return std::make_unique<Handle>(std::move(entry));
  }

  terminal::WallTime wallTime() const override {
    return std::chrono::system_clock::time_point(std::chrono::seconds(1'790'000'000)) +
           std::chrono::duration_cast<std::chrono::system_clock::duration>(now_) + jumped_;
  }
  terminal::BootTime bootTime() const override { return now_; }

  // Sets the wall clock forward; no timer notices.
  void jump(std::chrono::seconds time) { jumped_ += time; }

  void runPosted() {
    for (; !posted_.empty(); posted_.pop_front()) posted_.front()();
  }

  // Runs all timers that are due by then, each at its own time.
  void advance(std::chrono::nanoseconds time) {
    const auto end = now_ + time;
    while (const auto next = takeDue(end)) {
      now_ = next->due;
      const Work work = std::move(next->work);
      work();
    }
    now_ = end;
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

  // A timer whose handle is gone is cancelled: the loop keeps a weak reference only.
  std::shared_ptr<Entry> takeDue(std::chrono::nanoseconds end) {
    std::erase_if(timers_, [](const auto& timer) { return timer.expired(); });
    const auto earlier = [](const auto& a, const auto& b) { return a.lock()->due < b.lock()->due; };
    const auto first = std::min_element(timers_.begin(), timers_.end(), earlier);
    if (first == timers_.end() || first->lock()->due > end) return nullptr;
    auto due = first->lock();
    timers_.erase(first);
    return due;
  }

  std::chrono::nanoseconds now_{std::chrono::hours(1)};
  std::chrono::seconds jumped_{};
  std::deque<Work> posted_;
  std::vector<std::weak_ptr<Entry>> timers_;
};

// A client without a socket.
class FakeSession : public terminal::Session {
 public:
  explicit FakeSession(std::string address = "10.0.0.1") : address_(std::move(address)) {}

  void send(Text text) override {
    if (!isClosing()) sent.push_back(*text);
  }
  void close(terminal::CloseCode code, std::string_view /*reason*/) override {
    if (!code_) code_ = code;
  }
  void admit() override { isAdmitted = true; }
  bool isClosing() const override { return code_.has_value(); }
  std::optional<terminal::CloseCode> closeCode() const override { return code_; }
  const std::string& name() const override { return name_; }
  const std::string& address() const override { return address_; }
  const std::string& network() const override { return address_; }

  std::vector<std::string> sent;
  bool isAdmitted = false;

 private:
  std::string name_ = "phone";
  std::string address_;
  std::optional<terminal::CloseCode> code_;
};

// The agent's callback, which keeps what it gets.
class FakeAgent : public IMobileSrvSpi {
 public:
  struct Request {
    int64_t id = 0;
    std::string topic;
    std::string data;
  };

  void onRequest(int64_t requestId, int32_t /*terminalType*/, const std::string& topic,
                 const std::string& data) override {
    requests.push_back({requestId, topic, data});
  }

  std::vector<Request> requests;
};

}  // namespace orvane::test
