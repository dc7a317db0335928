#include "tasks/cancelorder.h"

#include <cstdlib>

#include "host/order.h"
#include "host/servicerouter.h"
#include "host/tradeservice.h"
#include "vocabulary/gbk.h"

namespace orvane {

namespace {

// What the reply says at the end of an order that has no number.
ResultStatus missingId(const MobileCancelOrder& order) {
  if (order.strategyId.empty()) {
    return {-1, "missing localOrderId or strategyId"};
  }
  return {-1, std::string("暂不支持条件单"_gbk)};
}

}  // namespace

void CancelOrderTask::execute() {
  if (checkEntitlement()) {
    reply(run());
  }
}

ResultStatus CancelOrderTask::run() {
  ResultStatus remembered;
  for (MobileCancelOrder& order : orders_) {
    if (order.localOrderId.empty()) {
      remembered = missingId(order);
      continue;
    }
    bool refused = false;
    ResultStatus cancelled = cancel(order, refused);
    if (refused || cancelled.code != 0) {
      return cancelled;
    }
  }
  return remembered;
}

ResultStatus CancelOrderTask::cancel(MobileCancelOrder& order, bool& refused) const {
  const int32_t index = order.account.index;
  if (findAccount(index, order.account).code != 0) {
    return {-1, "can not find tid by index:" + std::to_string(index)};
  }
  if (!checkEntitlement(order.account)) {
    refused = true;
    return {};  // the refusal has been sent; an ordinary reply follows it
  }
  if (ResultStatus found = findCode(order.code.hashCode, order.code); found.code != 0) {
    return found;
  }
  CancelOrderRequest request;
  request.localOrderId = std::strtoll(order.localOrderId.c_str(), nullptr, 10);
  request.account = order.account;
  request.code = order.code;
  return IServiceRouter::instance()->getTradeService()->cancelOrder(request);
}

}  // namespace orvane
