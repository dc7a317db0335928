#include "tests/support/scriptedhost.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <stdexcept>
#include <tuple>

#include <iconv.h>

#include "host/baseinformation.h"
#include "host/codeservice.h"
#include "host/servicerouter.h"
#include "host/tradeservice.h"
#include "host/tradeutils.h"
#include "tests/support/calltext.h"

namespace orvane {

std::shared_ptr<BaseInformationMap> gBaseInformationMap;

namespace test {

namespace {

constexpr std::chrono::seconds kLimit{30};

ScriptedHost* gHost = nullptr;

std::string convert(const char* to, const char* from, std::string text) {
  iconv_t handle = iconv_open(to, from);
  std::string result(text.size() * 3 + 1, '\0');
  char* in = text.data();
  char* out = result.data();
  size_t inLeft = text.size();
  size_t outLeft = result.size();
  const bool failed = iconv(handle, &in, &inLeft, &out, &outLeft) == static_cast<size_t>(-1);
  iconv_close(handle);
  return failed ? "<not " + std::string(from) + ">" : result.substr(0, result.size() - outLeft);
}

template <typename Map>
typename Map::mapped_type valueOrNone(const Map& map, const typename Map::key_type& key) {
  return map.contains(key) ? map.at(key) : typename Map::mapped_type{};
}

// Fills `found` in, or fails.
template <typename Map>
ResultStatus lookUp(const Map& map, const typename Map::key_type& key, typename Map::mapped_type& found,
                    const ResultStatus& failure) {
  if (!map.contains(key)) return failure;
  found = map.at(key);
  return {};
}

// The selector as the host understands it: empty is every account.
template <typename Records>
Records ofAccounts(const Records& records, const std::list<int32_t>& selector) {
  Records found;
  std::copy_if(records.begin(), records.end(), std::back_inserter(found), [&](const auto& record) {
    return selector.empty() || std::ranges::find(selector, accountOf(record).index) != selector.end();
  });
  return found;
}

struct Routes : IServiceRouter, IBaseService {};
struct Agents : IUIProxyMgr, IPositionMonitor, IAuthAgent {};
// All services of the host.
struct Services final : Routes, Agents, IMobileSrv, ITradeService, ICodeService {
  // Records a call and returns the host that answers it. Each look-up of a service is good for one call.
  template <typename... Arguments>
  ScriptedHost& noted(const std::string& name, const Arguments&... arguments) {
    std::string list;
    ((list += (list.empty() ? "(" : ",") + text(arguments)), ...);
    ScriptedHost::current().note((used.exchange(true) ? "stale " : "") + name + list + (list.empty() ? "" : ")"));
    return ScriptedHost::current();
  }
  std::atomic<bool> used = false;

  IBaseService* getBaseService() override { return ScriptedHost::current().baseServiceUp ? this : nullptr; }
  ITradeService* getTradeService() override { return this; }
  ICodeService* getCodeService() override { return this; }
  IMobileSrv* getMobileSrv() override { return ScriptedHost::current().mobileServiceUp ? this : nullptr; }

  ResultStatus start(const MobileSrvInfo& info) override {
    ScriptedHost& host = noted("start", info.url, info.userid);
    host.running = host.startStatus.code == 0;
    return host.startStatus;
  }
  ResultStatus registerSpi(const std::shared_ptr<IMobileSrvSpi>& callback, int32_t* handle) override {
    noted("registerSpi").setSpi(callback);
    *handle = 77;
    return {};
  }
  ResultStatus unregisterSpi(int32_t handle) override {
    noted("unregisterSpi", handle).setSpi(nullptr);
    return {};
  }
  void stop() override { noted("stop").running = false; }
  ResultStatus send(const MobileMessage& message) override { return noted("send").send(message); }
  bool isRunning() override { return noted("isRunning").running; }

  ResultStatus getCodeProperty(const SymbolCode& symbol, CodeProperty& property, int64_t version) override {
    const ScriptedHost& host = noted("getCodeProperty", symbol);
    const ResultStatus failure = {1, "no such code"};
    return version == INT64_MAX ? lookUp(host.codeNames, symbol.hashCode, property.codeName, failure) : failure;
  }
  ResultStatus getCodeByHash(const int64_t& hashCode, SymbolCode& symbol) override {
    return lookUp(noted("getCodeByHash", hashCode).symbols, hashCode, symbol, {7, "the host's own text"});
  }

  ResultStatus insertOrder(const MobileNewOrderItem& order) override {
    const ScriptedHost& host = noted("insertOrder", order.account, order.code, order.orderSource, order.srcTimestamp,
                                     order.volume, order.price, order.orderType, order.reserved12, order.priceType,
                                     order.instructionType, order.combOffset, order.hedge, order.side);
    return valueOrNone(host.insertStatuses, order.code.hashCode);
  }
  ResultStatus cancelOrder(const CancelOrderRequest& request) override {
    const ScriptedHost& host =
        noted("cancelOrder", request.localOrderId, request.account, request.code, request.reserved4, request.reserved8);
    return valueOrNone(host.cancelStatuses, request.localOrderId);
  }
  ResultStatus queryCreditInfo(const TradingAccountID& account, std::vector<CreditInfoRecord>& records) override {
    records.emplace_back();  // what a failing service leaves behind must not be shown
    return lookUp(noted("queryCreditInfo", account).credits, account.index, records, {3, "no credit"});
  }
  ResultStatus queryMarginRate(const MarginRateQuery& query, MarginRateResult& result) override {
    const ScriptedHost& host = noted("queryMarginRate", query.account, query.code);
    return lookUp(host.marginRates, query.code.hashCode, result, {5, "no rate"});
  }

  std::list<MonitorSyncOrder> getSyncOrders(const MonitorAccountCodes& codes) override {
    return noted("getSyncOrders", codes).syncOrders;
  }
  void placeSyncOrders(std::list<MonitorSyncOrder>& list) override { noted("placeSyncOrders", list); }
  void getMonitorRecords(MonitorSnapshot& snapshot) override {
    snapshot.records = noted("getMonitorRecords").monitorRecords;
  }
  void cleanManualPositions(const MonitorAccountCodes& codes) override { noted("cleanManualPositions", codes); }
  void updateManualPositions(std::list<MonitorManualPosition>& list) override { noted("updateManualPositions", list); }
  void getManualPositions(const MonitorAccountCodes& codes, std::list<MonitorManualPosition>& list) override {
    std::ranges::copy(noted("getManualPositions", codes).manualPositions, std::back_inserter(list));
  }

  void requestSync(const std::string& topic, const std::string& data, MobileMessage& reply) override {
    reply = noted("requestSync", topic, data).proxyReply;
  }
  void requestAsync(int64_t requestId, const std::string& topic, const std::string& data) override {
    noted("requestAsync", requestId, topic, data);
  }
  double getDefaultMarginRate(const SymbolCode& symbol) override {
    return noted("getDefaultMarginRate", symbol).defaultMarginRate;
  }
  void getCodeTypePositions(const std::vector<TradingAccountID>& accounts, bool flag1, bool flag2,
                            std::vector<CodeTypePosition>& list) override {
    list = noted("getCodeTypePositions", accounts, flag1, flag2).codeTypePositions;
  }
  bool getCodeTypeName(int64_t hashCode, std::string& typeText, std::string& nameText) override {
    const auto& codeTypes = noted("getCodeTypeName", hashCode).codeTypes;
    std::tie(typeText, nameText) = valueOrNone(codeTypes, hashCode);
    return codeTypes.contains(hashCode);
  }

  ResultStatus checkUser(const std::string& function) override { return noted("checkUser", function).userRefusal; }
  ResultStatus checkAccount(const std::string& function, const TradingAccountID& account) override {
    return valueOrNone(noted("checkAccount", function, account).accountRefusals, account.index);
  }
  bool hasPrivilege(const TradingAccountID& account, AccountPrivilege privilege) override {
    const auto granted = valueOrNone(noted("hasPrivilege", account, privilege).privileges, account.index);
    return std::ranges::find(granted, privilege) != granted.end();
  }
};

// A new object for each look-up, in the place of the one that is 64 look-ups old.
Services* services() {
  static std::array<Services, 64> all;
  static std::atomic<size_t> next = 0;
  ScriptedHost::current();  // throws if there is none
  Services& fresh = all[next++ % all.size()];
  fresh.used = false;
  return &fresh;
}

Services& of(ITradeService* service) { return static_cast<Services&>(*service); }

}  // namespace

std::string gbk(const std::string& utf8) { return convert("GBK", "UTF-8", utf8); }

ScriptedHost::ScriptedHost() {
  if (gHost != nullptr) throw std::logic_error("one scripted host at a time");
  gHost = this;
  gBaseInformationMap = std::make_shared<BaseInformationMap>();
  gBaseInformationMap->exchangeNames = {{3, "SHFE"}};
  gBaseInformationMap->exchangeFullNames = {{3, gbk("上期所")}};
}

ScriptedHost::~ScriptedHost() {
  gHost = nullptr;
  gBaseInformationMap.reset();
}

ScriptedHost& ScriptedHost::current() {
  if (gHost == nullptr) throw std::logic_error("the library called a host when there was none");
  return *gHost;
}

std::vector<std::string> ScriptedHost::calls() const {
  const std::lock_guard lock(mutex_);
  return calls_;
}

void ScriptedHost::forgetCalls() {
  const std::lock_guard lock(mutex_);
  calls_.clear();
}

std::vector<MobileMessage> ScriptedHost::sent() const {
  const std::lock_guard lock(mutex_);
  return sent_;
}

bool ScriptedHost::waitForSent(size_t count) {
  std::unique_lock lock(mutex_);
  return changed_.wait_for(lock, kLimit, [&] { return sent_.size() >= count; });
}

bool ScriptedHost::waitForCall(const std::string& start) {
  std::unique_lock lock(mutex_);
  return changed_.wait_for(lock, kLimit, [&] {
    return std::ranges::any_of(calls_, [&](const std::string& call) { return call.starts_with(start); });
  });
}

void ScriptedHost::holdIn(const std::string& start) {
  const std::lock_guard lock(mutex_);
  held_ = start;
  changed_.notify_all();
}

bool ScriptedHost::request(int64_t id, int32_t terminalType, const std::string& topic, const std::string& body) {
  const std::shared_lock lock(spiMutex_);
  if (spi != nullptr) spi->onRequest(id, terminalType, topic, body);
  return spi != nullptr;
}

void ScriptedHost::setSpi(const std::shared_ptr<IMobileSrvSpi>& callback) {
  const std::lock_guard lock(spiMutex_);
  spi = callback;
}

void ScriptedHost::note(const std::string& call) {
  if (onCall) onCall(call);
  std::unique_lock lock(mutex_);
  if (remembers) {
    calls_.push_back(call);
    changed_.notify_all();
  }
  changed_.wait_for(lock, kLimit, [&] { return held_.empty() || !call.starts_with(held_); });
}

ResultStatus ScriptedHost::send(const MobileMessage& message) {
  if (onSend) onSend(message);
  const std::lock_guard lock(mutex_);
  if (remembers) {
    sent_.push_back(message);
    changed_.notify_all();
  }
  return sendStatus;
}

}  // namespace test

// The statics of host/.

using test::of;
using test::ofAccounts;
using test::ScriptedHost;

IServiceRouter* IServiceRouter::instance() { return test::services(); }
IUIProxyMgr* IUIProxyMgr::getInstance() { return test::services(); }
IPositionMonitor* IPositionMonitor::getInstance() { return test::services(); }
IAuthAgent* IAuthAgent::getInstance() { return test::services(); }

std::vector<TradingAccountID> TradeUtils::getTradingAccountID(ITradeService* service,
                                                              const std::list<int32_t>& selector) {
  std::vector<TradingAccountID> ids;
  for (const TradingAccount& found :
       ofAccounts(of(service).noted("getTradingAccountID", selector).accounts, selector)) {
    ids.push_back(found.id);
  }
  return ids;
}

void TradeUtils::getAllTradingAccount(ITradeService* service, const std::list<int32_t>& selector, int32_t queryFlags,
                                      std::vector<TradingAccount>& accounts, std::list<int32_t>& availableIndexes) {
  const ScriptedHost& host = of(service).noted("getAllTradingAccount", selector, queryFlags);
  accounts = ofAccounts(host.accounts, selector);
  availableIndexes = host.available;
}

void TradeUtils::getAllTradingAccount(ITradeService* service, const std::vector<TradingAccountID>& selector,
                                      int32_t queryFlags, std::vector<TradingAccount>& accounts,
                                      std::vector<TradingAccountID>& availableAccounts) {
  const ScriptedHost& host = of(service).noted("getAllTradingAccount", "ids " + test::text(selector), queryFlags);
  accounts = host.accounts;
  for (const int32_t index : host.available) availableAccounts.push_back(test::accountId(index));
}

void TradeUtils::getAllPosition(ITradeService* service, const std::list<int32_t>& selector, int32_t queryFlags,
                                std::list<Position>& positions, std::list<int32_t>& availableIndexes) {
  positions = ofAccounts(of(service).noted("getAllPosition", selector, queryFlags).positions, selector);
  availableIndexes = ScriptedHost::current().available;
}

void TradeUtils::getAllFill(ITradeService* service, const std::list<int32_t>& selector, int32_t queryFlags,
                            std::list<OrderFill>& fills, std::list<int32_t>& availableIndexes) {
  fills = ofAccounts(of(service).noted("getAllFill", selector, queryFlags).fills, selector);
  availableIndexes = ScriptedHost::current().available;
}

std::list<Order> TradeUtils::getAllOrder(ITradeService* service, const std::vector<TradingAccountID>& accounts) {
  std::list<int32_t> selector;
  std::ranges::transform(accounts, std::back_inserter(selector), &TradingAccountID::index);
  return ofAccounts(of(service).noted("getAllOrder", accounts).orders, selector);
}

std::string CodeConvert::gbk_to_utf8(const std::string& text) {
  if (test::gHost != nullptr && test::gHost->remembers) test::gHost->converted.push_back(text);
  return test::convert("UTF-8", "GBK", text);
}
std::string CodeConvert::utf8_to_gbk(const std::string& text) { return test::convert("GBK", "UTF-8", text); }

Timestamp Timestamp::now(OrvTimeZone zone) { return {1'700'000'000'000'000, zone}; }
std::string Timestamp::toISO8601String() const {
  return zone == OrvTimeZone{0} && microseconds == 1'700'000'000'000'000 ? "2023-11-14T22:13:20.000000Z" : "?";
}
bool isTimeEnabled() { return ScriptedHost::current().logTime; }

}  // namespace orvane
