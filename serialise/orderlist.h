#pragma once

#include <list>
#include <string>

#include "host/order.h"

namespace orvane {

std::string serializeOrderList(const std::list<Order>& orders);

}  // namespace orvane
