#include "tests/support/orderclients.h"

#include <algorithm>
#include <map>
#include <mutex>
#include <random>
#include <regex>
#include <thread>

#include <SQLiteCpp/Database.h>
#include <fmt/format.h>
#include <gtest/gtest.h>

#include "terminal/client/client.h"
#include "tests/support/holdssoon.h"

namespace orvane::test {
namespace {

using namespace std::chrono_literals;
using terminal::Client;
using terminal::ClientError;
using terminal::Reply;

std::string loginFrame(const std::string& members) {
  return fmt::format(R"({{"id":"login","topic":"login",{}}})", members);
}

}  // namespace

std::string orderData(const std::string& source) {
  return fmt::format(R"({{"orderList":[{{"index":1,"hashCode":2000001,"side":1,"combOffset":1,"priceType":1,)"
                     R"("price":2840,"offset":0,"volume":1,"insertTimestamp":1,"source":"{}"}}]}})",
                     source);
}

std::string orderFrame(const std::string& key) {
  return fmt::format(R"({{"id":"{0}","topic":"order.new","key":"{0}","data":{1}}})", key, orderData(key));
}

void giveFunds(const std::filesystem::path& dataDir) {
  SQLite::Database(dataDir / "terminal.db", SQLite::OPEN_READWRITE)
      .exec("UPDATE account SET pre_balance = 1e12 WHERE idx = 1");
}

std::string OrderTally::text() const {
  return fmt::format("{} acknowledged, {} refused, {} unknown; {} logins, {} resumed", acknowledged.load(),
                     refused.load(), unknown.load(), logins.load(), resumed.load());
}

// What the clients have heard of each order. Thread-safe.
class OrderClients::Ledger {
 public:
  explicit Ledger(OrderTally& tally) : tally_(tally) {}

  // The order is sent for the first time or again, so its fate is open unless it is known to be there.
  void send(const std::string& key) {
    const std::lock_guard lock(mutex_);
    Order& order = orders_[key];
    ++order.sent;
    if (order.fate == Fate::Refused) order.fate = Fate::Unknown;
  }

  void hear(const std::string& key, const std::string& message) {
    const std::lock_guard lock(mutex_);
    Order& order = orders_.at(key);
    // It says nothing of what was sent before.
    if (order.sent > 1 && message.find("was not taken") != std::string::npos) return;
    const Fate heard = fateOf(message);
    ++(heard == Fate::Unknown ? tally_.unknown : heard == Fate::Refused ? tally_.refused : tally_.acknowledged);
    if (order.fate != Fate::Acknowledged) {
      order.fate = heard;
    } else if (heard == Fate::Refused) {
      ADD_FAILURE() << key << " was acknowledged, and then refused: " << message;
    }
  }

  // Compares it with the data of "order.list".
  void check(const std::string& list) {
    std::map<std::string, int> times;
    const std::regex source(R"re("source":"([^"]*)")re");
    for (std::sregex_iterator it(list.begin(), list.end(), source), end; it != end; ++it) ++times[(*it)[1]];
    const std::lock_guard lock(mutex_);
    for (const auto& [key, order] : orders_) {
      const int count = times[key];
      EXPECT_LE(count, 1) << key << " ran twice";
      EXPECT_TRUE(order.fate != Fate::Acknowledged || count > 0) << key << " was acknowledged and is lost";
      EXPECT_TRUE(order.fate != Fate::Refused || count == 0) << key << " was refused and is there";
    }
  }

 private:
  enum class Fate { Unknown, Refused, Acknowledged };
  struct Order {
    Fate fate = Fate::Unknown;
    int sent = 0;
  };

  static Fate fateOf(const std::string& message) {
    if (message.empty()) return Fate::Acknowledged;
    for (const char* text : {"结果未知", "not known", "cannot look up the key"}) {
      if (message.find(text) != std::string::npos) return Fate::Unknown;
    }
    return Fate::Refused;
  }

  OrderTally& tally_;
  std::mutex mutex_;
  std::map<std::string, Order> orders_;  // by key
};

class OrderClients::Member {
 public:
  Member(OrderClients& all, size_t number)
      : all_(all), number_(number), random_(number), thread_([this] {
          while (!all_.ended_) std::this_thread::sleep_for(trade() ? all_.plan_.pause : 100ms);
        }) {}
  ~Member() { thread_.join(); }
  Member(const Member&) = delete;
  Member& operator=(const Member&) = delete;

  std::mutex turn;                   // held while a batch is under way
  std::atomic<size_t> answered = 0;  // batches

 private:
  // False if the connection broke.
  bool trade() {
    try {
      const std::lock_guard lock(turn);
      if (client_ == nullptr) connect();
      place();
      return true;
    } catch (const ClientError& error) {
      const bool hangs = std::string(error.what()).find("no answer") != std::string::npos;
      EXPECT_TRUE(all_.plan_.mayHang || !hangs) << "a request hangs";
      client_.reset();
      ++breaks_;
      return false;
    }
  }

  void connect() {
    auto client = std::make_unique<Client>(all_.plan_.port(number_ + breaks_),
                                           terminal::ClientOptions{.certificate = {}, .patience = all_.plan_.patience});
    const std::string resume =
        epoch_.empty() ? "" : fmt::format(R"(,"resume":{{"epoch":"{}","seq":{}}})", epoch_, seq_);
    client->send(loginFrame(all_.plan_.login + resume));
    const Reply welcome = client->receive();
    if (!welcome.message.empty()) throw ClientError(welcome.message);
    ++all_.tally_.logins;
    epoch_ = welcome.data.substr(welcome.data.find("epoch") + 8, 16);
    if (welcome.data.find("\"resumed\":true") != std::string::npos) {
      ++all_.tally_.resumed;
    } else {
      seq_ = std::stoull(welcome.data.substr(welcome.data.find("\"seq\":") + 6));
    }
    client_ = std::move(client);
  }

  // Sends the batch that was not answered, or new orders and an old one.
  void place() {
    if (batch_.empty()) {
      const size_t before = placed_;
      while (placed_ < before + all_.plan_.batch) batch_.push_back(key(placed_++));
      if (before > 0) batch_.push_back(key(before - 1 - random_() % std::min<size_t>(before, 100)));
    }
    for (const std::string& each : batch_) {
      all_.ledger_->send(each);
      client_->send(orderFrame(each));
    }
    for (size_t answers = 0; answers < batch_.size();) {
      const Reply reply = client_->receive();
      if (reply.id.empty()) {
        onPush(reply);
        continue;
      }
      all_.ledger_->hear(reply.id.substr(1, reply.id.size() - 2), reply.message);
      ++answers;
    }
    batch_.clear();
    ++answered;
  }

  std::string key(size_t order) const { return fmt::format("c{}n{}", number_, order); }

  void onPush(const Reply& push) {
    if (push.seq.empty()) return;
    const uint64_t seq = std::stoull(push.seq);
    EXPECT_EQ(seq, seq_ + 1) << "a gap in the pushes of client " << number_;
    seq_ = seq;
  }

  OrderClients& all_;
  const size_t number_;
  std::mt19937_64 random_;
  std::unique_ptr<Client> client_;
  std::string epoch_;
  uint64_t seq_ = 0;  // of the last push
  size_t placed_ = 0;
  size_t breaks_ = 0;
  std::vector<std::string> batch_;  // the keys of the orders under way
  std::thread thread_;
};

OrderClients::OrderClients(Plan plan, OrderTally& tally)
    : plan_(std::move(plan)), tally_(tally), ledger_(std::make_unique<Ledger>(tally)) {
  for (size_t i = 0; i < plan_.clients; ++i) members_.push_back(std::make_unique<Member>(*this, i));
}

OrderClients::~OrderClients() { end(); }

void OrderClients::end() {
  ended_ = true;
  members_.clear();
}

bool OrderClients::allAnswered() {
  std::vector<size_t> before;
  for (const auto& each : members_) before.push_back(each->answered);
  return holdsSoon([&] {
    return std::ranges::equal(members_, before, [](const auto& each, size_t count) { return each->answered > count; });
  });
}

void OrderClients::checkOrders() {
  std::vector<std::unique_lock<std::mutex>> turns;
  for (const auto& each : members_) turns.emplace_back(each->turn);
  std::string list;
  EXPECT_TRUE(holdsSoon([&] {
    try {
      Client client(plan_.port(0), {.certificate = {}, .patience = 60s});
      client.send(loginFrame(plan_.login));
      client.receive();
      const Reply reply = client.request("order.list", "[1]");
      EXPECT_EQ(reply.message, "");
      list = reply.data;
      return true;
    } catch (const ClientError&) {
      return false;  // a relay that has just started may not let it in yet
    }
  })) << "no list of the orders";
  ledger_->check(list);
}

}  // namespace orvane::test
