#pragma once

#include <cstddef>
#include <filesystem>

namespace orvane::bench {

// Accounts added to the sample data: the first holds one instrument, the others hold all twenty.
inline constexpr int kAccountOfOne = 99;
inline constexpr int kFirstAccountOfTwenty = 100;

// Creates the reference terminal's database in this folder, with `accounts` accounts that hold all twenty instruments.
void makePaperDesk(const std::filesystem::path& folder, int accounts);

}  // namespace orvane::bench
