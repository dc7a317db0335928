// The whole terminal under load: clients that trade, read, misbehave and disconnect while prices move. Its books must
// add up at all times, and nothing may be left of a client that has gone.

#include <atomic>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <functional>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include <fmt/format.h>
#include <gtest/gtest.h>
#include <rapidjson/document.h>

#include "tests/support/rawsocket.h"
#include "tests/support/soak.h"
#include "tests/system/terminalprocess.h"

namespace orvane::test {
namespace {

using terminal::Client;
using terminal::ClientError;

constexpr int kVisit = 60;            // requests of one connection: a client keeps the pushes it did not wait for
constexpr int64_t kMaxTaken = 1500;   // orders within the limits; more are refused
constexpr int64_t kOrderSize = 1280;  // the day's orders stay in memory, refused ones too
constexpr int64_t kMaxGrowth = int64_t{8} << 20;  // beside them

class TerminalSoak {
 public:
  void run() {
    const auto begin = std::chrono::steady_clock::now();
    const auto passed = [&](int thirds) { return std::chrono::steady_clock::now() - begin > soakTime() * thirds / 3; };
    const size_t descriptors = openDescriptors();
    std::vector<std::thread> threads;
    for (const auto act : {&TerminalSoak::trade, &TerminalSoak::trade, &TerminalSoak::moveQuotes, &TerminalSoak::look,
                           &TerminalSoak::misbehave, &TerminalSoak::dropOff}) {
      threads.emplace_back([this, act, seed = threads.size()] { visit(act, seed); });
    }
    int64_t warm = 0;
    while (!passed(3)) {
      checkBooks();
      warm = passed(2) && warm == 0 ? memoryBesideOrders() : warm;
    }
    ended_ = true;
    for (std::thread& thread : threads) thread.join();
    const int64_t grown = memoryBesideOrders() - warm;
    EXPECT_TRUE(kSanitized || grown < kMaxGrowth) << grown << " bytes beside the orders";
    while (openDescriptors() > descriptors) std::this_thread::yield();
    checkBooks();
    EXPECT_EQ(terminal_.stop(), 0);
    std::printf("%ld visits, %ld orders\n", visits_.load(), orders_.load());
  }

 private:
  using Random = std::mt19937_64;

  // Connects and disconnects until the soak ends.
  void visit(void (TerminalSoak::*act)(Random&), size_t seed) {
    for (Random random(seed); !ended_; ++visits_) {
      try {
        (this->*act)(random);
      } catch (const ClientError& error) {
        ADD_FAILURE() << error.what();
      }
    }
  }

  std::unique_ptr<Client> login() const {
    auto phone = std::make_unique<Client>(terminal_.port());
    phone->login(terminal_.token());
    return phone;
  }

  // A client that sends what `next` returns and gets an answer each time.
  template <typename Next>
  void ask(Next next) {
    const auto phone = login();
    for (int i = 0; i < kVisit && !ended_; ++i) {
      const auto [topic, body] = next();
      phone->request(topic, body);
    }
  }

  // Orders around the price and beyond the limits, and cancels of any.
  void trade(Random& random) {
    ask([&]() -> std::pair<std::string, std::string> {
      if (random() % 2 == 0) {
        return {"order.cancel",
                fmt::format(R"([{{"index":1,"localOrderId":"{}","hashCode":1000001}}])", random() % 2000)};
      }
      const bool wild = ++orders_ > kMaxTaken || random() % 4 == 0;
      return {"order.new",
              fmt::format(R"({{"orderList":[{{"index":1,"hashCode":1000001,"side":{},"combOffset":{},"priceType":1,)"
                          R"("price":{},"offset":0,"volume":{},"insertTimestamp":1,"source":"s"}}]}})",
                          1 + random() % 2, random() % 2 == 0 ? 1 : 4, wild ? 99999 : 3300 + random() % 60,
                          1 + random() % 3)};
    });
  }

  void moveQuotes(Random& random) {
    ask([&]() -> std::pair<std::string, std::string> {
      return {"quote.set", fmt::format(R"({{"hashCode":1000001,"price":{}}})", 3300 + random() % 60)};
    });
  }

  void look(Random& random) {
    static const std::vector<std::string> kTopics = {"account.list", "capital.list", "position.list",
                                                     "trader.list",  "monitor.list", "position.codetype.list",
                                                     "no.topic"};
    ask([&]() -> std::pair<std::string, std::string> { return {kTopics[random() % kTopics.size()], "[]"}; });
  }

  // Invalid frames, and those that end the connection.
  void misbehave(Random& random) {
    const auto phone = login();
    for (const std::string& frame : {std::string("{"), std::string("[7]"), std::string(50'000, '['),
                                     std::string(R"({"topic":"order.new","data":[1]})"),
                                     std::string(R"({"topic":"order.cancel","data":[{},1]})")}) {
      phone->send(frame);
      terminal::Reply reply;
      while (reply.id.empty()) {
        reply = phone->receive();  // pushes may come before it
      }
      EXPECT_NE(reply.message, "");
    }
    const bool asText = random() % 2 == 0;
    phone->send("\xFF", asText);
    EXPECT_EQ(phone->waitClose(), asText ? 1007 : 1003);
  }

  // A connection that is cut anywhere; the next one is accepted.
  void dropOff(Random& random) {
    const std::string bytes = kUpgrade + "\x81\xFE\x7F";
    RawSocket(terminal_.port()) << bytes.substr(0, random() % (bytes.size() + 1));
    login();
  }

  // Equity is deposits, realised profit and open profit; available is what no margin or order reserves.
  void checkBooks() {
    const std::string list = login()->request("capital.list", "[1]").data;
    rapidjson::Document rows;
    rows.Parse(list.data(), list.size());
    ASSERT_TRUE(rows.IsArray() && rows.Size() == 1) << list;
    const auto number = [&](const char* member) { return rows[0][member].GetDouble(); };
    EXPECT_NEAR(number("dynamicAmount"),
                number("preBalance") + number("deposit") - number("withdraw") + number("closeProfit") +
                    number("todayFloatingProfit") - number("commission"),
                0.01)
        << list;
    EXPECT_NEAR(number("available"), number("dynamicAmount") - number("currMargin") - number("frozenMargin"), 0.01)
        << list;
  }

  std::filesystem::path proc() { return "/proc/" + std::to_string(terminal_.program().pid()); }

  size_t openDescriptors() {
    const std::filesystem::directory_iterator entries(proc() / "fd");
    return static_cast<size_t>(std::distance(begin(entries), end(entries)));
  }

  int64_t memoryBesideOrders() {
    int64_t pages = 0;
    int64_t resident = 0;
    std::ifstream(proc() / "statm") >> pages >> resident;
    return resident * sysconf(_SC_PAGESIZE) - orders_ * kOrderSize;
  }

  FreshTerminal terminal_;
  std::atomic<bool> ended_{false};
  std::atomic<int64_t> visits_{0}, orders_{0};
};

TEST(TerminalSoak, KeepsItsBooksAndNothingOfPhonesThatAreGone) {
  startWatchdog();
  TerminalSoak().run();
}

}  // namespace
}  // namespace orvane::test
