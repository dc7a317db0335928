#pragma once

#include <cstddef>
#include <filesystem>

namespace orvane::bench {

// Of the accounts that a desk has besides the sample data: this one holds one instrument, those behind it all twenty.
inline constexpr int kAccountOfOne = 99;
inline constexpr int kFirstAccountOfTwenty = 100;

// Makes the reference terminal's database in this folder, with so many accounts that hold every instrument.
void makePaperDesk(const std::filesystem::path& folder, int accounts);

}  // namespace orvane::bench
