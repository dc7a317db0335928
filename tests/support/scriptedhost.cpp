#include "tests/support/scriptedhost.h"

#include <algorithm>
#include <chrono>
#include <concepts>
#include <ranges>
#include <stdexcept>
#include <tuple>

#include <iconv.h>

#include "host/baseinformation.h"
#include "host/codeservice.h"
#include "host/servicerouter.h"
#include "host/tradeservice.h"
#include "host/tradeutils.h"

namespace orvane {

std::shared_ptr<BaseInformationMap> gBaseInformationMap;

namespace test {

namespace {

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

// The argument of a call as `calls()` shows it; in the map of accounts and codes with the account's user code.
std::string text(const std::string& value) { return value; }
std::string text(std::integral auto value) { return std::to_string(value); }
std::string text(AccountPrivilege value) { return value == AccountPrivilege::TriggerOrder ? "trigger" : "ordinary"; }
std::string text(const TradingAccountID& account) { return text(account.index); }
std::string text(const SymbolCode& code) { return text(code.hashCode); }
std::string text(const MonitorAccountCodes::value_type& entry);
std::string text(const std::ranges::range auto& items) {
  std::string joined;
  for (const auto& item : items) {
    joined += (joined.empty() ? "" : ",") + text(item);
  }
  return "[" + joined + "]";
}
std::string text(const MonitorAccountCodes::value_type& entry) {
  return text(entry.first) + entry.first.userCode + ":" + text(entry.second);
}

// Writes a call down and hands out the script that answers it.
template <typename... Arguments>
ScriptedHost& noted(const std::string& name, const Arguments&... arguments) {
  std::string list;
  ((list += (list.empty() ? "(" : ",") + text(arguments)), ...);
  ScriptedHost::current().note(name + list + (list.empty() ? "" : ")"));
  return ScriptedHost::current();
}

template <typename Map>
typename Map::mapped_type valueOrNone(const Map& map, const typename Map::key_type& key) {
  return map.contains(key) ? map.at(key) : typename Map::mapped_type{};
}

// Fills `found` in, or fails.
template <typename Map>
ResultStatus lookUp(const Map& map, const typename Map::key_type& key, typename Map::mapped_type& found,
                    const ResultStatus& failure) {
  if (!map.contains(key)) {
    return failure;
  }
  found = map.at(key);
  return {};
}

const TradingAccountID& accountOf(const TradingAccount& record) { return record.id; }
const TradingAccountID& accountOf(const auto& record) { return record.account; }

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
  ResultStatus send(const MobileMessage& message) override { return ScriptedHost::current().send(message); }
  bool isRunning() override { return ScriptedHost::current().running; }

  ResultStatus getCodeProperty(const SymbolCode& symbol, CodeProperty& property, int64_t version) override {
    const ScriptedHost& host = noted("getCodeProperty", symbol);
    const ResultStatus failure = {1, "no such code"};
    return version == INT64_MAX ? lookUp(host.codeNames, symbol.hashCode, property.codeName, failure) : failure;
  }
  ResultStatus getCodeByHash(const int64_t& hashCode, SymbolCode& symbol) override {
    return lookUp(noted("getCodeByHash", hashCode).symbols, hashCode, symbol, {7, "the host's own text"});
  }

  ResultStatus insertOrder(const MobileNewOrderItem& order) override {
    noted("insertOrder", order.code).inserted.push_back(order);
    return valueOrNone(ScriptedHost::current().insertStatuses, order.code.hashCode);
  }
  ResultStatus cancelOrder(const CancelOrderRequest& request) override {
    noted("cancelOrder", request.localOrderId).cancelled.push_back(request);
    return valueOrNone(ScriptedHost::current().cancelStatuses, request.localOrderId);
  }
  ResultStatus queryCreditInfo(const TradingAccountID& account, std::vector<CreditInfoRecord>& records) override {
    records.emplace_back();  // what a failing service leaves behind must not be shown
    return lookUp(noted("queryCreditInfo", account).credits, account.index, records, {3, "no credit"});
  }
  ResultStatus queryMarginRate(const MarginRateQuery& query, MarginRateResult& result) override {
    noted("queryMarginRate", query.account, query.code).marginQueries.push_back(query);
    return lookUp(ScriptedHost::current().marginRates, query.code.hashCode, result, {5, "no rate"});
  }

  std::list<MonitorSyncOrder> getSyncOrders(const MonitorAccountCodes& codes) override {
    return noted("getSyncOrders", codes).syncOrders;
  }
  void placeSyncOrders(std::list<MonitorSyncOrder>& list) override {
    noted("placeSyncOrders", list.size()).placed = list;
  }
  void getMonitorRecords(MonitorSnapshot& snapshot) override {
    snapshot.records = noted("getMonitorRecords").monitorRecords;
  }
  void cleanManualPositions(const MonitorAccountCodes& codes) override { noted("cleanManualPositions", codes); }
  void updateManualPositions(std::list<MonitorManualPosition>& list) override {
    noted("updateManualPositions", list.size()).updated = list;
  }
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

Services* services() {
  static Services services;
  ScriptedHost::current();  // throws where there is no host
  return &services;
}

}  // namespace

std::string gbk(const std::string& utf8) { return convert("GBK", "UTF-8", utf8); }

ScriptedHost::ScriptedHost() {
  if (gHost != nullptr) {
    throw std::logic_error("one scripted host at a time");
  }
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
  if (gHost == nullptr) {
    throw std::logic_error("the library touched a host where there is none");
  }
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
  return sentChanged_.wait_for(lock, std::chrono::seconds(10), [&] { return sent_.size() >= count; });
}

bool ScriptedHost::request(int64_t id, int32_t terminalType, const std::string& topic, const std::string& body) {
  const std::shared_lock lock(spiMutex_);
  if (spi != nullptr) {
    spi->onRequest(id, terminalType, topic, body);
  }
  return spi != nullptr;
}

void ScriptedHost::setSpi(const std::shared_ptr<IMobileSrvSpi>& callback) {
  const std::lock_guard lock(spiMutex_);
  spi = callback;
}

void ScriptedHost::note(const std::string& call) {
  if (onCall) {
    onCall(call);
  }
  const std::lock_guard lock(mutex_);
  if (remembers) {
    calls_.push_back(call);
  }
}

ResultStatus ScriptedHost::send(const MobileMessage& message) {
  if (onSend) {
    onSend(message);
  }
  const std::lock_guard lock(mutex_);
  if (remembers) {
    sent_.push_back(message);
  }
  sentChanged_.notify_all();
  return sendStatus;
}

TradingAccountID accountId(int32_t index, const std::string& userCode, int32_t marketType) {
  return {.index = index, .reserved5 = {}, .userCode = userCode, .marketType = marketType, .reserved12 = {}};
}

TradingAccount account(int32_t index, const std::string& userCode, int32_t marketType) {
  return {.id = accountId(index, userCode, marketType)};
}

SymbolCode symbol(int64_t hashCode, const std::string& code, int32_t exchangeId, int32_t codeClass) {
  return {hashCode, codeClass, exchangeId, code};
}

}  // namespace test

// The statics of host/.

using test::noted;
using test::ofAccounts;
using test::ScriptedHost;

IServiceRouter* IServiceRouter::instance() { return test::services(); }
IUIProxyMgr* IUIProxyMgr::getInstance() { return test::services(); }
IPositionMonitor* IPositionMonitor::getInstance() { return test::services(); }
IAuthAgent* IAuthAgent::getInstance() { return test::services(); }

std::vector<TradingAccountID> TradeUtils::getTradingAccountID(ITradeService* /*service*/,
                                                              const std::list<int32_t>& selector) {
  std::vector<TradingAccountID> ids;
  for (const TradingAccount& found : ofAccounts(noted("getTradingAccountID", selector).accounts, selector)) {
    ids.push_back(found.id);
  }
  return ids;
}

void TradeUtils::getAllTradingAccount(ITradeService* /*service*/, const std::list<int32_t>& selector,
                                      int32_t queryFlags, std::vector<TradingAccount>& accounts,
                                      std::list<int32_t>& availableIndexes) {
  ScriptedHost& host = noted("getAllTradingAccount", selector, queryFlags);
  accounts = ofAccounts(host.accounts, selector);
  availableIndexes = host.available;
  if (!host.laterAccounts.empty()) {
    host.accounts = host.laterAccounts;
  }
}

void TradeUtils::getAllTradingAccount(ITradeService* /*service*/, const std::vector<TradingAccountID>& selector,
                                      int32_t queryFlags, std::vector<TradingAccount>& accounts,
                                      std::vector<TradingAccountID>& availableAccounts) {
  const ScriptedHost& host = noted("getAllTradingAccount", "ids " + test::text(selector), queryFlags);
  accounts = host.accounts;
  for (const int32_t index : host.available) {
    availableAccounts.push_back(test::accountId(index));
  }
}

void TradeUtils::getAllPosition(ITradeService* /*service*/, const std::list<int32_t>& selector, int32_t queryFlags,
                                std::list<Position>& positions, std::list<int32_t>& availableIndexes) {
  positions = ofAccounts(noted("getAllPosition", selector, queryFlags).positions, selector);
  availableIndexes = ScriptedHost::current().available;
}

void TradeUtils::getAllFill(ITradeService* /*service*/, const std::list<int32_t>& selector, int32_t queryFlags,
                            std::list<OrderFill>& fills, std::list<int32_t>& availableIndexes) {
  fills = ofAccounts(noted("getAllFill", selector, queryFlags).fills, selector);
  availableIndexes = ScriptedHost::current().available;
}

std::list<Order> TradeUtils::getAllOrder(ITradeService* /*service*/, const std::vector<TradingAccountID>& accounts) {
  std::list<int32_t> selector;
  std::ranges::transform(accounts, std::back_inserter(selector), &TradingAccountID::index);
  return ofAccounts(noted("getAllOrder", accounts).orders, selector);
}

std::string CodeConvert::gbk_to_utf8(const std::string& text) {
  if (test::gHost != nullptr && test::gHost->remembers) {
    test::gHost->converted.push_back(text);
  }
  return test::convert("UTF-8", "GBK", text);
}
std::string CodeConvert::utf8_to_gbk(const std::string& text) { return test::convert("GBK", "UTF-8", text); }

Timestamp Timestamp::now(OrvTimeZone zone) { return {1'700'000'000'000'000, zone}; }
std::string Timestamp::toISO8601String() const {
  return zone == OrvTimeZone{0} && microseconds == 1'700'000'000'000'000 ? "2023-11-14T22:13:20.000000Z" : "?";
}
bool isTimeEnabled() { return ScriptedHost::current().logTime; }

}  // namespace orvane
