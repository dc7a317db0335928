#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <vector>

#include "terminal/trading/book.h"

namespace orvane::terminal {

struct NewFill {
  OrderFill fill;
  double commission = 0;
};

// The parts of a book that an action has changed, by key. Fills are only added.
struct Change {
  std::set<int32_t> accounts;
  std::set<Key> holdings;
  std::set<int64_t> orders;
  std::vector<NewFill> fills;
  std::set<int64_t> contracts;
  std::set<int64_t> quotes;
  std::set<Key> manual;
  std::set<int64_t> instruments;
  std::optional<int64_t> nextDay;

  bool empty() const {
    return accounts.empty() && holdings.empty() && orders.empty() && fills.empty() && contracts.empty() &&
           quotes.empty() && manual.empty() && instruments.empty() && !nextDay;
  }
};

struct OrderRow {
  BookOrder order;
  int64_t day = 0;
};

// The rows to be written for any number of changes: copies, so that the book may change meanwhile. The last value of a
// row replaces the earlier ones.
struct Rows {
  std::map<int32_t, Account> accounts;
  std::map<Key, Holdings> holdings;
  std::map<int64_t, OrderRow> orders;
  std::vector<NewFill> fills;
  std::map<int64_t, CreditContract> contracts;
  std::map<int64_t, double> quotes;  // last price by hash code
  std::map<Key, std::optional<Volumes>> manual;
  std::map<int64_t, Instrument> instruments;
  std::optional<int64_t> day;
  bool empty = true;

  // Copies the parts of `book` that `change` names.
  void add(const Book& book, const Change& change);
};

}  // namespace orvane::terminal
