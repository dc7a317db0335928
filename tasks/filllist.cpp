#include "tasks/filllist.h"

#include <list>

#include "host/servicerouter.h"
#include "host/tradeutils.h"
#include "serialise/filllist.h"

namespace orvane {

void FillListTask::execute() {
  if (!checkEntitlement()) {
    return;
  }
  std::list<OrderFill> fills;
  std::list<int32_t> availableIndexes;  // not looked at: every row has "accountStatus" 1
  TradeUtils::getAllFill(IServiceRouter::instance()->getTradeService(), selector_, 1, fills, availableIndexes);
  reply(serializeFillList(fills));
}

}  // namespace orvane
