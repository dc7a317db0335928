#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <list>
#include <string>

namespace orvane::bench {

// Creates the reference terminal's database in this folder, with accounts besides the sample data that have one
// position and one cancelled order for each instrument that they hold: one account of one instrument, one of ten, and
// as many of twenty as make up `rows`.
void makePaperDesk(const std::filesystem::path& folder, size_t rows);

// The accounts among them that have so many positions and orders together: 1, 10, or a multiple of 20.
std::list<int32_t> accountsOfRows(size_t rows);

// The same as a request's body.
std::string selectorOfRows(size_t rows);

}  // namespace orvane::bench
