#pragma once

#include <string>
#include <string_view>

namespace orvane::terminal {

// The library ends the process on a body in which something other than an object stands where an object must. What
// such a body is told in its place, in UTF-8; empty for every other body, good or bad, which the library answers
// itself. `body` is empty or one whole JSON value. `topic` ends at its first NUL, as it does for the library.
std::string findFatalFault(const std::string& topic, std::string_view body);

}  // namespace orvane::terminal
