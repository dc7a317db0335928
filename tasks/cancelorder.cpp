#include "tasks/cancelorder.h"

#include <cstdlib>

#include "host/order.h"
#include "host/servicerouter.h"
#include "host/tradeservice.h"
#include "tasks/orderrefusal.h"

namespace orvane {

void CancelOrderTask::execute() {
  if (checkEntitlement()) reply(run());
}

ResultStatus CancelOrderTask::run() {
  ResultStatus remembered;  // an element without localOrderId is reported at the end and stops nothing
  for (MobileCancelOrder& order : orders_) {
    if (order.localOrderId.empty()) {
      remembered =
          order.strategyId.empty() ? ResultStatus{-1, "missing localOrderId or strategyId"} : conditionalOrder();
    } else if (std::optional<ResultStatus> ended = cancel(order)) {
      return std::move(*ended);
    }
  }
  return remembered;
}

std::optional<ResultStatus> CancelOrderTask::cancel(MobileCancelOrder& order) const {
  const int32_t index = order.account.index;
  if (findAccount(index, order.account).code != 0) return accountNotFound(index);
  if (!checkEntitlement(order.account)) return ResultStatus{};
  if (ResultStatus found = findCode(order.code.hashCode, order.code); found.code != 0) return found;
  CancelOrderRequest request;
  request.localOrderId = std::strtoll(order.localOrderId.c_str(), nullptr, 10);
  request.account = std::move(order.account);
  request.code = std::move(order.code);
  ResultStatus cancelled = IServiceRouter::instance()->getTradeService()->cancelOrder(request);
  if (cancelled.code != 0) return cancelled;
  return std::nullopt;
}

}  // namespace orvane
