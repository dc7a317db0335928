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

// Texts of a test, readable there and GBK for the host.
std::string gbk(const std::string& utf8);

// A host made of what a test says. It stands behind every symbol of host/ while it lives (one at a time), answers from
// the members below and writes down each call in order: `calls()` reads "checkUser(capital.list)",
// "getAllFill([1,2],1)". A test sets members before the library runs; what the library sent may be read while it does.
// It knows one exchange: 3 is "SHFE", in full "上期所".
class ScriptedHost {
 public:
  ScriptedHost();
  ~ScriptedHost();
  ScriptedHost(const ScriptedHost&) = delete;
  ScriptedHost& operator=(const ScriptedHost&) = delete;

  static ScriptedHost& current();

  // What the host holds.
  std::vector<TradingAccount> accounts;
  std::vector<TradingAccount> laterAccounts;                         // if any, `accounts` from the second look-up on
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
  std::map<int32_t, std::vector<CreditInfoRecord>> credits;  // by account index; an account without one is an error
  std::map<int64_t, MarginRateResult> marginRates;           // by hash code; an instrument without one is an error
  double defaultMarginRate = 0;
  std::map<int32_t, std::vector<AccountPrivilege>> privileges;
  MobileMessage proxyReply;  // what requestSync fills in, GBK

  // One lever for each failure. A code that is not 0 is the failure; texts are GBK.
  bool baseServiceUp = true;
  bool mobileServiceUp = true;
  ResultStatus startStatus;
  ResultStatus sendStatus;
  ResultStatus userRefusal;
  std::map<int32_t, ResultStatus> accountRefusals;  // by account index
  std::map<int64_t, ResultStatus> insertStatuses;   // by the order's hash code
  std::map<int64_t, ResultStatus> cancelStatuses;   // by local order id
  bool logTime = false;

  // Run inside send and each call, on the library's thread.
  std::function<void(const MobileMessage&)> onSend;
  std::function<void(const std::string&)> onCall;
  bool remembers = true;  // whether calls and messages are kept

  // What the library handed over, besides the calls.
  std::shared_ptr<IMobileSrvSpi> spi;
  std::vector<MobileNewOrderItem> inserted;
  std::vector<CancelOrderRequest> cancelled;
  std::list<MonitorSyncOrder> placed;
  std::list<MonitorManualPosition> updated;
  std::vector<MarginRateQuery> marginQueries;
  bool running = false;

  std::vector<std::string> converted;  // each text given to gbk_to_utf8, while `remembers` is set

  // The calls so far, oldest first.
  std::vector<std::string> calls() const;
  void forgetCalls();
  // The messages sent so far.
  std::vector<MobileMessage> sent() const;
  // Waits until `count` messages have been sent; false after ten seconds.
  bool waitForSent(size_t count);

  // Hands a request to the library as a mobile service does, from any thread; false where no callback is registered.
  bool request(int64_t id, int32_t terminalType, const std::string& topic, const std::string& body);

  // What the services do with a callback, a call and a message.
  void setSpi(const std::shared_ptr<IMobileSrvSpi>& callback);
  void note(const std::string& call);
  ResultStatus send(const MobileMessage& message);

 private:
  std::shared_mutex spiMutex_;  // held by each request, so that none is under way once the callback is gone
  mutable std::mutex mutex_;    // guards the three below
  std::condition_variable sentChanged_;
  std::vector<std::string> calls_;
  std::vector<MobileMessage> sent_;
};

// Records with what a test needs set.
TradingAccountID accountId(int32_t index, const std::string& userCode = "", int32_t marketType = 1);
TradingAccount account(int32_t index, const std::string& userCode = "", int32_t marketType = 1);
SymbolCode symbol(int64_t hashCode, const std::string& code, int32_t exchangeId = 1, int32_t codeClass = 1);

}  // namespace orvane::test
