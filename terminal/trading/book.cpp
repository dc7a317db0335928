#include "terminal/trading/book.h"

#include <algorithm>
#include <cmath>

namespace orvane::terminal {
namespace {

template <typename Map, typename K>
const typename Map::mapped_type* find(const Map& map, const K& key) {
  auto found = map.find(key);
  return found == map.end() ? nullptr : &found->second;
}

}  // namespace

double roundToTick(double price, double tick) {
  double steps = std::round(price / tick);
  return tick < 1 ? steps / std::round(1 / tick) : steps * tick;
}

double Instrument::bid() const { return std::max(roundToTick(last - priceTick, priceTick), lowerLimit); }

double Instrument::ask() const { return std::min(roundToTick(last + priceTick, priceTick), upperLimit); }

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

void Book::put(BookOrder order) {
  const int64_t id = order.order.localOrderId;
  if (order.status() == OrderStatus::Working) {
    working.emplace(order.key(), id);
    holdings.try_emplace(order.key());
  } else {
    working.erase({order.key(), id});
  }
  lastOrderId = std::max(lastOrderId, id);
  orders.insert_or_assign(id, std::move(order));
}

const Instrument* Book::instrument(int64_t hashCode) const { return find(instruments, hashCode); }

const Account* Book::account(int32_t index) const { return find(accounts, index); }

const MarginRate* Book::marginRate(const Key& key) const { return find(marginRates, key); }

std::string codeKey(const Book& book, const SymbolCode& symbol) {
  return symbol.code + "." + book.exchanges.exchangeNames.at(symbol.exchangeId);
}

}  // namespace orvane::terminal
