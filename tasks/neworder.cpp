#include "tasks/neworder.h"

#include "host/servicerouter.h"
#include "host/tradeservice.h"
#include "vocabulary/gbk.h"

namespace orvane {

namespace {

ResultStatus conditionalRefusal() { return {-1, std::string("暂不支持条件单"_gbk)}; }

}  // namespace

void NewOrderTask::execute() {
  if (checkEntitlement()) {
    reply(run());
  }
}

ResultStatus NewOrderTask::run() {
  bool refused = false;
  ResultStatus checked = checkAll(refused);
  if (refused || checked.code != 0) {
    return checked;
  }
  return order_.isConditional ? conditionalRefusal() : submitAll();
}

ResultStatus NewOrderTask::checkAll(bool& refused) {
  for (MobileNewOrderItem& item : order_.items) {
    const int32_t index = item.account.index;
    if (findAccount(index, item.account).code != 0) {
      return {-1, "can not find tid by index:" + std::to_string(index)};
    }
    if (order_.isConditional) {
      return conditionalRefusal();
    }
    if (!checkEntitlement(item.account)) {
      refused = true;
      return {};  // the refusal has been sent; an ordinary reply follows it
    }
    if (ResultStatus found = findCode(item.code.hashCode, item.code); found.code != 0) {
      return found;
    }
  }
  return {};
}

ResultStatus NewOrderTask::submitAll() const {
  ResultStatus running;
  for (const MobileNewOrderItem& item : order_.items) {
    ResultStatus inserted = IServiceRouter::instance()->getTradeService()->insertOrder(item);
    if (running.code == 0) {
      running = std::move(inserted);
    }
  }
  return running;
}

}  // namespace orvane
