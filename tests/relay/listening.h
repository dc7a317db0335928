#pragma once

#include <atomic>
#include <chrono>
#include <future>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "terminal/net/asioloop.h"
#include "terminal/relay/natslink.h"

namespace orvane::test {

// A client of the cluster that keeps what it hears, with credentials and subscriptions of the test's choice.
class Listening : public terminal::relay::IBusOwner {
 public:
  Listening(std::vector<std::string> urls, const terminal::relay::Credentials& credentials,
            std::vector<std::string> subscriptions)
      : link_(loop_, {std::move(urls), credentials}) {
    keepAlive_ = loop_.after(std::chrono::hours(1), [] {});
    link_.start(std::move(subscriptions), *this);
    loop_.start();
  }
  ~Listening() override {
    loop_.post([this] {
      keepAlive_.reset();
      link_.stop();
    });
    loop_.join();
  }
  Listening(const Listening&) = delete;
  Listening& operator=(const Listening&) = delete;

  void onUp() override { isUp_ = true; }
  void onDown() override { isUp_ = false; }
  void onMessage(std::string_view subject, std::string_view bytes) override {
    const std::lock_guard lock(mutex_);
    heard_.push_back({std::string(subject), std::string(bytes)});
  }

  struct Heard {
    std::string subject;
    std::string bytes;
  };

  bool isUp() const { return isUp_; }
  std::vector<Heard> heard() {
    const std::lock_guard lock(mutex_);
    return heard_;
  }
  void publish(const std::string& subject, const std::string& bytes) {
    loop_.post([this, subject, bytes] { link_.publish(subject, bytes); });
  }
  std::string fault() {
    std::promise<std::string> fault;
    loop_.post([&] { fault.set_value(link_.fault()); });
    return fault.get_future().get();
  }

 private:
  terminal::AsioLoop loop_;
  terminal::relay::NatsLink link_;
  std::unique_ptr<terminal::Timer> keepAlive_;
  std::atomic<bool> isUp_ = false;
  std::mutex mutex_;
  std::vector<Heard> heard_;
};

}  // namespace orvane::test
