#include "tasks/syncorder.h"

#include "host/positionmonitor.h"
#include "serialise/syncorderlist.h"
#include "tasks/accountcodes.h"

namespace orvane {

void PosMonitorSyncOrder::execute() {
  if (!checkEntitlement()) return;
  const MonitorAccountCodes codes = findAccountCodes(request_.items);
  reply(serializeSyncOrderList(IPositionMonitor::getInstance()->getSyncOrders(codes)));
}

void PosMonitorNewOrder::execute() {
  keepKnown(request_.items);
  IPositionMonitor::getInstance()->placeSyncOrders(request_.items);
  reply(ResultStatus{});
}

}  // namespace orvane
