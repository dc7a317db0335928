#pragma once

#include <array>

namespace orvane::terminal {

// The tables and the sample data, SQL in UTF-8, in the order in which they are to be run. Made by CMake from
// schema.sql and the files of terminal/sample.
extern const std::array<const char*, 6> kSampleScripts;

}  // namespace orvane::terminal
