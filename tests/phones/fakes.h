#pragma once

#include <chrono>
#include <deque>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "host/mobilesrv.h"
#include "terminal/eventloop.h"
#include "terminal/liveprices.h"
#include "terminal/session.h"
#include "tests/support/faketime.h"

namespace orvane::test {

// A loop whose time moves only when the test says so. All in the test's own thread.
class FakeLoop : public terminal::IEventLoop {
 public:
  void post(Work work) override { posted_.push_back(std::move(work)); }
  std::unique_ptr<terminal::Timer> after(std::chrono::milliseconds delay, Work work) override {
    return time.after(delay, std::move(work));
  }
  terminal::WallTime wallTime() const override { return time.wallTime(); }
  terminal::BootTime bootTime() const override { return time.bootTime(); }

  // False if nothing was posted.
  bool runPosted() {
    const bool any = !posted_.empty();
    for (; !posted_.empty(); posted_.pop_front()) posted_.front()();
    return any;
  }

  FakeTime time;

 private:
  std::deque<Work> posted_;
};

// A client without a socket.
class FakeSession : public terminal::Session {
 public:
  explicit FakeSession(std::string address = "10.0.0.1") : address_(std::move(address)) {}

  void sendPart(Text text, bool /*isLast*/) override {
    if (isBroken) throw std::runtime_error("no memory");
    if (!isClosing()) sent.push_back(*text);
  }
  void close(terminal::CloseCode code, std::string_view /*reason*/) override {
    if (!code_) code_ = code;
  }
  void admit() override { isAdmitted = true; }
  bool isClosing() const override { return code_.has_value(); }
  std::optional<terminal::CloseCode> closeCode() const override { return code_; }
  size_t backlogBytes() const override { return backlog; }
  const std::string& name() const override { return name_; }
  const std::string& address() const override { return address_; }
  const std::string& network() const override { return address_; }

  // What was sent since the last call.
  std::vector<std::string> take() { return std::exchange(sent, {}); }

  std::vector<std::string> sent;
  bool isAdmitted = false;
  bool isBroken = false;
  size_t backlog = 0;

 private:
  std::string name_ = "phone";
  std::string address_;
  std::optional<terminal::CloseCode> code_;
};

// Instruments 1, 2 and 3, whose prices a test sets; bid and ask are one below and above.
class FakePrices : public terminal::ILivePrices {
 public:
  FakePrices() {
    for (const int64_t hashCode : {1, 2, 3}) set(hashCode, 10.5);
  }
  void set(int64_t hashCode, double last) { prices_[hashCode] = {hashCode, last, last - 1, last + 1, ++version_}; }

  std::vector<terminal::LivePrice> changedSince(uint64_t version,
                                                const std::vector<int64_t>& hashCodes) const override {
    std::vector<terminal::LivePrice> changed;
    for (const int64_t hashCode : hashCodes) {
      const auto found = prices_.find(hashCode);
      if (found != prices_.end() && found->second.version > version) changed.push_back(found->second);
    }
    return changed;
  }

 private:
  std::map<int64_t, terminal::LivePrice> prices_;
  uint64_t version_ = 0;
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
