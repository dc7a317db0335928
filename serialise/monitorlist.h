#pragma once

#include <string>
#include <vector>

#include "host/positionmonitor.h"

namespace orvane {

// One row: a record of the monitor and the code type of its instrument in UTF-8.
struct PositionMonitorRow {
  PositionMonitorRecord record;
  std::string codeType;
};

std::string serializeMonitorList(const std::vector<PositionMonitorRow>& rows);

}  // namespace orvane
