#include "terminal/trading/change.h"

namespace orvane::terminal {

void Rows::add(const Book& book, const Change& change) {
  empty = empty && change.empty();
  for (const int32_t index : change.accounts) accounts.insert_or_assign(index, book.accounts.at(index));
  for (const Key& key : change.holdings) holdings.insert_or_assign(key, book.holdings.at(key));
  for (const int64_t id : change.orders) orders.insert_or_assign(id, OrderRow{book.orders.at(id), book.day});
  fills.insert(fills.end(), change.fills.begin(), change.fills.end());
  for (const int64_t id : change.contracts) contracts.insert_or_assign(id, book.contracts.at(id));
  for (const int64_t hashCode : change.quotes) quotes.insert_or_assign(hashCode, book.instruments.at(hashCode).last);
  for (const Key& key : change.manual) {
    const auto found = book.manual.find(key);
    manual[key] = found == book.manual.end() ? std::nullopt : std::optional(found->second);
  }
  for (const int64_t hashCode : change.instruments) {
    instruments.insert_or_assign(hashCode, book.instruments.at(hashCode));
  }
  if (change.nextDay) day = change.nextDay;
}

}  // namespace orvane::terminal
