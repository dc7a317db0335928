#pragma once

#include <list>
#include <string>

#include "host/order.h"

namespace orvane {

std::string serializeFillList(const std::list<OrderFill>& fills);

}  // namespace orvane
