#pragma once

#include <algorithm>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <fnmatch.h>

#include "terminal/relay/bus.h"
#include "tests/phones/fakes.h"

namespace orvane::test {

// NATS in the test's own thread: brings each message to all buses with a fitting subscription, in order.
class FakeNetwork {
 public:
  class Bus : public terminal::relay::IBus {
   public:
    explicit Bus(FakeNetwork& network) : network_(network) {}

    void start(std::vector<std::string> subscriptions, terminal::relay::IBusOwner& owner) override {
      subscriptions_ = std::move(subscriptions);
      owner_ = &owner;
      network_.buses_.push_back(this);
      setUp(true);
    }
    void stop() override { fault_ = "stopped"; }
    void publish(std::string subject, std::string bytes) override {
      if (fault_.empty()) network_.carry(*this, std::move(subject), std::move(bytes));
    }
    const std::string& fault() const override { return fault_; }

    void setUp(bool isUp) {
      fault_ = isUp ? "" : "pulled";
      isUp ? owner_->onUp() : owner_->onDown();
    }

   private:
    friend class FakeNetwork;
    FakeNetwork& network_;
    std::vector<std::string> subscriptions_;
    terminal::relay::IBusOwner* owner_ = nullptr;
    std::string fault_ = "not started";
  };

  explicit FakeNetwork(FakeLoop& loop) : loop_(loop) {}

  // False: the message is lost. `published` counts what was not lost.
  std::function<bool(std::string_view subject, std::string_view bytes)> passes = [](auto, auto) { return true; };
  size_t published = 0;

 private:
  // As in a file name, the asterisk matches one part.
  static bool fits(std::string pattern, std::string subject) {
    std::ranges::replace(pattern, '.', '/');
    std::ranges::replace(subject, '.', '/');
    return fnmatch(pattern.c_str(), subject.c_str(), FNM_PATHNAME) == 0;
  }

  void carry(const Bus& from, std::string subject, std::string bytes) {
    if (!passes(subject, bytes)) return;
    ++published;
    loop_.post([this, &from, subject = std::move(subject), bytes = std::move(bytes)] {
      for (Bus* each : buses_) {
        if (each == &from || !each->fault_.empty()) continue;
        for (const std::string& pattern : each->subscriptions_) {
          if (fits(pattern, subject)) each->owner_->onMessage(subject, bytes);
        }
      }
    });
  }

  FakeLoop& loop_;
  std::vector<Bus*> buses_;
};

}  // namespace orvane::test
