#pragma once

#include <cstdint>
#include <string>

#include "host/order.h"

namespace orvane {

// The name of one origin flag in GBK; empty if the number is not a single known flag.
std::string orderFlagName(int32_t flag);

// The source's free text, then "|" and the name for each of the algorithm and trading assistant flags that is set. The
// other flags are not shown. GBK.
std::string formatOrderSource(const Source& source);

}  // namespace orvane
