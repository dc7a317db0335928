#include "tasks/orderlist.h"

#include <vector>

#include "host/servicerouter.h"
#include "host/tradeutils.h"
#include "serialise/orderlist.h"

namespace orvane {

void OrderListTask::execute() {
  if (!checkEntitlement()) return;
  reply(serializeOrderList(collect(selector_)));
}

std::list<Order> OrderListTask::collect(const AccountSelector& selector) {
  std::vector<TradingAccountID> accounts;
  if (!selector.empty()) {
    accounts = TradeUtils::getTradingAccountID(IServiceRouter::instance()->getTradeService(), selector);
    if (accounts.empty()) {
      return {};  // an empty vector would select every account
    }
  }
  return TradeUtils::getAllOrder(IServiceRouter::instance()->getTradeService(), accounts);
}

}  // namespace orvane
