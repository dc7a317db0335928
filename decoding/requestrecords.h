#pragma once

#include <cstdint>
#include <list>

namespace orvane {

// What the decoders make of request bodies. Values are as the phone sent them: of the right kind, otherwise unchecked.

// Account indexes in the order of the body, repeats kept; empty means every account.
using AccountSelector = std::list<int32_t>;

}  // namespace orvane
