#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

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
  static bool fits(std::string_view pattern, std::string_view subject) {
    while (!pattern.empty() && !subject.empty()) {
      const std::string_view wanted = pattern.substr(0, pattern.find('.'));
      const std::string_view token = subject.substr(0, subject.find('.'));
      if (wanted != "*" && wanted != token) return false;
      pattern.remove_prefix(std::min(pattern.size(), wanted.size() + 1));
      subject.remove_prefix(std::min(subject.size(), token.size() + 1));
    }
    return pattern.empty() && subject.empty();
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
