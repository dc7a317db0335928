#pragma once

#include <vector>

#include "host/account.h"
#include "host/credit.h"
#include "host/margin.h"
#include "host/order.h"
#include "host/resultstatus.h"

namespace orvane {

// The host's trade service. Worker thread only, one call at a time: a slow call delays every request behind it.
class ITradeService {
 public:
  virtual ~ITradeService() = default;

  // Code 0 means that the order was accepted. On any other code the client gets the message, which is GBK.
  virtual ResultStatus insertOrder(const MobileNewOrderItem& order) = 0;

  // Code 0 means that the request was accepted. On any other code the client gets the message, which is GBK.
  virtual ResultStatus cancelOrder(const CancelOrderRequest& request) = 0;

  // Fills the empty `records` and returns code 0; no records are fine too. Any other code leaves the account out of the
  // reply, and the message is ignored.
  virtual ResultStatus queryCreditInfo(const TradingAccountID& account, std::vector<CreditInfoRecord>& records) = 0;

  // Fills the four ratios and returns code 0. On any other code the library asks IUIProxyMgr::getDefaultMarginRate.
  virtual ResultStatus queryMarginRate(const MarginRateQuery& query, MarginRateResult& result) = 0;
};

}  // namespace orvane
