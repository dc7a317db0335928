#include "terminal/trading/settlement.h"

#include <algorithm>

#include "host/common.h"
#include "terminal/trading/ledger.h"

namespace orvane::terminal {
namespace {

void cancelWorking(Book& book, Change& change) {
  for (const int64_t id : book.working.ids()) {
    BookOrder order = book.orders.at(id);
    order.order.status = static_cast<int32_t>(OrderStatus::Cancelled);
    order.order.note = CodeConvert::utf8_to_gbk("收盘自动撤单");
    book.put(std::move(order));
    change.orders.insert(id);
  }
}

double bearInterest(Book& book, Change& change, const Account& account, double days) {
  double sum = 0;
  for (const int64_t id : book.contractsOf(account.id.index)) {
    CreditContract& contract = book.contracts.at(id);
    if (contract.amount <= 0) continue;
    const double interest = contract.amount * account.credit->interestRate * days / 360;
    contract.interest += interest;
    sum += interest;
    change.contracts.insert(id);
  }
  return sum;
}

void settleAccount(Book& book, Change& change, Account& account, double days) {
  account.preBalance = accountFigures(book, account).equity;
  if (account.credit) account.preBalance -= bearInterest(book, change, account, days);
  account.deposit = 0;
  account.withdraw = 0;
  account.commission = 0;
  change.accounts.insert(account.id.index);
}

Holding carryOver(const Holding& held) {
  const auto yesterday = static_cast<double>(held.yesterdayLeft());
  const auto today = static_cast<double>(held.todayVolume);
  Holding it;
  it.yesterdayVolume = held.volume();
  if (it.yesterdayVolume > 0) {
    it.yesterdayPrice = (yesterday * held.yesterdayPrice + today * held.todayPrice) / (yesterday + today);
  }
  return it;
}

// The limits keep their distance from the reference price in per cent.
void settleInstrument(Instrument& it) {
  const double scale = it.last / it.preSettlement;
  it.lowerLimit = std::max(roundToTick(it.lowerLimit * scale, it.priceTick), it.priceTick);
  it.upperLimit = std::max(roundToTick(it.upperLimit * scale, it.priceTick), it.last + it.priceTick);
  it.preClose = it.last;
  it.preSettlement = it.last;
}

}  // namespace

void settle(Book& book, Change& change, int64_t nextDay) {
  cancelWorking(book, change);
  const auto days = static_cast<double>(nextDay - book.day);
  for (auto& [index, account] : book.accounts) settleAccount(book, change, account, days);
  for (auto& [key, both] : book.holdings) {
    both = {carryOver(both.longs), carryOver(both.shorts)};
    change.holdings.insert(key);
  }
  for (auto& [hashCode, instrument] : book.instruments) {
    settleInstrument(instrument);
    change.instruments.insert(hashCode);
    change.quotes.insert(hashCode);
  }
  change.nextDay = nextDay;
}

}  // namespace orvane::terminal
