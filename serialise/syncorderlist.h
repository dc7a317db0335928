#pragma once

#include <list>
#include <string>

#include "host/positionmonitor.h"

namespace orvane {

std::string serializeSyncOrderList(const std::list<MonitorSyncOrder>& orders);

}  // namespace orvane
