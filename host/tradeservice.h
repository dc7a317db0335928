#pragma once

#include <vector>

#include "host/account.h"
#include "host/credit.h"
#include "host/margin.h"
#include "host/order.h"
#include "host/resultstatus.h"

namespace orvane {

// The host's trade service. Called on the worker thread, one call at a time; a slow call delays every request
// behind it.
class ITradeService {
 public:
  virtual ~ITradeService() = default;

  // Code 0: the order is accepted. Otherwise message says why not, GBK; the phone sees it.
  virtual ResultStatus insertOrder(const MobileNewOrderItem& order) = 0;

  // Code 0: the request is accepted. Otherwise message says why not, GBK; the phone sees it.
  virtual ResultStatus cancelOrder(const CancelOrderRequest& request) = 0;

  // Code 0 with the account's records appended, none for an account without credit figures. Any other code drops
  // the account from the reply.
  virtual ResultStatus queryCreditInfo(const TradingAccountID& account, std::vector<CreditInfoRecord>& records) = 0;

  // Code 0 with the four ratios filled. Any other code sends the caller to IUIProxyMgr::getDefaultMarginRate.
  virtual ResultStatus queryMarginRate(const MarginRateQuery& query, MarginRateResult& result) = 0;
};

}  // namespace orvane
