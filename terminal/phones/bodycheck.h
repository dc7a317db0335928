#pragma once

#include <string>
#include <string_view>

namespace orvane::terminal {

// What a body is told that must not reach the library, in UTF-8; empty for every other body, good or bad, which the
// library answers itself. Two kinds are kept back: one in which something else stands where the library needs an
// object, which would end the process, and one with so many elements that its answer would hold up everybody else's.
// `body` is empty or one whole JSON value. `topic` ends at its first NUL, as it does for the library.
std::string findBodyFault(const std::string& topic, std::string_view body);

}  // namespace orvane::terminal
