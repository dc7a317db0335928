#include "terminal/trading/workingorders.h"

namespace orvane::terminal {

void WorkingOrders::add(const BookOrder& order) {
  const int64_t id = order.order.localOrderId;
  orders_.emplace(order.key(), id);
  Prices& prices = prices_[order.key().hashCode];
  (isBuying(order.side()) ? prices.buys : prices.sells).emplace(order.order.price, order.key(), id);
  count(order, 1);
}

void WorkingOrders::remove(const BookOrder& order) {
  const int64_t id = order.order.localOrderId;
  orders_.erase({order.key(), id});
  Prices& prices = prices_[order.key().hashCode];
  (isBuying(order.side()) ? prices.buys : prices.sells).erase({order.order.price, order.key(), id});
  count(order, -1);
}

void WorkingOrders::count(const BookOrder& order, int sign) {
  WorkingVolumes& volumes = volumes_[{order.key(), order.direction()}];
  if (order.opens()) volumes.opening += sign * order.order.volume;
  volumes.closeYesterday += sign * order.closeYesterday;
  volumes.closeToday += sign * order.closeToday;
  if (order.side() == Side::SellingReimbursement) volumes.repaying += sign * order.order.volume;
  AccountSums& sums = accounts_[order.key().account];
  sums.count += sign;
  sums.cash.add(sign * order.funds.cash);
  if (order.side() == Side::SecurityReimbursement) sums.buyBack.add(sign * order.funds.cash);
  sums.margin.add(sign * order.funds.margin);
  (order.direction() == Direction::Long ? sums.longBorrowed : sums.shortBorrowed).add(sign * order.funds.borrowed);
  if (sums.count == 0) accounts_.erase(order.key().account);
}

WorkingVolumes WorkingOrders::volumes(const Key& key, Direction direction) const {
  const auto found = volumes_.find({key, direction});
  return found == volumes_.end() ? WorkingVolumes{} : found->second;
}

WorkingFunds WorkingOrders::funds(int32_t account) const {
  const auto found = accounts_.find(account);
  if (found == accounts_.end()) return {};
  const AccountSums& it = found->second;
  return {it.cash.value(), it.buyBack.value(), it.margin.value(), it.longBorrowed.value(), it.shortBorrowed.value()};
}

std::vector<int64_t> WorkingOrders::ids(const Key& key) const {
  std::vector<int64_t> ids;
  for (auto it = orders_.lower_bound({key, INT64_MIN}); it != orders_.end() && it->first == key; ++it) {
    ids.push_back(it->second);
  }
  return ids;
}

std::vector<int64_t> WorkingOrders::ids() const {
  std::vector<int64_t> ids;
  ids.reserve(orders_.size());
  for (const auto& [key, id] : orders_) ids.push_back(id);
  return ids;
}

std::set<int64_t> WorkingOrders::reached(int64_t hashCode, double above, double below) const {
  std::set<int64_t> found;
  const auto prices = prices_.find(hashCode);
  if (prices == prices_.end()) return found;
  const auto& [buys, sells] = prices->second;
  for (auto it = buys.rbegin(); it != buys.rend() && std::get<double>(*it) > above; ++it) {
    found.insert(std::get<int64_t>(*it));
  }
  for (auto it = sells.begin(); it != sells.end() && std::get<double>(*it) < below; ++it) {
    found.insert(std::get<int64_t>(*it));
  }
  return found;
}

}  // namespace orvane::terminal
