#include "tasks/accountlist.h"

#include <set>
#include <utility>

#include "host/authagent.h"
#include "host/servicerouter.h"
#include "host/tradeutils.h"

namespace orvane {

namespace {

void queryAccountPrivilege(MobileAccountItem& item) {
  item.triggerOrderPrivilege = IAuthAgent::getInstance()->hasPrivilege(item.id, AccountPrivilege::TriggerOrder);
  item.ordinaryOrderPrivilege = IAuthAgent::getInstance()->hasPrivilege(item.id, AccountPrivilege::OrdinaryOrder);
}

}  // namespace

void AccountListTask::execute() {
  if (!checkEntitlement()) return;
  reply(serializeAccountList(collectAccounts()));
}

std::vector<MobileAccountItem> AccountListTask::collectAccounts() {
  std::vector<TradingAccount> accounts;
  std::vector<TradingAccountID> availableAccounts;
  TradeUtils::getAllTradingAccount(IServiceRouter::instance()->getTradeService(), std::vector<TradingAccountID>{},
                                   kQueryList, accounts, availableAccounts);
  std::set<int32_t> available;
  for (const TradingAccountID& account : availableAccounts) available.insert(account.index);
  std::vector<MobileAccountItem> items;
  items.reserve(accounts.size());
  for (TradingAccount& account : accounts) {
    MobileAccountItem& item = items.emplace_back();
    item.id = std::move(account.id);
    queryAccountPrivilege(item);
    item.accountStatus = available.contains(item.id.index) ? 1 : 0;
  }
  return items;
}

}  // namespace orvane
