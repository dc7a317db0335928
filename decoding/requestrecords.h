#pragma once

#include <cstdint>
#include <list>
#include <string>
#include <vector>

#include "host/account.h"
#include "host/instrument.h"
#include "host/order.h"
#include "host/positionmonitor.h"

namespace orvane {

// The decoded request bodies, in the order of the body and with duplicates kept. Values have the right kind but are
// otherwise unchecked. An account has only its `index`, an instrument only its `hashCode`; the task looks up the rest.

// Account indexes; empty means every account.
using AccountSelector = std::list<int32_t>;

struct MobileNewOrder {
  std::list<MobileNewOrderItem> items;
  bool isConditional = false;  // never set by a decoder; the task refuses conditional orders
};

// An order to cancel. The task decides which of the two ids counts.
struct MobileCancelOrder {
  TradingAccountID account;
  SymbolCode code;           // only read with a localOrderId
  std::string localOrderId;  // Order::localOrderId as decimal text
  std::string strategyId;    // of a conditional order
};

struct MobileCodeAccountPair {
  int64_t hashCode = 0;
  int32_t index = 0;
};

struct MobileSyncOrderReq {
  std::vector<MobileCodeAccountPair> items;
};

struct PosMonitorManualListReq {
  std::vector<MobileCodeAccountPair> items;
};

struct PosMonitorManualCleanReq {
  std::vector<MobileCodeAccountPair> items;
};

struct PosMonitorManualUpdateReq {
  std::list<MonitorManualPosition> items;
};

struct MobileSyncNewOrderReq {
  std::list<MonitorSyncOrder> items;
};

// The instruments of one account.
struct MobileMarginRateQuery {
  std::vector<int64_t> hashCodes;
  int32_t index = 0;
};

struct SymbolMarginRateReq {
  std::vector<MobileMarginRateQuery> queries;
};

}  // namespace orvane
