#include "tasks/filllist.h"

#include <list>

#include "host/servicerouter.h"
#include "host/tradeutils.h"
#include "serialise/filllist.h"

namespace orvane {

void FillListTask::execute() {
  if (!checkEntitlement()) return;
  std::list<OrderFill> fills;
  std::list<int32_t> availableIndexes;  // unused: every row has "accountStatus" 1
  TradeUtils::getAllFill(IServiceRouter::instance()->getTradeService(), selector_, kQueryOne, fills, availableIndexes);
  reply(serializeFillList(fills));
}

}  // namespace orvane
