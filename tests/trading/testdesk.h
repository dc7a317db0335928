#pragma once

#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <future>
#include <list>
#include <optional>
#include <string>
#include <vector>

#include <SQLiteCpp/Database.h>
#include <fmt/format.h>
#include <gtest/gtest.h>

#include "host/common.h"
#include "host/positionmonitor.h"
#include "host/servicerouter.h"
#include "host/tradeservice.h"
#include "host/tradeutils.h"
#include "host/uiproxymgr.h"
#include "terminal/trading/tradinghost.h"
#include "tests/support/faketime.h"
#include "tests/support/tempdir.h"
#include "tests/trading/faultvfs.h"
#include "tests/trading/inbox.h"

namespace orvane::terminal::testing {

inline constexpr double kCent = 0.005;

inline std::string utf8(const std::string& gbk) { return CodeConvert::gbk_to_utf8(gbk); }

// The terms of an order, in the numbers of the wire. Texts are GBK.
struct Terms {
  int32_t account;
  int64_t code;
  int32_t side, offset;
  double price;
  int64_t volume;
  int32_t type = 1;
  Source source = {};
};

// A trading host in its own folder, on a disk and with clocks that the test controls. Accounts: 1 futures, 2 stocks, 3
// options (not logged in), 4 credit.
class TestDesk {
 public:
  static ITradeService* trade() { return IServiceRouter::instance()->getTradeService(); }

  static std::list<Order> orders(const std::list<int32_t>& accounts = {}) {
    return TradeUtils::getAllOrder(trade(), TradeUtils::getTradingAccountID(trade(), accounts));
  }
  static Order lastOrder() { return orders().back(); }

  static std::list<OrderFill> fills(const std::list<int32_t>& accounts = {}) {
    std::list<OrderFill> list;
    std::list<int32_t> available;
    TradeUtils::getAllFill(trade(), accounts, kQueryOne, list, available);
    EXPECT_TRUE(available.empty()) << "nobody asked for them";
    return list;
  }

  static std::list<Position> positions(const std::list<int32_t>& accounts = {}) {
    std::list<Position> list;
    std::list<int32_t> available;
    TradeUtils::getAllPosition(trade(), accounts, kQueryList, list, available);
    return list;
  }

  static Position position(int32_t account, int64_t hashCode) {
    for (const Position& it : positions({account})) {
      if (it.code.hashCode == hashCode) return it;
    }
    return {};
  }

  static TradingAccount capital(int32_t account) {
    std::vector<TradingAccount> accounts;
    std::list<int32_t> available;
    TradeUtils::getAllTradingAccount(trade(), std::list<int32_t>{account}, kQueryOne, accounts, available);
    return accounts.at(0);
  }

  static CreditInfoRecord credit() {
    std::vector<CreditInfoRecord> records;
    EXPECT_EQ(trade()->queryCreditInfo(capital(4).id, records).code, 0);
    return records.at(0);
  }

  static MobileNewOrderItem itemOf(const Terms& terms) {
    MobileNewOrderItem item;
    item.account.index = terms.account;
    item.code.hashCode = terms.code;
    item.orderSource = terms.source;
    item.side = terms.side;
    item.combOffset = terms.offset;
    item.hedge = 1;
    item.priceType = terms.type;
    item.price = terms.price;
    item.volume = terms.volume;
    return item;
  }
  static ResultStatus insertOrder(const Terms& terms) { return trade()->insertOrder(itemOf(terms)); }

  static ResultStatus cancelOrder(int32_t account, int64_t hashCode, int64_t id) {
    CancelOrderRequest request;
    request.localOrderId = id;
    request.account.index = account;
    request.code.hashCode = hashCode;
    return trade()->cancelOrder(request);
  }

  // The reply to one of the terminal's own topics, its failure in UTF-8.
  static MobileMessage ask(const std::string& topic, const std::string& body) {
    MobileMessage reply;
    IUIProxyMgr::getInstance()->requestSync(topic, body, reply);
    reply.message = utf8(reply.message);
    return reply;
  }

  static MobileMessage setQuote(int64_t hashCode, double price) {
    return ask("quote.set", fmt::format(R"({{"hashCode":{},"price":{}}})", hashCode, price));
  }

 protected:
  static constexpr int64_t kRebar = 1000001;  // last 3325, tick 1, account 1 holds 8 + 4 long and 3 short
  static constexpr int64_t kSugar = 3000001;  // last 5490, account 1 bids for 10 at 5460
  static constexpr int64_t kTreasury = -4000002;
  static constexpr int64_t kMaotai = 5000001;  // last 1475.20
  static constexpr int64_t kMerchants = 5000002;
  static constexpr int64_t kPingAn = 5000003;
  static constexpr int64_t kCatl = 6000002;  // last 388.66, bought today
  static constexpr int64_t kWuliangye = 6000003;

  TestDesk() { begin(); }
  ~TestDesk() { disk_.heal(); }  // the host's end would wait for a flush that is held up

  // Opens a host on the sample data, changed by `sql`.
  void begin(const std::string& sql = "") {
    host_.reset();
    disk_.heal();
    std::filesystem::remove_all(dir_);
    std::filesystem::copy(sample(), dir_);
    reopen(sql);
  }

  void open(QuoteMode quotes = QuoteMode::Still, const std::filesystem::path& file = {}) {
    host_.emplace(TradingOptions{dir_, quotes, file, 1}, clock_);
    host_->start([this](const MobileMessage& message) { inbox_.put(message); });
  }

  // Closes the host and opens it again, after running `sql` on its database.
  void reopen(const std::string& sql = "") {
    host_.reset();
    change(dir_, sql);
    open();
  }

  static void change(const std::filesystem::path& dir, const std::string& sql) {
    SQLite::Database((dir / "terminal.db").string(), SQLite::OPEN_READWRITE).exec(sql);
  }

  // Waits until everything is stored. Returns why it could not be, UTF-8.
  std::string stored() {
    std::promise<std::string> answer;
    host_->whenStored([&](const std::string& failure) { answer.set_value(failure); });
    return answer.get_future().get();
  }

  // Returns why the order was refused or could not be stored, UTF-8; empty if it was accepted.
  std::string order(const Terms& terms) {
    const std::string text = utf8(insertOrder(terms).message);
    const std::string failure = stored();
    return failure.empty() ? text : failure;
  }

  // An order that buys one lot of rebar to open.
  static Terms rebar(double price) { return {1, kRebar, 1, 1, price, 1}; }

  // A folder with the sample data, as of the day on which the clocks begin.
  static const std::filesystem::path& sample() {
    static const test::TempDir dir;
    if (is_empty(dir.path())) {
      setenv("TZ", "CST-8", 1);  // eight hours ahead, so that a day in UTC is noticed
      tzset();
      { const TradingHost created(TradingOptions{dir.path(), QuoteMode::Still, {}, 1}); }
      change(dir.path(), "UPDATE trading_day SET day = 20717; UPDATE orders SET day = 20717");
    }
    return dir.path();
  }

  const test::TempDir folder_;
  const std::filesystem::path dir_ = folder_.path();
  FaultyDisk disk_;
  test::FakeTime clock_;  // from 21 September 2026 on
  Inbox inbox_;
  std::optional<TradingHost> host_;
};

class DeskTest : public ::testing::Test, protected TestDesk {};

}  // namespace orvane::terminal::testing
