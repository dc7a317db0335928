#include <atomic>
#include <mutex>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "pocketagent/pocketagent.h"
#include "tests/support/scriptedhost.h"
#include "tests/support/soak.h"

namespace orvane::test {
namespace {

constexpr int kClients = 4;
const MobileSrvInfo kInfo{"url", "trader", "", "", "", ""};
const ResultStatus kRefusal{1, "refused"};

// Topics and bodies: valid, invalid and hostile.
const std::vector<std::pair<std::string, std::string>> kRequests = {
    {"account.list", "[1]"},
    {"order.list", "[]"},
    {"monitor.manual.update", R"([{"index":1,"hashCode":10,"longPos":1,"shortPos":1},{}])"},
    {"monitor.sync.order.list", R"([{"index":1,"hashCode":10}])"},
    {"order.cancel", R"([{"index":1,"hashCode":10,"localOrderId":"5"}])"},
    {"order.condition.list", "\xFE"},
    {std::string("a\0b", 3), "\xFF"},
    {"order.list", std::string(20'000, '[')}};

// Rounds of requests from several threads, with pushes, against a host that fails now and then. Each round ends in
// stops from three threads. A request is answered once, or lost in a stop; an answer to any other request is an error.
class Soak {
 public:
  Soak() {
    host_.remembers = false;
    host_.accounts = {account(1, "u1")};
    host_.symbols[10] = symbol(10, "rb", 3);
    host_.orders.resize(10);
    host_.onCall = [this](const std::string& call) { onCall(call); };
    host_.onSend = [this](const MobileMessage& message) { onSend(message); };
  }

  void run() {
    const auto end = std::chrono::steady_clock::now() + soakTime();
    while (std::chrono::steady_clock::now() < end) {
      stopping_ = false;
      agent_.start(kInfo);
      runThreads(kClients + 1, [this](int64_t client) { client > 0 ? ask(client) : notify(); });
      host_.holdIn("send");  // a stop finds requests waiting
      ask(1);
      runThreads(3, [this](int64_t /*stopper*/) { agent_.stop(); });
      lost_ += waiting_.size();
      waiting_.clear();
    }
    EXPECT_GT(answered_, 0U);
    EXPECT_GT(pushes_, 0);
    EXPECT_GT(lost_, 0U);  // otherwise the stops drain
    std::printf("%zu requests answered, %zu lost in stops, %ld pushes sent\n", answered_, lost_, pushes_);
  }

 private:
  template <typename Body>
  static void runThreads(int64_t count, Body body) {
    std::vector<std::thread> threads;
    for (int64_t number = 0; number < count; ++number) threads.emplace_back(body, number);
    for (std::thread& thread : threads) thread.join();
  }

  void ask(int64_t client) {
    for (int i = 0; i < 200; ++i) {
      const int64_t id = nextId_++ * kClients + client;
      const auto& [topic, body] = kRequests[static_cast<size_t>(id * 7) % kRequests.size()];
      {
        const std::lock_guard lock(mutex_);
        waiting_.insert(id);
      }
      EXPECT_TRUE(host_.request(id, id % 3 == 0 ? 24 : 8, topic, body));
    }
  }

  void notify() {
    for (int i = 0; i < 100; ++i) agent_.pushNotify({kNoRequestId, "order.push", "", std::to_string(++pushed_), 8});
  }

  // The rest runs within the host's calls, most of it on the worker.

  void settle(int64_t id) {
    const std::lock_guard lock(mutex_);
    EXPECT_TRUE(waiting_.erase(id) == 1 || id == refused_) << id;
    ++answered_;
  }

  void onSend(const MobileMessage& message) {
    if (stopping_) {
      std::this_thread::sleep_for(std::chrono::milliseconds(1));  // a slow host: the stop comes before the last request
    }
    if (message.requestId != kNoRequestId) {
      settle(message.requestId);
      refused_ = message.message == kRefusal.message ? message.requestId : -1;  // an end may follow the refusal
    } else if (message.message.empty()) {
      const int64_t number = std::stol(message.data);
      EXPECT_GT(number, pushes_);
      pushes_ = number;
    }
  }

  void onCall(const std::string& call) {
    if (call.starts_with("unregisterSpi(")) {
      stopping_ = true;
      host_.release();
    } else if (call.starts_with("requestAsync(")) {
      settle(std::stol(call.substr(call.find('(') + 1)));
    } else if (call.starts_with("checkUser(")) {
      const int64_t failure = ++checks_ / 50 % 4;
      host_.userRefusal = failure == 1 ? kRefusal : ResultStatus{};
      host_.sendStatus = failure == 2 ? kRefusal : ResultStatus{};
      host_.accountRefusals[1] = failure == 3 ? kRefusal : ResultStatus{};
    }
  }

  ScriptedHost host_;
  std::mutex mutex_;  // guards waiting_ and answered_
  std::set<int64_t> waiting_;
  std::atomic<int64_t> nextId_ = 0;
  std::atomic<bool> stopping_ = false;
  size_t answered_ = 0, lost_ = 0;
  int64_t pushed_ = 0, pushes_ = 0;  // the number of the last push queued and of the last one sent
  int64_t refused_ = -1;
  int64_t checks_ = 0;
  PocketAgent agent_;
};

TEST(LibrarySoak, EveryRequestHasOneAnswerOrIsLostInAStop) {
  startWatchdog();
  Soak().run();
}

}  // namespace
}  // namespace orvane::test
