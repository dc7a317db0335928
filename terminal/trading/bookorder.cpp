#include "terminal/trading/bookorder.h"

namespace orvane::terminal {

bool isBuying(Side side) {
  return side == Side::Buy || side == Side::MarginBuying || side == Side::SecurityReimbursement;
}

Direction BookOrder::direction() const { return isBuying(side()) == opens() ? Direction::Long : Direction::Short; }

OrderFill fillOf(const Order& order) {
  OrderFill fill;
  fill.localOrderId = order.localOrderId;
  fill.account = order.account;
  fill.code = order.code;
  fill.orderSource = order.orderSource;
  fill.combOffset = order.combOffset;
  fill.hedge = order.hedge;
  fill.side = order.side;
  return fill;
}

}  // namespace orvane::terminal
