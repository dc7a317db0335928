#include "tests/trading/listcheck.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <sstream>

#include <fmt/format.h>
#include <gtest/gtest.h>

#include "host/common.h"
#include "host/servicerouter.h"
#include "host/tradeservice.h"
#include "host/tradeutils.h"
#include "tests/trading/listrow.h"

namespace orvane::terminal::testing {
namespace {

using second::Key;
using second::PlacedOrder;

struct Figures {
  const char* names;  // as "it.first, it.second"
  std::vector<double> values;
};

template <typename... Values>
Figures figures(const char* names, Values... values) {
  return {names, {static_cast<double>(values)...}};
}

#define FIGURES(type, ...) \
  Figures figuresOf(const type& it) { return figures(#__VA_ARGS__, __VA_ARGS__); }

FIGURES(TradingAccount, it.id.marketType, it.available, it.withdrawQuota, it.frozenMargin, it.currMargin, it.deposit,
        it.withdraw, it.commission, it.closeProfit, it.preBalance, it.dynamicAmount, it.maintainAmount, it.totalLever,
        it.netLever, it.risk, it.baseAmount, it.preCloseProfit, it.todayFloatingProfit)

FIGURES(Position, it.currentPrice, it.preSettlementPrice, it.preClosePrice, it.longLever, it.shortLever, it.avgPrice,
        it.floatProfit, it.todayProfit, it.todayProfitRatio, it.todayProfitCateRatio, it.todayProfitAccRatio,
        it.longMarketValue, it.longAvgPrice, it.longFloatProfit, it.longMargin, it.shortMarketValue, it.shortAvgPrice,
        it.shortFloatProfit, it.shortMargin, it.longYesterdayVolume, it.longCloseYesterdayVolume, it.longPosition,
        it.longActiveVolume, it.longFrozenVolume, it.longTodayVolume, it.shortYesterdayVolume,
        it.shortCloseYesterdayVolume, it.shortPosition, it.shortActiveVolume, it.shortFrozenVolume, it.shortTodayVolume,
        it.currentVolume, it.yesterdayVolume)

FIGURES(CreditInfoRecord, it.totalAssets, it.netAssets, it.cashAssets, it.freeBalance, it.longMarginRate,
        it.shortMarginRate, it.keepMarginRatio, it.marginAvl, it.marginRatio, it.longProfit, it.shortProfit,
        it.totalProfit, it.totalDebtBalance, it.longDebtBalance, it.shortDebtBalance, it.debtInterest,
        it.tradeDebtBalance, it.longLimitAvl, it.longLimitUsed, it.longLimit, it.longMarginMarket, it.longMarginProfit,
        it.longMarginUsed, it.shortLimitAvl, it.shortLimitUsed, it.shortLimit, it.shortMarginMarket,
        it.shortMarginProfit, it.shortMarginUsed)

FIGURES(CodeTypePosition, it.netAbsLever, it.totalLever, it.leverWeight, it.todayProfit, it.profitRatio,
        it.todayProfitType, it.todayProfitAccount, it.amassProfit, it.amassProfitType, it.amassProfitAccount,
        it.totalMarketValue)

FIGURES(PositionMonitorRecord, it.system.netPos, it.system.longPos, it.system.shortPos, it.strategyActive.netPos,
        it.strategyActive.longPos, it.strategyActive.shortPos, it.strategyUnsend.netPos, it.strategyUnsend.longPos,
        it.strategyUnsend.shortPos, it.algo.netPos, it.algo.longPos, it.algo.shortPos, it.manual.netPos,
        it.manual.longPos, it.manual.shortPos, it.accountPos.netPos, it.accountPos.longPos, it.accountPos.shortPos,
        it.accountPos.netLever, it.theoryPosDif, it.longPosDif, it.shortPosDif, it.isMatchTheory, it.isMatchLongShort,
        it.isMatchNetPos, it.isMatchPosDif, it.syncRule)

FIGURES(MonitorSyncOrder, it.side, it.combOffsetFlag, it.volume, it.price, it.position.netPos, it.position.longPos,
        it.position.shortPos)

FIGURES(MonitorManualPosition, it.account.index, it.code.hashCode, it.position.longPos, it.position.shortPos)

// Equal after rounding to 0.0001.
template <typename Record>
void expectSame(const Record& got, const Record& expected) {
  const Figures of = figuresOf(got);
  const Figures other = figuresOf(expected);
  std::istringstream names(of.names);
  std::string name;
  for (size_t i = 0; i < of.values.size(); ++i) {
    names >> name;
    EXPECT_LE(std::abs(of.values[i] - other.values[i]), 0.000051)
        << name << " " << fmt::format("{:.5f}, not {:.5f}", of.values[i], other.values[i]);
  }
}

template <typename List, typename OtherList>
void expectSameList(const List& got, const OtherList& expected) {
  EXPECT_EQ(got.size(), expected.size());
  auto other = expected.begin();
  for (auto it = got.begin(); it != got.end() && other != expected.end(); ++it, ++other) expectSame(*it, *other);
}

ITradeService* trade() { return IServiceRouter::instance()->getTradeService(); }

std::string toUtf8(const std::string& gbk) { return CodeConvert::gbk_to_utf8(gbk); }

int64_t now() {
  using std::chrono::milliseconds;
  return std::chrono::duration_cast<milliseconds>(std::chrono::system_clock::now().time_since_epoch()).count();
}

// What a query gives for each account, one behind the other, which is what it gives for all.
template <typename Query>
auto joined(const second::SecondBook& book, Query query) {
  decltype(query({})) all;
  for (const auto& [index, account] : book.accounts) {
    for (const auto& it : query(std::list<int32_t>{index})) {
      EXPECT_EQ(it.account.index, index) << "a row of another account";
      all.push_back(it);
    }
  }
  EXPECT_EQ(query({}).size(), all.size()) << "rows of all accounts";
  return all;
}

}  // namespace

void expectRefusal(const std::string& got, const std::string& expected) {
  EXPECT_EQ(got.substr(0, expected.size()), expected);
  EXPECT_EQ(got.empty(), expected.empty()) << got;
}

void ListCheck::put(const MobileMessage& message) {
  const std::lock_guard lock(mutex_);
  messages_.push_back(message);
  arrived_.notify_all();
}

void ListCheck::compare(const std::set<int32_t>& selected) {
  compareOrders();
  compareFills();
  comparePushes();
  compareAccounts();
  compareCodeTypes(selected, true, true);
  compareCodeTypes({1, 2, 3, 4}, true, false);
  compareCodeTypes({1, 2, 3, 4}, false, true);
  comparePositions();
  compareMonitor();
  compareQuotes();
  compared_ = now();
}

void ListCheck::compareOrders() {
  const auto all = joined(book_, [](const std::list<int32_t>& selector) {
    return TradeUtils::getAllOrder(trade(), TradeUtils::getTradingAccountID(trade(), selector));
  });
  EXPECT_EQ(all.size(), book_.orders.size());
  for (Order got : all) {
    got.note = toUtf8(got.note);
    got.orderSource.sourceText = toUtf8(got.orderSource.sourceText);
    SCOPED_TRACE(fmt::format("order {}", got.localOrderId));
    ASSERT_EQ(book_.orders.count(got.localOrderId), 1U);
    PlacedOrder& expected = book_.orders.at(got.localOrderId);
    if (expected.srcTimestamp == 0) adopt(expected, got);
    EXPECT_EQ(rowOf(got, book_), rowOf(expected, book_));
    EXPECT_EQ(got.orderSource.sourceFlags, expected.orderSource.sourceFlags);
  }
  note_.clear();
}

// Takes over what the book cannot know of a new order.
void ListCheck::adopt(PlacedOrder& expected, const Order& got) {
  EXPECT_GE(got.srcTimestamp, compared_);
  EXPECT_LE(got.srcTimestamp, now());
  expected.srcTimestamp = got.srcTimestamp;
  expectRefusal(got.note, note_.empty() ? expected.note : note_);
  if (expected.status != 4) return;
  expected.note = got.note;
  expected.price = got.price;  // as it was sent, or the quote that a market order met
}

void ListCheck::compareFills() {
  const auto all = joined(book_, [](const std::list<int32_t>& selector) {
    std::list<OrderFill> list;
    std::list<int32_t> available;
    TradeUtils::getAllFill(trade(), selector, 1, list, available);
    EXPECT_TRUE(available.empty());
    return list;
  });
  EXPECT_EQ(all.size(), book_.fills.size());
  for (OrderFill got : all) {
    got.orderSource.sourceText = toUtf8(got.orderSource.sourceText);
    SCOPED_TRACE(got.fillId);
    const auto expected = std::find_if(book_.fills.begin(), book_.fills.end(),
                                       [&](const OrderFill& it) { return it.fillId == got.fillId; });
    ASSERT_NE(expected, book_.fills.end());
    if (expected->exchTimestamp == 0) {
      EXPECT_GE(got.exchTimestamp, compared_);
      EXPECT_LE(got.exchTimestamp, now());
      expected->exchTimestamp = got.exchTimestamp;
    }
    EXPECT_EQ(rowOf(got, book_), rowOf(*expected, book_));
    EXPECT_EQ(got.orderSource.sourceFlags, expected->orderSource.sourceFlags);
  }
}

// The messages that came before the reply to a request made now.
std::vector<MobileMessage> ListCheck::takeMessages() {
  IUIProxyMgr::getInstance()->requestAsync(++request_, "terminal.info", "");
  std::unique_lock lock(mutex_);
  const bool came = arrived_.wait_for(lock, std::chrono::seconds(60),
                                      [&] { return !messages_.empty() && messages_.back().requestId == request_; });
  EXPECT_TRUE(came) << "no reply to a request";
  if (came) messages_.pop_back();
  return std::exchange(messages_, {});
}

// Each order that changed is pushed once, and before its fill and the notice of its refusal.
void ListCheck::comparePushes() {
  std::map<std::string, std::vector<Row>> pushed;
  const std::vector<Row>& orders = pushed["order.push"];
  const auto isRefused = [](const Row& order) { return order.at("status") == "4.0000"; };
  std::vector<std::string> notices;
  std::ptrdiff_t refusals = 0;
  for (const MobileMessage& it : takeMessages()) {
    EXPECT_EQ(it.requestId, kNoRequestId);
    if (it.topic == "terminal.notice") {
      if (notices.emplace_back(toUtf8(it.message)).find("委托被拒绝") != std::string::npos) ++refusals;
      EXPECT_LE(refusals, std::count_if(orders.begin(), orders.end(), isRefused)) << "a notice came first";
      continue;
    }
    for (const Row& row : rowsOf(it)) {
      pushed[it.topic].push_back(row);
      const auto isIts = [&](const Row& order) { return order.at("localOrderId") == row.at("localOrderId"); };
      EXPECT_TRUE(std::any_of(orders.begin(), orders.end(), isIts)) << "a fill came first";
    }
  }
  std::map<std::string, std::vector<Row>> expected{{"order.push", {}}};
  size_t filled = 0;
  for (const PlacedOrder& it : book_.changed) {
    const auto listed = book_.orders.find(it.localOrderId);
    expected["order.push"].push_back(rowOf(listed == book_.orders.end() ? it : listed->second, book_));
    if (it.status == 2) ++filled;
  }
  for (size_t i = book_.fills.size() - filled; i < book_.fills.size(); ++i) {
    expected["trade.push"].push_back(rowOf(book_.fills[i], book_));
  }
  EXPECT_EQ(pushed, expected);
  EXPECT_EQ(notices.size(), notices_.size());
  for (size_t i = 0; i < std::min(notices.size(), notices_.size()); ++i) expectRefusal(notices[i], notices_[i]);
  notices_.clear();
  book_.changed.clear();
}

void ListCheck::compareAccounts() {
  std::list<int32_t> online;
  for (const auto& [index, account] : book_.accounts) {
    SCOPED_TRACE(fmt::format("account {}", index));
    if (account.isOnline) online.push_back(index);
    std::vector<TradingAccount> got;
    std::list<int32_t> available;
    TradeUtils::getAllTradingAccount(trade(), std::list<int32_t>{index}, 1, got, available);
    EXPECT_TRUE(available.empty());
    ASSERT_EQ(got.size(), 1U);
    EXPECT_EQ(got[0].id.index, index);
    EXPECT_EQ(got[0].id.userCode, account.userCode);
    expectSame(got[0], book_.capital(index));
    std::vector<CreditInfoRecord> credit;
    EXPECT_EQ(trade()->queryCreditInfo(got[0].id, credit).code, 0);
    ASSERT_EQ(credit.size(), account.credit ? 1U : 0U);
    if (account.credit) expectSame(credit[0], book_.credit(index));
  }
  std::vector<TradingAccount> all;
  std::list<int32_t> available;
  TradeUtils::getAllTradingAccount(trade(), std::list<int32_t>{}, 3, all, available);
  EXPECT_EQ(all.size(), book_.accounts.size());
  EXPECT_EQ(available, online);
}

void ListCheck::compareCodeTypes(const std::set<int32_t>& accounts, bool derivatives, bool securities) {
  SCOPED_TRACE(fmt::format("code types of {} accounts, {} {}", accounts.size(), derivatives, securities));
  std::vector<TradingAccountID> ids;
  std::set<int32_t> chosen;
  for (const int32_t index : accounts) {
    ids.push_back(TradeUtils::getTradingAccountID(trade(), {index}).at(0));
    const int32_t market = book_.accounts.at(index).market;
    if (market == 2 || market == 16 ? securities : derivatives) chosen.insert(index);
  }
  std::vector<CodeTypePosition> got;
  IUIProxyMgr::getInstance()->getCodeTypePositions(ids, derivatives, securities, got);
  const auto expected = book_.codeTypes(chosen);
  EXPECT_EQ(got.size(), expected.size());
  for (const CodeTypePosition& it : got) {
    SCOPED_TRACE(toUtf8(it.codeType));
    ASSERT_EQ(expected.count(toUtf8(it.codeType)), 1U);
    expectSame(it, expected.at(toUtf8(it.codeType)));
  }
}

// Rows without a volume are left out by the library.
void ListCheck::comparePositions() {
  const auto all = joined(book_, [](const std::list<int32_t>& selector) {
    std::list<Position> list;
    std::list<int32_t> available;
    TradeUtils::getAllPosition(trade(), selector, 1, list, available);
    return list;
  });
  std::set<Key> keys;
  for (const Position& got : all) {
    const Key key{got.account.index, got.code.hashCode};
    SCOPED_TRACE(fmt::format("position {} {}", key.first, key.second));
    if (got.longPosition + got.longActiveVolume + got.shortPosition + got.shortActiveVolume != 0) keys.insert(key);
    expectSame(got, book_.position(key));
    MarginRateResult rate;
    const bool isOwn = trade()->queryMarginRate({got.account, got.code}, rate).code == 0;
    EXPECT_EQ(isOwn, book_.rates.count(key) == 1);
    const second::Rates expected = isOwn ? book_.rates.at(key) : second::Rates{};
    EXPECT_EQ((std::array<double, 2>{rate.a, rate.c}), expected.byMoney);
    EXPECT_EQ((std::array<double, 2>{rate.b, rate.d}), expected.byVolume);
    EXPECT_EQ(IUIProxyMgr::getInstance()->getDefaultMarginRate(got.code), book_.instruments.at(key.second).defaultRate);
  }
  EXPECT_EQ(keys, book_.positionKeys());
}

void ListCheck::compareMonitor() {
  IPositionMonitor& monitor = *IPositionMonitor::getInstance();
  std::map<Key, std::list<MonitorSyncOrder>> offered;
  for (const MonitorSyncOrder& it : monitor.getSyncOrders({})) {
    offered[{it.account.index, it.code.hashCode}].push_back(it);
  }
  MonitorSnapshot snapshot;
  monitor.getMonitorRecords(snapshot);
  std::vector<Key> keys;
  for (const PositionMonitorRecord& got : snapshot.records) {
    const Key key = keys.emplace_back(got.account.index, got.code.hashCode);
    SCOPED_TRACE(fmt::format("monitor {} {}", key.first, key.second));
    expectSame(got, book_.monitor(key));
    expectSameList(offered[key], book_.syncOrders(key));
  }
  const std::set<Key> expected = book_.monitorKeys();
  EXPECT_EQ(keys, std::vector<Key>(expected.begin(), expected.end())) << "by account and hash code";
  std::list<MonitorManualPosition> manual;
  for (const auto& [key, figures] : book_.manual) {
    MonitorManualPosition& it = manual.emplace_back();
    std::tie(it.account.index, it.code.hashCode) = key;
    it.position = figures;
  }
  std::list<MonitorManualPosition> listed;
  monitor.getManualPositions({}, listed);
  expectSameList(listed, manual);
}

void ListCheck::compareQuotes() {
  MobileMessage reply;
  IUIProxyMgr::getInstance()->requestSync("quote.list", "", reply);
  std::vector<Row> expected;
  for (const auto& [hash, it] : book_.instruments) expected.push_back(rowOf(hash, it));
  EXPECT_EQ(rowsOf(reply), expected);
}

}  // namespace orvane::terminal::testing
