#pragma once

#include <list>
#include <string>

#include "host/positionmonitor.h"

namespace orvane {

std::string serializeManualList(const std::list<MonitorManualPosition>& positions);

}  // namespace orvane
