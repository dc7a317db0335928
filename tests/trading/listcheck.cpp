#include "tests/trading/listcheck.h"

#include <array>
#include <charconv>
#include <cmath>
#include <sstream>
#include <vector>

#include <fmt/format.h>
#include <gtest/gtest.h>

#include "serialise/capitallist.h"
#include "serialise/codetypelist.h"
#include "serialise/creditinfo.h"
#include "serialise/filllist.h"
#include "serialise/manuallist.h"
#include "serialise/monitorlist.h"
#include "serialise/orderlist.h"
#include "serialise/positionlist.h"
#include "serialise/syncorderlist.h"
#include "tests/trading/testdesk.h"

namespace orvane::terminal::testing {
namespace {

using second::Key;
using second::PlacedOrder;

// Takes the number away with which the text begins. NaN if there is none.
double takeNumber(std::string_view& text) {
  double value = std::nan("");
  text.remove_prefix(
      static_cast<size_t>(std::from_chars(text.data(), text.data() + text.size(), value).ptr - text.data()));
  return value;
}

// The same text but for a number that is equal after rounding to 0.0001.
bool isSameMember(std::string_view got, std::string_view expected) {
  if (got == expected) return true;
  const size_t value = got.rfind(':') + 1;
  if (got.substr(0, value) != expected.substr(0, value)) return false;
  got.remove_prefix(value);
  expected.remove_prefix(value);
  return std::abs(takeNumber(got) - takeNumber(expected)) <= 0.000051 && got == expected;
}

// Compares two lists in JSON, up to the first row that differs.
void expectSame(const std::string& got, const std::string& expected) {
  if (got == expected) return;
  std::istringstream members(got);
  std::istringstream others(expected);
  std::string row;
  bool isSameRow = true;
  for (std::string member; std::getline(members, member, ',');) {
    if (member.find('{') != std::string::npos) {
      if (!isSameRow) return;
      row.clear();
    }
    row += member;
    row += ',';
    std::string other;
    std::getline(others, other, ',');
    const bool isSame = isSameMember(member, other);
    EXPECT_TRUE(isSame) << row << " not " << other;
    isSameRow = isSameRow && isSame;
  }
  EXPECT_TRUE(others.peek() == EOF) << "rows are missing behind " << row;
}

std::string textOf(const Position& it) {
  PositionEntry entry;
  entry.position = it;
  return serializePositionList({entry});
}

bool has(const std::list<int32_t>& selector, int32_t account) {
  return selector.empty() || selector.front() == account;
}

int count(const std::string& text, const std::string& part) {
  int found = 0;
  for (size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++found;
  return found;
}

// The rows of a list, each with a comma behind it.
std::string rowsOf(const std::string& list) { return list.substr(1, list.size() - 2) + ','; }

}  // namespace

void expectRefusal(const std::string& got, const std::string& expected) {
  EXPECT_EQ(got.substr(0, expected.size()), expected);
  EXPECT_EQ(got.empty(), expected.empty()) << got;
}

void ListCheck::compare(const std::set<int32_t>& selected) {
  adoptNotes();
  turn_ = turn_ % 4 + 1;
  for (const auto& selector : std::vector<std::list<int32_t>>{{}, {turn_}}) {
    SCOPED_TRACE(selector.empty() ? "all accounts" : fmt::format("account {}", selector.front()));
    compareOrders(selector);
    compareCapital(selector);
    comparePositions(selector);
  }
  comparePushes();
  compareCodeTypes(selected, true, true);
  compareCodeTypes({1, 2, 3, 4}, true, false);
  compareCodeTypes({1, 2, 3, 4}, false, true);
  compareMonitor();
  compareQuotes();
}

// Of a refusal the book knows the beginning. The rest must stay as it is listed first.
void ListCheck::adoptNotes() {
  for (const Order& got : TestDesk::orders()) {
    const auto expected = book_.orders.find(got.localOrderId);
    if (expected == book_.orders.end()) continue;
    EXPECT_EQ(got.orderSource.sourceFlags, expected->second.orderSource.sourceFlags) << "of order " << got.localOrderId;
    if (got.localOrderId <= adopted_) continue;
    adopted_ = got.localOrderId;
    if (expected->second.status != 4) continue;
    SCOPED_TRACE(fmt::format("order {}", adopted_));
    expectRefusal(utf8(got.note), utf8(expected->second.note));
    expected->second.note = got.note;
  }
}

void ListCheck::compareOrders(const std::list<int32_t>& selector) {
  std::list<Order> orders;
  for (const auto& [id, it] : book_.orders) {
    if (has(selector, it.account.index)) orders.push_back(it);
  }
  expectSame(serializeOrderList(TestDesk::orders(selector)), serializeOrderList(orders));
  std::list<OrderFill> fills;
  for (const OrderFill& it : book_.fills) {
    if (has(selector, it.account.index)) fills.push_back(it);
  }
  expectSame(serializeFillList(TestDesk::fills(selector)), serializeFillList(fills));
}

// The selected accounts that are logged in.
std::list<int32_t> ListCheck::online(const std::list<int32_t>& selector) const {
  std::list<int32_t> found;
  for (const auto& [index, account] : book_.accounts) {
    if (account.isOnline && has(selector, index)) found.push_back(index);
  }
  return found;
}

void ListCheck::compareCapital(const std::list<int32_t>& selector) {
  std::vector<CapitalEntry> expected;
  for (const auto& [index, account] : book_.accounts) {
    if (!has(selector, index)) continue;
    expected.push_back({book_.capital(index), 1});
    std::vector<CreditInfoRecord> credit;
    if (account.credit) credit.push_back(book_.credit(index));
    std::vector<CreditInfoRecord> listed;
    EXPECT_EQ(TestDesk::trade()->queryCreditInfo(account.id, listed).code, 0);
    expectSame(serializeCreditInfo({{account.id, listed}}), serializeCreditInfo({{account.id, credit}}));
  }
  std::vector<TradingAccount> got;
  std::list<int32_t> available;
  TradeUtils::getAllTradingAccount(TestDesk::trade(), selector, kQueryList, got, available);
  EXPECT_EQ(available, online(selector));
  std::vector<CapitalEntry> entries;
  for (const TradingAccount& it : got) entries.push_back({it, 1});
  expectSame(serializeCapitalList(entries), serializeCapitalList(expected));
}

// Rows without a volume are left out by the library.
void ListCheck::comparePositions(const std::list<int32_t>& selector) {
  std::list<Position> listed;
  std::list<int32_t> available;
  TradeUtils::getAllPosition(TestDesk::trade(), selector, kQueryList, listed, available);
  EXPECT_EQ(available, online(selector));
  std::set<Key> keys;
  for (const Position& got : listed) {
    const Key key{got.account.index, got.code.hashCode};
    if (got.longPosition + got.longActiveVolume + got.shortPosition + got.shortActiveVolume != 0) {
      EXPECT_TRUE(keys.insert(key).second) << got.code.hashCode << " is listed twice";
    }
    expectSame(textOf(got), textOf(book_.position(key)));
    MarginRateResult rate;
    const bool isOwn = TestDesk::trade()->queryMarginRate({got.account, got.code}, rate).code == 0;
    EXPECT_EQ(isOwn, book_.rates.count(key) == 1);
    const second::Rates expected = isOwn ? book_.rates.at(key) : second::Rates{};
    EXPECT_EQ((std::array<double, 2>{rate.a, rate.c}), expected.byMoney);
    EXPECT_EQ((std::array<double, 2>{rate.b, rate.d}), expected.byVolume);
    EXPECT_EQ(IUIProxyMgr::getInstance()->getDefaultMarginRate(got.code), book_.instruments.at(key.second).defaultRate);
  }
  std::set<Key> expected = book_.positionKeys();
  std::erase_if(expected, [&](const Key& key) { return !has(selector, key.first); });
  EXPECT_EQ(keys, expected);
}

// Each order that changed is pushed once, and before its fill and the notice of its refusal.
void ListCheck::comparePushes() {
  IUIProxyMgr::getInstance()->requestAsync(++request_, "terminal.info", "");
  auto messages = inbox_.takeUntil([this](const MobileMessage& it) { return it.requestId == request_; });
  messages.pop_back();
  std::map<std::string, std::string> pushed;
  const std::string& orders = pushed["order.push"];
  const std::string& fills = pushed["trade.push"];
  const std::string& notices = pushed["terminal.notice"];
  for (const MobileMessage& it : messages) {
    EXPECT_EQ(it.requestId, kNoRequestId);
    pushed[it.topic] += it.topic == "terminal.notice" ? utf8(it.message) + '\n' : rowsOf(utf8(it.data));
    EXPECT_LE(count(fills, R"("fillId":)"), count(orders, R"("status":2,)")) << "a fill came first";
    EXPECT_LE(count(notices, "委托被拒绝"), count(orders, R"("status":4,)")) << "a notice came first";
  }
  EXPECT_EQ(pushed.size(), 3U) << "an unknown topic";
  std::string expectedOrders;
  std::string expectedFills;
  std::ptrdiff_t filled = 0;
  for (const PlacedOrder& it : book_.changed) {
    const auto listed = book_.orders.find(it.localOrderId);
    expectedOrders += rowsOf(serializeOrderList({listed == book_.orders.end() ? it : listed->second}));
    if (it.status == 2) ++filled;
  }
  for (auto it = book_.fills.end() - filled; it != book_.fills.end(); ++it) {
    expectedFills += rowsOf(serializeFillList({*it}));
  }
  expectSame(orders, expectedOrders);
  expectSame(fills, expectedFills);
  EXPECT_EQ(count(notices, "\n"), std::ssize(book_.notices));
  std::istringstream lines(notices);
  std::string line;
  for (const std::string& it : book_.notices) expectRefusal(std::getline(lines, line) ? line : "", it);
  book_.notices.clear();
  book_.changed.clear();
}

void ListCheck::compareCodeTypes(const std::set<int32_t>& accounts, bool derivatives, bool securities) {
  SCOPED_TRACE(fmt::format("code types of {} accounts, {} {}", accounts.size(), derivatives, securities));
  std::vector<TradingAccountID> ids;
  std::set<int32_t> chosen;
  for (const int32_t index : accounts) {
    ids.push_back(book_.accounts.at(index).id);
    if (book_.accounts.at(index).holdsSecurities() ? securities : derivatives) chosen.insert(index);
  }
  std::vector<CodeTypePosition> got;
  IUIProxyMgr::getInstance()->getCodeTypePositions(ids, derivatives, securities, got);
  expectSame(serializeCodeTypeList(got), serializeCodeTypeList(book_.codeTypes(chosen)));
}

void ListCheck::compareMonitor() {
  IPositionMonitor& monitor = *IPositionMonitor::getInstance();
  std::vector<PositionMonitorRow> records;
  std::list<MonitorSyncOrder> orders;
  for (const Key& key : book_.monitorKeys()) {
    records.push_back({book_.monitor(key), ""});
    orders.splice(orders.end(), book_.syncOrders(key));
  }
  MonitorSnapshot snapshot;
  monitor.getMonitorRecords(snapshot);
  std::vector<PositionMonitorRow> listed;
  for (const PositionMonitorRecord& it : snapshot.records) listed.push_back({it, ""});
  expectSame(serializeMonitorList(listed), serializeMonitorList(records));
  expectSame(serializeSyncOrderList(monitor.getSyncOrders({})), serializeSyncOrderList(orders));
  std::list<MonitorManualPosition> manual;
  for (const auto& [key, figures] : book_.manual) {
    manual.push_back({book_.accounts.at(key.first).id, book_.instruments.at(key.second).symbol, figures, {}});
  }
  std::list<MonitorManualPosition> got;
  monitor.getManualPositions({}, got);
  expectSame(serializeManualList(got), serializeManualList(manual));
}

void ListCheck::compareQuotes() {
  std::string expected;
  for (const auto& [hash, it] : book_.instruments) {
    expected += fmt::format(
        R"({{"hashCode":{},"codeExch":"{}.{}","codeName":"{}","codeClass":{},"lastPrice":{},"bidPrice":{},)"
        R"("askPrice":{},"preClosePrice":{},"preSettlementPrice":{},"lowerLimit":{},"upperLimit":{},"priceTick":{},)"
        R"("volumeStep":{},"maxVolume":{},"multiplier":{}}},)",
        hash, it.symbol.code, it.exchange, it.name, it.kind(), it.last, it.bid(), it.ask(), it.preClose,
        it.preSettlement, it.low, it.high, it.tick, it.lot, it.most, it.multiplier);
  }
  MobileMessage reply;
  IUIProxyMgr::getInstance()->requestSync("quote.list", "", reply);
  expectSame(rowsOf(utf8(reply.data)), expected);
}

}  // namespace orvane::terminal::testing
