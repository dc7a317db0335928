#include <algorithm>
#include <array>
#include <cmath>
#include <optional>

#include "tests/support/randomsteps.h"
#include "tests/trading/listcheck.h"
#include "tests/trading/testdesk.h"

namespace orvane::terminal::testing {
namespace {

using second::Instrument;
using second::Key;
using second::PlacedOrder;

// A host and the second book side by side, through random steps; after each, everything is compared.
class RandomDays : test::RandomSteps, TestDesk {
 public:
  explicit RandomDays(uint32_t seed) : RandomSteps(seed) {
    std::string sql =
        chance(80) ? "UPDATE account SET online = 1;" : "UPDATE account SET ordinary_orders = 0 WHERE idx = 2;";
    if (chance(30)) sql += "UPDATE credit_terms SET long_limit = 400000, short_limit = 150000;";
    if (chance(60)) sql += "DELETE FROM strategy_target; DELETE FROM manual_position;";  // everything is too much
    if (chance(10)) sql += "DELETE FROM credit_contract; DELETE FROM holding WHERE account = 4 AND direction = 2;";
    if (chance(20)) sql += "UPDATE account SET pre_balance = pre_balance / 4;";
    host_.reset();
    change(dir_, sql);
    book_.emplace(dir_ / "terminal.db");
    lists_.emplace(*book_, inbox_);
    open();
  }

  // Runs until a difference or the end.
  void run(int steps) {
    lists_->compare({1, 2, 3, 4});
    for (int i = 1; i <= steps && !::testing::Test::HasFailure(); ++i) {
      const std::string what = step();
      SCOPED_TRACE(fmt::format("step {}: {}", i, what));
      std::set<int32_t> selected;
      for (const auto& [index, account] : book_->accounts) {
        if (chance(60)) selected.insert(index);
      }
      lists_->compare(selected);
    }
  }

 private:
  // Moves the clocks.
  void pass(std::chrono::seconds time) {
    clock_.advance(time);
    const auto now = std::chrono::time_point_cast<std::chrono::milliseconds>(clock_.wallTime());
    book_->now = now.time_since_epoch().count();
  }

  // Does one random thing to both and returns what.
  std::string step() {
    pass(std::chrono::seconds(1));
    const int64_t what = pick(1, 100);
    if (what <= 48) return order();
    if (what <= 57) return cancel();
    if (what <= 79) return quote();
    if (what <= 83) return synchronise();
    if (what <= 89) return manual();
    if (what <= 97) return nextStart(0);
    return what <= 98 ? midnight() : nextStart(static_cast<int>(pick(1, 4)));
  }

  std::string nextStart(int days) {
    host_.reset();
    pass(std::chrono::hours(24 * days));
    open();
    if (days > 0) book_->newDay(days);
    return fmt::format("start after {} days", days);
  }

  // Under a running host.
  std::string midnight() {
    pass(std::chrono::hours(24));
    book_->newDay(1);
    const auto& [hash, instrument] = *book_->instruments.begin();
    return "midnight, " + moveTo(hash, instrument.last);
  }

  // Mostly an instrument that the account may trade, often one that it holds, and of these often the same.
  Key randomKey(int32_t account) {
    std::vector<Key> held;
    for (const Key& key : book_->positionKeys()) {
      if (key.first == account) held.push_back(key);
    }
    if (chance(50) && !held.empty()) return held.at(favourite_ % held.size());
    if (chance(60) && !held.empty()) return oneOf(held);
    const bool any = chance(5);
    for (;;) {
      const auto& [hash, it] = *std::next(book_->instruments.begin(), pick(0, std::ssize(book_->instruments) - 1));
      if (any || book_->accounts.at(account).trades(it)) return {account, hash};
    }
  }

  // Mostly within five ticks of the last price; with four digits, as a client would send it.
  double randomPrice(const Instrument& it) {
    double price = std::clamp(it.last + second::number(pick(-5, 5)) * it.tick, it.low, it.high);
    if (chance(3)) price = it.last + it.tick / 2;
    if (chance(3)) price = oneOf(std::array{it.low - it.tick, it.low, it.high, it.high + it.tick, 0.0});
    return std::round(price * 10000) / 10000;
  }

  std::string order() {
    const Key key = randomKey(oneOf({1, 1, 1, 2, 3, 4, 4, 4}));
    const Instrument& it = book_->instruments.at(key.second);
    const Position held = book_->position(key);
    PlacedOrder order;
    std::tie(order.account.index, order.code.hashCode) = key;
    order.side = static_cast<int32_t>(key.first == 4 ? pick(1, 6) : pick(1, 2));
    if (chance(3)) order.side = static_cast<int32_t>(pick(-1, 9));
    order.combOffset = !it.isSecurity()                     ? oneOf({1, 1, 1, 2, 3, 3, 4, 4, 5, 6, 7})
                       : order.side == 2 || order.side >= 5 ? oneOf({0, 3, 4, 4, 5, 6, 7})
                                                            : oneOf({0, 1, 2, 3});
    if (chance(3)) order.combOffset = static_cast<int32_t>(pick(-1, 9));
    order.priceType = chance(85) ? 1 : oneOf({2, 2, 2, 2, 2, 0, 3});
    order.price = randomPrice(it);
    order.volume = it.lot * pick(1, chance(80) ? 10 : 400);
    if (chance(20)) {
      order.volume = oneOf(std::array{held.longPosition, held.shortPosition, held.longYesterdayVolume,
                                      held.shortTodayVolume, held.longTodayVolume});
    }
    if (chance(5)) order.volume += pick(-it.lot, it.lot);
    if (chance(2)) order.volume = oneOf(std::array<int64_t, 4>{0, -1, it.most + 1, it.most});
    order.hedge = 1;
    order.orderSource = oneOf(std::array<Source, 4>{
        {{65536, "手机", ""}, {0x8000000, "", ""}, {0x8400000, "电脑 \"A\"", ""}, {0x400000, "€😀", ""}}});
    order.orderSource.sourceText = CodeConvert::utf8_to_gbk(order.orderSource.sourceText);
    return place(order);
  }

  std::string place(const PlacedOrder& order) {
    const ResultStatus got = insertOrder({order.account.index, order.code.hashCode, order.side, order.combOffset,
                                          order.price, order.volume, order.priceType, order.orderSource});
    expectRefusal(utf8(got.message), book_->place(order));
    book_->orders.rbegin()->second.note = got.message;
    return fmt::format("order of {} {} side {} offset {} type {} price {} volume {}: {}", order.account.index,
                       order.code.hashCode, order.side, order.combOffset, order.priceType, order.price, order.volume,
                       utf8(got.message));
  }

  // Mostly of a working order.
  std::string cancel() {
    if (book_->orders.empty()) return "nothing to cancel";
    PlacedOrder order = oneOf(book_->orders).second;
    for (const auto& [id, it] : book_->orders) {
      if (it.isWorking() && chance(40)) order = it;
    }
    if (chance(5)) order.account.index = static_cast<int32_t>(pick(1, 4));
    if (chance(5)) order.localOrderId += 1000;
    const auto [account, hash] = order.key();
    expectRefusal(utf8(cancelOrder(account, hash, order.localOrderId).message),
                  book_->cancel(order.key(), order.localOrderId));
    return fmt::format("cancel of {}", order.localOrderId);
  }

  std::string quote() {
    int64_t hash = randomKey(static_cast<int32_t>(pick(1, 4))).second;
    for (const auto& [id, it] : book_->orders) {
      if (it.isWorking() && chance(20)) hash = it.code.hashCode;
    }
    return moveTo(hash, randomPrice(book_->instruments.at(hash)));
  }

  std::string moveTo(int64_t hash, double price) {
    EXPECT_EQ(setQuote(hash, price).message.empty(), book_->setQuote(hash, price));
    return fmt::format("quote of {}: {}", hash, price);
  }

  static MonitorAccountCodes only(const Key& key) {
    TradingAccountID account;
    account.index = key.first;
    SymbolCode code;
    code.hashCode = key.second;
    return {{account, {code}}};
  }

  // Places what is offered, some of it changed.
  std::string synchronise() {
    IPositionMonitor& monitor = *IPositionMonitor::getInstance();
    std::list<MonitorSyncOrder> offered;
    const std::set<Key> keys = book_->monitorKeys();
    for (int i = 0; i < 3 && !keys.empty(); ++i) {
      offered.splice(offered.end(), monitor.getSyncOrders(only(oneOf(keys))));
    }
    offered.resize(std::min<size_t>(offered.size(), 12));
    for (MonitorSyncOrder& it : offered) {
      if (chance(30)) it.price = randomPrice(book_->instruments.at(it.code.hashCode));
      if (chance(10)) it.volume = pick(-1, 1);
      PlacedOrder order;
      order.account.index = it.account.index;
      order.code.hashCode = it.code.hashCode;
      order.side = it.side;
      order.combOffset = it.combOffsetFlag;
      order.priceType = order.hedge = 1;
      order.price = it.price;
      order.volume = it.volume;
      order.orderSource.sourceFlags = 0x1000000;
      order.orderSource.sourceText = CodeConvert::utf8_to_gbk("头寸监控一键同步");
      book_->place(order);
    }
    const size_t count = offered.size();
    monitor.placeSyncOrders(offered);
    return fmt::format("{} synchronising orders", count);
  }

  std::string manual() {
    IPositionMonitor& monitor = *IPositionMonitor::getInstance();
    if (chance(25)) {
      const bool all = book_->manual.empty() || chance(20);
      const Key key = all ? Key{} : oneOf(book_->manual).first;
      monitor.cleanManualPositions(all ? MonitorAccountCodes{} : only(key));
      std::erase_if(book_->manual, [&](const auto& it) { return all || it.first == key; });
      return "manual positions cleared";
    }
    std::list<MonitorManualPosition> update(static_cast<size_t>(pick(1, 3)));
    for (MonitorManualPosition& it : update) {
      const Key key = randomKey(static_cast<int32_t>(pick(1, 4)));
      const Instrument& instrument = book_->instruments.at(key.second);
      it.account = book_->accounts.at(key.first).id;
      it.code = instrument.symbol;
      const int64_t most = 1000 * instrument.most;
      for (int64_t* volume : {&it.position.longPos, &it.position.shortPos}) {
        *volume = chance(50) ? 0 : pick(0, 20) * instrument.lot;
        if (chance(10)) *volume = oneOf(std::array<int64_t, 4>{-1, most, most + 1, 7});
      }
      book_->setManual(key, it.position.longPos, it.position.shortPos);
    }
    monitor.updateManualPositions(update);
    return "manual positions";
  }

  const size_t favourite_ = static_cast<size_t>(pick(0, 99));
  std::optional<second::SecondBook> book_;
  std::optional<ListCheck> lists_;
};

TEST(RandomDaysTest, EveryFigureOfEveryListIsThatOfTheSecondBook) {
  test::runSeeds("RANDOM_DAYS", 16, [](uint32_t seed) { RandomDays(seed).run(80); });
}

}  // namespace
}  // namespace orvane::terminal::testing
