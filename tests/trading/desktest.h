#pragma once

#include <chrono>
#include <condition_variable>
#include <filesystem>
#include <fstream>
#include <future>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include <SQLiteCpp/Database.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "host/authagent.h"
#include "host/codeservice.h"
#include "host/common.h"
#include "host/positionmonitor.h"
#include "host/servicerouter.h"
#include "host/tradeservice.h"
#include "host/tradeutils.h"
#include "host/uiproxymgr.h"
#include "terminal/trading/book.h"
#include "terminal/trading/tradinghost.h"

namespace orvane::terminal::testing {

inline constexpr double kCent = 0.005;

inline std::string utf8(const std::string& gbk) { return CodeConvert::gbk_to_utf8(gbk); }

// The messages that the host delivered.
class Inbox {
 public:
  void put(const MobileMessage& message) {
    const std::lock_guard lock(mutex_);
    messages_.push_back(message);
    arrived_.notify_all();
  }

  size_t size() const {
    const std::lock_guard lock(mutex_);
    return messages_.size();
  }

  // The next message with this topic; fails the test if none comes.
  MobileMessage next(const std::string& topic) {
    std::unique_lock lock(mutex_);
    std::optional<MobileMessage> found;
    const bool came = arrived_.wait_for(lock, std::chrono::seconds(60), [&] {
      for (; read_ < messages_.size() && !found; ++read_) {
        if (messages_[read_].topic == topic) found = messages_[read_];
      }
      return found.has_value();
    });
    EXPECT_TRUE(came) << "no message " << topic;
    return found.value_or(MobileMessage{});
  }

 private:
  mutable std::mutex mutex_;
  std::condition_variable arrived_;
  std::vector<MobileMessage> messages_;
  size_t read_ = 0;
};

// A trading host with QuoteMode::Still in its own folder. Accounts: 1 futures, 2 stocks, 3 options (not logged in),
// 4 credit.
class DeskTest : public ::testing::Test {
 protected:
  static constexpr int64_t kRebar = 1000001;  // last 3325, tick 1, account 1 holds 8 + 4 long and 3 short
  static constexpr int64_t kSugar = 3000001;  // last 5490, account 1 bids for 10 at 5460
  static constexpr int64_t kTreasury = -4000002;
  static constexpr int64_t kMaotai = 5000001;  // last 1475.20
  static constexpr int64_t kMerchants = 5000002;
  static constexpr int64_t kPingAn = 5000003;
  static constexpr int64_t kCatl = 6000002;  // last 388.66, bought today
  static constexpr int64_t kWuliangye = 6000003;

  DeskTest() {
    dir_ = std::filesystem::temp_directory_path() / ("trading-" + std::to_string(getpid()));
    std::filesystem::remove_all(dir_);
    open();
  }
  ~DeskTest() override {
    host_.reset();
    std::filesystem::remove_all(dir_);
  }

  void open() {
    host_.emplace(TradingOptions{dir_, QuoteMode::Still, {}, 1}, *clock_);
    host_->start([this](const MobileMessage& message) { inbox_.put(message); });
  }

  // Closes the host, runs `sql` on its database and opens it again.
  void reopen(const std::string& sql = "") {
    host_.reset();
    if (!sql.empty()) SQLite::Database((dir_ / "terminal.db").string(), SQLite::OPEN_READWRITE).exec(sql);
    open();
  }

  static ITradeService* trade() { return IServiceRouter::instance()->getTradeService(); }

  static MobileNewOrderItem item(int32_t account, int64_t hashCode, Side side, Offset offset, double price,
                                 int64_t volume, PriceType type = PriceType::Limit) {
    MobileNewOrderItem item;
    item.account.index = account;
    item.code.hashCode = hashCode;
    item.side = static_cast<int32_t>(side);
    item.combOffset = static_cast<int32_t>(offset);
    item.priceType = static_cast<int32_t>(type);
    item.price = price;
    item.volume = volume;
    return item;
  }

  // Waits until everything is stored. Returns why it could not be, UTF-8.
  std::string stored() {
    std::promise<std::string> answer;
    host_->whenStored([&](const std::string& failure) { answer.set_value(failure); });
    return answer.get_future().get();
  }

  // The text of a reply that is held back until the action is stored, UTF-8.
  std::string held(const std::string& text) {
    const std::string failure = stored();
    return failure.empty() ? text : failure;
  }

  // Returns why the order was refused, UTF-8; empty if it was accepted.
  template <typename... Terms>
  std::string order(const Terms&... terms) {
    return held(utf8(trade()->insertOrder(item(terms...)).message));
  }

  static ResultStatus cancelOrder(int32_t account, int64_t hashCode, int64_t id) {
    CancelOrderRequest request;
    request.localOrderId = id;
    request.account.index = account;
    request.code.hashCode = hashCode;
    return trade()->cancelOrder(request);
  }

  std::string cancel(int32_t account, int64_t hashCode, int64_t id) {
    return held(utf8(cancelOrder(account, hashCode, id).message));
  }

  // Returns the failure's text, UTF-8.
  std::string setQuote(int64_t hashCode, const std::string& price) {
    MobileMessage reply;
    IUIProxyMgr::getInstance()->requestSync(
        "quote.set", R"({"hashCode": )" + std::to_string(hashCode) + R"(, "price": )" + price + "}", reply);
    return held(utf8(reply.message));
  }

  static TradingAccount capital(int32_t account) {
    std::vector<TradingAccount> accounts;
    std::list<int32_t> available;
    TradeUtils::getAllTradingAccount(trade(), {account}, 3, accounts, available);
    return accounts.at(0);
  }

  // Positions by account and instrument.
  static std::map<Key, Position> positions() {
    std::list<Position> list;
    std::list<int32_t> available;
    TradeUtils::getAllPosition(trade(), {}, 3, list, available);
    std::map<Key, Position> byKey;
    for (const Position& it : list) byKey[{it.account.index, it.code.hashCode}] = it;
    return byKey;
  }

  static std::list<Order> orders() { return TradeUtils::getAllOrder(trade(), {}); }
  static Order lastOrder() { return orders().back(); }

  static std::list<OrderFill> fills() {
    std::list<OrderFill> list;
    std::list<int32_t> available;
    TradeUtils::getAllFill(trade(), {}, 1, list, available);
    return list;
  }

  static CreditInfoRecord credit() {
    std::vector<CreditInfoRecord> records;
    TradingAccountID id;
    id.index = 4;
    EXPECT_EQ(trade()->queryCreditInfo(id, records).code, 0);
    return records.at(0);
  }

  std::filesystem::path dir_;
  const IClock* clock_ = &systemClock();  // of the next host that is opened
  Inbox inbox_;
  std::optional<TradingHost> host_;
};

}  // namespace orvane::terminal::testing
