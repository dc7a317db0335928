#include "host/tradeutils.h"

#include <algorithm>
#include <map>
#include <set>

#include "terminal/trading/ledger.h"
#include "terminal/trading/services.h"

namespace orvane {
namespace {

using terminal::Account;
using terminal::Book;

constexpr int32_t kWithAvailable = 2;  // bit of queryFlags: return the accounts that are logged in as well

int32_t indexOf(int32_t index) { return index; }
int32_t indexOf(const TradingAccountID& id) { return id.index; }

template <typename Look>
auto read(ITradeService* service, const Look& look) {
  return static_cast<terminal::TradeService*>(service)->desk().read(look);
}

// Each selected account once, by ascending index.
template <typename Selector>
std::vector<const Account*> selected(const Book& book, const Selector& selector) {
  std::vector<const Account*> accounts;
  if (selector.empty()) {
    for (const auto& [index, account] : book.accounts) accounts.push_back(&account);
    return accounts;
  }
  std::set<int32_t> indexes;
  for (const auto& entry : selector) indexes.insert(indexOf(entry));
  for (const int32_t index : indexes) {
    if (const Account* account = book.account(index)) accounts.push_back(account);
  }
  return accounts;
}

// Calls `visit` for each selected account and, if the flags ask for it, `addAvailable` for those that are logged in.
template <typename Selector, typename Visit, typename AddAvailable>
void forEachSelected(ITradeService* service, const Selector& selector, int32_t queryFlags, const Visit& visit,
                     const AddAvailable& addAvailable) {
  read(service, [&](const Book& book) {
    for (const Account* account : selected(book, selector)) {
      visit(book, *account);
      if (account->online && (queryFlags & kWithAvailable) != 0) addAvailable(account->id);
    }
  });
}

// The entries of the selected accounts, in ascending order.
template <typename Selector>
std::vector<int64_t> merged(const Book& book, const Selector& selector,
                            const std::map<int32_t, std::vector<int64_t>>& byAccount) {
  std::vector<int64_t> entries;
  for (const Account* account : selected(book, selector)) {
    const auto own = byAccount.find(account->id.index);
    if (own != byAccount.end()) entries.insert(entries.end(), own->second.begin(), own->second.end());
  }
  std::sort(entries.begin(), entries.end());
  return entries;
}

}  // namespace

std::vector<TradingAccountID> TradeUtils::getTradingAccountID(ITradeService* service,
                                                              const std::list<int32_t>& selector) {
  return read(service, [&](const Book& book) {
    std::vector<TradingAccountID> ids;
    for (const Account* account : selected(book, selector)) ids.push_back(account->id);
    return ids;
  });
}

void TradeUtils::getAllTradingAccount(ITradeService* service, const std::list<int32_t>& selector, int32_t queryFlags,
                                      std::vector<TradingAccount>& accounts, std::list<int32_t>& availableIndexes) {
  forEachSelected(
      service, selector, queryFlags,
      [&](const Book& book, const Account& account) { accounts.push_back(terminal::capital(book, account)); },
      [&](const TradingAccountID& id) { availableIndexes.push_back(id.index); });
}

void TradeUtils::getAllTradingAccount(ITradeService* service, const std::vector<TradingAccountID>& selector,
                                      int32_t queryFlags, std::vector<TradingAccount>& accounts,
                                      std::vector<TradingAccountID>& availableAccounts) {
  forEachSelected(
      service, selector, queryFlags,
      [&](const Book& book, const Account& account) { accounts.push_back(terminal::capital(book, account)); },
      [&](const TradingAccountID& id) { availableAccounts.push_back(id); });
}

void TradeUtils::getAllPosition(ITradeService* service, const std::list<int32_t>& selector, int32_t queryFlags,
                                std::list<Position>& positions, std::list<int32_t>& availableIndexes) {
  forEachSelected(
      service, selector, queryFlags,
      [&](const Book& book, const Account& account) { terminal::appendPositions(book, account, positions); },
      [&](const TradingAccountID& id) { availableIndexes.push_back(id.index); });
}

void TradeUtils::getAllFill(ITradeService* service, const std::list<int32_t>& selector, int32_t queryFlags,
                            std::list<OrderFill>& fills, std::list<int32_t>& availableIndexes) {
  forEachSelected(
      service, selector, queryFlags, [](const Book&, const Account&) {},
      [&](const TradingAccountID& id) { availableIndexes.push_back(id.index); });
  read(service, [&](const Book& book) {
    for (const int64_t place : merged(book, selector, book.accountFills)) {
      fills.push_back(book.fills[static_cast<size_t>(place)]);
    }
  });
}

std::list<Order> TradeUtils::getAllOrder(ITradeService* service, const std::vector<TradingAccountID>& accounts) {
  return read(service, [&](const Book& book) {
    std::list<Order> orders;
    for (const int64_t id : merged(book, accounts, book.accountOrders)) orders.push_back(book.orders.at(id).order);
    return orders;
  });
}

}  // namespace orvane
