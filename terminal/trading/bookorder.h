#pragma once

#include <cstdint>
#include <tuple>

#include "host/order.h"

namespace orvane::terminal {

// Order.status.
enum class OrderStatus : int32_t { Working = 1, Filled = 2, Cancelled = 3, Refused = 4 };

// Order.priceType.
enum class PriceType : int32_t { Limit = 1, Market = 2 };

// Order.side.
enum class Side : int32_t {
  Buy = 1,
  Sell = 2,
  MarginBuying = 3,
  ShortSelling = 4,
  SecurityReimbursement = 5,
  SellingReimbursement = 6,
  ReturnFund = 7,
  ReturnSec = 8
};

// Order.combOffset.
enum class Offset : int32_t {
  Unknown = 0,
  Open = 1,
  OpenAuto = 2,
  AutoOpenClose = 3,
  Close = 4,
  CloseToday = 5,
  CloseYesterday = 6,
  CloseAuto = 7
};

enum class Direction : int32_t { Long = 1, Short = 2 };

// One account and instrument, in the order in which lists show them.
struct Key {
  int32_t account = 0;
  int64_t hashCode = 0;
  bool operator==(const Key&) const = default;
  bool operator<(const Key& other) const {
    return std::tie(account, hashCode) < std::tie(other.account, other.hashCode);
  }
};

// Funds that an order holds back while it is working.
struct OrderFunds {
  double cash = 0;
  double margin = 0;    // collateral, on a credit account
  double borrowed = 0;  // counts against the account's limit of margin purchases or short sales
};

// An order with what it closes and holds back.
struct BookOrder {
  Order order;
  int64_t closeYesterday = 0;
  int64_t closeToday = 0;  // both volumes are 0 if it opens
  OrderFunds funds;

  OrderStatus status() const { return static_cast<OrderStatus>(order.status); }
  Side side() const { return static_cast<Side>(order.side); }
  Key key() const { return {order.account.index, order.code.hashCode}; }
  bool opens() const { return closeYesterday + closeToday == 0; }
  Direction direction() const;
};

// A fill with the order's account, instrument, source and side. The caller sets id, time, volume and price.
OrderFill fillOf(const Order& order);

// True for the sides that buy.
bool isBuying(Side side);

}  // namespace orvane::terminal
