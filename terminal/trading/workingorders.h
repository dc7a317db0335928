#pragma once

#include <cstdint>
#include <map>
#include <set>
#include <tuple>
#include <utility>
#include <vector>

#include "terminal/trading/bookorder.h"

namespace orvane::terminal {

// A sum from which terms can be subtracted again. Rounding errors are summed separately, so that they do not
// accumulate.
class SteadySum {
 public:
  void add(double value) {
    const double sum = sum_ + value;
    const double added = sum - sum_;
    error_ += (sum_ - (sum - added)) + (value - added);
    sum_ = sum;
  }
  double value() const { return sum_ + error_; }

 private:
  double sum_ = 0;
  double error_ = 0;
};

// Volumes of the working orders on one side of one instrument in one account.
struct WorkingVolumes {
  int64_t opening = 0;
  int64_t closeYesterday = 0;
  int64_t closeToday = 0;
  int64_t repaying = 0;  // part of the closing volume that repays borrowed money (side 6)

  int64_t closing() const { return closeYesterday + closeToday; }
};

// The funds that the working orders of one account hold back.
struct WorkingFunds {
  double cash = 0;
  double buyBack = 0;  // part of `cash` for orders that buy borrowed securities back
  double margin = 0;
  double longBorrowed = 0;   // for margin purchases
  double shortBorrowed = 0;  // for short sales
};

// The working orders, with totals by account and by instrument. Each look-up costs the same however many orders there
// are. Not thread-safe.
class WorkingOrders {
 public:
  void add(const BookOrder& order);

  // REQUIRES: `order` is as it was when it was added.
  void remove(const BookOrder& order);

  size_t size() const { return orders_.size(); }
  WorkingVolumes volumes(const Key& key, Direction direction) const;
  WorkingFunds funds(int32_t account) const;

  // Ids of the orders of one account and instrument, or of all orders, by account, instrument and id.
  std::vector<int64_t> ids(const Key& key) const;
  std::vector<int64_t> ids() const;

  // Ids of the orders to buy at more than `above` and to sell at less than `below`.
  std::set<int64_t> reached(int64_t hashCode, double above, double below) const;

 private:
  struct AccountSums {
    int64_t count = 0;
    SteadySum cash;
    SteadySum buyBack;
    SteadySum margin;
    SteadySum longBorrowed;
    SteadySum shortBorrowed;
  };
  struct Prices {
    std::set<std::tuple<double, Key, int64_t>> buys;
    std::set<std::tuple<double, Key, int64_t>> sells;
  };

  void count(const BookOrder& order, int sign);

  std::set<std::pair<Key, int64_t>> orders_;
  std::map<std::pair<Key, Direction>, WorkingVolumes> volumes_;
  std::map<int32_t, AccountSums> accounts_;
  std::map<int64_t, Prices> prices_;  // by hash code
};

}  // namespace orvane::terminal
