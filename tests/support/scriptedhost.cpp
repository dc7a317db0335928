#include "tests/support/scriptedhost.h"

#include <algorithm>
#include <chrono>
#include <stdexcept>

#include <iconv.h>

#include "host/tradeutils.h"

namespace orvane {

std::shared_ptr<BaseInformationMap> gBaseInformationMap;

namespace test {

namespace {

ScriptedHost* gHost = nullptr;

std::string convert(const char* to, const char* from, std::string text) {
  const iconv_t handle = iconv_open(to, from);
  std::string result(text.size() * 3 + 1, '\0');
  char* in = text.data();
  char* out = result.data();
  size_t inLeft = text.size();
  size_t outLeft = result.size();
  const bool failed = iconv(handle, &in, &inLeft, &out, &outLeft) == static_cast<size_t>(-1);
  iconv_close(handle);
  if (failed) {
    return "<not " + std::string(from) + ">";
  }
  result.resize(result.size() - outLeft);
  return result;
}

template <typename Items, typename Text>
std::string join(const Items& items, Text text) {
  std::string joined = "[";
  for (const auto& item : items) {
    joined += (joined.size() > 1 ? "," : "") + text(item);
  }
  return joined + "]";
}

std::string numbers(const std::list<int32_t>& list) {
  return join(list, [](int32_t number) { return std::to_string(number); });
}

std::string indexes(const std::vector<TradingAccountID>& ids) {
  return join(ids, [](const TradingAccountID& id) { return std::to_string(id.index); });
}

std::string text(const MonitorAccountCodes& codes) {
  return join(codes, [](const auto& entry) {
    return std::to_string(entry.first.index) + ":" +
           join(entry.second, [](const SymbolCode& code) { return std::to_string(code.hashCode); });
  });
}

template <typename Map, typename Key>
typename Map::mapped_type valueOr(const Map& map, const Key& key, typename Map::mapped_type other = {}) {
  const auto found = map.find(key);
  return found == map.end() ? other : found->second;
}

// The selector as the host understands it: empty is every account.
bool selects(const std::list<int32_t>& selector, int32_t index) {
  return selector.empty() || std::find(selector.begin(), selector.end(), index) != selector.end();
}

template <typename Records>
Records ofAccounts(const Records& records, const std::list<int32_t>& selector) {
  Records found;
  std::copy_if(records.begin(), records.end(), std::back_inserter(found),
               [&](const auto& record) { return selects(selector, record.account.index); });
  return found;
}

std::vector<TradingAccount> selected(const std::list<int32_t>& selector) {
  std::vector<TradingAccount> found;
  for (const TradingAccount& one : ScriptedHost::current().accounts) {
    if (selects(selector, one.id.index)) {
      found.push_back(one);
    }
  }
  return found;
}

}  // namespace

std::string gbk(const std::string& utf8) { return convert("GBK", "UTF-8", utf8); }

ScriptedHost::ScriptedHost() {
  if (gHost != nullptr) {
    throw std::logic_error("one scripted host at a time");
  }
  gHost = this;
  gBaseInformationMap = std::make_shared<BaseInformationMap>();
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

void ScriptedHost::note(const std::string& call) {
  const std::lock_guard lock(mutex_);
  calls_.push_back(call);
}

ResultStatus ScriptedHost::start(const MobileSrvInfo& info) {
  note("start(" + info.url + "," + info.userid + ")");
  running = startStatus.code == 0;
  return startStatus;
}

ResultStatus ScriptedHost::registerSpi(const std::shared_ptr<IMobileSrvSpi>& callback, int32_t* handle) {
  note("registerSpi");
  spi = callback;
  *handle = 77;
  return {};
}

ResultStatus ScriptedHost::unregisterSpi(int32_t handle) {
  note("unregisterSpi(" + std::to_string(handle) + ")");
  spi.reset();
  return {};
}

void ScriptedHost::stop() {
  note("stop");
  running = false;
}

ResultStatus ScriptedHost::send(const MobileMessage& message) {
  if (onSend) {
    onSend(message);
  }
  const std::lock_guard lock(mutex_);
  sent_.push_back(message);
  sentChanged_.notify_all();
  return sendStatus;
}

bool ScriptedHost::isRunning() { return running; }
IBaseService* ScriptedHost::getBaseService() { return baseServiceUp ? this : nullptr; }
ITradeService* ScriptedHost::getTradeService() { return this; }
ICodeService* ScriptedHost::getCodeService() { return this; }
IMobileSrv* ScriptedHost::getMobileSrv() { return mobileServiceUp ? this : nullptr; }

ResultStatus ScriptedHost::getCodeProperty(const SymbolCode& symbol, CodeProperty& property, int64_t version) {
  note("getCodeProperty(" + std::to_string(symbol.hashCode) + ")");
  if (version != INT64_MAX || !codeNames.contains(symbol.hashCode)) {
    return {1, "no such code"};
  }
  property.codeName = codeNames[symbol.hashCode];
  return {};
}

ResultStatus ScriptedHost::getCodeByHash(const int64_t& hashCode, SymbolCode& symbol) {
  note("getCodeByHash(" + std::to_string(hashCode) + ")");
  if (!symbols.contains(hashCode)) {
    return {7, "the host's own text"};
  }
  symbol = symbols[hashCode];
  return {};
}

ResultStatus ScriptedHost::insertOrder(const MobileNewOrderItem& order) {
  note("insertOrder(" + std::to_string(order.code.hashCode) + ")");
  inserted.push_back(order);
  return valueOr(insertStatuses, order.code.hashCode);
}

ResultStatus ScriptedHost::cancelOrder(const CancelOrderRequest& request) {
  note("cancelOrder(" + std::to_string(request.localOrderId) + ")");
  cancelled.push_back(request);
  return valueOr(cancelStatuses, request.localOrderId);
}

ResultStatus ScriptedHost::queryCreditInfo(const TradingAccountID& account, std::vector<CreditInfoRecord>& records) {
  note("queryCreditInfo(" + std::to_string(account.index) + ")");
  if (!credits.contains(account.index)) {
    records.emplace_back();  // what a failing service leaves behind must not be shown
    return {3, "no credit"};
  }
  records = credits[account.index];
  return {};
}

ResultStatus ScriptedHost::queryMarginRate(const MarginRateQuery& query, MarginRateResult& result) {
  note("queryMarginRate(" + std::to_string(query.account.index) + "," + std::to_string(query.code.hashCode) + ")");
  marginQueries.push_back(query);
  if (!marginRates.contains(query.code.hashCode)) {
    return {5, "no rate"};
  }
  result = marginRates[query.code.hashCode];
  return {};
}

std::list<MonitorSyncOrder> ScriptedHost::getSyncOrders(const MonitorAccountCodes& codes) {
  note("getSyncOrders(" + text(codes) + ")");
  return syncOrders;
}

void ScriptedHost::placeSyncOrders(std::list<MonitorSyncOrder>& list) {
  note("placeSyncOrders(" + std::to_string(list.size()) + ")");
  placed = list;
}

void ScriptedHost::getMonitorRecords(MonitorSnapshot& snapshot) {
  note("getMonitorRecords");
  snapshot.records = monitorRecords;
}

void ScriptedHost::cleanManualPositions(const MonitorAccountCodes& codes) {
  note("cleanManualPositions(" + text(codes) + ")");
}

void ScriptedHost::updateManualPositions(std::list<MonitorManualPosition>& list) {
  note("updateManualPositions(" + std::to_string(list.size()) + ")");
  updated = list;
}

void ScriptedHost::getManualPositions(const MonitorAccountCodes& codes, std::list<MonitorManualPosition>& list) {
  note("getManualPositions(" + text(codes) + ")");
  list.insert(list.end(), manualPositions.begin(), manualPositions.end());
}

void ScriptedHost::requestSync(const std::string& topic, const std::string& data, MobileMessage& reply) {
  note("requestSync(" + topic + "," + data + ")");
  reply.topic = proxyReply.topic;
  reply.message = proxyReply.message;
  reply.data = proxyReply.data;
  reply.terminalType = 99;
}

void ScriptedHost::requestAsync(int64_t requestId, const std::string& topic, const std::string& data) {
  note("requestAsync(" + std::to_string(requestId) + "," + topic + "," + data + ")");
}

double ScriptedHost::getDefaultMarginRate(const SymbolCode& symbol) {
  note("getDefaultMarginRate(" + std::to_string(symbol.hashCode) + ")");
  return defaultMarginRate;
}

void ScriptedHost::getCodeTypePositions(const std::vector<TradingAccountID>& ids, bool flag1, bool flag2,
                                        std::vector<CodeTypePosition>& list) {
  note("getCodeTypePositions(" + indexes(ids) + "," + std::to_string(flag1) + "," + std::to_string(flag2) + ")");
  list = codeTypePositions;
}

bool ScriptedHost::getCodeTypeName(int64_t hashCode, std::string& typeText, std::string& nameText) {
  note("getCodeTypeName(" + std::to_string(hashCode) + ")");
  if (!codeTypes.contains(hashCode)) {
    return false;
  }
  std::tie(typeText, nameText) = codeTypes[hashCode];
  return true;
}

ResultStatus ScriptedHost::checkUser(const std::string& function) {
  note("checkUser(" + function + ")");
  return userRefusal;
}

ResultStatus ScriptedHost::checkAccount(const std::string& function, const TradingAccountID& account) {
  note("checkAccount(" + function + "," + std::to_string(account.index) + ")");
  return valueOr(accountRefusals, account.index);
}

bool ScriptedHost::hasPrivilege(const TradingAccountID& account, AccountPrivilege privilege) {
  const bool trigger = privilege == AccountPrivilege::TriggerOrder;
  note("hasPrivilege(" + std::to_string(account.index) + (trigger ? ",trigger)" : ",ordinary)"));
  const auto granted = valueOr(privileges, account.index);
  return std::find(granted.begin(), granted.end(), privilege) != granted.end();
}

TradingAccountID accountId(int32_t index, const std::string& userCode, int32_t marketType) {
  TradingAccountID id;
  id.index = index;
  id.userCode = userCode;
  id.marketType = marketType;
  return id;
}

TradingAccount account(int32_t index, const std::string& userCode, int32_t marketType) {
  TradingAccount record;
  record.id = accountId(index, userCode, marketType);
  return record;
}

SymbolCode symbol(int64_t hashCode, const std::string& code, int32_t exchangeId, int32_t codeClass) {
  return {hashCode, codeClass, exchangeId, code};
}

}  // namespace test

// The statics of host/.

using test::ScriptedHost;

IServiceRouter* IServiceRouter::instance() { return &ScriptedHost::current(); }
IUIProxyMgr* IUIProxyMgr::getInstance() { return &ScriptedHost::current(); }
IPositionMonitor* IPositionMonitor::getInstance() { return &ScriptedHost::current(); }
IAuthAgent* IAuthAgent::getInstance() { return &ScriptedHost::current(); }

std::vector<TradingAccountID> TradeUtils::getTradingAccountID(ITradeService* /*service*/,
                                                              const std::list<int32_t>& selector) {
  ScriptedHost::current().note("getTradingAccountID(" + test::numbers(selector) + ")");
  std::vector<TradingAccountID> ids;
  for (const TradingAccount& found : test::selected(selector)) {
    ids.push_back(found.id);
  }
  return ids;
}

void TradeUtils::getAllTradingAccount(ITradeService* /*service*/, const std::list<int32_t>& selector,
                                      int32_t queryFlags, std::vector<TradingAccount>& accounts,
                                      std::list<int32_t>& availableIndexes) {
  ScriptedHost& host = ScriptedHost::current();
  host.note("getAllTradingAccount(" + test::numbers(selector) + "," + std::to_string(queryFlags) + ")");
  accounts = test::selected(selector);
  availableIndexes = host.available;
}

void TradeUtils::getAllTradingAccount(ITradeService* /*service*/, const std::vector<TradingAccountID>& selector,
                                      int32_t queryFlags, std::vector<TradingAccount>& accounts,
                                      std::vector<TradingAccountID>& availableAccounts) {
  ScriptedHost& host = ScriptedHost::current();
  host.note("getAllTradingAccount(ids " + test::indexes(selector) + "," + std::to_string(queryFlags) + ")");
  accounts = host.accounts;
  for (const int32_t index : host.available) {
    availableAccounts.push_back(test::accountId(index));
  }
}

void TradeUtils::getAllPosition(ITradeService* /*service*/, const std::list<int32_t>& selector, int32_t queryFlags,
                                std::list<Position>& positions, std::list<int32_t>& availableIndexes) {
  ScriptedHost& host = ScriptedHost::current();
  host.note("getAllPosition(" + test::numbers(selector) + "," + std::to_string(queryFlags) + ")");
  positions = test::ofAccounts(host.positions, selector);
  availableIndexes = host.available;
}

void TradeUtils::getAllFill(ITradeService* /*service*/, const std::list<int32_t>& selector, int32_t queryFlags,
                            std::list<OrderFill>& fills, std::list<int32_t>& availableIndexes) {
  ScriptedHost& host = ScriptedHost::current();
  host.note("getAllFill(" + test::numbers(selector) + "," + std::to_string(queryFlags) + ")");
  fills = test::ofAccounts(host.fills, selector);
  availableIndexes = host.available;
}

std::list<Order> TradeUtils::getAllOrder(ITradeService* /*service*/, const std::vector<TradingAccountID>& accounts) {
  ScriptedHost& host = ScriptedHost::current();
  host.note("getAllOrder(" + test::indexes(accounts) + ")");
  std::list<int32_t> selector;
  for (const TradingAccountID& id : accounts) {
    selector.push_back(id.index);
  }
  return test::ofAccounts(host.orders, selector);
}

std::string CodeConvert::gbk_to_utf8(const std::string& text) { return test::convert("UTF-8", "GBK", text); }
std::string CodeConvert::utf8_to_gbk(const std::string& text) { return test::convert("GBK", "UTF-8", text); }

Timestamp Timestamp::now(OrvTimeZone zone) { return {1'700'000'000'000'000, zone}; }
std::string Timestamp::toISO8601String() const {
  return zone == OrvTimeZone{0} && microseconds == 1'700'000'000'000'000 ? "2023-11-14T22:13:20.000000Z" : "?";
}
bool isTimeEnabled() { return test::ScriptedHost::current().logTime; }

}  // namespace orvane
