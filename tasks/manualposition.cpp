#include "tasks/manualposition.h"

#include <list>

#include "host/positionmonitor.h"
#include "serialise/manuallist.h"
#include "tasks/accountcodes.h"

namespace orvane {

namespace {

// An empty map means more to the monitor than nothing. So a request without pairs reaches it, but one in which no pair
// is known must not.
bool reachesTheMonitor(const std::vector<MobileCodeAccountPair>& named, const MonitorAccountCodes& found) {
  return named.empty() || !found.empty();
}

}  // namespace

void PosMonitorManualList::execute() {
  if (!checkEntitlement()) return;
  const MonitorAccountCodes codes = findAccountCodes(request_.items);
  std::list<MonitorManualPosition> positions;
  if (reachesTheMonitor(request_.items, codes)) IPositionMonitor::getInstance()->getManualPositions(codes, positions);
  reply(serializeManualList(positions));
}

void PosMonitorManualUpdate::execute() {
  keepKnown(request_.items);
  IPositionMonitor::getInstance()->updateManualPositions(request_.items);
  reply(ResultStatus{});
}

void PosMonitorManualClean::execute() {
  const MonitorAccountCodes codes = findAccountCodes(request_.items);
  if (reachesTheMonitor(request_.items, codes)) IPositionMonitor::getInstance()->cleanManualPositions(codes);
  reply(ResultStatus{});
}

}  // namespace orvane
