#include "tasks/neworder.h"

#include "host/servicerouter.h"
#include "host/tradeservice.h"
#include "tasks/orderrefusal.h"

namespace orvane {

void NewOrderTask::execute() {
  if (checkEntitlement()) reply(run());
}

ResultStatus NewOrderTask::run() {
  for (MobileNewOrderItem& item : order_.items) {
    if (std::optional<ResultStatus> ended = check(item)) return std::move(*ended);
  }
  return order_.isConditional ? conditionalOrder() : submitAll();
}

std::optional<ResultStatus> NewOrderTask::check(MobileNewOrderItem& item) const {
  const int32_t index = item.account.index;
  if (findAccount(index, item.account).code != 0) return accountNotFound(index);
  if (order_.isConditional) return conditionalOrder();
  if (!checkEntitlement(item.account)) return ResultStatus{};
  if (ResultStatus found = findCode(item.code.hashCode, item.code); found.code != 0) return found;
  return std::nullopt;
}

ResultStatus NewOrderTask::submitAll() const {
  ResultStatus running;
  for (const MobileNewOrderItem& item : order_.items) {
    ResultStatus inserted = IServiceRouter::instance()->getTradeService()->insertOrder(item);
    if (running.code == 0) running = std::move(inserted);
  }
  return running;
}

}  // namespace orvane
