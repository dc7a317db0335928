#include <atomic>
#include <condition_variable>
#include <mutex>
#include <set>
#include <shared_mutex>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>
#include <malloc.h>

#include "pocketagent/pocketagent.h"
#include "tests/support/scriptedhost.h"
#include "tests/support/soak.h"

namespace orvane::test {
namespace {

constexpr int kPhones = 4;
constexpr size_t kMaxWaiting = 200;
constexpr int64_t kMaxPushes = 1000;  // that wait
constexpr size_t kMaxGrowth = size_t{1} << 20;
const MobileSrvInfo kInfo{"url", "trader", "", "", "", ""};
const ResultStatus kRefusal{1, "refused"};

using Requests = std::vector<std::pair<std::string, std::string>>;

// Topics and bodies: good, bad and hostile.
Requests makeRequests() {
  const std::string one = R"({"index":1,"hashCode":10,"longPos":1,"shortPos":1,"localOrderId":"5","hashCodes":[10,11],)"
                          R"("side":1,"combOffset":1,"combOffsetFlag":1,"priceType":1,"price":0e38,"offset":0,)"
                          R"("volume":3,"insertTimestamp":1000,"source":"app"})";
  Requests all = {{"order.new", R"({"orderList":[)" + one + "," + one + "]}"},
                  {std::string("a\0b", 3), "\xFF"},
                  {"order.list", std::string(20'000, '[')}};
  for (const char* topic : {"order.cancel", "marginrate.list", "monitor.sync.order.list", "monitor.sync.order.new",
                            "monitor.manual.list", "monitor.manual.update", "monitor.manual.clean"}) {
    all.insert(all.end(), {{topic, "[" + one + "]"}, {topic, "[" + one + ",{}]"}, {topic, "[{\"index\":1"}});
  }
  for (const char* topic : {"account.list", "capital.list", "order.list", "position.list", "trader.list",
                            "monitor.list", "order.condition.list", "position.codetype.list", "creditinfo.list"}) {
    for (const char* body : {"[1]", "[1,2,3,1]", "[]", "", "\xFE", "[1e400]"}) {
      all.emplace_back(topic, body);
    }
  }
  return all;
}

// Requests from several threads against a host that fails in turn in all that it does, pushes and status queries
// beside them, in rounds that end in stops from three threads at once. An answer that nobody waits for is a fault, and
// a request without one hangs the soak, unless a stop came: then its host knows that it is lost.
class Soak {
 public:
  Soak() {
    host_.remembers = false;
    host_.onCall = [this](const std::string& call) { onCall(call); };
    host_.onSend = [this](const MobileMessage& message) { onSend(message); };
    turnLevers(0);
  }

  void run() {
    std::vector<std::thread> threads(1);
    threads.front() = std::thread([this] { notify(); });
    for (int64_t phone = 1; phone <= kPhones; ++phone) {
      threads.emplace_back([this, phone] { ask(phone); });
    }
    const auto begin = std::chrono::steady_clock::now();
    const auto passed = [&] { return std::chrono::steady_clock::now() - begin; };
    size_t warm = 0;
    for (int round = 0; passed() < soakTime(); ++round) {
      runRound(round);
      const size_t used = mallinfo2().uordblks;
      warm = warm == 0 && passed() > soakTime() / 3 ? used : warm;
      EXPECT_TRUE(kSanitized || warm == 0 || used < warm + kMaxGrowth) << warm << " bytes grew to " << used;
    }
    agent_.start(kInfo);
    ended_ = true;
    for (std::thread& thread : threads) {
      thread.join();
    }
    waitFor(0);
    agent_.stop();
    EXPECT_GT(answered_, 0);
    std::printf("%ld requests answered, %ld lost in stops, %ld of %ld pushes sent\n", answered_.load(), lost_.load(),
                pushesSent_.load(), pushes_.load());
  }

 private:
  // One life of the agent, then starts and stops that come to nothing.
  void runRound(int round) {
    agent_.start(kInfo);
    for (const int64_t before = answered_; answered_ < before + 1000; std::this_thread::yield()) {
      MobileServerStatus status;
      agent_.getServerStatus(status);
      EXPECT_TRUE(status.running);
    }
    std::vector<std::thread> stoppers(3);
    for (std::thread& stopper : stoppers) {
      stopper = std::thread([this] { agent_.stop(); });
    }
    for (std::thread& stopper : stoppers) {
      stopper.join();
    }
    forgetWaiting();
    bool& service = round % 2 == 0 ? host_.baseServiceUp : host_.mobileServiceUp;
    service = false;
    agent_.start(kInfo);
    agent_.stop();
    service = true;
    host_.startStatus = kRefusal;
    agent_.start(kInfo);
    host_.startStatus = {};
  }

  void forgetWaiting() {
    const std::lock_guard nobodyAsks(asking_);
    const std::lock_guard lock(mutex_);
    lost_ += static_cast<int64_t>(waiting_.size());
    waiting_.clear();
    changed_.notify_all();
    pushesDone_ = pushes_.load();
  }

  void ask(int64_t phone) {
    static const Requests all = makeRequests();
    for (int64_t id = phone; !ended_; id += kPhones) {
      const auto& [topic, body] = all[static_cast<size_t>(id * 7) % all.size()];
      waitFor(kMaxWaiting);
      const std::shared_lock asking(asking_);
      {
        const std::lock_guard lock(mutex_);
        waiting_.insert(id);
      }
      if (!host_.request(id, id % 3 == 0 ? 24 : 8, topic, body)) {
        settle(id);
      }
    }
  }

  void notify() {
    for (; !ended_; std::this_thread::yield()) {
      if (pushes_ < std::max(pushesSent_.load(), pushesDone_.load()) + kMaxPushes) {
        agent_.pushNotify({kNoRequestId, "order.push", "", std::to_string(++pushes_), 8});
      }
    }
  }

  void waitFor(size_t count) {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [&] { return waiting_.size() <= count; });
  }

  bool settle(int64_t id) {
    const std::lock_guard lock(mutex_);
    changed_.notify_all();
    return waiting_.erase(id) != 0;
  }

  // The rest runs on the worker, within the host's calls.

  void onSend(const MobileMessage& message) {
    if (message.requestId != kNoRequestId) {
      EXPECT_TRUE(settle(message.requestId) || message.requestId == refused_) << message.requestId;
      refused_ = message.message == kRefusal.message ? message.requestId : 0;  // the request's end follows
      ++answered_;
    } else if (message.message.empty()) {
      const int64_t number = std::stol(message.data);
      EXPECT_GT(number, pushesSent_);
      pushesSent_ = number;
    }
  }

  void onCall(const std::string& call) {
    if (call.starts_with("requestAsync(")) {
      settle(std::stol(call.substr(call.find('(') + 1)));
    } else if (call.starts_with("checkUser(") && ++checks_ % 50 == 0) {
      turnLevers(checks_ / 50 % 7);
    }
  }

  void turnLevers(int64_t lever) {
    const auto at = [&](int64_t which) { return lever == which ? kRefusal : ResultStatus{}; };
    host_.userRefusal = at(1);
    host_.sendStatus = at(2);
    host_.accountRefusals[1] = at(3);
    host_.insertStatuses[10] = host_.cancelStatuses[5] = at(4);
    const SymbolCode code = symbol(10, "rb", 3);
    host_.accounts.assign(lever == 5 ? 0 : 1, account(1, "u1"));
    host_.symbols.clear();
    host_.codeTypes.clear();
    host_.credits.clear();
    host_.marginRates.clear();
    if (lever != 6) {
      host_.symbols[10] = code;
      host_.codeTypes[10] = {gbk("黑色"), gbk("螺纹")};
      host_.credits[1].resize(1);
      host_.marginRates[10].a = 0.1;
    }
    const auto fill = [&](auto& list) {
      list.resize(200);
      for (auto& row : list) {
        row.account.index = 1;
        row.code = code;
      }
    };
    fill(host_.positions), fill(host_.orders), fill(host_.fills), fill(host_.monitorRecords);
    fill(host_.manualPositions), fill(host_.syncOrders);
    host_.inserted.clear();
    host_.cancelled.clear();
    host_.marginQueries.clear();
  }

  ScriptedHost host_;
  std::shared_mutex asking_;  // held by all who ask; alone while what is lost is counted
  std::mutex mutex_;          // guards the two below
  std::condition_variable changed_;
  std::set<int64_t> waiting_;
  std::atomic<int64_t> answered_{0}, lost_{0}, pushes_{0}, pushesDone_{0}, pushesSent_{0};
  std::atomic<bool> ended_{false};
  int64_t refused_ = 0;
  int64_t checks_ = 0;
  PocketAgent agent_;
};

TEST(LibrarySoak, EveryRequestHasOneAnswerOrIsLostInAStop) {
  startWatchdog();
  Soak().run();
}

}  // namespace
}  // namespace orvane::test
