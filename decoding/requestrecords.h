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

// What the decoders make of request bodies. Values are of the right kind, otherwise unchecked, and as the phone sent
// them but for the time and the source of a new order.
// Of an account only `index` is set, of an instrument only `hashCode`; the task has the host fill in the rest. Records
// stand in the order of the body, repeats kept.

// Account indexes; empty means every account.
using AccountSelector = std::list<int32_t>;

struct MobileNewOrder {
  std::list<MobileNewOrderItem> items;
  bool isConditional = false;  // no body sets it; the task refuses such an order
};

// An order to cancel, named by either of two ids.
struct MobileCancelOrder {
  TradingAccountID account;
  SymbolCode code;           // read only beside a localOrderId
  std::string localOrderId;  // the host's number of the order, in decimal
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

// The instruments to ask about in one account.
struct MobileMarginRateQuery {
  std::vector<int64_t> hashCodes;
  int32_t index = 0;
};

struct SymbolMarginRateReq {
  std::vector<MobileMarginRateQuery> queries;
};

}  // namespace orvane
