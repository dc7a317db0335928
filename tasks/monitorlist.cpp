#include "tasks/monitorlist.h"

#include <algorithm>

namespace orvane {

void PosMonitorListTask::execute() {
  if (!checkEntitlement()) return;
  reply(serializeMonitorList(collect(selector_)));
}

std::vector<PositionMonitorRow> PosMonitorListTask::collect(const AccountSelector& selector) {
  MonitorSnapshot snapshot;
  IPositionMonitor::getInstance()->getMonitorRecords(snapshot);
  std::vector<PositionMonitorRow> matched;
  std::vector<PositionMonitorRow> all;
  all.reserve(snapshot.records.size());
  for (PositionMonitorRecord& record : snapshot.records) {
    std::string codeType;
    std::string codeName;
    if (findCodeType(record.code.hashCode, codeType, codeName).code != 0) continue;
    const PositionMonitorRow& row = all.emplace_back(PositionMonitorRow{std::move(record), std::move(codeType)});
    // An account that occurs twice in the selector gets its rows twice.
    const auto repeats = std::count(selector.begin(), selector.end(), row.record.account.index);
    matched.insert(matched.end(), static_cast<size_t>(repeats), row);
  }
  if (matched.empty()) return all;
  return matched;
}

}  // namespace orvane
