#include "terminal/trading/engine.h"

#include <cmath>
#include <set>

#include <fmt/format.h>

#include "host/common.h"
#include "terminal/trading/fills.h"
#include "terminal/trading/ledger.h"
#include "terminal/trading/ordercheck.h"

namespace orvane::terminal {
namespace {

constexpr size_t kMaxSourceText = 64;

bool crosses(const Order& order, const Instrument& instrument) {
  const double slack = instrument.priceTick / 2;
  return isBuying(static_cast<Side>(order.side)) ? order.price > instrument.ask() - slack
                                                 : order.price < instrument.bid() + slack;
}

BookOrder makeOrder(const Book& book, const MobileNewOrderItem& item, int64_t now) {
  BookOrder it;
  Order& order = it.order;
  order.localOrderId = book.lastOrderId + 1;
  order.account = book.accounts.at(item.account.index).id;
  order.code = book.instruments.at(item.code.hashCode).symbol;
  order.orderSource = item.orderSource;
  order.srcTimestamp = now;
  order.volume = item.volume;
  order.price = std::isfinite(item.price) ? item.price : 0;
  order.priceType = item.priceType;
  order.combOffset = item.combOffset;
  order.hedge = item.hedge;
  order.side = item.side;
  return it;
}

// Returns why the order was refused, UTF-8; empty if it was accepted.
std::string enter(Book& book, Change& change, const MobileNewOrderItem& item, int64_t now) {
  if (book.account(item.account.index) == nullptr) return fmt::format("没有账户 {}", item.account.index);
  const Instrument* instrument = book.instrument(item.code.hashCode);
  if (instrument == nullptr) return fmt::format("没有合约 {}", item.code.hashCode);
  if (const size_t size = item.orderSource.sourceText.size(); size > kMaxSourceText) {
    return fmt::format("委托来源 {} 字节, 超过上限 {}", size, kMaxSourceText);
  }
  BookOrder entered = makeOrder(book, item, now);
  Order& order = entered.order;
  const int64_t id = order.localOrderId;
  std::string fault = OrderCheck(book, entered).fault();
  order.status = static_cast<int32_t>(fault.empty() ? OrderStatus::Working : OrderStatus::Refused);
  order.note = CodeConvert::utf8_to_gbk(fault);
  if (fault.empty()) {
    entered.funds = orderFunds(book, entered);
    order.orderId = fmt::format("{}{:08}", book.exchanges.exchangeNames.at(order.code.exchangeId), id);
  }
  const bool fills = fault.empty() && crosses(order, *instrument);
  const double quote = isBuying(entered.side()) ? instrument->ask() : instrument->bid();
  change.orders.insert(id);
  book.put(std::move(entered));
  if (fills) fillOrder(book, change, id, quote, now);
  return fault;
}

std::string cancel(Book& book, Change& change, const CancelOrderRequest& request) {
  auto found = book.orders.find(request.localOrderId);
  if (found == book.orders.end() || found->second.key() != Key{request.account.index, request.code.hashCode}) {
    return fmt::format("账户 {} 在该合约上没有委托 {}", request.account.userCode, request.localOrderId);
  }
  if (found->second.status() != OrderStatus::Working) {
    const char* state = found->second.status() == OrderStatus::Filled      ? "已全部成交"
                        : found->second.status() == OrderStatus::Cancelled ? "已撤单"
                                                                           : "是废单";
    return fmt::format("委托 {} {}, 不能撤单", request.localOrderId, state);
  }
  BookOrder order = found->second;
  order.order.status = static_cast<int32_t>(OrderStatus::Cancelled);
  order.order.note = CodeConvert::utf8_to_gbk("用户撤单");
  change.orders.insert(request.localOrderId);
  book.put(std::move(order));
  return {};
}

// Fills each working order that a price has reached, at the order's own price, the oldest first.
void match(Book& book, Change& change, const std::vector<Price>& prices, int64_t now) {
  std::set<int64_t> reached;
  for (const auto& [hashCode, price] : prices) {
    const Instrument& instrument = book.instruments.at(hashCode);
    const double slack = instrument.priceTick / 2;
    reached.merge(book.working.reached(hashCode, instrument.ask() - slack, instrument.bid() + slack));
  }
  for (const int64_t id : reached) fillOrder(book, change, id, book.orders.at(id).order.price, now);
}

// Runs one action on the desk. Fails with the text that the action returns, or if the database cannot be written.
template <typename Action>
ResultStatus run(Desk& desk, const Action& action) {
  std::string fault;
  try {
    desk.apply([&](Book& book, Change& change, int64_t now) { fault = action(book, change, now); });
  } catch (const StoreError& error) {
    fault = error.refusal();
  }
  if (fault.empty()) return {};
  return {-1, CodeConvert::utf8_to_gbk(fault)};
}

}  // namespace

ResultStatus Engine::insertOrder(const MobileNewOrderItem& item) {
  return run(desk_, [&](Book& book, Change& change, int64_t now) { return enter(book, change, item, now); });
}

ResultStatus Engine::cancelOrder(const CancelOrderRequest& request) {
  return run(desk_, [&](Book& book, Change& change, int64_t /*now*/) { return cancel(book, change, request); });
}

void Engine::movePrices(const std::vector<Price>& prices, bool store) {
  desk_.apply([&](Book& book, Change& change, int64_t now) {
    for (const auto& [hashCode, price] : prices) {
      Instrument& instrument = book.instruments.at(hashCode);
      instrument.last = price;
      desk_.prices().show(instrument);
      if (store) change.quotes.insert(hashCode);
    }
    match(book, change, prices, now);
  });
}

}  // namespace orvane::terminal
