#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <csignal>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include <fmt/format.h>
#include <gmock/gmock.h>

#include "tests/relay/cluster.h"
#include "tests/support/holdssoon.h"
#include "tests/support/soak.h"

namespace orvane::test {
namespace {

using namespace std::chrono_literals;
using terminal::Client;
using terminal::ClientError;
using terminal::Reply;

// A long soak has more phones. Each gets the pushes of all, so they order less often.
struct Size {
  int phones;
  std::chrono::milliseconds pause;          // of a phone between two orders
  std::vector<std::chrono::seconds> stops;  // how long programs are stopped, in turn
};

Size sizeOf(std::chrono::seconds time) {
  if (time < 60s) return {8, 40ms, {1s}};
  return {100, 1000ms, {1s, 4s, 12s, 30s}};
}
constexpr int kShort = 20;  // seconds of the test
constexpr const char* kUnknown = "the outcome of this request is not known";

// What all phones found.
struct Tally {
  std::atomic<int> placed = 0;   // acknowledged
  std::atomic<int> unknown = 0;  // the terminal was killed while the order was under way
  std::atomic<int> logins = 0;
  std::atomic<int> resumed = 0;
  std::atomic<bool> stops = false;  // all phones, once the first of them ends
  std::mutex mutex;
  std::string fault;  // the first

  void fail(const std::string& text) {
    const std::lock_guard lock(mutex);
    if (fault.empty()) fault = text;
  }
};

// A phone that places one order after the other, each under a key that it repeats until it is answered, over whichever
// relay lets it in. Checks that pushes have no gap.
class OrderingPhone {
 public:
  OrderingPhone(int number, std::array<uint16_t, 2> ports, std::string token, std::chrono::milliseconds pause,
                Tally& tally)
      : number_(number), ports_(ports), token_(std::move(token)), pause_(pause), tally_(tally), thread_([this] {
          run();
        }) {}
  ~OrderingPhone() {
    tally_.stops = true;
    thread_.join();
  }
  OrderingPhone(const OrderingPhone&) = delete;
  OrderingPhone& operator=(const OrderingPhone&) = delete;

  int answered() const { return answered_; }

 private:
  void run() {
    while (!tally_.stops || isOpen_) {
      try {
        if (client_ == nullptr) connect();
        placeOne();
      } catch (const ClientError&) {  // a break: connect again
        client_.reset();
        ++attempt_;
        std::this_thread::sleep_for(100ms);
      }
    }
  }

  void connect() {
    auto client =
        std::make_unique<Client>(ports_[static_cast<size_t>(number_ + attempt_) % 2],
                                 terminal::ClientOptions{.address = "127.0.0.1", .certificate = {}, .patience = 2s});
    const std::string resume =
        epoch_.empty() ? "" : fmt::format(R"(,"resume":{{"epoch":"{}","seq":{}}})", epoch_, seq_);
    client->send(loginFrame("t1", token_, resume));
    const Reply welcome = client->receive();
    if (!welcome.message.empty()) throw ClientError(welcome.message);
    ++tally_.logins;
    epoch_ = welcome.data.substr(welcome.data.find("epoch") + 8, 16);
    if (welcome.data.find("\"resumed\":true") != std::string::npos) {
      ++tally_.resumed;
    } else {
      seq_ = std::stoull(welcome.data.substr(welcome.data.find("\"seq\":") + 6));
    }
    client_ = std::move(client);
  }

  void placeOne() {
    if (!isOpen_) ++key_;
    isOpen_ = true;
    const std::string id = fmt::format("\"{}-{}\"", number_, key_);
    client_->send(fmt::format(
        R"({{"id":{0},"topic":"order.new","key":{0},"data":{{"orderList":[{{"index":1,"hashCode":2000001,"side":1,)"
        R"("combOffset":1,"priceType":1,"price":2840,"offset":0,"volume":1,"insertTimestamp":1000,"source":"x"}}]}}}})",
        id));
    Reply reply = client_->receive();
    for (; reply.id != id; reply = client_->receive()) onPush(reply);
    isOpen_ = false;
    ++answered_;
    if (reply.message.empty()) {
      ++tally_.placed;
    } else if (reply.message.starts_with(kUnknown)) {
      ++tally_.unknown;
    }
    std::this_thread::sleep_for(pause_);
  }

  void onPush(const Reply& push) {
    if (push.seq.empty()) return;
    const uint64_t seq = std::stoull(push.seq);
    if (seq != seq_ + 1) tally_.fail(fmt::format("push {} came after {}", seq, seq_));
    seq_ = seq;
  }

  const int number_;
  const std::array<uint16_t, 2> ports_;
  const std::string token_;
  const std::chrono::milliseconds pause_;
  Tally& tally_;
  std::unique_ptr<Client> client_;
  std::string epoch_;
  uint64_t seq_ = 0;
  int key_ = 0;
  int attempt_ = 0;
  bool isOpen_ = false;  // an order is not answered yet
  std::atomic<int> answered_ = 0;
  std::thread thread_;
};

size_t countOrders(Client& client) {
  const std::string list = client.request("order.list", "[1]").data;
  size_t count = 0;
  for (size_t at = 0; (at = list.find("localOrderId", at)) != std::string::npos; ++at) ++count;
  return count;
}

// Servers, relays and the terminal are killed and stopped in turn while phones place keyed orders: none that was
// acknowledged is lost, none is placed twice, and all phones come back after each fault.
TEST(RelaySoak, LosesAndDoublesNoOrder) {
  Cluster cluster(false);
  auto relay1 = std::make_unique<RelayProcess>(cluster, "r1");
  auto relay2 = std::make_unique<RelayProcess>(cluster, "r2");
  FarTerminal desk(cluster, "t1", {"--quotes", "still", "--max-connections", "400"});
  desk.program().end(SIGTERM);
  desk.giveFunds();
  desk.restart(cluster);
  const Size size = sizeOf(soakTime(kShort));
  const std::array<uint16_t, 2> ports{relay1->port(), relay2->port()};
  const size_t before = countOrders(*loginThrough(ports[0], "t1", desk.token()));
  auto pause = [&, turn = size_t{0}](Program& program) mutable {
    program.send(SIGSTOP);
    std::this_thread::sleep_for(size.stops[turn++ % size.stops.size()]);
    program.send(SIGCONT);
  };
  const std::vector<std::function<void()>> faults{
      [&] {
        relay1.reset();
        relay1 = std::make_unique<RelayProcess>(cluster, "r1", ports[0]);
      },
      [&] {
        desk.program().end(SIGKILL);
        desk.restart(cluster);
      },
      [&] {
        cluster.killServer(0);
        cluster.startServer(0);
      },
      [&] { pause(cluster.server(1)); },
      [&] { pause(desk.program()); },
      [&] {
        cluster.killServer(2);
        cluster.startServer(2);
      },
      [&] { pause(relay2->program()); },
  };
  Tally tally;
  std::chrono::duration<double> longest{};
  {
    std::vector<std::unique_ptr<OrderingPhone>> phones;
    for (int i = 0; i < size.phones; ++i) {
      phones.push_back(std::make_unique<OrderingPhone>(i, ports, desk.token(), size.pause, tally));
    }
    const auto allAnswered = [&] {
      std::vector<int> counts;
      for (const auto& each : phones) counts.push_back(each->answered());
      return holdsSoon([&] {
        for (size_t i = 0; i < phones.size(); ++i) {
          if (phones[i]->answered() == counts[i]) return false;
        }
        return true;
      });
    };
    ASSERT_TRUE(allAnswered());
    const auto end = std::chrono::steady_clock::now() + soakTime(kShort);
    for (size_t i = 0; std::chrono::steady_clock::now() < end; ++i) {
      faults[i % faults.size()]();
      const auto over = std::chrono::steady_clock::now();
      ASSERT_TRUE(allAnswered()) << "after fault " << i;
      longest = std::max<std::chrono::duration<double>>(longest, std::chrono::steady_clock::now() - over);
    }
  }
  EXPECT_EQ(tally.fault, "");
  const size_t orders = countOrders(*loginThrough(ports[1], "t1", desk.token())) - before;
  fmt::print("{} phones: {} orders placed, {} of unknown outcome, {} logins, {} resumed, all back within {:.1f} s\n",
             size.phones, tally.placed.load(), tally.unknown.load(), tally.logins.load(), tally.resumed.load(),
             longest.count());
  EXPECT_GE(orders, static_cast<size_t>(tally.placed));
  EXPECT_LE(orders, static_cast<size_t>(tally.placed + tally.unknown));
  EXPECT_GT(tally.resumed, 0);
}

}  // namespace
}  // namespace orvane::test
