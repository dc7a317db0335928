#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace orvane::terminal {

// Writes the control and bidirectional characters of UTF-8 text as \u001B, so that it can neither control the screen
// nor reorder what it shows. A byte that is not UTF-8 is written as \xFF.
std::string escapeControls(std::string_view text);

// Columns that UTF-8 text takes on a screen: two for each wide character of East Asia.
size_t displayWidth(std::string_view text);

// A list of objects as a table: the members' names on top, then a line for each object. Numbers are right-aligned,
// nested values are written as [a, b] and {name: a}, and a member that is a list of objects gives each of them a line.
// A table wider than the screen is transposed: a line for each member, and as many objects side by side as fit.
// `screenWidth` is in columns; 0 means no limit. A single object is a list of one. Any other text is returned as it is.
// All texts pass escapeControls.
std::string writeTable(std::string_view json, size_t screenWidth);

}  // namespace orvane::terminal
