#include "host/tradeutils.h"

#include <algorithm>

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
  for (const auto& [index, account] : book.accounts) {
    auto names = [wanted = index](const auto& entry) { return indexOf(entry) == wanted; };
    if (selector.empty() || std::any_of(selector.begin(), selector.end(), names)) accounts.push_back(&account);
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

// Appends the records of `rows` that belong to selected accounts, keeping their order.
template <typename Selector, typename Rows, typename Get, typename Out>
void appendRows(const Book& book, const Selector& selector, const Rows& rows, const Get& get, Out& out) {
  const std::vector<const Account*> accounts = selected(book, selector);
  for (const auto& row : rows) {
    const auto& record = get(row);
    auto holds = [&](const Account* account) { return account->id.index == record.account.index; };
    if (std::any_of(accounts.begin(), accounts.end(), holds)) out.push_back(record);
  }
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
    appendRows(
        book, selector, book.fills, [](const OrderFill& fill) -> const OrderFill& { return fill; }, fills);
  });
}

std::list<Order> TradeUtils::getAllOrder(ITradeService* service, const std::vector<TradingAccountID>& accounts) {
  return read(service, [&](const Book& book) {
    std::list<Order> orders;
    appendRows(
        book, accounts, book.orders, [](const auto& entry) -> const Order& { return entry.second.order; }, orders);
    return orders;
  });
}

}  // namespace orvane
