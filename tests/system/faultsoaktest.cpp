// The whole terminal under clients that place orders with keys while its disk, its files and its clock fail, and it is
// killed and stopped. What was acknowledged must be there, what was refused must not, and no key may run twice.

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <random>
#include <regex>
#include <thread>

#include <fmt/format.h>
#include <gtest/gtest.h>

#include "tests/support/holdssoon.h"
#include "tests/support/rawsocket.h"
#include "tests/support/soak.h"
#include "tests/system/faultydisk.h"
#include "tests/system/orders.h"
#include "tests/system/terminalprocess.h"
#include "tests/system/trouble.h"

namespace orvane::test {
namespace {

using namespace std::chrono_literals;
using terminal::Client;
using terminal::ClientError;
using Clock = std::chrono::steady_clock;
using Random = std::mt19937_64;

constexpr size_t kClients = 4;
constexpr int kBatch = 4;           // orders of one client under way
constexpr auto kPause = 20ms;       // between them, so that the lists stay short
constexpr int kFaultsOfRound = 10;  // before a new folder is begun
constexpr auto kEndTime = 15s;

enum class Fate { Unknown, Refused, Acknowledged };

Fate fateOf(const std::string& message) {
  if (message.empty()) return Fate::Acknowledged;
  for (const char* text : {"结果未知", "not known", "cannot look up the key"}) {
    if (message.find(text) != std::string::npos) return Fate::Unknown;
  }
  return Fate::Refused;
}

// What the clients have heard of each order. Thread-safe.
class Ledger {
 public:
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
    ++heard_.at(static_cast<size_t>(heard));
    if (order.fate != Fate::Acknowledged) {
      order.fate = heard;
    } else if (heard == Fate::Refused) {
      ADD_FAILURE() << key << " was acknowledged, and then refused: " << message;
    }
  }

  // `times` is how often each order is there.
  void check(const std::map<std::string, int>& times) {
    const std::lock_guard lock(mutex_);
    for (const auto& [key, order] : orders_) {
      const Fate fate = order.fate;
      const auto found = times.find(key);
      const int count = found == times.end() ? 0 : found->second;
      EXPECT_LE(count, 1) << key << " ran twice";
      EXPECT_TRUE(fate != Fate::Acknowledged || count > 0) << key << " was acknowledged and is lost";
      EXPECT_TRUE(fate != Fate::Refused || count == 0) << key << " was refused and is there";
    }
  }

  size_t count(Fate fate) const { return heard_.at(static_cast<size_t>(fate)); }

 private:
  struct Order {
    Fate fate = Fate::Unknown;
    int sent = 0;
  };

  std::mutex mutex_;
  std::map<std::string, Order> orders_;  // by key
  std::array<size_t, 3> heard_{};
};

class DiskTrouble : public Trouble {
 public:
  DiskTrouble(const FaultyDisk& disk, const char* fault) : disk_(disk), fault_(fault) { disk.begin(fault); }
  ~DiskTrouble() override { disk_.end(fault_); }

 private:
  const FaultyDisk& disk_;
  const char* fault_;
};

class FaultSoak {
 public:
  FaultSoak() {
    TerminalProcess first(fresh_.path());
    token_ = first.token();
    EXPECT_EQ(first.stop(), 0);
    SQLite::Database db(fresh_.path() / "terminal.db", SQLite::OPEN_READWRITE);
    db.exec("UPDATE account SET pre_balance = 1e12 WHERE idx = 1");
  }

  void run() {
    const auto end = Clock::now() + soakTime(15);
    for (int round = 0; Clock::now() < end && !testing::Test::HasFailure(); ++round) runRound(round, end);
    report();
  }

 private:
  struct Kind {
    std::string name;
    std::function<std::unique_ptr<Trouble>()> begin;
    bool mayStop = true;  // the terminal, meanwhile
    int times = 0;
    int kills = 0;
    int stops = 0;
    Clock::duration recovery{};  // the slowest
  };

  void runRound(int round, Clock::time_point end) {
    const TempDir dir;
    std::filesystem::copy(fresh_.path(), dir.path(), std::filesystem::copy_options::recursive);
    dir_ = dir.path();
    ledger_ = std::make_unique<Ledger>();
    start();
    ended_ = false;
    std::vector<std::thread> clients;
    for (size_t i = 0; i < kClients; ++i) {
      clients.emplace_back([this, i, round] { trade(fmt::format("r{}c{}", round, i), Random(i)); });
    }
    for (int i = 0; i < kFaultsOfRound && Clock::now() < end && !testing::Test::HasFailure(); ++i) {
      suffer(kinds_[next_++ % kinds_.size()]);
    }
    stop();
    const int unknown = SQLite::Database(dir_ / "gateway.db", SQLite::OPEN_READWRITE)
                            .execAndGet(fmt::format("SELECT count(*) FROM action WHERE id > {} AND key IS NOT NULL AND "
                                                    "reply_topic IS NULL",
                                                    lastRow_))
                            .getInt();
    EXPECT_EQ(unknown, 0) << "a stop without a fault leaves no outcome unknown";
    ended_ = true;
    for (std::thread& client : clients) client.join();
    start();
    checkOrders();
    stop();
    for (size_t i = 0; i < heard_.size(); ++i) heard_.at(i) += ledger_->count(static_cast<Fate>(i));
  }

  // One fault begins and ends. The terminal may be killed or stopped meanwhile, and started again before or after its
  // end.
  void suffer(Kind& kind) {
    std::unique_ptr<Trouble> trouble = kind.begin();
    std::this_thread::sleep_for(random_() % 4 == 0 ? 3500ms : std::chrono::milliseconds(100 + random_() % 900));
    const auto fate = kind.mayStop ? random_() % 4 : 2;
    if (fate == 0) {
      kill();
      ++kind.kills;
    } else if (fate == 1) {
      stop();
      ++kind.stops;
    }
    const bool isDown = fate < 2;
    if (isDown && random_() % 2 == 0) trouble.reset();
    if (isDown) start();
    trouble.reset();
    const auto begin = Clock::now();
    EXPECT_TRUE(holdsSoon([this] { return httpGet(port_, "/health/ready").starts_with("HTTP/1.1 200 "); }))
        << kind.name << " is over, and the terminal is not ready: " << httpGet(port_, "/health/ready");
    kind.recovery = std::max(kind.recovery, Clock::now() - begin);
    ++kind.times;
    if (isDown) checkOrders();
  }

  void start() {
    lastRow_ = SQLite::Database(dir_ / "gateway.db", SQLite::OPEN_READWRITE)
                   .execAndGet("SELECT coalesce(max(id), 0) FROM action")
                   .getInt64();
    terminal_ = std::make_unique<TerminalProcess>(dir_, std::vector<std::string>{}, token_);
    port_ = terminal_->port();
  }

  void stop() {
    const auto begin = Clock::now();
    EXPECT_EQ(terminal_->stop(), 0);
    longestEnd_ = std::max(longestEnd_, Clock::now() - begin);
    EXPECT_LT(Clock::now() - begin, kEndTime);
  }

  void kill() { terminal_->kill(); }

  // Places orders, some of them again, and connects anew whenever the terminal is gone.
  void trade(const std::string& name, Random random) {
    for (int placed = 0; !ended_;) {
      try {
        Client client(port_);
        client.login(token_);
        for (; !ended_; std::this_thread::sleep_for(kPause)) {
          const Turn turn(*this);
          std::vector<std::string> keys;
          for (int i = 0; i < kBatch; ++i) keys.push_back(fmt::format("{}n{}", name, placed++));
          const auto again = placed - 1 - std::uniform_int_distribution<int>(0, std::min(placed, 100) - 1)(random);
          keys.push_back(fmt::format("{}n{}", name, again));
          if (std::count(keys.begin(), keys.end(), keys.back()) > 1) keys.pop_back();
          place(client, keys);
        }
      } catch (const ClientError& error) {
        EXPECT_EQ(std::string(error.what()).find("no answer"), std::string::npos) << "a request hangs";
        std::this_thread::sleep_for(kPause);
      }
    }
  }

  void place(Client& client, const std::vector<std::string>& keys) {
    for (const std::string& key : keys) {
      ledger_->send(key);
      client.send(orderFrame(key));
    }
    for (size_t answers = 0; answers < keys.size();) {
      const terminal::Reply reply = client.receive();
      if (reply.id.empty()) continue;  // a push
      ledger_->hear(reply.id.substr(1, reply.id.size() - 2), reply.message);
      ++answers;
    }
  }

  // While one exists the clients' orders are not compared with the terminal's.
  class Turn {
   public:
    explicit Turn(FaultSoak& soak) : soak_(soak) {
      for (++soak_.underWay_; soak_.isPaused_; ++soak_.underWay_) {
        --soak_.underWay_;
        std::this_thread::sleep_for(kPause);
      }
    }
    ~Turn() { --soak_.underWay_; }
    Turn(const Turn&) = delete;
    Turn& operator=(const Turn&) = delete;

   private:
    FaultSoak& soak_;
  };

  void checkOrders() {
    isPaused_ = true;
    EXPECT_TRUE(holdsSoon([this] { return underWay_ == 0; }));
    Client client(port_, {.certificate = {}, .patience = 60s});
    client.login(token_);
    const std::string list = client.request("order.list", "[1]").data;
    std::map<std::string, int> times;
    const std::regex source(R"re("source":"([^"]*)")re");
    for (std::sregex_iterator it(list.begin(), list.end(), source); it != std::sregex_iterator(); ++it) {
      ++times[(*it)[1]];
    }
    ledger_->check(times);
    isPaused_ = false;
  }

  void report() const {
    for (const Kind& kind : kinds_) {
      std::printf("%-22s %4d times, %3d kills and %3d stops meanwhile, ready again after at most %.1f s\n",
                  kind.name.c_str(), kind.times, kind.kills, kind.stops,
                  std::chrono::duration<double>(kind.recovery).count());
    }
    std::printf("%zu acknowledged, %zu refused, %zu unknown; the longest stop took %.1f s\n", heard_[2], heard_[1],
                heard_[0], std::chrono::duration<double>(longestEnd_).count());
  }

  std::unique_ptr<Trouble> disk(const char* fault) { return std::make_unique<DiskTrouble>(disk_, fault); }

  // A terminal that is started on another day goes on with that day, so the clock only jumps while one runs.
  std::vector<Kind> kinds_{
      {.name = "no flush succeeds", .begin = [this] { return disk("flush"); }},
      {.name = "the disk is full", .begin = [this] { return disk("full"); }},
      {.name = "gateway.db is locked", .begin = [this] { return std::make_unique<DatabaseLock>(dir_); }},
      {.name = "audit.log is locked", .begin = [this] { return std::make_unique<AuditLock>(dir_); }},
      {.name = "the clock jumps", .begin = [this] { return disk("clock"); }, .mayStop = false},
  };
  const FaultyDisk disk_;
  const TempDir fresh_;
  std::string token_;
  std::filesystem::path dir_;
  std::unique_ptr<Ledger> ledger_;
  std::unique_ptr<TerminalProcess> terminal_;
  int64_t lastRow_ = 0;  // of gateway.db when the terminal was started
  std::atomic<uint16_t> port_{0};
  std::atomic<bool> ended_{false};
  std::atomic<bool> isPaused_{false};
  std::atomic<int> underWay_{0};
  Random random_{1};
  size_t next_ = 0;
  std::array<size_t, 3> heard_{};
  Clock::duration longestEnd_{};
};

TEST(FaultSoak, LosesAndDoublesNothing) {
  alarm(static_cast<unsigned>(soakTime(15).count()) + 180);
  FaultSoak().run();
}

}  // namespace
}  // namespace orvane::test
