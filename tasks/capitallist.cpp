#include "tasks/capitallist.h"

#include <list>
#include <set>

#include "host/servicerouter.h"
#include "host/tradeutils.h"

namespace orvane {

void CapitalListTask::execute() {
  if (!checkEntitlement()) return;
  reply(serializeCapitalList(collect(selector_)));
}

std::vector<CapitalEntry> CapitalListTask::collect(const AccountSelector& selector) {
  std::vector<TradingAccount> accounts;
  std::list<int32_t> availableIndexes;
  TradeUtils::getAllTradingAccount(IServiceRouter::instance()->getTradeService(), selector, kQueryList, accounts,
                                   availableIndexes);
  const std::set<int32_t> available(availableIndexes.begin(), availableIndexes.end());
  std::vector<CapitalEntry> entries;
  entries.reserve(accounts.size());
  for (TradingAccount& account : accounts) {
    const int32_t status = available.contains(account.id.index) ? 1 : 0;
    entries.push_back({std::move(account), status});
  }
  return entries;
}

}  // namespace orvane
