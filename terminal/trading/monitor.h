#pragma once

#include <functional>
#include <list>

#include "host/positionmonitor.h"
#include "terminal/trading/engine.h"

namespace orvane::terminal {

// Compares actual holdings with the targets of strategies, algorithms and the user; docs/terminal.md gives the
// formulas. An empty MonitorAccountCodes means every account and instrument. Thread-safe.
class PositionMonitor : public IPositionMonitor {
 public:
  PositionMonitor(Desk& desk, Engine& engine) : desk_(desk), engine_(engine) {}

  std::list<MonitorSyncOrder> getSyncOrders(const MonitorAccountCodes& codes) override;
  void placeSyncOrders(std::list<MonitorSyncOrder>& orders) override;
  void getMonitorRecords(MonitorSnapshot& snapshot) override;
  void cleanManualPositions(const MonitorAccountCodes& codes) override;
  void updateManualPositions(std::list<MonitorManualPosition>& positions) override;
  void getManualPositions(const MonitorAccountCodes& codes, std::list<MonitorManualPosition>& positions) override;

 private:
  void changeManual(const std::function<void(Book&, Change&, int64_t now)>& work);

  Desk& desk_;
  Engine& engine_;
};

}  // namespace orvane::terminal
