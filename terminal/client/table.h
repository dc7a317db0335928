#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace orvane::terminal {

// Columns that UTF-8 text takes on a screen: two for each wide character of East Asia.
size_t displayWidth(std::string_view text);

// A list of objects as a table with a line for each object and the members' names on top; numbers stand to the right,
// nested values as [a, b] and {name: a}; a member that is a list of objects gives each of them a line. A table that is
// wider than the screen is turned, with a line for each member and as many objects side by side as fit. `screenWidth`
// is in columns; 0 is without end. One object is a list of one. Any other JSON, or text that is none, comes back as it
// is.
std::string writeTable(std::string_view json, size_t screenWidth);

}  // namespace orvane::terminal
