#pragma once

#include <cstdint>
#include <string>

#include "host/order.h"

namespace orvane {

// The name of one origin flag in GBK; empty for a number that is none of them.
std::string orderFlagName(int32_t flag);

// The source's free text, followed by the names of the algorithm and trading assistant flags where they are set. GBK.
std::string formatOrderSource(const Source& source);

}  // namespace orvane
