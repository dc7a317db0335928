#include "terminal/trading/fills.h"

#include <algorithm>

#include <fmt/format.h>

#include "terminal/trading/ledger.h"

namespace orvane::terminal {
namespace {

void open(Holding& held, int64_t volume, double price) {
  const auto before = static_cast<double>(held.todayVolume);
  const auto added = static_cast<double>(volume);
  held.todayPrice = (held.todayPrice * before + price * added) / (before + added);
  held.todayVolume += volume;
}

// The part held since yesterday realises against the last settlement, today's part against its opening price.
void close(Holding& held, const BookOrder& order, const Instrument& instrument, double price) {
  const double gain = (price - instrument.preSettlement) * static_cast<double>(order.closeYesterday) +
                      (price - held.todayPrice) * static_cast<double>(order.closeToday);
  const auto unit = static_cast<double>(instrument.multiplier);
  held.closeProfit += order.direction() == Direction::Long ? gain * unit : -gain * unit;
  held.yesterdayClosed += order.closeYesterday;
  held.todayVolume -= order.closeToday;
}

void borrow(Book& book, Change& change, const BookOrder& order, double amount) {
  const int64_t id = book.contracts.empty() ? 1 : book.contracts.rbegin()->first + 1;
  book.put(CreditContract{id, order.key(), order.direction(), order.order.volume, amount, 0});
  change.contracts.insert(id);
}

// Returns borrowed securities, oldest contract first, and pays their share of the contract's interest.
void giveBack(Book& book, Change& change, const Key& key, int64_t volume) {
  for (const int64_t id : book.contractsOf(key)) {
    CreditContract& contract = book.contracts.at(id);
    if (contract.direction != Direction::Short || contract.volume == 0) continue;
    const int64_t part = std::min(volume, contract.volume);
    const double left = 1 - static_cast<double>(part) / static_cast<double>(contract.volume);
    contract.amount *= left;
    contract.interest *= left;
    contract.volume -= part;
    volume -= part;
    change.contracts.insert(id);
  }
}

// Pays as much of `owed` as `amount` covers.
void pay(double& owed, double& amount) {
  const double part = std::min(amount, owed);
  owed -= part;
  amount -= part;
}

// Repays borrowed money out of a sale: first the contracts of the instrument sold, then the account's others; within
// each the interest first. Shares of a contract that is paid off are no longer tied to it.
void payBack(Book& book, Change& change, const Key& key, int64_t volume, double amount) {
  for (const bool sameInstrument : {true, false}) {
    for (const int64_t id : book.contractsOf(key.account)) {
      CreditContract& contract = book.contracts.at(id);
      if (contract.direction != Direction::Long || contract.amount + contract.interest <= 0 ||
          (contract.key == key) != sameInstrument) {
        continue;
      }
      pay(contract.interest, amount);
      pay(contract.amount, amount);
      const int64_t sold = sameInstrument ? std::min(volume, contract.volume) : 0;
      volume -= sold;
      contract.volume = contract.amount > 0 ? contract.volume - sold : 0;
      change.contracts.insert(id);
    }
  }
}

void settleCredit(Book& book, Change& change, const BookOrder& order, double amount) {
  switch (order.side()) {
    case Side::MarginBuying:
    case Side::ShortSelling:
      return borrow(book, change, order, amount);
    case Side::SecurityReimbursement:
      return giveBack(book, change, order.key(), order.order.volume);
    case Side::SellingReimbursement:
      return payBack(book, change, order.key(), order.order.volume, amount);
    default:
      return;
  }
}

void addFill(Book& book, Change& change, const Order& order, double price, double fee, int64_t now) {
  OrderFill fill = fillOf(order);
  fill.fillId = fmt::format("{}{:08}", book.exchanges.exchangeNames.at(order.code.exchangeId), ++book.lastFillId);
  fill.exchTimestamp = now;
  fill.volume = order.volume;
  fill.price = price;
  book.add(fill);
  change.fills.push_back({std::move(fill), fee});
}

}  // namespace

void fillOrder(Book& book, Change& change, int64_t orderId, double price, int64_t now) {
  BookOrder filled = book.orders.at(orderId);
  Order& order = filled.order;
  const Key key = filled.key();
  const Instrument& instrument = book.instruments.at(key.hashCode);
  Holding& held = book.holdings[key].of(filled.direction());
  if (filled.opens()) {
    open(held, order.volume, price);
  } else {
    close(held, filled, instrument, price);
  }
  const double amount = price * static_cast<double>(order.volume * instrument.multiplier);
  settleCredit(book, change, filled, amount);
  const double fee = commission(book, key, filled.side(), order.volume, price);
  book.accounts.at(key.account).commission += fee;
  addFill(book, change, order, price, fee, now);
  order.status = static_cast<int32_t>(OrderStatus::Filled);
  order.fillVolume = order.volume;
  order.fillAvgPrice = price;
  order.fillAmount = amount;
  book.put(std::move(filled));
  change.accounts.insert(key.account);
  change.holdings.insert(key);
  change.orders.insert(orderId);
  change.quotes.insert(key.hashCode);  // equity after a restart is at the prices of the fills
}

}  // namespace orvane::terminal
