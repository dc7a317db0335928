#include "tasks/orderlist.h"

#include <vector>

#include "host/servicerouter.h"
#include "host/tradeutils.h"
#include "serialise/orderlist.h"

namespace orvane {

void OrderListTask::execute() {
  if (!checkEntitlement()) {
    return;
  }
  reply(serializeOrderList(collect(selector_)));
}

std::list<Order> OrderListTask::collect(const AccountSelector& selector) {
  ITradeService* service = IServiceRouter::instance()->getTradeService();
  if (selector.empty()) {
    return TradeUtils::getAllOrder(service, {});
  }
  const std::vector<TradingAccountID> accounts = TradeUtils::getTradingAccountID(service, selector);
  if (accounts.empty()) {
    return {};  // an empty vector would ask for every account
  }
  return TradeUtils::getAllOrder(service, accounts);
}

}  // namespace orvane
