#pragma once

#include <string>
#include <string_view>

#include "terminal/phones/topics.h"

namespace orvane::terminal {

// The error, in UTF-8, for a body that must not reach the library; empty if it may. There are two kinds: one with
// something else where the library asserts an object, which would end the process, and one with so many elements that
// its answer would hold up all others. The library itself answers every other body, good or bad. `body` is empty or
// one whole JSON value.
std::string findBodyFault(const Topic& topic, std::string_view body);

}  // namespace orvane::terminal
