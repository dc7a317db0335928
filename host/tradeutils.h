#pragma once

#include <cstdint>
#include <list>
#include <vector>

#include "host/account.h"
#include "host/order.h"
#include "host/position.h"

namespace orvane {

class ITradeService;

// Values of `queryFlags`. Only the host interprets them; the library passes a fixed one at each call site.
inline constexpr int32_t kQueryOne = 1;   // look-ups of one account, and the fill list
inline constexpr int32_t kQueryList = 3;  // account, capital and position lists, and look-ups of several accounts

// Snapshots of the host's trading data. An empty selector means every account. An account that the host cannot give is
// missing from the result; no call reports a failure. Out containers are passed empty. Worker thread only.
class TradeUtils {
 public:
  // The identification of the selected accounts.
  static std::vector<TradingAccountID> getTradingAccountID(ITradeService* service, const std::list<int32_t>& selector);

  // Capital, with the account selected by index. Accounts in `availableIndexes` get "accountStatus" 1 in replies.
  static void getAllTradingAccount(ITradeService* service, const std::list<int32_t>& selector, int32_t queryFlags,
                                   std::vector<TradingAccount>& accounts, std::list<int32_t>& availableIndexes);

  // The same, with the account selected by its identification.
  static void getAllTradingAccount(ITradeService* service, const std::vector<TradingAccountID>& selector,
                                   int32_t queryFlags, std::vector<TradingAccount>& accounts,
                                   std::vector<TradingAccountID>& availableAccounts);

  static void getAllPosition(ITradeService* service, const std::list<int32_t>& selector, int32_t queryFlags,
                             std::list<Position>& positions, std::list<int32_t>& availableIndexes);

  static void getAllFill(ITradeService* service, const std::list<int32_t>& selector, int32_t queryFlags,
                         std::list<OrderFill>& fills, std::list<int32_t>& availableIndexes);

  // All orders of the accounts, finished ones included. An empty vector means every account.
  static std::list<Order> getAllOrder(ITradeService* service, const std::vector<TradingAccountID>& accounts);
};

}  // namespace orvane
