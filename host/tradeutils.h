#pragma once

#include <cstdint>
#include <list>
#include <vector>

#include "host/account.h"
#include "host/order.h"
#include "host/position.h"

namespace orvane {

class ITradeService;

// Snapshots of the host's trading data. An empty selector means every account; an account that the host cannot give
// is missing from the result, and no call reports a failure. Out containers arrive empty. `queryFlags` is the host's
// to interpret: the library passes 1 or 3, fixed per call site. Called on the worker thread.
class TradeUtils {
 public:
  // The selected accounts.
  static std::vector<TradingAccountID> getTradingAccountID(ITradeService* service, const std::list<int32_t>& selector);

  // Capital by account index. `availableIndexes` holds the accounts that replies mark with "accountStatus" 1.
  static void getAllTradingAccount(ITradeService* service, const std::list<int32_t>& selector, int32_t queryFlags,
                                   std::vector<TradingAccount>& accounts, std::list<int32_t>& availableIndexes);

  // The same by identification, for the account list.
  static void getAllTradingAccount(ITradeService* service, const std::vector<TradingAccountID>& selector,
                                   int32_t queryFlags, std::vector<TradingAccount>& accounts,
                                   std::vector<TradingAccountID>& availableAccounts);

  static void getAllPosition(ITradeService* service, const std::list<int32_t>& selector, int32_t queryFlags,
                             std::list<Position>& positions, std::list<int32_t>& availableIndexes);

  static void getAllFill(ITradeService* service, const std::list<int32_t>& selector, int32_t queryFlags,
                         std::list<OrderFill>& fills, std::list<int32_t>& availableIndexes);

  // All orders of the accounts, finished ones included.
  static std::list<Order> getAllOrder(ITradeService* service, const std::vector<TradingAccountID>& accounts);
};

}  // namespace orvane
