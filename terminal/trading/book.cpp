#include "terminal/trading/book.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

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

void Book::put(BookOrder order) {
  const int64_t id = order.order.localOrderId;
  const Key key = order.key();
  const auto found = orders.find(id);
  if (found == orders.end()) {
    accountOrders[key.account].push_back(id);
  } else if (found->second.status() == OrderStatus::Working) {
    working.remove(found->second);
  }
  if (order.status() == OrderStatus::Working) {
    working.add(order);
    holdings.try_emplace(key);
  }
  lastOrderId = std::max(lastOrderId, id);
  orders.insert_or_assign(id, std::move(order));
}

void Book::put(const CreditContract& contract) {
  contracts.insert_or_assign(contract.id, contract);
  contractIds.emplace(contract.key, contract.id);
}

void Book::add(OrderFill fill) {
  accountFills[fill.account.index].push_back(static_cast<int64_t>(fills.size()));
  fills.push_back(std::move(fill));
}

void Book::startDay(int64_t newDay) {
  day = newDay;
  orders.clear();
  accountOrders.clear();
  fills.clear();
  accountFills.clear();
  std::erase_if(holdings,
                [](const auto& entry) { return entry.second.longs.isBlank() && entry.second.shorts.isBlank(); });
}

std::vector<int64_t> Book::contractsOf(const Key& key) const {
  std::vector<int64_t> ids;
  for (auto it = contractIds.lower_bound({key, INT64_MIN}); it != contractIds.end() && it->first == key; ++it) {
    ids.push_back(it->second);
  }
  return ids;
}

std::vector<int64_t> Book::contractsOf(int32_t account) const {
  std::vector<int64_t> ids;
  for (auto it = contractIds.lower_bound({{account, INT64_MIN}, INT64_MIN});
       it != contractIds.end() && it->first.account == account; ++it) {
    ids.push_back(it->second);
  }
  std::sort(ids.begin(), ids.end());
  return ids;
}

const Instrument* Book::instrument(int64_t hashCode) const { return find(instruments, hashCode); }

const Account* Book::account(int32_t index) const { return find(accounts, index); }

const MarginRate* Book::marginRate(const Key& key) const { return find(marginRates, key); }

std::string codeKey(const Book& book, const SymbolCode& symbol) {
  return symbol.code + "." + book.exchanges.exchangeNames.at(symbol.exchangeId);
}

}  // namespace orvane::terminal
