#pragma once

#include <cstdint>
#include <utility>
#include <vector>

#include "host/order.h"
#include "host/resultstatus.h"
#include "terminal/trading/desk.h"

namespace orvane::terminal {

// Hash code and last price.
using Price = std::pair<int64_t, double>;

// Accepts and fills orders. An order that crosses the opposite quote is filled at once, completely, at that quote. Any
// other order rests and is filled completely at its own price when the quote reaches it. Thread-safe.
class Engine {
 public:
  explicit Engine(Desk& desk) : desk_(desk) {}

  // Code 0: the order is accepted, and stored once Desk::whenStored says so. Otherwise the message says why it was
  // refused (GBK); the refused order is listed too, if its account and instrument exist.
  ResultStatus insertOrder(const MobileNewOrderItem& item);
  ResultStatus cancelOrder(const CancelOrderRequest& request);

  // Sets last prices and fills the orders that they reach. REQUIRES: the instruments exist. Stores all prices if
  // `store` is set, otherwise only those of instruments with a fill. Throws StoreError while the database cannot be
  // written.
  void movePrices(const std::vector<Price>& prices, bool store);

 private:
  Desk& desk_;
};

}  // namespace orvane::terminal
