#pragma once

#include <condition_variable>
#include <cstdint>
#include <functional>
#include <list>
#include <map>
#include <memory>
#include <mutex>
#include <shared_mutex>
#include <string>
#include <utility>
#include <vector>

#include "host/account.h"
#include "host/authagent.h"
#include "host/common.h"
#include "host/credit.h"
#include "host/margin.h"
#include "host/mobilesrv.h"
#include "host/order.h"
#include "host/position.h"
#include "host/positionmonitor.h"
#include "host/uiproxymgr.h"

namespace orvane::test {

// A text of a test in GBK, as hosts have it.
std::string gbk(const std::string& utf8);

// The host of the tests. While it exists (one at a time) it implements every symbol of host/, answers from the members
// below and records each call in order. `calls()` reads "checkUser(capital.list)", "getAllFill([1,2],1)", "send". An
// account or an instrument in a call is shown by its number, followed by "!" and its text if it is not a whole record
// of this host; orders and manual positions by all their figures. A call through a service that the library kept from
// an earlier one starts with "stale ". The one exchange, 3, is "SHFE", in full "上期所". Set members before the library
// runs; the functions may be called at any time.
class ScriptedHost {
 public:
  ScriptedHost();
  ~ScriptedHost();
  ScriptedHost(const ScriptedHost&) = delete;
  ScriptedHost& operator=(const ScriptedHost&) = delete;

  static ScriptedHost& current();

  // The host's data.
  std::vector<TradingAccount> accounts;
  std::list<int32_t> available;                                      // account indexes
  std::map<int64_t, SymbolCode> symbols;                             // by hash code
  std::map<int64_t, std::string> codeNames;                          // GBK
  std::map<int64_t, std::pair<std::string, std::string>> codeTypes;  // type and name, GBK
  std::list<Position> positions;
  std::list<Order> orders;
  std::list<OrderFill> fills;
  std::vector<CodeTypePosition> codeTypePositions;
  std::list<PositionMonitorRecord> monitorRecords;
  std::list<MonitorSyncOrder> syncOrders;
  std::list<MonitorManualPosition> manualPositions;
  std::map<int32_t, std::vector<CreditInfoRecord>> credits;  // by account index; a failure if absent
  std::map<int64_t, MarginRateResult> marginRates;           // by hash code; a failure if absent
  double defaultMarginRate = 0;
  std::map<int32_t, std::vector<AccountPrivilege>> privileges;
  MobileMessage proxyReply;  // what requestSync fills in, GBK

  // Failures. A code that is not 0 fails; texts are GBK.
  bool baseServiceUp = true;
  bool mobileServiceUp = true;
  ResultStatus startStatus;
  ResultStatus sendStatus;
  ResultStatus userRefusal;
  std::map<int32_t, ResultStatus> accountRefusals;  // by account index
  std::map<int64_t, ResultStatus> insertStatuses;   // by the order's hash code
  std::map<int64_t, ResultStatus> cancelStatuses;   // by local order id
  bool logTime = false;

  // Called within send and within each call, on the library's thread.
  std::function<void(const MobileMessage&)> onSend;
  std::function<void(const std::string&)> onCall;
  bool remembers = true;  // whether calls, messages and conversions are recorded

  // What the library passed to the host, apart from `calls()`.
  std::shared_ptr<IMobileSrvSpi> spi;
  std::vector<std::string> converted;  // each text given to gbk_to_utf8
  bool running = false;

  // The calls and messages so far.
  std::vector<std::string> calls() const;
  void forgetCalls();
  std::vector<MobileMessage> sent() const;
  // Each waits ten seconds at most; false if in vain.
  bool waitForSent(size_t count);
  bool waitForCall(const std::string& start);

  // Blocks the library in each call that starts with `start` until `release`, for ten seconds at most.
  void holdIn(const std::string& start);
  void release() { holdIn(""); }

  // Passes a request to the library as a mobile service does, from any thread; false if there is no callback.
  bool request(int64_t id, int32_t terminalType, const std::string& topic, const std::string& body);

  // For the services.
  void setSpi(const std::shared_ptr<IMobileSrvSpi>& callback);
  void note(const std::string& call);
  ResultStatus send(const MobileMessage& message);

 private:
  std::shared_mutex spiMutex_;  // held by each request, so that none runs once the callback is gone
  mutable std::mutex mutex_;    // guards the members below
  std::condition_variable changed_;
  std::vector<std::string> calls_;
  std::vector<MobileMessage> sent_;
  std::string held_;
};

// Records with a value in every field.
inline TradingAccountID accountId(int32_t index, const std::string& userCode = "", int32_t marketType = 1) {
  return {index, {2, 3, 4}, {"5", "6"}, userCode, 8, marketType, 0, 11, "12"};
}
inline TradingAccount account(int32_t index, const std::string& userCode = "", int32_t marketType = 1) {
  return {.id = accountId(index, userCode, marketType)};
}
inline SymbolCode symbol(int64_t hash, const std::string& code, int32_t exchangeId = 1, int32_t codeClass = 1) {
  return {hash, codeClass, exchangeId, code};
}

}  // namespace orvane::test
