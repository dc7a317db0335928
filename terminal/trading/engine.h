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

// Takes orders and fills them. An order that crosses the opposite quote is filled at once, whole, at that quote; any
// other rests and is filled whole at its own price when the quote comes to it. Any thread.
class Engine {
 public:
  explicit Engine(Desk& desk) : desk_(desk) {}

  // Code 0: the order stands in the database. A refusal (text in GBK) stands there too, as a refused order.
  ResultStatus insertOrder(const MobileNewOrderItem& item);
  ResultStatus cancelOrder(const CancelOrderRequest& request);

  // Sets last prices, which must be of known instruments, and fills what they cross. Where `store` is set they are
  // written; otherwise only with the fills that they make. Throws where the database cannot be written.
  void movePrices(const std::vector<Price>& prices, bool store);

 private:
  Desk& desk_;
};

}  // namespace orvane::terminal
